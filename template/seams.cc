#include "template/seams.h"

#include <cstring>

extern "C" char *WertzuweisungEingabe(int count, const char *text, int *pCount, EingabeElement **pList,
                                      const char *divider);

namespace kx::tmpl {

// CompareFunction (with DetermineCompareIndex for the operator) of the
// conditions module decides here; while the library has no comparisons,
// every condition is false.
bool CompareStep(const Comparison & /*comparison*/) { return false; }

// DetermineConversion of the conversion table answers here. Without a table
// a branch holds no chain, and only "_this" is marked, so that text before it
// stays in front of the value.
ConversionChain FindConversion(char *branch) {
    char *underscore = std::strchr(branch, '_');
    const bool isThis = underscore != nullptr && std::strncmp(underscore, "_this", 5) == 0;
    return {branch, isThis ? underscore : nullptr};
}

// ConvertIt(branch, unbounded, value, 1, cycleIndex) of the conversion table
// applies the chain here; without a table the value passes unchanged.
char *ApplyConversion(char * /*branch*/, char *value, int /*cycleIndex*/) { return value; }

void AssignValues(char *text, int *pCount, EingabeElement **pList, const char *divider) {
    WertzuweisungEingabe(1, text, pCount, pList, divider);
}

}  // namespace kx::tmpl
