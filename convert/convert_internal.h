// Helpers the conversion handlers share: reading numbers, evaluating and
// decoding argument texts, splitting lists and handing results out.
#ifndef KX_CONVERT_INTERNAL_H
#define KX_CONVERT_INTERNAL_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kx::convert {

// The text a conversion yields when it has no sound result.
inline constexpr std::string_view kNotAvailable = "n.a.";
// Longest result of "_format," and "_substring,".
inline constexpr std::size_t kShortResultLimit = 127;
// Longest result of "_strchange," and "_dividelist,".
inline constexpr std::size_t kLongResultLimit = 1023;

// The value as text: a NULL value reads as the empty text.
std::string_view ValueText(const char *value);

// Reads a 32-bit number the way atoi does on the console's 32-bit platform:
// leading blanks, a sign and digits; anything else ends it; "" is 0; a
// number beyond the 32-bit range sticks at its limit.
int32_t ReadInt(std::string_view text);

// A new malloc'd copy of text (NULL only when memory runs out).
char *CopyOut(std::string_view text);

// "%d" of number, as a new heap text.
char *PrintInt(int32_t number);

// The text after placeholders are resolved (MatchIt with "{"), with the
// characters of encode percent-encoded (NULL: none).
std::string Evaluate(std::string_view text, int cycleIndex, const char *encode = nullptr);

// The text with its URL escapes decoded (ServerDecoding).
std::string Decode(std::string_view text);

// The pieces of text between occurrences of the one-character separator.
// An empty text gives one empty piece.
std::vector<std::string_view> Split(std::string_view text, char separator);

// Text before and after the first separator; has_rest tells whether it was there.
struct Cut {
    std::string_view head;
    std::string_view rest;
    bool has_rest;
};
Cut CutAt(std::string_view text, char separator);

}  // namespace kx::convert

#endif
