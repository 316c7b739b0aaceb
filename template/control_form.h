// The parsed form of an inline control {=[_type.]condition?then:else}: what
// its text says once its braces are paired, its type read, its condition and
// branches split and each branch's conversion chain found. Only the entry
// values differ from row to row, so a control of a stored cycle line is
// parsed at its first row and run from its form at every later one.
#ifndef KX_TEMPLATE_CONTROL_FORM_H
#define KX_TEMPLATE_CONTROL_FORM_H

#include <cstddef>
#include <string>
#include <vector>

#include "convert/chain.h"
#include "kx_input.h"
#include "template/compare.h"

namespace kx::tmpl {

// A branch text and where its parts begin; -1 for a part it lacks.
struct BranchForm {
    // NUL-ended. ConvertIt ends an argument at its "." for a while and puts
    // the "." back, so the text is the same after every run.
    std::string text;
    bool read = false;              // the parts below are found
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
    std::string key; // the control text up to its close, kept beside a stored line
    size_t offset = 0; // where it begins in that line
    int consumed = 0;  // the characters the control takes

    bool file = false;     // "_file": the left operand is a path
    std::string left;      // braced, "_this..." or a path
    Comparison comparison; // the type's and operator's
    std::string right;     // NUL-ended for the comparison
    BranchForm then;
    BranchForm otherwise;
};

// A new form becomes the control at text. skip: the start marker's length and the "=";
// keyed: the form keeps its text as its key.
void ParseControl(ControlForm &form, const char *text, int skip, const char *endMarker, bool keyed);

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

}  // namespace kx::tmpl

#endif
