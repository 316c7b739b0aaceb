// The parsed form of an inline control {=[_type.]condition?then:else}: what
// its text says once its braces are paired, its type read, its condition and
// branches split and each branch's conversion chain found. Only the entry
// values differ from row to row, so a control of a stored cycle line is
// parsed at its first row and run from its form at every later one.
#ifndef KX_TEMPLATE_CONTROL_FORM_H
#define KX_TEMPLATE_CONTROL_FORM_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "convert/chain.h"
#include "kx_input.h"
#include "template/compare.h"

namespace kx::tmpl {

// A piece of a form's texts.
struct TextSpan {
    size_t at = 0;
    size_t length = 0;
};

// A branch and where its pieces begin, from the branch's start; -1 for a
// piece it lacks.
struct BranchForm {
    // ConvertIt ends an argument at its "." for a while and puts the "."
    // back, so the text is the same after every run.
    TextSpan text;
    bool read = false;              // the pieces below are found
    bool nested = false;            // a control of its own ("{=...")
    size_t name = 0;                // the name behind the conversion chain
    std::ptrdiff_t chainStart = -1; // the "_" that starts the chain (or "_this")
    std::ptrdiff_t thisAt = -1;     // "_this" in the name
    convert::Chain chain;           // the conversions ConvertIt applies to the text
};

struct ControlForm {
    // What the text is: no control (its braces do not pair), a control
    // without "?", one with an empty condition, one whose condition the
    // engine cannot read (no operator, or a left operand of the wrong kind),
    // or a condition with an operator.
    enum class Shape { Refused, NoQuestion, EmptyCondition, Unreadable, Condition };
    Shape shape = Shape::Refused;
    // The control text up to its close, then the right operand and the two
    // branches, each of these ended by a NUL: one block for all a row reads.
    std::string texts;
    size_t keyLength = 0; // the key, the start of texts kept beside a stored line; 0: none
    size_t offset = 0;    // where the control begins in that line
    int consumed = 0;     // the characters the control takes

    bool file = false;     // "_file": the left operand is a path
    TextSpan left;         // braced, "_this..." or a path; in the control text
    Comparison comparison; // the type's and operator's
    TextSpan right;
    BranchForm then;
    BranchForm otherwise;

    std::string_view View(const TextSpan &span) const { return {texts.data() + span.at, span.length}; }
    char *At(const TextSpan &span) { return texts.data() + span.at; }
};

// The form kept in kept for the control at text, which begins at offset of
// a stored line with the markers "{" and "}": the one parsed from the same
// text before, else a new one.
ControlForm &KeepControl(std::vector<ControlForm> &kept, size_t offset, const char *text);

// The arguments of CreateValueFromControl besides the text.
struct ControlCall {
    int elementIndex;
    int cycleIndex;
    int *pCount;
    EingabeElement **pList;
    int valueIndex;
    int skip;
    const char *endMarker;
    char *message;
};

// CreateValueFromControl for the engine: with markers "{" and "}", a form
// in kept whose key the text at offset still starts with is run as it
// stands, else the text is parsed and its form kept (kept may be null).
int ControlValue(char *text, const ControlCall &call, std::vector<ControlForm> *kept, size_t offset,
                 char **result);

// The same with the form kept for a control of a stored cycle line: the
// line's text is the text the form was parsed from, as for the line's other
// pieces, so no key is compared.
int ControlValue(char *text, const ControlCall &call, ControlForm &form, char **result);

}  // namespace kx::tmpl

#endif
