// One placeholder of a logical line, as the processor sees it.
#ifndef KX_TEMPLATE_PLACEHOLDER_H
#define KX_TEMPLATE_PLACEHOLDER_H

#include <cstddef>
#include <cstring>
#include <string_view>

#include "template/invocation.h"

namespace kx::tmpl {

struct Placeholder {
    char *P = nullptr;        // the start marker
    char *E = nullptr;        // its end: the first end marker after it, or the matching one
    char *M = nullptr;        // the matching end marker (nested pairs counted), or NULL
    bool doubled = false;     // "{{name}}": the value is URL-encoded
    const char *name = nullptr;
    size_t nameLength = 0;
    int valueIndex = -1;      // the selection form's value index

    std::string_view Name() const { return {name, nameLength}; }
};

// strncmp over the word's length, inline: the checks of a placeholder ask
// this a dozen times with words of a few letters.
inline bool StartsWith(const char *text, const char *word) {
    for (; *word != '\0'; ++text, ++word)
        if (*text != *word) return false;
    return true;
}

// The name equals word over the name's length (a leading part of the word
// matches too); an empty name matches nothing.
inline bool NameIs(const Placeholder &ph, const char *word) {
    return ph.nameLength > 0 && std::strncmp(ph.name, word, ph.nameLength) == 0;
}

// Where processing goes on after the placeholder.
inline char *After(const Invocation &inv, const Placeholder &ph) {
    char *after = ph.E + inv.endMarker.size();
    return (ph.doubled && *after != '\0') ? after + 1 : after;
}

// The IF directive's condition holds.
bool IfHolds(Invocation &inv, const Placeholder &ph);

// The DEFINE directive; returns where to go on, or NULL when the line ends.
char *Define(Invocation &inv, const Placeholder &ph, char *pos);

// An ordinary placeholder: writes the text before it and its value.
char *Ordinary(Invocation &inv, Placeholder &ph, char *pos);

// The value of a plain placeholder of entry index, with no control, value
// index, doubling or image name, and its cycle bookkeeping (file mode).
void WriteKnown(Invocation &inv, int index);

// The value of a plain placeholder of entry index followed by the control at
// control (file mode, markers "{" and "}"), as Ordinary writes it: the
// control's result, or the entry's value when it yields none, with its cycle
// bookkeeping. form: the control's form, kept beside its stored line.
// Returns the characters the control took.
size_t WriteControlled(Invocation &inv, int index, char *control, ControlForm &form);

// The text a plain placeholder of entry index writes in file mode (before
// any escaping): its current value, or "<nil>".
const char *KnownValue(const Invocation &inv, int index);

// The text a plain placeholder of entry writes in string mode (never NULL):
// with a fixed cycle index, the list's value of that number; else the text a
// replay knows (replayed, when not NULL) or the entry's current text.
const char *StringModeText(const EingabeElement &entry, int fixedCycleIndex, const char *replayed);

// A value written into the page, escaped for HTML when the definition asks
// for it; "<nil>" (the pointer KnownValue gives) is never escaped.
void WritePlain(Invocation &inv, const char *value);

// The text after a placeholder makes its value part of an image file name.
bool ImageName(const char *text);

// At the page's own level in file mode, with no IF withholding text and no
// DEFINE or IF comment ahead on the line: the next placeholder from pos, when
// it is plain (as in a parsed cycle line), is written with the text before it
// (its value, or itself when no entry has its name); *next is where the line
// goes on. False when the general way must take it.
bool PlainStep(Invocation &inv, char *pos, char **next);

// A stored line of text and plain placeholders is written whole from its
// parsed form, and a stored /CYCLE line ends the iteration; *next is where
// processing goes on. False when the line or this row needs the general way.
bool ReplayFromForm(Invocation &inv, char **next);

}  // namespace kx::tmpl

#endif
