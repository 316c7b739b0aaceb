// The comparison of an inline control's condition, its type and operator
// resolved once: CompareFunction resolves them at every call, a stored
// control at its first row.
#ifndef KX_TEMPLATE_COMPARE_H
#define KX_TEMPLATE_COMPARE_H

#include <string_view>

#include "kx_input.h"
#include "kx_template.h"

namespace kx::tmpl {

struct Comparison {
    int op = -1;                          // the row of CompareTab; outside it nothing holds
    VergleichsFunktion function = nullptr; // null for an unknown type or operator
    bool file = false;                    // "_file": the left text is given, not an entry
    bool emptyMatches = false;            // "_stringn": no values equal an empty alternative
};

// The comparison CompareFunction makes for type and op.
Comparison ResolveComparison(std::string_view type, int op);

// CompareFunction with its type and operator resolved.
int Compare(const Comparison &comparison, const char *leftText, const char *rightText, int cycleIndex,
            int leftIndex, int leftValueIndex, int elementIndex, EingabeElement **pList, int *pCount);

}  // namespace kx::tmpl

#endif
