// Operators, comparison tables and CompareFunction.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "kx_template.h"
#include "support/page_engine.h"

namespace {

using kx::test::InputList;

int Op(const char *op) { return DetermineCompareIndex(op, static_cast<int>(std::strlen(op))); }

// CompareFunction on the list l with the usual arguments of a condition.
int Compare(InputList &l, const char *type, const char *op, const char *right, int cycle = -1, int valueIndex = -1,
            int element = 0) {
    return CompareFunction(type, Op(op), nullptr, right, cycle, 0, valueIndex, element, &l.list(), &l.count());
}

TEST(Compare, OperatorIndex) {
    struct Case { const char *text; int length, index; };
    const Case cases[] = {
        {"==x", 2, 0}, {"!=", 2, 1}, {"<=", 2, 2}, {">=", 2, 3}, {"<x", 1, 4}, {">", 1, 5}, {"<=", 1, 4},
        {"=>", 2, -1}, {"=", 1, -1}, {"!", 1, -1}, {"==", 3, -1}, {"", 0, -1}, {"<", 2, -1}, {nullptr, 2, -1},
    };
    for (const Case &c : cases) EXPECT_EQ(DetermineCompareIndex(c.text, c.length), c.index) << c.text << "/" << c.length;
    ASSERT_EQ(CompareTabLength, 6);
    for (int op = 0; op < CompareTabLength; ++op)
        EXPECT_EQ(DetermineCompareIndex(CompareTab[op].Operator, CompareTab[op].Laenge), op) << CompareTab[op].Operator;
}

// Each table answers the six operators (== != <= >= < >) for its kind; a pair
// that tells the kind from its neighbours shows which kind it is.
TEST(Compare, TablesFollowTheOperatorOrder) {
    struct Case { const VergleichsFunktion *table; const char *left, *right, *results; };
    const Case cases[] = {
        {TextCompareFunction, "B", "a", "011010"},     {TextCompareFunctioni, "B", "a", "010101"},
        {TextCompareFunctionN, "abc", "ab", "101100"}, {TextCompareFunctionNi, "ABc", "ab", "101100"},
        {NumericCompareFunction, "10", "9", "010101"}, {SubstringCompareFunction, "ab", "a", "101100"},
        {SubstringCompareFunction, "ab", "x", "010011"}, {SubstringCompareFunction, nullptr, "x", "010011"},
        {SubstringCompareFunction, "x", nullptr, "010011"},
    };
    for (const Case &c : cases)
        for (int op = 0; op < CompareTabLength; ++op)
            EXPECT_EQ(c.table[op](c.left, c.right), c.results[op] - '0')
                << (c.left ? c.left : "<null>") << " " << CompareTab[op].Operator << " " << (c.right ? c.right : "<null>");
}

struct ValueCase {
    const char *type, *op, *left, *right;
    int expected;
};

const ValueCase kValueCases[] = {
    {"_string", "==", "abc", "x|abc", 1}, {"_string", "==", "abc", "x|y", 0}, {"_string", "!=", "abc", "abc", 0},
    {"_string", "!=", "abc", "abc|x", 1}, {"_string", "<=", "b", "a|b", 1}, {"_string", ">=", "b", "c", 0},
    {"_string", "<", "a", "b", 1}, {"_string", ">", "b", "a", 1}, {"_string", "==", "B", "b", 0},
    {"_string", "==", "a b", "a%20b", 1}, {"_string", "==", "", "", 1},
    {"_string", "==", "a", "a%7Cb", 1},  // decoded, then split
    {"_stringi", "==", "B", "b", 1}, {"_stringi", "<", "a", "B", 1}, {"_stringi", "!=", "ABC", "x|abc", 1},
    {"_stringi", ">", "b", "A", 1}, {"_stringn", "==", "abcdef", "xyz|abc", 1}, {"_stringn", "<", "ab", "abc", 1},
    {"_stringn", "==", "Abc", "abc", 0}, {"_stringni", "==", "ABCdef", "abc", 1}, {"_stringni", ">=", "b", "A", 1},
    {"_numeric", ">", "10", "9", 1}, {"_numeric", "<", "10", "9", 0}, {"_numeric", "<=", "5", "5", 1},
    {"_numeric", ">=", "5", "6|4", 1}, {"_numeric", "==", "abc", "abc", 0}, {"_numeric", "!=", "abc", "1", 1},
    {"_NUMERIC", "==", "3", "3.0", 1}, {"_strstr", "==", "xabx", "ab|cd", 1}, {"_strstr", "==", "xcdx", "ab|cd", 1},
    {"_strstr", "==", "xx", "ab|cd", 0}, {"_strstr", "<", "xabx", "ab|cd", 1}, {"_strstr", "<", "xabcdx", "ab|cd", 0},
    {"_strstr", ">", "xabcdx", "ab|zz", 1}, {"_strstr", "<=", "xabx", "ab", 1}, {"_strstr", ">=", "xx", "ab", 0},
    {"_strstr", "!=", "xabx", "ab", 0}, {"_bogus", "==", "a", "a", 0}, {nullptr, "==", "a", "a", 0},
};

TEST(Compare, EveryKindWithEveryOperator) {
    for (const ValueCase &c : kValueCases) {
        InputList l;
        l.Add("v");
        SetEingabeWert(l.count(), l.list(), "v", c.left);
        for (int cycle : {-1, 0})
            EXPECT_EQ(Compare(l, c.type, c.op, c.right, cycle), c.expected)
                << (c.type ? c.type : "<null>") << " '" << c.left << "' " << c.op << " '" << c.right << "' cycle " << cycle;
    }
}

TEST(Compare, FileTypeAndBadArgumentsNeverHold) {
    InputList l;
    l.Add("v");
    SetEingabeWert(l.count(), l.list(), "v", "a");
    auto file = [&](const char *type, int op, const char *left, const char *right) {
        return CompareFunction(type, op, left, right, -1, -1, -1, -1, &l.list(), &l.count());
    };
    EXPECT_EQ(file("_file", Op("=="), "1", "1"), 1) << "_file compares the given left text";
    EXPECT_EQ(file("_file", Op("=="), "0", "1"), 0);
    EXPECT_EQ(file("_file", Op("!="), "0", "1|0"), 1) << "only the first alternative counts";
    EXPECT_EQ(file("_File", Op("=="), nullptr, "1"), 0);
    EXPECT_EQ(file("_file", -1, "1", "1"), 0);
    for (int op : {-1, 6, 1000, -7})
        EXPECT_EQ(CompareFunction("_string", op, "1", "a", -1, 0, -1, 0, &l.list(), &l.count()), 0) << op;
    for (int index : {-1, 1, 99})
        EXPECT_EQ(CompareFunction("_string", 0, nullptr, "a", -1, index, -1, 0, &l.list(), &l.count()), 0) << index;
    EXPECT_EQ(CompareFunction("_string", 0, nullptr, "a", -1, 0, -1, 0, nullptr, &l.count()), 0);
    EXPECT_EQ(CompareFunction("_string", 0, nullptr, "a", -1, 0, -1, 0, &l.list(), nullptr), 0);
    EXPECT_EQ(CompareFunction("_stringn", -1, nullptr, "", -1, 0, -1, 0, &l.list(), &l.count()), 0);
}

TEST(Compare, AnyValueOfAListStepsTheEntryAlong) {
    InputList l;
    l.Add("L", 'j');
    l.Add("T", 'j');
    l.SetValues(0, {"a", "b", "c"});
    l.SetValues(1, {"1", "2", "3"});
    EXPECT_EQ(Compare(l, "_string", "==", "b", -1, -1, 1), 1);
    EXPECT_STREQ(l[0].Wert + l[0].WertPosition, "b");
    EXPECT_STREQ(l[1].Wert + l[1].WertPosition, "2") << "the this entry keeps the same position";
    l[0].WertPosition = l[1].WertPosition = 0;
    EXPECT_EQ(Compare(l, "_string", "==", "z", -1, -1, 1), 0);
    EXPECT_STREQ(l[0].Wert + l[0].WertPosition, "c") << "never stepped past the last value";
    EXPECT_STREQ(l[1].Wert + l[1].WertPosition, "3");
    l[0].WertPosition = 2;  // from the current value on: "b", "c"
    EXPECT_EQ(Compare(l, "_string", "==", "a"), 0);
    l[0].WertPosition = 0;
    EXPECT_EQ(Compare(l, "_string", "==", "c"), 1);
    EXPECT_STREQ(l[1].Wert + l[1].WertPosition, "3") << "the this entry is the left entry: no double step";
}

TEST(Compare, ChosenOrCurrentValueOfAList) {
    struct Case { int cycle, valueIndex; const char *right; int expected; };
    const Case cases[] = {{-1, 2, "c", 1}, {-1, 3, "c", 0}, {-1, 1, "c", 0}, {-1, 0, "a|x", 1}, {-1, 99, "c", 0},
                          {1, -1, "b", 1}, {1, -1, "a|c", 0}};  // a cycle index compares the current value only
    for (const Case &c : cases) {
        InputList l;
        l.Add("L", 'j');
        l.SetValues(0, {"a", "b", "c"});
        const int position = c.cycle < 0 ? 0 : 2;
        l[0].WertPosition = position;
        EXPECT_EQ(Compare(l, "_string", "==", c.right, c.cycle, c.valueIndex, c.cycle < 0 ? 5 : 0), c.expected)
            << c.cycle << "/" << c.valueIndex;
        if (c.cycle >= 0) EXPECT_EQ(l[0].WertPosition, position);
        l[0].WertPosition = -1;  // a position off the values reads as no value
        EXPECT_EQ(Compare(l, "_strstr", "!=", "x", 1), 1);
    }
}

TEST(Compare, EntryWithoutValue) {
    struct Case { const char *type, *right; int cycle, expected; };
    const Case cases[] = {
        {"_stringn", "x|", -1, 1}, {"_string", "x|", -1, 0},    {"_stringn", "", -1, 1}, {"_stringn", "x", -1, 0},
        {"_STRINGN", "|x", -1, 1}, {"_stringni", "x|", -1, 0}, {"_numeric", "", -1, 0}, {"_strstr", "x", 0, 0},
        {"_string", "", 0, 1},  // compared as the null text, which counts as empty
    };
    for (const Case &c : cases) {
        InputList l;
        l.Add("e", 'n', "default");
        EXPECT_EQ(Compare(l, c.type, "==", c.right, c.cycle), c.expected) << c.type << " '" << c.right << "' " << c.cycle;
    }
}

class CompareOnAPage : public kx::test::PageEngine {};

TEST_F(CompareOnAPage, RightTextPlaceholdersAreEvaluatedAndTheTextKept) {
    Set("v", "abc");
    Set("other", "abc");
    auto compare = [&](const char *right) {
        return CompareFunction("_string", Op("=="), nullptr, right, -1, 2, -1, 2, &list_.list(), &list_.count());
    };
    EXPECT_EQ(compare("{other}"), 1);
    EXPECT_EQ(compare("x|{other}"), 1);
    EXPECT_EQ(compare("{other}x"), 0);
    char right[] = "a|abc%20c|abc";
    EXPECT_EQ(compare(right), 1);
    EXPECT_STREQ(right, "a|abc%20c|abc");
}

}  // namespace
