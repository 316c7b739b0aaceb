#include "template/seams.h"

#include "kx_convert.h"
#include "kx_template.h"

namespace kx::tmpl {

// An operator outside the table (a single "=" or "!") has the index -1,
// which CompareFunction answers with false.
bool CompareStep(const Comparison &c) {
    const int op = DetermineCompareIndex(c.op, c.opLength);
    return CompareFunction(c.type, op, c.leftText, c.rightText, c.cycleIndex, c.leftIndex,
                           c.leftValueIndex, c.elementIndex, c.pList, c.pCount) != 0;
}

ConversionChain FindConversion(char *branch) {
    char *start = nullptr;
    char *name = DetermineConversion(branch, &start);
    return {name, start};
}

char *ApplyConversion(char *branch, char *value, int cycleIndex) {
    return ConvertIt(branch, KX_CONVERT_UNBOUNDED, value, 1, cycleIndex);
}

void AssignValues(char *text, int *pCount, EingabeElement **pList, const char *divider) {
    WertzuweisungEingabe(1, text, pCount, pList, divider);
}

}  // namespace kx::tmpl
