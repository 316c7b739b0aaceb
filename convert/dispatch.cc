// Finding a conversion chain in a text and applying it to a value.
#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "convert/chain.h"
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

// One conversion of a chain as pointers into the text it is found in.
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

// The links of the chain whose first link is given, the one nearest the
// name last. Every link's "." lies before the name, which follows the text's
// last ".".
Chain ChainFrom(char *text, Link link) {
    Chain chain;
    const char *limit = std::strrchr(link.dot, '.') + 1;
    for (;;) {
        chain.Add({link.row, static_cast<std::size_t>(link.argument - text),
                   static_cast<std::size_t>(link.dot - text)});
        char *start = link.dot + 1;
        if (!Below(start, limit) || !FindLink(start, link)) return chain;
    }
}

// The links of the chain at start, bounded by end.
Chain CollectChain(char *start, const char *end) {
    Link link;
    if (!Below(start, end) || !FindLink(start, link)) return {};
    return ChainFrom(start, link);
}

// Calls one handler with its argument cut at the ".".
char *Apply(const ChainLink &link, char *text, char *value, int cycleIndex) {
    char *dot = text + link.dot;
    *dot = '\0';
    char *result = link.row->handler(text + link.argument, value, cycleIndex);
    *dot = '.';
    return result;
}

// DetermineConversion; *first becomes the chain's first link when the name
// follows one.
char *Determine(char *text, char **conversionStart, Link *first = nullptr) {
    char *start = nullptr;
    char *name = text;
    if (char *underscore = std::strchr(text, '_'); underscore != nullptr) {
        Link link;
        if (FindLink(underscore, link)) {
            start = underscore;
            name = std::strrchr(link.dot, '.') + 1;
            if (first != nullptr) *first = link;
        } else if (MatchRow(underscore) == nullptr && std::strncmp(underscore, "_this", 5) == 0) {
            start = underscore;
        }
    }
    if (conversionStart != nullptr) *conversionStart = start;
    return name;
}

}  // namespace

Conversion FindConversion(const char *text) {
    // Finding reads the text only.
    char *start = const_cast<char *>(text);
    char *chainStart = nullptr;
    Link first{};
    const char *name = Determine(start, &chainStart, &first);
    Conversion found;
    found.name = static_cast<std::size_t>(name - text);
    found.start = chainStart != nullptr ? chainStart - text : -1;
    // The name follows a link exactly when one was found, the link the
    // chain starts with: ConvertIt finds the same from the text's start.
    if (name != text) found.chain = ChainFrom(start, first);
    return found;
}

char *ApplyChain(const Chain &chain, char *text, char *value, bool freeValue, int cycleIndex) {
    if (chain.Size() == 0) return value;
    char *current = value;
    for (std::size_t i = chain.Size(); i-- > 0;) {
        char *result = Apply(chain.At(i), text, current, cycleIndex);
        if (current != value && current != nullptr && current != result) std::free(current);
        current = result;
    }
    if (freeValue && value != nullptr && current != value) std::free(value);
    return current;
}

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
    return kx::convert::ApplyChain(kx::convert::CollectChain(start, end), start, value, freeValue != 0,
                                   cycleIndex);
}

}  // extern "C"
