// String conversions: cutting, searching, replacing, list positions, page
// numbers and parts of OIDs.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "companion/libKXUtils.h"
#include "convert_support.h"
#include "support/kx_test.h"

using kx::test::ExpectAll;

namespace {

TEST(Substring, CutsARightAlignedField) {
    ExpectAll({
        {ConvertToSubstring, "1,4", "abcdef", "bcd"},
        {ConvertToSubstring, "2", "abcdef", "cdef"},
        {ConvertToSubstring, "4,8", "abcdef", "  ef"},
        {ConvertToSubstring, "10,12", "abc", "  "},     // start beyond the end: blanks
        {ConvertToSubstring, "3,1", "abcdef", ""},      // end before start
        {ConvertToSubstring, "-2,2", "abcdef", "ab"},   // a negative start counts as 0
        {ConvertToSubstring, "0,2", nullptr, "  "},
        {ConvertToSubstring, "0,200", "abc", std::string(127, ' ')},
    });
    const std::string longValue(200, 'x');
    ExpectAll({{ConvertToSubstring, "0", longValue.c_str(), std::string(127, 'x')}});
}

TEST(StringString, ChoosesByTheFirstNeedleFound) {
    ExpectAll({
        {ConvertToStringString, "warn|crit,2|3,1", "critical", "3"},
        {ConvertToStringString, "warn|crit,2|3,1", "ok", "1"},
        {ConvertToStringString, "crit|warn,2|3,1", "warn crit", "2"},  // needle order decides
        {ConvertToStringString, "a|b,1", "b", "1"},                    // fewer results: the last
        {ConvertToStringString, "warn|crit,,none", "a crit x", "crit x"},
        {ConvertToStringString, "warn|crit,,n%2Fa", "ok", "n/a"},
        {ConvertToStringString, "crit", "is crit", "crit"},
        {ConvertToStringString, "crit", "ok", ""},
        {ConvertToStringString, "a,r1|r2", "z", ""},
        {ConvertToStringString, "x%7Cy,hit,miss", "x|y", "hit"},
        {ConvertToStringString, "x,a%2Cb", "x", "a,b"},
        {ConvertToStringString, "x,hit,miss", nullptr, "miss"},
    });
}

TEST(AfterBefore, SearchForTheMarker) {
    ExpectAll({
        {ConvertToStringAfter, "=", "a=b=c", "b=c"},
        {ConvertToStringBefore, "=", "a=b=c", "a"},
        {ConvertToStringRBefore, "=", "a=b=c", "a=b"},
        {ConvertToStringAfter, "%3D", "a=b", "b"},
        {ConvertToStringAfter, "#", "abc", "abc"},
        {ConvertToStringBefore, "#", "abc", "abc"},
        {ConvertToStringRBefore, "#", "abc", "abc"},
        {ConvertToStringAfter, "#,none", "abc", "none"},
        {ConvertToStringRBefore, "#,%2E", "abc", "."},
        {ConvertToStringAfter, "1", "a|b|c", "b"},     // a list: the element at that position
        {ConvertToStringAfter, "x", "a|b|c", "a|b|c"},
        {ConvertToStringAfter, "=", nullptr, ""},
        {ConvertToStringBefore, "=,d", nullptr, "d"},
    });
}

TEST(AfterBefore, LastOccurrence) {
    const char text[] = "a-b-c";
    EXPECT_EQ(KXUtils_strrstr(text, "-"), text + 3);
    EXPECT_EQ(KXUtils_strrstr(text, "b-c"), text + 2);
    EXPECT_EQ(KXUtils_strrstr(text, "x"), nullptr);
    EXPECT_EQ(KXUtils_strrstr(text, ""), text + 5);
    const char overlapping[] = "aaa";
    EXPECT_EQ(KXUtils_strrstr(overlapping, "aa"), overlapping + 1);
    EXPECT_EQ(KXUtils_strrstr(nullptr, "a"), nullptr);
    EXPECT_EQ(KXUtils_strrstr(text, nullptr), nullptr);
}

TEST(StringChange, ReplacesTheFirstOldTextFoundOnce) {
    ExpectAll({
        {ConvertToStringChange, "a,x", "aab", "xab"},
        {ConvertToStringChange, "q|b,x|y", "abcb", "aycb"},
        {ConvertToStringChange, "q|r|c,x|y", "abc", "abx"},  // beyond the new texts: the first
        {ConvertToStringChange, "q|b,z", "abc", "azc"},      // one new text for all
        {ConvertToStringChange, "b", "abc", "abc"},          // no new texts
        {ConvertToStringChange, "q,x", "abc", "abc"},
        {ConvertToStringChange, "%2C,%2E", "1,2,3", "1.2,3"},
        {ConvertToStringChange, "a,x", nullptr, ""},
    });
    const std::string longValue(1000, 'a');
    ExpectAll({{ConvertToStringChange, "a," + std::string(100, 'n'), longValue.c_str(),
                std::string(100, 'n') + std::string(923, 'a')}});
}

TEST(StringReplace, ReplacesEveryOldTextInTurn) {
    ExpectAll({
        {ConvertToStringReplace, "a|b,x", "aabb", "xxxx"},
        {ConvertToStringReplace, "a|b,x|y", "aabb", "xxyy"},
        {ConvertToStringReplace, "a|b|c,x|y", "abc", "xyx"},  // fewer new texts: the first
        {ConvertToStringReplace, "a|x,x|y", "ab", "yb"},      // each step works on the last result
        {ConvertToStringReplace, ",x", "abc", "abc"},         // an empty old text is skipped
        {ConvertToStringReplace, "a", "abc", "abc"},
        {ConvertToStringReplace, "%2C,%2E", "1,2,3", "1.2.3"},
        {ConvertToStringReplace, "b,", "abcb", "ac"},
    });
}

// A new text holding its old text doubles the value at every step; the
// value stops growing at 1023 characters, or at its own length when longer.
TEST(StringReplace, GrowthStopsAtTheLimit) {
    std::string doubling;
    for (int i = 0; i < 40; ++i) doubling += i ? "|a" : "a";
    EXPECT_EQ(kx::test::Convert(ConvertToStringReplace, doubling + ",aa", "a"), std::string(1023, 'a'));
    const std::string longValue(3000, 'b');
    EXPECT_EQ(kx::test::Convert(ConvertToStringReplace, "b,cc", longValue.c_str()), std::string(3000, 'c'));
}

// A "|" from a placeholder's value reaches the handler as %7C and stays
// inside its element; it is decoded after the list is split.
TEST(StringReplace, EncodedBarStaysInsideOneElement) {
    ExpectAll({
        {ConvertToStringReplace, "a%7Cb|c,X", "a|bc", "XX"},
        {ConvertToStringReplace, "a%7Cb,X|Y", "a|b a", "X a"},
        {ConvertToStringChange, "a%7Cb|c,X", "1c a|b", "1c X"},
        {ConvertToStringChange, "q|a%7Cb,X|Y", "a|b", "Y"},
    });
}

class ValueIndex : public ::testing::Test {
protected:
    void SetUp() override {
        list_.Add("Key", 'j');
        list_.Add("Prefix", 'j');
        list_.Add("Short", 'j');
        Values(0, {"Fan", "CPU", "CPU", "Disk"});
        Values(1, {"ok", "warn", "bad", "fine"});
        Values(2, {"ok"});
        _pEingabe = &list_.list();
        _pEingabeAnzahl = &list_.count();
    }

    void Values(int index, const std::vector<std::string> &values) {
        std::string block;
        for (const std::string &value : values) block += value + '\0';
        auto *wert = static_cast<char *>(std::malloc(block.size()));
        std::memcpy(wert, block.data(), block.size());
        list_[index].Wert = wert;
        list_[index].WertGesetzt = static_cast<int32_t>(values.size());
    }

    kx::test::InputList list_;
};

TEST_F(ValueIndex, PositionWithinTheRunOfTheKey) {
    ExpectAll({
        {ConvertToValueIndex, "{Prefix[{Key[CPU]}]},none", "warn", "0"},
        {ConvertToValueIndex, "{Prefix[{Key[CPU]}]},none", "bad", "1"},
        {ConvertToValueIndex, "{Prefix[{Key[CPU]}]},none", "ok", "none"},   // outside the run
        {ConvertToValueIndex, "{Prefix[{Key[Mem]}]},none", "ok", "none"},
        {ConvertToValueIndex, "{Prefix[{Key[Fan]}]},none", "ok", "0"},
        {ConvertToValueIndex, "{Prefix[{Key[Disk]}]}", "fine", "0"},
        {ConvertToValueIndex, "{Prefix[{Key[Disk]}]}", "x", ""},
        {ConvertToValueIndex, "{Short[{Key[CPU]}]},none", "ok", "none"},   // Short has one value
        {ConvertToValueIndex, "{Nope[{Key[CPU]}]},none", "ok", "none"},
        {ConvertToValueIndex, "{Prefix[{Nope[CPU]}]},none", "ok", "none"},
        {ConvertToValueIndex, "{Prefix[{Key[CPU,none", "warn", "none"},    // no "]"
        {ConvertToValueIndex, "Prefix,none", "warn", "none"},
        {ConvertToValueIndex, "", "warn", ""},
    });
}

TEST(ValueIndexWithoutList, GivesTheDefault) {
    ASSERT_EQ(_pEingabe, nullptr);
    ExpectAll({{ConvertToValueIndex, "{Prefix[{Key[CPU]}]},none", "warn", "none"}});
}

TEST(DivideList, PageNumbers) {
    ExpectAll({
        {ConvertDivideList, "10", "25", "1~2~3"},
        {ConvertDivideList, "10", "0", "1"},
        {ConvertDivideList, "10", "20", "1~2"},
        {ConvertDivideList, "10", "21", "1~2~3"},
        {ConvertDivideList, "|,10", "25", "1|2|3"},
        {ConvertDivideList, "-,10,5,20", "45", "1-2-3"},  // the minimum raises the step
        {ConvertDivideList, "-,10,5,2", "25", "1-2-3"},
        {ConvertDivideList, "0", "25", "1"},             // no page size: one page
        {ConvertDivideList, "-5", "25", "1"},
        {ConvertDivideList, "10", nullptr, "1"},
    });
    char argument[] = ",1";
    char value[] = "2147483647";
    kx::test::HeapText pages(ConvertDivideList(argument, value, -1));
    const std::string text = pages.str();
    EXPECT_LE(text.size(), 1023U);
    EXPECT_EQ(text.substr(0, 9), "123456789");
    EXPECT_EQ(text.substr(text.size() - 3), "377") << "whole page numbers only";
}

TEST(SubOid, PartsOfAnOid) {
    ExpectAll({
        {ConvertToSubOID, ",2,3", "1.3.6.1.4.1", "3.6.1"},
        {ConvertToSubOID, ",3", "1.3.6.1.4.1", "6.1.4.1"},
        {ConvertToSubOID, ",i2,i5", "1.3.6.1.4.1", "3.6"},
        {ConvertToSubOID, ",1,1", "1.3.6.1.4.1", "1"},
        {ConvertToSubOID, ",2", ".1.3.6", "3.6"},          // a leading "." is not counted
        {ConvertToSubOID, ",2,9", "1.3.6.1.4.1", "3.6.1.4.1"},
        {ConvertToSubOID, ",2,i99", "1.3.6", "3.6"},
        {ConvertToSubOID, ",9", "1.3.6", "n.a."},
        {ConvertToSubOID, ",2,0", "1.3.6", "n.a."},
        {ConvertToSubOID, ",i5,i2", "1.3.6.1", "n.a."},
        {ConvertToSubOID, ",i-3,i-1", "1.3.6.1", "n.a."},
        {ConvertToSubOID, ",0", "1.3.6", "1.3.6"},
        {ConvertToSubOID, ",1", nullptr, "n.a."},
        {ConvertToSubOID, "", "1.3.6", "1.3.6"},      // no MIB knows the OID
        {ConvertToSubOID, ",,2", "1.3.6", "1.3.6"},
    });
}

TEST(Case, LowerAndUpperCopies) {
    ExpectAll({
        {ConvertToLower, "", "MiXed 1", "mixed 1"},
        {ConvertToUpper, "", "MiXed 1", "MIXED 1"},
        {ConvertToLower, "", nullptr, ""},
    });
}

}  // namespace
