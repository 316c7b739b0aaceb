// Text helpers: copies, joining, splitting, replacing and marker pairing.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/kx_test.h"

using kx::test::HeapText;

namespace {

TEST(TextHelpers, CountedCopyAndJoin) {
    EXPECT_EQ(HeapText(UtilsErzeugeText("abcdef", 3)).str(), "abc");
    EXPECT_EQ(HeapText(UtilsErzeugeText("abc", 0)).str(), "");
    EXPECT_EQ(HeapText(EweitereText("a", "bcd", 2, ", ")).str(), "a, bc");
    EXPECT_EQ(HeapText(EweitereText(nullptr, "b", 1, nullptr)).str(), "b");
    EXPECT_EQ(HeapText(EweitereText("a", nullptr, 5, ",")).str(), "a,");
}

TEST(TextHelpers, AddElementBuildsListsWithoutLeadingSeparator) {
    char *list = AddElement(nullptr, nullptr, "a");
    list = AddElement(list, ",", "b");
    char *same = AddElement(list, ",", nullptr);
    EXPECT_EQ(same, list) << "a missing piece leaves the very same text";
    list = AddElementToInput(list, "|", "c", strdup("!"));
    EXPECT_EQ(HeapText(list).str(), "a,b|c!");
    EXPECT_EQ(HeapText(AddElementToInput(nullptr, "|", "c", strdup("t"))).str(), "ct")
        << "no separator before the first element; the tail is taken over";
}

TEST(TextHelpers, CutAtLineEnd) {
    struct Case { std::string in, out; int length; };
    for (const Case &c : std::vector<Case>{{"ab\r\ncd", "ab", 2}, {"abc", "abc", 3}, {"\nx", "", 0}, {"a\rb", "a", 1}}) {
        std::string text = c.in;
        EXPECT_EQ(MacheLetztesElementZumText(text.data()), c.length) << c.in;
        EXPECT_STREQ(text.c_str(), c.out.c_str());
    }
}

TEST(TextHelpers, SplitCountsElementsAndLengths) {
    struct Case { std::string text, separator; int count, longest; std::vector<int> lengths; };
    const std::vector<Case> cases = {
        {"a,b,", ",", 3, 1, {1, 1, 0}},
        {"", ",", 1, 0, {0}},
        {",", ",", 2, 0, {0, 0}},
        {"abc::d::", "::", 3, 3, {3, 1, 0}},
        {"no separator", "|", 1, 12, {12}},
    };
    for (const Case &c : cases) {
        std::string text = c.text;
        int longest = -1, *lengths = nullptr;
        EXPECT_EQ(ErmittleTextElemente(text.data(), c.separator.c_str(), &longest, &lengths), c.count) << c.text;
        EXPECT_EQ(longest, c.longest) << c.text;
        EXPECT_EQ(std::vector<int>(lengths, lengths + c.count), c.lengths) << c.text;
        free(lengths);
    }
    std::string text = "a::bc";
    ErmittleTextElemente(text.data(), "::", nullptr, nullptr);
    EXPECT_EQ(text, std::string("a\0:bc", 5)) << "only the separator's first character is cut";
    int longest = 7, *lengths = reinterpret_cast<int *>(8);
    EXPECT_EQ(ErmittleTextElemente(nullptr, ",", &longest, &lengths), 0);
    EXPECT_EQ(longest, 0);
    EXPECT_EQ(lengths, nullptr);
}

TEST(TextHelpers, IndexedValueByPositionOrKeyword) {
    struct Case { const char *text, *key, *separator, *value; };
    const Case cases[] = {
        {"a|b|c", "1", "|", "b"},
        {"a|b|c", "0", "|", "a"},
        {"a|b|c", "3", "|", nullptr},
        {"a::b::c", "2", "::", "c"},
        {"a|b", "1", nullptr, nullptr},
        {"a|b", "99999999999999999999", "|", nullptr},
        {"Size:  42 kB\nx", "Size:", nullptr, "42 kB"},
        {"Name:\tvalue \r\nrest", "Name:", nullptr, "value "},
        {"Key:", "Key:", nullptr, ""},
        {"x", "Missing", nullptr, nullptr},
        {"a1|b", "1a", "|", nullptr},
    };
    for (const Case &c : cases) {
        HeapText value(GetIndexedValue(c.text, c.key, c.separator));
        EXPECT_EQ(value.str(), c.value ? c.value : "<null>") << c.text << " / " << c.key;
    }
    EXPECT_EQ(GetIndexedValue(nullptr, "1", "|"), nullptr);
}

TEST(TextHelpers, ReplaceEveryOccurrenceWithoutOverlap) {
    struct Case { const char *text, *old, *replacement, *result; };
    const Case cases[] = {
        {"x.y.z", ".", "::", "x::y::z"},
        {"aaa", "aa", "b", "ba"},
        {"abc", "x", "y", "abc"},
        {"abab", "ab", "", ""},
        {"ab", "b", "bb", "abb"},
        {"", "a", "b", ""},
        {"abc", "", "x", "abc"},
    };
    for (const Case &c : cases)
        EXPECT_EQ(HeapText(StringReplace(c.text, c.old, c.replacement)).str(), c.result) << c.text;
    EXPECT_EQ(HeapText(StringNReplace("a.b", 5, ".", 1, "-!")).str(), "a-") << "never steps past the end";
}

TEST(TextHelpers, ChangeSubTextReturnsItsArgumentWhenNothingMatches) {
    const char *text = "plain";
    int length = -7;
    EXPECT_EQ(ChangeSubText(text, "<>", 2, "&lt;", &length), text);
    EXPECT_EQ(length, -7) << "length is not written";
    HeapText changed(ChangeSubText("a<b>c", "<>", 2, "&#", &length));
    EXPECT_EQ(changed.str(), "a&#b&#c");
    EXPECT_EQ(length, 7);
    EXPECT_EQ(HeapText(ChangeSubText("a<b>", "<>", 1, "", nullptr)).str(), "ab>") << "only the first set characters";
}

TEST(TextHelpers, ChangeSubTextGrowsPastItsFirstBlocks) {
    const std::string text(20000, '"');
    const std::string replacement(5000, 'q');
    int length = 0;
    HeapText changed(ChangeSubText(text.c_str(), "\"", 1, "&quot;", &length));
    EXPECT_EQ(length, 20000 * 6);
    EXPECT_EQ(changed.str(), [] { std::string s; for (int i = 0; i < 20000; ++i) s += "&quot;"; return s; }());
    HeapText huge(ChangeSubText("a\"b", "\"", 1, replacement.c_str(), &length));
    EXPECT_EQ(huge.str(), "a" + replacement + "b");
}

TEST(TextHelpers, PairItBalancesMarkersAndSkipsJavascriptTargets) {
    struct Case { const char *text, *open, *close; long offset; };  // -1: the text itself
    const Case cases[] = {
        {"{a{b}c}d", "{", "}", 6},
        {"{a}", "{", "}", 2},
        {"{a", "{", "}", -1},
        {"{a{b}", "{", "}", -1},
        {"plain", "{", "}", -1},
        {"{href=javascript}x}", "{", "}", 18},
        {"{JavaScript}", "{", "}", -1},
        {"{javascript}", "{", "}", -1},
        {"<!a<!b!>c!>d", "<!", "!>", 9},
        {"{}", "{", "}", 1},
    };
    for (const Case &c : cases) {
        const char *closing = PairIt(c.text, c.open, c.close);
        EXPECT_EQ(closing == c.text ? -1 : closing - c.text, c.offset) << c.text;
    }
}

TEST(TextHelpers, ReplaceCharactersInPlace) {
    char path[] = "a/b\\c/d";
    UtilsErsetzeZeichen(path, "/\\", 2, '|');
    EXPECT_STREQ(path, "a|b|c|d");
}

}  // namespace
