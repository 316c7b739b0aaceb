// The input list: lookups by name, setting and appending values.
#include <gtest/gtest.h>

#include <string>

#include "support/kx_test.h"

using kx::test::InputList;

namespace {

std::string Current(const EingabeElement &e) {
    const char *text = e.Wert ? e.Wert + e.WertPosition : e.Vorgabe;
    return text ? text : "<null>";
}

TEST(InputList, LookupIsExactAndFirstMatchWins) {
    InputList l;
    EXPECT_EQ(EingabewertIndex("User", l.list(), l.count()), 0) << "empty list gives its count";
    l.Add("User");
    l.Add("user");
    l.Add("Use");
    l.Add("User");
    EXPECT_EQ(EingabewertIndex("User", l.list(), l.count()), 0);
    EXPECT_EQ(EingabewertIndex("user", l.list(), l.count()), 1);
    EXPECT_EQ(EingabewertIndex("Use", l.list(), l.count()), 2);
    EXPECT_EQ(EingabewertIndex("Us", l.list(), l.count()), 4);
    EXPECT_EQ(EingabewertIndex("Users", l.list(), l.count()), 4);
    EXPECT_EQ(EingabewertIndex(nullptr, l.list(), l.count()), 4);
}

TEST(InputList, SetAndClearFallBackToDefault) {
    InputList l;
    l.Add("Color", 'n', "blue");
    EXPECT_EQ(SetEingabeWert(l.count(), l.list(), "Color", "red"), 0);
    EXPECT_EQ(Current(l[0]), "red");
    EXPECT_EQ(l[0].WertGesetzt, 1);
    l[0].WertPosition = 1;
    EXPECT_EQ(SetEingabeWert(l.count(), l.list(), "Color", "green"), 0);
    EXPECT_EQ(l[0].WertPosition, 0) << "a new value is current from its start";
    EXPECT_EQ(SetEingabeWert(l.count(), l.list(), "Color", nullptr), 0);
    EXPECT_EQ(l[0].Wert, nullptr);
    EXPECT_EQ(l[0].WertGesetzt, 0);
    EXPECT_EQ(Current(l[0]), "blue");
}

TEST(InputList, SettersLeaveTheListAloneForUnknownNamesAndIndexes) {
    InputList l;
    l.Add("A");
    EXPECT_EQ(SetEingabeWert(l.count(), l.list(), "B", "x"), 1);
    EXPECT_EQ(SetEingabeWertI(l.count(), l.list(), 1, "x"), 1);
    EXPECT_EQ(SetEingabeWertI(l.count(), l.list(), -1, "x"), -1);
    EXPECT_EQ(AppendEingabeWert(l.count(), l.list(), "B", "x"), 1);
    EXPECT_EQ(l[0].Wert, nullptr);
}

TEST(InputList, SetterKeepsItsOwnCopy) {
    InputList l;
    l.Add("A");
    char text[] = "abc";
    SetEingabeWertI(l.count(), l.list(), 0, text);
    text[0] = 'X';
    EXPECT_STREQ(l[0].Wert, "abc");
}

TEST(InputList, AppendJoinsWithoutSeparatorAndResetsPosition) {
    InputList l;
    l.Add("A");
    EXPECT_EQ(AppendEingabeWert(l.count(), l.list(), "A", "ab"), 0);
    EXPECT_STREQ(l[0].Wert, "ab");
    l[0].WertPosition = 1;
    l[0].WertGesetzt = 2;
    AppendEingabeWert(l.count(), l.list(), "A", "cd");
    EXPECT_STREQ(l[0].Wert, "abcd");
    EXPECT_EQ(l[0].WertPosition, 0);
    EXPECT_EQ(l[0].WertGesetzt, 1);
}

TEST(InputList, GetInputValueGivesTheEntrysOwnWholeText) {
    InputList l;
    l.Add("Empty", 'n', "default");
    l.Add("List");
    SetEingabeWert(l.count(), l.list(), "Empty", "");
    SetEingabeWert(l.count(), l.list(), "List", "ab");
    l[1].WertPosition = 1;
    char *value = reinterpret_cast<char *>(1);
    EXPECT_EQ(GetInputValue(l.count(), l.list(), "Empty", &value), 0);
    EXPECT_EQ(value, nullptr) << "an empty value is no value; the default is not consulted";
    EXPECT_EQ(GetInputValue(l.count(), l.list(), "List", &value), 1);
    EXPECT_EQ(value, l[1].Wert) << "the entry's own text from its start";
    EXPECT_EQ(GetInputValue(l.count(), l.list(), "None", &value), 2);
    EXPECT_EQ(value, nullptr);
}

TEST(InputList, AppendToEingabeDeclaresOrRedeclares) {
    InputList l;
    ASSERT_EQ(AppendToEingabe(&l.count(), &l.list(), nullptr, "Hosts", 2, "a~b"), 0);
    ASSERT_EQ(l.count(), 1);
    EXPECT_STREQ(l[0].Name, "Hosts");
    EXPECT_EQ(l[0].NameLaenge, 5u);
    EXPECT_EQ(l[0].Art, 'j');
    EXPECT_STREQ(l[0].Vorgabe, "a~b");
    EXPECT_EQ(l[0].Wert, nullptr);
    SetEingabeWert(l.count(), l.list(), "Hosts", "x");
    ASSERT_EQ(AppendToEingabe(&l.count(), &l.list(), "~", "Hosts", 1, nullptr), 0);
    ASSERT_EQ(l.count(), 1) << "a known name is redeclared, not added";
    EXPECT_EQ(l[0].Art, 'n');
    EXPECT_STREQ(l[0].Vorgabe, "");
    EXPECT_STREQ(l[0].Wert, "x") << "redeclaring keeps the value";
    ASSERT_EQ(AppendToEingabe(&l.count(), &l.list(), ";", "Zone", 1, "eu"), 0);
    ASSERT_EQ(l.count(), 2) << "a separator that is no definition marker declares too";
    EXPECT_STREQ(l[1].Vorgabe, "eu");
}

}  // namespace
