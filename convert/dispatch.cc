// Finding a conversion chain in a text and applying it to a value.
#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "convert/convert_internal.h"
#include "core/text.h"
#include "kx_convert.h"

namespace kx::convert {
namespace {

// The rows of the conversion table chained by the small form of the
// character after their "_", each chain in table order: a name is looked for
// among the few rows that can match, not along the whole table.
struct RowChains {
    static constexpr int kEnd = -1;
    std::array<int, 256> first;                     // by character: the chain's first row
    std::array<int, kConvertTableSize> next;        // by row: the chain's next row

    RowChains() {
        first.fill(kEnd);
        next.fill(kEnd);
        std::array<int, 256> last;
        last.fill(kEnd);
        for (int i = 0; i < ConvertTableCount; ++i) {
            const auto key = static_cast<unsigned char>(core::AsciiLower(ConvertTable[i].name[1]));
            (last[key] == kEnd ? first[key] : next[static_cast<size_t>(last[key])]) = i;
            last[key] = i;
        }
    }
};

// The row whose name the text at position starts with, case ignored; the
// first in table order wins.
const KonvertierungsEintrag *MatchRow(const char *position) {
    static const RowChains chains;
    if (position[0] == '\0') return nullptr;
    const auto key = static_cast<unsigned char>(core::AsciiLower(position[1]));
    for (int i = chains.first[key]; i != RowChains::kEnd; i = chains.next[static_cast<size_t>(i)]) {
        const KonvertierungsEintrag &row = ConvertTable[i];
        if (core::StartsWithIgnoringCase(position, {row.name, static_cast<std::size_t>(row.length)})) return &row;
    }
    return nullptr;
}

// One conversion of a chain: its row, its argument and the "." ending it.
struct Link {
    const KonvertierungsEintrag *row;
    char *argument;
    char *dot;
};

// The conversion at the first "_" of text, when a "." follows its name.
bool FindLink(char *text, Link &link) {
    char *underscore = std::strchr(text, '_');
    if (underscore == nullptr) return false;
    link.row = MatchRow(underscore);
    if (link.row == nullptr) return false;
    link.argument = underscore + link.row->length;
    link.dot = std::strchr(link.argument, '.');
    return link.dot != nullptr;
}

bool Below(const char *position, const char *end) {
    return reinterpret_cast<std::uintptr_t>(position) < reinterpret_cast<std::uintptr_t>(end);
}

// The links of a chain in text order. A page's chains hold a link or two:
// those stay in the holder, longer chains go on in a vector.
class Chain {
public:
    void Add(const Link &link) {
        if (count_ < first_.size())
            first_[count_] = link;
        else
            more_.push_back(link);
        ++count_;
    }
    std::size_t Size() const { return count_; }
    const Link &At(std::size_t i) const { return i < first_.size() ? first_[i] : more_[i - first_.size()]; }

private:
    static constexpr std::size_t kHeld = 4;
    std::array<Link, kHeld> first_{};
    std::vector<Link> more_;
    std::size_t count_ = 0;
};

// The links of the chain at start, the one nearest the name last. Every
// link's "." lies before the name, which follows the text's last ".".
Chain CollectChain(char *start, const char *end) {
    Chain chain;
    Link link;
    const char *limit = end;
    while (Below(start, limit) && FindLink(start, link)) {
        chain.Add(link);
        if (chain.Size() == 1) limit = std::strrchr(link.dot, '.') + 1;
        start = link.dot + 1;
    }
    return chain;
}

// Calls one handler with its argument cut at the ".".
char *Apply(const Link &link, char *value, int cycleIndex) {
    *link.dot = '\0';
    char *result = link.row->handler(link.argument, value, cycleIndex);
    *link.dot = '.';
    return result;
}

char *Determine(char *text, char **conversionStart) {
    char *start = nullptr;
    char *name = text;
    if (char *underscore = std::strchr(text, '_'); underscore != nullptr) {
        Link link;
        if (FindLink(underscore, link)) {
            start = underscore;
            name = std::strrchr(link.dot, '.') + 1;
        } else if (MatchRow(underscore) == nullptr && std::strncmp(underscore, "_this", 5) == 0) {
            start = underscore;
        }
    }
    if (conversionStart != nullptr) *conversionStart = start;
    return name;
}

char *Convert(char *start, const char *end, char *value, bool freeValue, int cycleIndex) {
    const Chain chain = CollectChain(start, end);
    if (chain.Size() == 0) return value;
    char *current = value;
    for (std::size_t i = chain.Size(); i-- > 0;) {
        char *result = Apply(chain.At(i), current, cycleIndex);
        if (current != value && current != nullptr && current != result) std::free(current);
        current = result;
    }
    if (freeValue && value != nullptr && current != value) std::free(value);
    return current;
}

}  // namespace
}  // namespace kx::convert

extern "C" {

char *DetermineConversion(char *text, char **conversionStart) {
    if (text == nullptr) {
        if (conversionStart != nullptr) *conversionStart = nullptr;
        return nullptr;
    }
    return kx::convert::Determine(text, conversionStart);
}

char *ConvertIt(char *start, const char *end, char *value, int freeValue, int cycleIndex) {
    if (start == nullptr) return value;
    return kx::convert::Convert(start, end, value, freeValue != 0, cycleIndex);
}

}  // extern "C"
