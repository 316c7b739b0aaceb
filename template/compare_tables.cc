// The operator table, the six comparison tables and the substring comparisons.
#include <cstring>
#include <iterator>
#include <string>

#include "companion/libparser.h"
#include "kx_template.h"

namespace {

// A row of the operator table; its length is counted here, not by hand.
constexpr CompareOperator Row(const char *op) {
    return {op, static_cast<int>(std::char_traits<char>::length(op))};
}

}  // namespace

extern "C" {

// clang-format off
const CompareOperator CompareTab[] = {
    Row("=="),
    Row("!="),
    Row("<="),
    Row(">="),
    Row("<"),
    Row(">"),
};
// clang-format on
const int CompareTabLength = static_cast<int>(std::size(CompareTab));

// Every table holds one function per row of CompareTab, in the same order.
const VergleichsFunktion TextCompareFunction[] = {
    TextCompareEqual,         // ==
    TextCompareNotEqual,      // !=
    TextCompareLowerEqual,    // <=
    TextCompareGreaterEqual,  // >=
    TextCompareLower,         // <
    TextCompareGreater,       // >
};
const VergleichsFunktion TextCompareFunctioni[] = {
    TextCompareEquali,         // ==
    TextCompareNotEquali,      // !=
    TextCompareLowerEquali,    // <=
    TextCompareGreaterEquali,  // >=
    TextCompareLoweri,         // <
    TextCompareGreateri,       // >
};
const VergleichsFunktion TextCompareFunctionN[] = {
    TextCompareEqualN,         // ==
    TextCompareNotEqualN,      // !=
    TextCompareLowerEqualN,    // <=
    TextCompareGreaterEqualN,  // >=
    TextCompareLowerN,         // <
    TextCompareGreaterN,       // >
};
const VergleichsFunktion TextCompareFunctionNi[] = {
    TextCompareEqualNi,         // ==
    TextCompareNotEqualNi,      // !=
    TextCompareLowerEqualNi,    // <=
    TextCompareGreaterEqualNi,  // >=
    TextCompareLowerNi,         // <
    TextCompareGreaterNi,       // >
};
const VergleichsFunktion NumericCompareFunction[] = {
    NumericCompareEqual,         // ==
    NumericCompareNotEqual,      // !=
    NumericCompareLowerEqual,    // <=
    NumericCompareGreaterEqual,  // >=
    NumericCompareLower,         // <
    NumericCompareGreater,       // >
};
const VergleichsFunktion SubstringCompareFunction[] = {
    SubstringCompareEqual,         // ==
    SubstringCompareNotEqual,      // !=
    SubstringCompareLowerEqual,    // <=
    SubstringCompareGreaterEqual,  // >=
    SubstringCompareLower,         // <
    SubstringCompareGreater,       // >
};

static_assert(std::size(TextCompareFunction) == std::size(CompareTab));
static_assert(std::size(TextCompareFunctioni) == std::size(CompareTab));
static_assert(std::size(TextCompareFunctionN) == std::size(CompareTab));
static_assert(std::size(TextCompareFunctionNi) == std::size(CompareTab));
static_assert(std::size(NumericCompareFunction) == std::size(CompareTab));
static_assert(std::size(SubstringCompareFunction) == std::size(CompareTab));

int SubstringCompareEqual(const char *left, const char *right) {
    return (left != nullptr && right != nullptr && std::strstr(left, right) != nullptr) ? 1 : 0;
}

int SubstringCompareNotEqual(const char *left, const char *right) {
    return (left == nullptr || right == nullptr || std::strstr(left, right) == nullptr) ? 1 : 0;
}

// For "_strstr" the ordering operators mean "contains" or "does not contain".
int SubstringCompareLowerEqual(const char *left, const char *right) { return SubstringCompareEqual(left, right); }
int SubstringCompareGreaterEqual(const char *left, const char *right) { return SubstringCompareEqual(left, right); }
int SubstringCompareLower(const char *left, const char *right) { return SubstringCompareNotEqual(left, right); }
int SubstringCompareGreater(const char *left, const char *right) { return SubstringCompareNotEqual(left, right); }

int DetermineCompareIndex(const char *text, int length) {
    if (text == nullptr) return -1;
    for (int i = 0; i < CompareTabLength; ++i) {
        const CompareOperator &row = CompareTab[i];
        // strncmp stops at the end of text, so a short text is never overread.
        if (row.Laenge == length && std::strncmp(row.Operator, text, static_cast<size_t>(length)) == 0)
            return i;
    }
    return -1;
}

}  // extern "C"
