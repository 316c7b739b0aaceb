// Replacing every occurrence of a text in a text.
#include <cstdlib>
#include <cstring>
#include <string>

#include "companion/libKXUtils.h"
#include "platform/text_replace.h"

extern "C" char *KXUtilsStringReplace(const char *text, const char *from, const char *to) {
    if (text == nullptr || from == nullptr || *from == '\0') return nullptr;
    const std::string out = kx::platform::ReplaceAll(text, from, to != nullptr ? to : "");
    char *copy = static_cast<char *>(std::malloc(out.size() + 1));
    if (copy != nullptr) std::memcpy(copy, out.c_str(), out.size() + 1);
    return copy;
}
