// The parsed form of a stored cycle line, made at its first replay and
// reused by every later row: where its last "DEFINE" and IF comment begin;
// for a line of text and plain placeholders only (some of them followed by
// a control), its pieces; whether it is the line of the body's closing
// /CYCLE; and the forms of its inline controls.
#ifndef KX_TEMPLATE_LINE_FORM_H
#define KX_TEMPLATE_LINE_FORM_H

#include <cstddef>
#include <vector>

#include "kx_input.h"
#include "template/control_form.h"

namespace kx::tmpl {

// A plain placeholder of a stored line: '{name}' whose name is letters,
// digits and "_", and that starts no directive, control or image name. The
// entry it names is kept with the list it was found in.
struct PlainSlot {
    size_t prefix = 0;     // the text before it starts here
    size_t start = 0;      // its start marker
    size_t nameLength = 0; // the name follows the start marker
    const EingabeElement *list = nullptr;
    int count = -1;
    const char *name = nullptr; // the entry's Name when found
    int index = -1;
    size_t controlLength = 0;   // a control follows the placeholder: its length
    size_t control = 0;         // and its form in LineForm::controls
};

struct LineForm {
    // Offsets from the line's start, -1 for none.
    bool lastsKnown = false;
    std::ptrdiff_t lastDefine = -1;
    std::ptrdiff_t lastIfComment = -1;

    // Plain: text and plain placeholders; Controls: some of those
    // placeholders are followed by a control.
    enum class Shape { Unparsed, Plain, Controls, CycleEnd, Other };
    Shape shape = Shape::Unparsed;
    std::vector<PlainSlot> slots;
    size_t tail = 0;       // the text after the last placeholder
    size_t tailLength = 0; // its length, up to the line's end

    std::vector<ControlForm> controls; // the line's inline controls, parsed at the first row
};

struct Invocation;

// With the markers "{" and "}": the end that PairIt pairs with the "{" at
// start, when a name of ASCII letters, digits and "_" lies between them;
// NULL for any other placeholder.
const char *PlainEnd(const char *start);

// With the markers "{" and "}": the length of the name when text is one
// plain placeholder and nothing else, with a name that starts no directive
// (nor "CycleCount"); 0 for any other text.
size_t SinglePlainName(const char *text);

// The markers are "{" and "}".
bool BraceMarkers(const Invocation &inv);

// The slot's entry in the list as it is now, for the stored line text: the
// one kept while the list, its count and the entry's name are unchanged, else
// looked up anew. False when no entry has the name.
bool ResolveSlot(Invocation &inv, const char *text, PlainSlot &slot);

}  // namespace kx::tmpl

#endif
