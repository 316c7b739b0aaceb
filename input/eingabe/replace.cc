// Replacing and finding inside texts: StringReplace, ChangeSubText,
// GetIndexedValue and the marker pairing of PairIt.
#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "companion/libparser.h"
#include "core/text.h"
#include "kx_input.h"

namespace kx::input {
namespace {

// A closing marker written right after this word belongs to a link target
// ("javascript:...") and does not close anything.
constexpr std::string_view kJavascript = "javascript";

bool InSet(char ch, const char *set, int setLength) {
    return std::memchr(set, ch, static_cast<size_t>(setLength)) != nullptr;
}

bool AnyInSet(const char *text, const char *set, int setLength) {
    for (const char *p = text; *p; ++p)
        if (InSet(*p, set, setLength)) return true;
    return false;
}

// The next closing marker at or after from that is not preceded by "javascript".
const char *NextClose(const char *from, const char *close) {
    for (const char *hit = std::strstr(from, close); hit != nullptr; hit = std::strstr(hit + 1, close)) {
        const bool afterWord = static_cast<size_t>(hit - from) >= kJavascript.size() &&
                               strnicmp(hit - kJavascript.size(), kJavascript.data(), kJavascript.size()) == 0;
        if (!afterWord) return hit;
    }
    return nullptr;
}

// The element at position key of a copy of text split at separator.
char *ElementAt(const char *text, std::string_view key, const char *separator) {
    int position = 0;
    const auto [end, error] = std::from_chars(key.data(), key.data() + key.size(), position);
    if (error != std::errc() || end != key.data() + key.size()) return nullptr;  // too large
    char *copy = kx::core::HeapCopy(text);
    if (copy == nullptr) return nullptr;
    char *result = nullptr;
    if (position < ErmittleTextElemente(copy, separator, nullptr, nullptr)) {
        char *element = copy;
        for (int i = 0; i < position; ++i) element += std::strlen(element) + std::strlen(separator);
        result = kx::core::HeapCopy(element);
    }
    std::free(copy);
    return result;
}

// What follows the first occurrence of key, after blanks and tabs, up to the line end.
char *ValueAfter(const char *text, const char *key) {
    const char *hit = std::strstr(text, key);
    if (hit == nullptr) return nullptr;
    const char *value = hit + std::strlen(key);
    int position = 0;
    UeberleseZeichen(value, &position, " \t", 2);
    const int start = position;
    PositioniereAufZeichen(value, &position, "\n\r", 3);
    return kx::core::HeapCopy({value + start, static_cast<size_t>(position - start)});
}

}  // namespace
}  // namespace kx::input

extern "C" {

char *StringNReplace(const char *text, int oldLength, const char *old, int replacementLength,
                     const char *replacement) {
    if (text == nullptr) return nullptr;
    if (old == nullptr || old[0] == '\0' || oldLength <= 0) return kx::core::HeapCopy(text);
    const std::string_view whole(text), needle(old);
    const std::string_view inserted(replacement ? replacement : "",
                                    replacement ? strnlen(replacement, static_cast<size_t>(
                                                      replacementLength > 0 ? replacementLength : 0))
                                                : 0);
    std::string result;
    size_t rest = 0;
    for (size_t hit; (hit = whole.find(needle, rest)) != std::string_view::npos;) {
        result.append(whole.substr(rest, hit - rest)).append(inserted);
        // Never step past the end, whatever length the caller gave.
        rest = std::min(hit + static_cast<size_t>(oldLength), whole.size());
    }
    result.append(whole.substr(rest));
    return kx::core::HeapCopy(result);
}

char *StringReplace(const char *text, const char *old, const char *replacement) {
    return StringNReplace(text, old ? static_cast<int>(std::strlen(old)) : 0, old,
                          replacement ? static_cast<int>(std::strlen(replacement)) : 0, replacement);
}

char *ChangeSubText(const char *text, const char *set, int setLength, const char *replacement,
                    int *length) {
    if (text == nullptr || set == nullptr || setLength <= 0) return const_cast<char *>(text);
    if (!kx::input::AnyInSet(text, set, setLength)) return const_cast<char *>(text);
    const std::string_view inserted = replacement ? replacement : "";
    std::string out;
    for (const char *p = text; *p; ++p)
        kx::input::InSet(*p, set, setLength) ? out.append(inserted) : out.append(1, *p);
    if (length != nullptr) *length = static_cast<int>(out.size());
    return kx::core::HeapCopy(out);
}

char *GetIndexedValue(const char *text, const char *key, const char *separator) {
    if (text == nullptr || key == nullptr) return nullptr;
    const std::string_view digits(key);
    if (!digits.empty() && Wertuebereinstimmung(key, "[0-9]+") == static_cast<int>(digits.size()))
        return (separator && separator[0]) ? kx::input::ElementAt(text, digits, separator) : nullptr;
    return kx::input::ValueAfter(text, key);
}

const char *PairIt(const char *text, const char *open, const char *close) {
    if (text == nullptr || open == nullptr || close == nullptr || !open[0] || !close[0]) return text;
    const char *opening = std::strstr(text, open);
    if (opening == nullptr) return text;
    const char *closing = kx::input::NextClose(text + 1, close);
    while (closing != nullptr) {
        opening = std::strstr(opening + 1, open);
        if (opening == nullptr || opening > closing) return closing;
        closing = kx::input::NextClose(closing + 1, close);
    }
    return text;
}

}  // extern "C"
