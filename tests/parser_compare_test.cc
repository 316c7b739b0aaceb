// The text-scanning companion's comparisons: every function of every kind.
#include <gtest/gtest.h>

#include <string>

#include "companion/libparser.h"

namespace {

using Compare = int (*)(const char *, const char *);

// The six functions of one kind, in the order == != <= >= < >.
struct Kind {
    const char *name;
    Compare functions[6];
};

const Kind kText{"text", {TextCompareEqual, TextCompareNotEqual, TextCompareLowerEqual, TextCompareGreaterEqual,
                          TextCompareLower, TextCompareGreater}};
const Kind kTextI{"text i", {TextCompareEquali, TextCompareNotEquali, TextCompareLowerEquali,
                             TextCompareGreaterEquali, TextCompareLoweri, TextCompareGreateri}};
const Kind kTextN{"text N", {TextCompareEqualN, TextCompareNotEqualN, TextCompareLowerEqualN,
                             TextCompareGreaterEqualN, TextCompareLowerN, TextCompareGreaterN}};
const Kind kTextNi{"text Ni", {TextCompareEqualNi, TextCompareNotEqualNi, TextCompareLowerEqualNi,
                               TextCompareGreaterEqualNi, TextCompareLowerNi, TextCompareGreaterNi}};
const Kind kNumeric{"numeric", {NumericCompareEqual, NumericCompareNotEqual, NumericCompareLowerEqual,
                                NumericCompareGreaterEqual, NumericCompareLower, NumericCompareGreater}};

// Results for == != <= >= < >.
constexpr const char *kEqual = "101100";
constexpr const char *kLower = "011010";
constexpr const char *kGreater = "010101";
constexpr const char *kUnordered = "010000";

struct Case {
    const Kind *kind;
    const char *left, *right;
    const char *expected;
};

const Case kCases[] = {
    {&kText, "abc", "abc", kEqual},
    {&kText, "abc", "abd", kLower},
    {&kText, "b", "abc", kGreater},
    {&kText, "ab", "abc", kLower},
    {&kText, "ABC", "abc", kLower},
    {&kText, "\xE4", "z", kGreater},  // bytes count as unsigned
    {&kText, nullptr, "", kEqual},
    {&kText, "", "a", kLower},
    {&kText, "10", "9", kLower},  // texts, not numbers
    {&kTextI, "ABC", "abc", kEqual},
    {&kTextI, "abc", "ABD", kLower},
    {&kTextI, "Zeta", "alpha", kGreater},
    {&kTextI, "\xC4", "\xE4", kLower},  // only ASCII letters are folded
    {&kTextI, nullptr, "x", kLower},
    {&kTextN, "abcdef", "abc", kEqual},
    {&kTextN, "abx", "abc", kGreater},
    {&kTextN, "ab", "abc", kLower},
    {&kTextN, "anything", "", kEqual},
    {&kTextN, nullptr, "", kEqual},
    {&kTextN, "ABCdef", "abc", kLower},
    {&kTextNi, "ABCdef", "abc", kEqual},
    {&kTextNi, "ABD", "abc", kGreater},
    {&kTextNi, "a", "AB", kLower},
    {&kTextNi, "xyz", "", kEqual},
    {&kNumeric, "10", "9", kGreater},
    {&kNumeric, "  42\t", "42.0", kEqual},
    {&kNumeric, "-1.5", "1e0", kLower},
    {&kNumeric, "+7", "7", kEqual},
    {&kNumeric, ".5", "0.5", kEqual},
    {&kNumeric, "9007199254740993", "9007199254740992", kGreater},  // integers stay exact
    {&kNumeric, "abc", "abc", kUnordered},
    {&kNumeric, "", "0", kUnordered},
    {&kNumeric, "12abc", "12", kUnordered},
    {&kNumeric, nullptr, "0", kUnordered},
    {&kNumeric, "1e400", "1", kUnordered},
    {&kNumeric, "0x10", "16", kUnordered},
    {&kNumeric, "inf", "1", kUnordered},
};

TEST(ParserCompare, EveryFunctionOfEveryKind) {
    for (const Case &c : kCases) {
        for (int op = 0; op < 6; ++op) {
            const int expected = c.expected[op] - '0';
            EXPECT_EQ(c.kind->functions[op](c.left, c.right), expected)
                << c.kind->name << " op " << op << ": '" << (c.left ? c.left : "<null>") << "' vs '" << c.right
                << "'";
        }
    }
}

}  // namespace
