// The selection form {Prefix[{Key[e1|e2|...]}]}: one reader of its parts for
// the page engine (a placeholder) and for "_valueindex," (an argument).
#ifndef KX_CORE_SELECTION_FORM_H
#define KX_CORE_SELECTION_FORM_H

#include <string_view>

namespace kx::core {

// The parts of a form, as views into the text that was read.
struct SelectionParts {
    std::string_view prefix;    // Prefix: after the opening marker, before the form's "["
    std::string_view key;       // Key: after the inner start marker, before its "["
    std::string_view elements;  // e1|e2|...: between Key's "[" and its "]"
};

// Where the text comes from; the two differ on malformed text only, and
// pages already depend on each of them.
enum class SelectionSource {
    // A placeholder: Prefix ends at the first "[", the inner start marker may
    // come anywhere after it, and the elements end at the "]" that pairs with
    // Key's "[" (nested brackets balanced) before the text's last "]".
    kPlaceholder,
    // A conversion argument: Prefix ends where "[" and the start marker meet,
    // Key begins right there, and the elements end at the next "]".
    kArgument,
};

enum class SelectionFault {
    kNone,
    kNoClosingBracket,  // the text holds no "]" at all
    kNoKey,             // no inner start marker, or no "[" after it
    kKeyNotClosed,      // Key's "[" has no "]"
};

// Reads the form that text (starting with its opening marker) holds, the
// parts pointing into text. A text without "[" reads as kNoKey.
SelectionFault ReadSelectionForm(std::string_view text, std::string_view startMarker, SelectionSource source,
                                 SelectionParts &parts);

}  // namespace kx::core

#endif
