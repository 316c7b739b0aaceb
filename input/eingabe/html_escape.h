// Texts made safe to stand in HTML, in element content and in quoted
// attribute values alike.
#ifndef KX_INPUT_EINGABE_HTML_ESCAPE_H
#define KX_INPUT_EINGABE_HTML_ESCAPE_H

#include <string>
#include <string_view>

namespace kx::input {

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

}  // namespace kx::input

#endif
