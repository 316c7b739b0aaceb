// The points where the placeholder engine hands over to the comparisons, the
// conversions and the value assignment. Each is one small function, so that
// the module behind it plugs in at exactly one place.
#ifndef KX_TEMPLATE_SEAMS_H
#define KX_TEMPLATE_SEAMS_H

#include "kx_input.h"

namespace kx::tmpl {

// One condition of an inline control: left operand op right text.
struct Comparison {
    const char *type;      // "_string", "_numeric", "_file", ...
    const char *op;        // the operator's text in the control
    int opLength;          // 1 or 2
    const char *leftText;  // "_file" only: "1" or "0"
    const char *rightText; // the text after the operator
    int cycleIndex;
    int leftIndex;         // entry of the left operand, -1 for "_file"
    int leftValueIndex;
    int elementIndex;      // the entry the control belongs to
    EingabeElement **pList;
    int *pCount;
};

// Comparison step: decides a control's condition.
bool CompareStep(const Comparison &comparison);

// Where the conversion chain of a branch text starts and the name behind it.
struct ConversionChain {
    char *name;  // the name after the chain, or the branch text itself
    char *start; // the "_" that starts the chain (or "_this"), or NULL
};

// Conversion step, first half: finds the chain in a branch text.
ConversionChain FindConversion(char *branch);

// Conversion step, second half: applies the chain of branch to value (a heap
// text, given away); returns value itself, a new heap text, or NULL.
char *ApplyConversion(char *branch, char *value, int cycleIndex);

// Assignment step: stores the assignment text "name=v1~v2" into the list.
void AssignValues(char *text, int *pCount, EingabeElement **pList, const char *divider);

}  // namespace kx::tmpl

#endif
