// Heap copies, case conversion and case-insensitive comparison (ASCII).
#include <cstdlib>
#include <cstring>

#include "companion/libparser.h"

namespace parser {
namespace {

int Lower(unsigned char ch) { return (ch >= 'A' && ch <= 'Z') ? ch + ('a' - 'A') : ch; }
int Upper(unsigned char ch) { return (ch >= 'a' && ch <= 'z') ? ch - ('a' - 'A') : ch; }

}  // namespace
}  // namespace parser

extern "C" {

char *ErzeugeText(const char *text, int length) {
    if (length < 0) return nullptr;
    char *copy = static_cast<char *>(std::malloc(static_cast<size_t>(length) + 1));
    if (copy == nullptr) return nullptr;
    if (length > 0 && text != nullptr) std::memcpy(copy, text, static_cast<size_t>(length));
    copy[text ? length : 0] = '\0';
    return copy;
}

char *KonvertiereZuKleinbuchstaben(char *text) {
    if (text == nullptr) return nullptr;
    for (char *p = text; *p; ++p) *p = static_cast<char>(parser::Lower(static_cast<unsigned char>(*p)));
    return text;
}

char *KonvertiereZuGrossbuchstaben(char *text) {
    if (text == nullptr) return nullptr;
    for (char *p = text; *p; ++p) *p = static_cast<char>(parser::Upper(static_cast<unsigned char>(*p)));
    return text;
}

int memicmp(const void *a, const void *b, size_t n) {
    const auto *x = static_cast<const unsigned char *>(a);
    const auto *y = static_cast<const unsigned char *>(b);
    for (size_t i = 0; i < n; ++i) {
        const int d = parser::Lower(x[i]) - parser::Lower(y[i]);
        if (d != 0) return d;
    }
    return 0;
}

int strnicmp(const char *a, const char *b, size_t n) {
    for (size_t i = 0; i < n; ++i) {
        const auto x = static_cast<unsigned char>(a[i]);
        const auto y = static_cast<unsigned char>(b[i]);
        const int d = parser::Lower(x) - parser::Lower(y);
        if (d != 0 || x == '\0') return d;
    }
    return 0;
}

int stricmp(const char *a, const char *b) { return strnicmp(a, b, static_cast<size_t>(-1)); }

}  // extern "C"
