// Replacing every occurrence of a text in a text.
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "companion/libKXUtils.h"

namespace {

std::string ReplaceAll(std::string_view text, std::string_view from, std::string_view to) {
    std::string out;
    out.reserve(text.size());
    size_t start = 0;
    for (size_t hit = text.find(from); hit != std::string_view::npos;
         hit = text.find(from, start)) {
        out.append(text.substr(start, hit - start)).append(to);
        start = hit + from.size();
    }
    out.append(text.substr(start));
    return out;
}

}  // namespace

extern "C" char *KXUtilsStringReplace(const char *text, const char *from, const char *to) {
    if (text == nullptr || from == nullptr || *from == '\0') return nullptr;
    const std::string out = ReplaceAll(text, from, to != nullptr ? to : "");
    char *copy = static_cast<char *>(std::malloc(out.size() + 1));
    if (copy != nullptr) std::memcpy(copy, out.c_str(), out.size() + 1);
    return copy;
}
