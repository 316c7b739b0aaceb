// Multibyte-aware search and comparison: every step moves over one whole
// character of the locale's encoding, so a trail byte that looks like an
// ASCII character is never taken for one.
#include <cstdlib>
#include <cstring>
#include <cwchar>

#include "companion/libKXmbcs.h"

namespace mbcs {
namespace {

// Bytes of the character at text (1 for an invalid or single byte, 0 at the NUL).
std::size_t CharacterLength(const char *text, std::mbstate_t &state) {
    if (*text == '\0') return 0;
    if (MB_CUR_MAX == 1) return 1;
    const std::size_t length = std::mbrlen(text, MB_CUR_MAX, &state);
    if (length == static_cast<std::size_t>(-1) || length == static_cast<std::size_t>(-2) || length == 0) {
        state = std::mbstate_t{};
        return 1;
    }
    return length;
}

// Calls visit(position, length) for every character; stops when it returns true.
template <typename Visit>
const char *EachCharacter(const char *text, Visit &&visit) {
    std::mbstate_t state{};
    for (const char *at = text;;) {
        const std::size_t length = CharacterLength(at, state);
        if (visit(at, length)) return at;
        if (length == 0) return nullptr;
        at += length;
    }
}

unsigned char Fold(unsigned char byte) {
    return (byte >= 'A' && byte <= 'Z') ? static_cast<unsigned char>(byte - 'A' + 'a') : byte;
}

// Called when at least one text is NULL: NULL sorts first.
int NullOrder(const char *a, const char *b) {
    if (a == b) return 0;
    return a == nullptr ? -1 : 1;
}

}  // namespace
}  // namespace mbcs

extern "C" {

char *_mbschr(const char *text, unsigned int character) {
    if (text == nullptr) return nullptr;
    const char wanted = static_cast<char>(character & 0xFFu);
    const char *hit = mbcs::EachCharacter(text, [wanted](const char *at, std::size_t length) {
        return length <= 1 && *at == wanted;
    });
    return const_cast<char *>(hit);
}

char *_mbsrchr(const char *text, unsigned int character) {
    if (text == nullptr) return nullptr;
    const char wanted = static_cast<char>(character & 0xFFu);
    if (MB_CUR_MAX == 1) return const_cast<char *>(std::strrchr(text, wanted));
    const char *last = nullptr;
    mbcs::EachCharacter(text, [&last, wanted](const char *at, std::size_t length) {
        if (length <= 1 && *at == wanted) last = at;
        return false;
    });
    return const_cast<char *>(last);
}

char *_mbsstr(const char *text, const char *needle) {
    if (text == nullptr || needle == nullptr) return nullptr;
    const std::size_t size = std::strlen(needle);
    const char *hit = mbcs::EachCharacter(text, [needle, size](const char *at, std::size_t length) {
        return (length > 0 || size == 0) && std::strncmp(at, needle, size) == 0;
    });
    return const_cast<char *>(hit);
}

int _mbscmp(const char *a, const char *b) {
    if (a == nullptr || b == nullptr) return mbcs::NullOrder(a, b);
    return std::strcmp(a, b);
}

int _mbsnbcmp(const char *a, const char *b, size_t count) {
    if (a == nullptr || b == nullptr) return mbcs::NullOrder(a, b);
    return std::strncmp(a, b, count);
}

int _mbsicmp(const char *a, const char *b) {
    if (a == nullptr || b == nullptr) return mbcs::NullOrder(a, b);
    std::mbstate_t state{};
    for (;;) {
        // Only single-byte characters fold; the bytes of longer ones compare as they are.
        const std::size_t length = mbcs::CharacterLength(a, state);
        for (std::size_t i = 0; i < (length == 0 ? 1 : length); ++i) {
            unsigned char x = static_cast<unsigned char>(a[i]), y = static_cast<unsigned char>(b[i]);
            if (length <= 1) x = mbcs::Fold(x), y = mbcs::Fold(y);
            if (x != y) return x < y ? -1 : 1;
            if (x == 0) return 0;
        }
        a += length, b += length;
    }
}

}  // extern "C"
