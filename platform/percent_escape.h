// "%XX" escapes in the companions' text files (trap files, the server-list
// database). Header-only: each companion is a shared library of its own.
#ifndef KX_PLATFORM_PERCENT_ESCAPE_H
#define KX_PLATFORM_PERCENT_ESCAPE_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace kx::platform {

// The value of a hexadecimal digit in either case; -1 for any other character.
inline int HexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
}

// The bytes of text with its "%XX" escapes decoded; nothing when one is broken.
inline std::optional<std::string> Unescape(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            out += text[i];
            continue;
        }
        if (i + 2 >= text.size()) return std::nullopt;
        const int high = HexValue(text[i + 1]), low = HexValue(text[i + 2]);
        if (high < 0 || low < 0) return std::nullopt;
        out += static_cast<char>(high * 16 + low);
        i += 2;
    }
    return out;
}

}  // namespace kx::platform

#endif
