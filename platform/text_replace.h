// Replacing every occurrence of a text in a text, for the library and the
// companions alike. Header-only: each companion is a shared library of its own.
#ifndef KX_PLATFORM_TEXT_REPLACE_H
#define KX_PLATFORM_TEXT_REPLACE_H

#include <cstddef>
#include <string>
#include <string_view>

namespace kx::platform {

// Every occurrence of from replaced by to, from left to right; the text
// unchanged when from is empty.
inline std::string ReplaceAll(std::string_view text, std::string_view from, std::string_view to) {
    if (from.empty()) return std::string(text);
    std::string out;
    out.reserve(text.size());
    std::size_t start = 0;
    for (std::size_t hit = text.find(from); hit != std::string_view::npos; hit = text.find(from, start)) {
        out.append(text.substr(start, hit - start)).append(to);
        start = hit + from.size();
    }
    out.append(text.substr(start));
    return out;
}

}  // namespace kx::platform

#endif
