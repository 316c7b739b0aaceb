// The texts the library writes into pages (and into the message buffers the
// page engine writes out), one row each. The arguments of a format are named
// beside it, in their order.
#ifndef KX_CORE_MESSAGES_H
#define KX_CORE_MESSAGES_H

#include <cstddef>
#include <iterator>

namespace kx::core {

enum class PageMessage {
    NoApplication,         // -
    DefinitionLineLacks,   // definition name, line number, separator, what is missing
    TemplateNotOpened,     // template path
    UnfinishedHead,        // line number; the pending text and UnfinishedTail follow
    UnfinishedTail,        // -
    UnfinishedAlert,       // line number, the pending text from its "{" (20 bytes, quotes escaped)
    NoMatchingCycle,       // -
    FirstBracketMissing,   // -
    SecondBracketMissing,  // -
    KeyUnknown,            // key name
    PrefixUnknown,         // prefix name
};

struct PageMessageRow {
    PageMessage message;
    const char *text;
};

// clang-format off
inline constexpr PageMessageRow kPageMessages[] = {
    {PageMessage::NoApplication, "<! ErmittleEingabe: Anwendung == NULL>\n"},
    {PageMessage::DefinitionLineLacks, "<! ErmittleEingabe: Fehler in '%s' Zeile '%d': Kein '%s' hinter '%s'gefunden>\n"},
    {PageMessage::TemplateNotOpened, "%s konnte nicht geoeffnet werden\n"},
    {PageMessage::UnfinishedHead, "<BR>\n<!Error line %d: No matching '}' for '"},
    {PageMessage::UnfinishedTail, "' ...>\n<BR>\n"},
    {PageMessage::UnfinishedAlert, "\n<script language=JavaScript>\n<!--\nalert(\"KX Pagecraft Syntax Error:\\n\\nError line %d: No matching '}' for '%s' ...>\");\n// -->\n</script>\n"},
    {PageMessage::NoMatchingCycle, "<BR>\n<!Warning: /CYCLE ignored (no matching CYCLE) !>\n<BR>\n"},
    {PageMessage::FirstBracketMissing, "<! first ] missing !>\n"},
    {PageMessage::SecondBracketMissing, "<! second ] missing !>\n"},
    {PageMessage::KeyUnknown, "<! %s unknown !>\n"},
    {PageMessage::PrefixUnknown, "<!%s_unknown>"},
};
// clang-format on

// The rows stand in the order of the enumeration.
constexpr bool RowsInOrder() {
    for (std::size_t i = 0; i < std::size(kPageMessages); ++i)
        if (static_cast<std::size_t>(kPageMessages[i].message) != i) return false;
    return true;
}
static_assert(RowsInOrder());

constexpr const char *MessageText(PageMessage message) {
    return kPageMessages[static_cast<std::size_t>(message)].text;
}

}  // namespace kx::core

#endif
