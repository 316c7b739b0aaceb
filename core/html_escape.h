// Texts made safe to stand in HTML, in element content and in quoted
// attribute values alike.
#ifndef KX_CORE_HTML_ESCAPE_H
#define KX_CORE_HTML_ESCAPE_H

#include <string>
#include <string_view>

namespace kx::core {

// The character reference that c is written as; empty when c stands for
// itself.
inline std::string_view HtmlReference(char c) {
    switch (c) {
        case '&': return "&amp;";
        case '<': return "&lt;";
        case '>': return "&gt;";
        case '"': return "&quot;";
        case '\'': return "&#39;";
        default: return {};
    }
}

// Hands text to write escaped, in pieces: the runs that stand as they are
// and the references between them, none empty. A page writes them straight
// out instead of building an escaped copy first.
template <class Write>
void WriteHtmlEscaped(std::string_view text, Write &&write) {
    size_t run = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        const std::string_view reference = HtmlReference(text[i]);
        if (reference.empty()) continue;
        if (i > run) write(text.substr(run, i - run));
        write(reference);
        run = i + 1;
    }
    if (run < text.size()) write(text.substr(run));
}

// text with & < > " ' written as character references.
inline std::string HtmlEscaped(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    WriteHtmlEscaped(text, [&out](std::string_view piece) { out += piece; });
    return out;
}

}  // namespace kx::core

#endif
