// Positional scanning over NUL-terminated texts.
#include <cstring>

#include "companion/libparser.h"

namespace parser {
namespace {

int IndexInSet(char ch, const char *set, int setLength) {
    if (set == nullptr || setLength <= 0) return -1;
    const void *hit = std::memchr(set, ch, static_cast<size_t>(setLength));
    return hit ? static_cast<int>(static_cast<const char *>(hit) - set) : -1;
}

}  // namespace
}  // namespace parser

extern "C" {

int InhaltGleichZeichen(const char *text, const int *position, const char *set, int setLength) {
    if (text == nullptr || position == nullptr || *position < 0) return -1;
    return parser::IndexInSet(text[*position], set, setLength);
}

int UeberleseZeichen(const char *text, int *position, const char *set, int setLength) {
    if (text == nullptr || position == nullptr || *position < 0) return 0;
    const int from = *position;
    // The terminating NUL ends every scan, even when the set holds it.
    while (text[*position] != '\0' && parser::IndexInSet(text[*position], set, setLength) >= 0)
        ++*position;
    return *position - from;
}

int UeberleseZeichenRueckwaerts(const char *text, int *position, const char *set, int setLength,
                                int start) {
    if (text == nullptr || position == nullptr || *position < start) return 0;
    const int from = *position;
    while (*position > start && parser::IndexInSet(text[*position], set, setLength) >= 0)
        --*position;
    return from - *position;
}

int PositioniereAufZeichen(const char *text, int *position, const char *set, int setLength) {
    if (text == nullptr || position == nullptr || *position < 0) return -1;
    for (;; ++*position) {
        const int index = parser::IndexInSet(text[*position], set, setLength);
        if (index >= 0) return index;
        if (text[*position] == '\0') return -1;
    }
}

int PositioniereAufZeichenRueckwaerts(const char *text, int *position, const char *set,
                                      int setLength, int start) {
    if (text == nullptr || position == nullptr || *position < start) return -1;
    for (;; --*position) {
        const int index = parser::IndexInSet(text[*position], set, setLength);
        if (index >= 0) return index;
        if (*position == start) return -1;
    }
}

}  // extern "C"
