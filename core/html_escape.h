// Texts made safe to stand in HTML, in element content and in quoted
// attribute values alike.
#ifndef KX_CORE_HTML_ESCAPE_H
#define KX_CORE_HTML_ESCAPE_H

#include <string>
#include <string_view>

namespace kx::core {

// text with & < > " ' written as character references.
inline std::string HtmlEscaped(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (const char c : text) {
        switch (c) {
            case '&': out += "&amp;"; break;
            case '<': out += "&lt;"; break;
            case '>': out += "&gt;"; break;
            case '"': out += "&quot;"; break;
            case '\'': out += "&#39;"; break;
            default: out += c;
        }
    }
    return out;
}

}  // namespace kx::core

#endif
