// Operators, comparison tables and CompareFunction.
#include <gtest/gtest.h>

#include <cstring>
#include <initializer_list>
#include <string>

#include "kx_template.h"
#include "support/kx_test.h"

namespace {

using kx::test::InputList;

// Gives an entry the values laid end to end, as a list entry holds them.
void SetValues(EingabeElement &entry, std::initializer_list<const char *> values) {
    std::string block;
    for (const char *v : values) block.append(v).push_back('\0');
    std::free(entry.Wert);
    entry.Wert = static_cast<char *>(std::malloc(block.size()));
    std::memcpy(entry.Wert, block.data(), block.size());
    entry.WertGesetzt = static_cast<int>(values.size());
    entry.WertPosition = 0;
}

int Op(const char *op) { return DetermineCompareIndex(op, static_cast<int>(std::strlen(op))); }

TEST(Compare, OperatorIndex) {
    struct Case { const char *text; int length; int index; };
    const Case cases[] = {
        {"==x", 2, 0}, {"!=", 2, 1}, {"<=", 2, 2}, {">=", 2, 3}, {"<x", 1, 4}, {">", 1, 5},
        {"<=", 1, 4}, {"=>", 2, -1}, {"=", 1, -1}, {"!", 1, -1}, {"==", 3, -1}, {"", 0, -1}, {"<", 2, -1},
    };
    for (const Case &c : cases) EXPECT_EQ(DetermineCompareIndex(c.text, c.length), c.index) << c.text << "/" << c.length;
    EXPECT_EQ(DetermineCompareIndex(nullptr, 2), -1);
    ASSERT_EQ(CompareTabLength, 6);
    EXPECT_STREQ(CompareTab[4].Operator, "<");
    EXPECT_EQ(CompareTab[4].Laenge, 1);
}

TEST(Compare, TablesFollowTheOperatorOrder) {
    // "b" against "a": only != >= > hold; "ab" contains "a": == <= >= hold for "_strstr".
    const VergleichsFunktion *tables[] = {TextCompareFunction, TextCompareFunctioni, TextCompareFunctionN,
                                          TextCompareFunctionNi, NumericCompareFunction};
    const char *left[] = {"b", "B", "b", "B", "2"};
    const char *right[] = {"a", "a", "a", "a", "1"};
    for (int t = 0; t < 5; ++t)
        for (int op = 0; op < CompareTabLength; ++op)
            EXPECT_EQ(tables[t][op](left[t], right[t]), std::string("010101")[op] - '0') << "table " << t << " op " << op;
    for (int op = 0; op < CompareTabLength; ++op) {
        EXPECT_EQ(SubstringCompareFunction[op]("ab", "a"), std::string("101100")[op] - '0') << op;
        EXPECT_EQ(SubstringCompareFunction[op]("ab", "x"), std::string("010011")[op] - '0') << op;
        EXPECT_EQ(SubstringCompareFunction[op](nullptr, "x"), std::string("010011")[op] - '0') << op;
        EXPECT_EQ(SubstringCompareFunction[op]("x", nullptr), std::string("010011")[op] - '0') << op;
    }
}

struct ValueCase {
    const char *type, *op, *left, *right;
    int expected;
};

const ValueCase kValueCases[] = {
    {"_string", "==", "abc", "x|abc", 1},     {"_string", "==", "abc", "x|y", 0},
    {"_string", "!=", "abc", "abc", 0},       {"_string", "!=", "abc", "abc|x", 1},
    {"_string", "<=", "b", "a|b", 1},         {"_string", ">=", "b", "c", 0},
    {"_string", "<", "a", "b", 1},            {"_string", ">", "b", "a", 1},
    {"_string", "==", "B", "b", 0},           {"_string", "==", "a b", "a%20b", 1},
    {"_string", "==", "a", "a%7Cb", 1},  // decoded, then split     {"_string", "==", "", "", 1},
    {"_stringi", "==", "B", "b", 1},          {"_stringi", "<", "a", "B", 1},
    {"_stringi", "!=", "ABC", "x|abc", 1},    {"_stringi", ">", "b", "A", 1},
    {"_stringn", "==", "abcdef", "xyz|abc", 1}, {"_stringn", "<", "ab", "abc", 1},
    {"_stringn", "==", "Abc", "abc", 0},      {"_stringni", "==", "ABCdef", "abc", 1},
    {"_stringni", ">=", "b", "A", 1},         {"_numeric", ">", "10", "9", 1},
    {"_numeric", "<", "10", "9", 0},          {"_numeric", "<=", "5", "5", 1},
    {"_numeric", ">=", "5", "6|4", 1},        {"_numeric", "==", "abc", "abc", 0},
    {"_numeric", "!=", "abc", "1", 1},        {"_NUMERIC", "==", "3", "3.0", 1},
    {"_strstr", "==", "xabx", "ab|cd", 1},    {"_strstr", "==", "xcdx", "ab|cd", 1},
    {"_strstr", "==", "xx", "ab|cd", 0},      {"_strstr", "<", "xabx", "ab|cd", 1},
    {"_strstr", "<", "xabcdx", "ab|cd", 0},   {"_strstr", ">", "xabcdx", "ab|zz", 1},
    {"_strstr", "<=", "xabx", "ab", 1},       {"_strstr", ">=", "xx", "ab", 0},
    {"_strstr", "!=", "xabx", "ab", 0},       {"_bogus", "==", "a", "a", 0},
    {nullptr, "==", "a", "a", 0},
};

TEST(Compare, EveryKindWithEveryOperator) {
    for (const ValueCase &c : kValueCases) {
        InputList l;
        l.Add("v");
        SetEingabeWert(l.count(), l.list(), "v", c.left);
        for (int cycle : {-1, 0}) {
            EXPECT_EQ(CompareFunction(c.type, Op(c.op), nullptr, c.right, cycle, 0, -1, 1, &l.list(), &l.count()),
                      c.expected)
                << (c.type ? c.type : "<null>") << " '" << c.left << "' " << c.op << " '" << c.right << "' cycle "
                << cycle;
        }
    }
}

TEST(Compare, FileTypeComparesTheGivenLeftText) {
    int count = 0;
    EingabeElement *list = nullptr;
    EXPECT_EQ(CompareFunction("_file", Op("=="), "1", "1", -1, -1, -1, -1, &list, &count), 1);
    EXPECT_EQ(CompareFunction("_file", Op("=="), "0", "1", -1, -1, -1, -1, &list, &count), 0);
    EXPECT_EQ(CompareFunction("_file", Op("!="), "0", "1|0", -1, -1, -1, -1, &list, &count), 1)
        << "only the first alternative counts";
    EXPECT_EQ(CompareFunction("_File", Op("=="), nullptr, "1", -1, -1, -1, -1, &list, &count), 0);
}

TEST(Compare, BadOperatorsAndIndexesNeverHold) {
    InputList l;
    l.Add("v");
    SetEingabeWert(l.count(), l.list(), "v", "a");
    for (int op : {-1, 6, 1000, -7})
        EXPECT_EQ(CompareFunction("_string", op, "1", "a", -1, 0, -1, 0, &l.list(), &l.count()), 0) << op;
    EXPECT_EQ(CompareFunction("_file", -1, "1", "1", -1, -1, -1, -1, &l.list(), &l.count()), 0);
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
    SetValues(l[0], {"a", "b", "c"});
    SetValues(l[1], {"1", "2", "3"});
    EXPECT_EQ(CompareFunction("_string", Op("=="), nullptr, "b", -1, 0, -1, 1, &l.list(), &l.count()), 1);
    EXPECT_STREQ(l[0].Wert + l[0].WertPosition, "b");
    EXPECT_STREQ(l[1].Wert + l[1].WertPosition, "2") << "the this entry keeps the same position";

    l[0].WertPosition = l[1].WertPosition = 0;
    EXPECT_EQ(CompareFunction("_string", Op("=="), nullptr, "z", -1, 0, -1, 1, &l.list(), &l.count()), 0);
    EXPECT_STREQ(l[0].Wert + l[0].WertPosition, "c") << "never stepped past the last value";
    EXPECT_STREQ(l[1].Wert + l[1].WertPosition, "3");

    l[0].WertPosition = 2;  // from the current value on: "b", "c"
    EXPECT_EQ(CompareFunction("_string", Op("=="), nullptr, "a", -1, 0, -1, 0, &l.list(), &l.count()), 0);
    l[0].WertPosition = 0;
    EXPECT_EQ(CompareFunction("_string", Op("=="), nullptr, "c", -1, 0, -1, 0, &l.list(), &l.count()), 1);
    EXPECT_STREQ(l[1].Wert + l[1].WertPosition, "3") << "the this entry is the left entry: no double step";
}

TEST(Compare, ChosenValueOfAList) {
    struct Case { int valueIndex; const char *right; int expected; };
    const Case cases[] = {{2, "c", 1}, {3, "c", 0}, {1, "c", 0}, {0, "a|x", 1}, {99, "c", 0}};
    for (const Case &c : cases) {
        InputList l;
        l.Add("L", 'j');
        SetValues(l[0], {"a", "b", "c"});
        EXPECT_EQ(CompareFunction("_string", Op("=="), nullptr, c.right, -1, 0, c.valueIndex, 5, &l.list(), &l.count()),
                  c.expected)
            << c.valueIndex;
    }
}

TEST(Compare, CycleIndexComparesTheCurrentValueOnly) {
    InputList l;
    l.Add("L", 'j');
    SetValues(l[0], {"a", "b", "c"});
    l[0].WertPosition = 2;
    EXPECT_EQ(CompareFunction("_string", Op("=="), nullptr, "b", 1, 0, -1, 0, &l.list(), &l.count()), 1);
    EXPECT_EQ(CompareFunction("_string", Op("=="), nullptr, "a|c", 1, 0, -1, 0, &l.list(), &l.count()), 0);
    EXPECT_EQ(l[0].WertPosition, 2);
    l[0].WertPosition = -1;  // a position off the values reads as no value
    EXPECT_EQ(CompareFunction("_strstr", Op("!="), nullptr, "x", 1, 0, -1, 0, &l.list(), &l.count()), 1);
}

TEST(Compare, EntryWithoutValue) {
    struct Case { const char *type, *right; int cycle; int expected; };
    const Case cases[] = {
        {"_stringn", "x|", -1, 1}, {"_string", "x|", -1, 0}, {"_stringn", "", -1, 1}, {"_stringn", "x", -1, 0},
        {"_STRINGN", "|x", -1, 1}, {"_stringni", "x|", -1, 0}, {"_numeric", "", -1, 0},
        {"_string", "", 0, 1},  // compared as the null text, which counts as empty
        {"_strstr", "x", 0, 0},
    };
    for (const Case &c : cases) {
        InputList l;
        l.Add("e", 'n', "default");
        EXPECT_EQ(CompareFunction(c.type, Op("=="), nullptr, c.right, c.cycle, 0, -1, 0, &l.list(), &l.count()),
                  c.expected)
            << c.type << " '" << c.right << "' cycle " << c.cycle;
    }
}

TEST(Compare, RightTextPlaceholdersAreEvaluated) {
    InputList l;
    l.Add("Ersetzungsanfang", 'n', "{");
    l.Add("Ersetzungsende", 'n', "}");
    l.Add("v");
    l.Add("other");
    SetEingabeWert(l.count(), l.list(), "v", "abc");
    SetEingabeWert(l.count(), l.list(), "other", "abc");
    const int savedStart = iErsetzungsAnfang, savedEnd = iErsetzungsEnde;
    iErsetzungsAnfang = 0;
    iErsetzungsEnde = 1;
    _pEingabe = &l.list();
    _pEingabeAnzahl = &l.count();
    EXPECT_EQ(CompareFunction("_string", Op("=="), nullptr, "{other}", -1, 2, -1, 2, &l.list(), &l.count()), 1);
    EXPECT_EQ(CompareFunction("_string", Op("=="), nullptr, "x|{other}", -1, 2, -1, 2, &l.list(), &l.count()), 1);
    EXPECT_EQ(CompareFunction("_string", Op("=="), nullptr, "{other}x", -1, 2, -1, 2, &l.list(), &l.count()), 0);
    iErsetzungsAnfang = savedStart;
    iErsetzungsEnde = savedEnd;
}

TEST(Compare, RightTextIsLeftAsItWas) {
    InputList l;
    l.Add("v");
    SetEingabeWert(l.count(), l.list(), "v", "b");
    char right[] = "a|b%20c|b";
    EXPECT_EQ(CompareFunction("_string", Op("=="), nullptr, right, -1, 0, -1, 0, &l.list(), &l.count()), 1);
    EXPECT_STREQ(right, "a|b%20c|b");
}

}  // namespace
