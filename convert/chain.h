// A conversion chain found once and applied as often as asked: the page
// engine finds the chain of each branch of a stored control at its first row
// and applies it at every row, where ConvertIt would find it anew each time.
#ifndef KX_CONVERT_CHAIN_H
#define KX_CONVERT_CHAIN_H

#include <array>
#include <cstddef>
#include <vector>

#include "kx_convert.h"

namespace kx::convert {

// One conversion of a chain: its row, and where its argument and the "."
// ending it stand, from the start of the text the chain was found in.
struct ChainLink {
    const KonvertierungsEintrag *row = nullptr;
    std::size_t argument = 0;
    std::size_t dot = 0;
};

// The links of a chain in text order. A page's chains hold a link or two:
// those stay in the holder, longer chains go on in a vector.
class Chain {
public:
    void Add(const ChainLink &link) {
        if (count_ < first_.size())
            first_[count_] = link;
        else
            more_.push_back(link);
        ++count_;
    }
    std::size_t Size() const { return count_; }
    const ChainLink &At(std::size_t i) const { return i < first_.size() ? first_[i] : more_[i - first_.size()]; }

private:
    static constexpr std::size_t kHeld = 4;
    std::array<ChainLink, kHeld> first_{};
    std::vector<ChainLink> more_;
    std::size_t count_ = 0;
};

// What DetermineConversion finds in a text, as offsets from its start, and
// the chain ConvertIt(text, KX_CONVERT_UNBOUNDED, ...) applies.
struct Conversion {
    std::size_t name = 0;       // the name behind the chain
    std::ptrdiff_t start = -1;  // the "_" that starts the chain (or "_this"), -1 none
    Chain chain;
};

Conversion FindConversion(const char *text);

// ConvertIt with the chain found in text before: text is the same text
// (writable, and the same again on return).
char *ApplyChain(const Chain &chain, char *text, char *value, bool freeValue, int cycleIndex);

}  // namespace kx::convert

#endif
