// Texts inside the library: the owning heap text that ends as a malloc'd
// result for a caller, the one heap copy, split, cut and replace, and the
// URL-decoded form of a text.
#ifndef KX_CORE_TEXT_H
#define KX_CORE_TEXT_H

#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "platform/text_replace.h"

namespace kx::core {

// A malloc'd copy of text with its terminating NUL; nullptr when memory runs out.
char *HeapCopy(std::string_view text);

// Owns one malloc'd text (or none) and frees it, unless Release() hands it on,
// typically to a caller who frees it with free().
class HeapText {
public:
    HeapText() = default;
    explicit HeapText(char *owned) : text_(owned) {}
    ~HeapText() { std::free(text_); }
    HeapText(HeapText &&other) noexcept : text_(other.Release()) {}
    HeapText &operator=(HeapText &&other) noexcept {
        Reset(other.Release());
        return *this;
    }
    HeapText(const HeapText &) = delete;
    HeapText &operator=(const HeapText &) = delete;

    char *Get() const { return text_; }
    explicit operator bool() const { return text_ != nullptr; }
    // The text; the empty text when there is none.
    std::string_view View() const { return text_ != nullptr ? std::string_view(text_) : std::string_view(); }
    // Gives the text away; this owner is empty after.
    char *Release() {
        char *text = text_;
        text_ = nullptr;
        return text;
    }
    void Reset(char *owned = nullptr) {
        if (owned == text_) return;
        std::free(text_);
        text_ = owned;
    }

private:
    char *text_ = nullptr;
};

// c with an ASCII capital letter made small, as stricmp and strnicmp compare;
// every other byte stays.
inline char AsciiLower(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; }

// a equals b with ASCII letters compared regardless of case (stricmp's 0),
// without a call into libparser for a few short words.
inline bool EqualsIgnoringCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (AsciiLower(a[i]) != AsciiLower(b[i])) return false;
    return true;
}

// The NUL-terminated text starts with word, ASCII letters compared
// regardless of case (strnicmp's 0 over the word's length).
inline bool StartsWithIgnoringCase(const char *text, std::string_view word) {
    for (size_t i = 0; i < word.size(); ++i)
        if (text[i] == '\0' || AsciiLower(text[i]) != AsciiLower(word[i])) return false;
    return true;
}

// The pieces of text between occurrences of separator; a text without one
// (the empty text too) is one piece. An empty separator splits nothing.
std::vector<std::string_view> Split(std::string_view text, std::string_view separator);

// Text before and after the first separator; hasRest tells whether it was there.
struct Cut {
    std::string_view head;
    std::string_view rest;
    bool hasRest;
};
Cut CutAt(std::string_view text, char separator);

// Every occurrence of from (not empty) replaced by to, from left to right.
using platform::ReplaceAll;

// The text with its URL escapes decoded (ServerDecoding); the empty text when
// memory runs out.
std::string Decoded(std::string_view encoded);
// The same for a C text; a null text gives "".
std::string Decoded(const char *encoded);

}  // namespace kx::core

#endif
