#include "template/seams.h"

#include <cstring>

#include "kx_convert.h"

extern "C" char *WertzuweisungEingabe(int count, const char *text, int *pCount, EingabeElement **pList,
                                      const char *divider);

namespace kx::tmpl {

// CompareFunction (with DetermineCompareIndex for the operator) of the
// conditions module decides here; while the library has no comparisons,
// every condition is false.
bool CompareStep(const Comparison & /*comparison*/) { return false; }

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
