// Finding a key's value in a query, cutting element ranges, base names.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "kx_input.h"

namespace {

struct KeyCase {
    const char *query;
    const char *key;
    const char *assign;
    const char *value;  // what the result points at; null for none
};

class KeyValueTest : public ::testing::TestWithParam<KeyCase> {};

TEST_P(KeyValueTest, PointsAtTheValue) {
    const KeyCase &c = GetParam();
    const char *value = PositioniereAufSchluesselwortWert(c.query, c.key, c.assign);
    if (c.value == nullptr) {
        EXPECT_EQ(value, nullptr);
        return;
    }
    ASSERT_NE(value, nullptr);
    EXPECT_GE(value, c.query);  // a pointer into the query, not a copy
    EXPECT_STREQ(value, c.value);
}

INSTANTIATE_TEST_SUITE_P(Queries, KeyValueTest, ::testing::Values(
    KeyCase{"x=1&Application=Traps&y=2", nullptr, nullptr, "Traps&y=2"},
    KeyCase{"Application=Traps", nullptr, nullptr, "Traps"},
    KeyCase{"MyApplication=Traps", nullptr, nullptr, nullptr},
    KeyCase{"x=1", nullptr, nullptr, nullptr},
    KeyCase{"", nullptr, nullptr, nullptr},
    KeyCase{"a=1&User:me", "User", ":", "me"},
    KeyCase{"User=me&Application=", nullptr, nullptr, ""},
    // "&key=" anywhere comes before "key=" at the start.
    KeyCase{"Page=1&x=2&Page=3", "Page", nullptr, "3"}));

TEST(KeyValue, OverlongKeyOrNullQueryFindsNothing) {
    const std::string key(254, 'k');  // "&" + key + "=" needs 256 bytes
    const std::string query = key + "=v";
    EXPECT_EQ(PositioniereAufSchluesselwortWert(query.c_str(), key.c_str(), nullptr), nullptr);
    const std::string shorter(253, 'k');
    const std::string fits = shorter + "=v";
    EXPECT_STREQ(PositioniereAufSchluesselwortWert(fits.c_str(), shorter.c_str(), nullptr), "v");
    EXPECT_EQ(PositioniereAufSchluesselwortWert(nullptr, nullptr, nullptr), nullptr);
}

struct RangeCase {
    const char *text;
    const char *separator;
    int first;
    int number;
    const char *expected;  // null: the text comes back unchanged
};

class ElementRangeTest : public ::testing::TestWithParam<RangeCase> {};

TEST_P(ElementRangeTest, CutsTheRange) {
    const RangeCase &c = GetParam();
    char *text = strdup(c.text);
    char *result = UtilsCreateOuput(text, c.separator, c.first, c.number);
    if (c.expected == nullptr) {
        EXPECT_EQ(result, text);
        EXPECT_STREQ(result, c.text);
    } else {
        EXPECT_NE(result, text);  // a new text; the old one was freed
        EXPECT_STREQ(result, c.expected);
    }
    free(result);
}

INSTANTIATE_TEST_SUITE_P(Ranges, ElementRangeTest, ::testing::Values(
    RangeCase{"a\nb\nc\nd", "\n", 2, 2, "b\nc"},
    RangeCase{"a\nb\nc\nd", "\n", 3, 0, "c\nd"},
    RangeCase{"a\nb\nc\nd", "\n", 1, 1, "a"},
    RangeCase{"a\nb\nc\nd", "\n", 4, 5, "d"},
    RangeCase{"a\nb\nc\nd", "\n", 4, -1, "d"},
    RangeCase{"a\nb\nc\nd", "\n", 5, 1, nullptr},
    RangeCase{"a\nb\nc\nd", "\n", 1, 0, nullptr},
    RangeCase{"a\nb\nc\nd", "\n", -3, -3, nullptr},
    RangeCase{"a\nb\nc\nd", "\n", 0, 2, "a\nb"},
    RangeCase{"a,,b", ",", 2, 1, ""},
    RangeCase{"a,b,", ",", 3, 1, ""},
    RangeCase{"a::b::c", "::", 2, 1, "b:"},
    RangeCase{"a::b::c", "::", 2, 0, "b::c"},
    RangeCase{"abc", "", 2, 1, nullptr}));

TEST(ElementRange, NullTextOrSeparatorComesBack) {
    EXPECT_EQ(UtilsCreateOuput(nullptr, ",", 2, 1), nullptr);
    char text[] = "a,b";
    EXPECT_EQ(UtilsCreateOuput(text, nullptr, 2, 1), text);
}

struct BaseCase {
    const char *path;
    std::size_t offset;  // where the base name starts
};

class BasenameTest : public ::testing::TestWithParam<BaseCase> {};

TEST_P(BasenameTest, PointsIntoThePath) {
    const BaseCase &c = GetParam();
    EXPECT_EQ(HTMLBasename(c.path), c.path + c.offset);
    EXPECT_EQ(ErmittleProgrammname(c.path), c.path + c.offset);
}

INSTANTIATE_TEST_SUITE_P(Paths, BasenameTest, ::testing::Values(
    BaseCase{"a/b\\c.html", 4}, BaseCase{"a\\b/c.html", 4}, BaseCase{"c.html", 0},
    BaseCase{"/", 1}, BaseCase{"", 0}, BaseCase{"dir/", 4}));

TEST(Basename, NullPath) { EXPECT_EQ(HTMLBasename(nullptr), nullptr); }

TEST(ApplicationName, OnlyPlainNamesPass) {
    const std::string longest(KX_APPLICATION_NAME_MAX, 'a');
    const struct { std::string name; int accepted; } cases[] = {
        {"console", 1}, {"Traps2", 1}, {"my-app_1.v2", 1}, {"9", 1}, {longest, 1}, {longest + "a", 0},
        {"", 0}, {"~xxxx", 0}, {"|", 0}, {"%2e%2e", 0}, {"../etc/passwd", 0}, {"a/b", 0}, {"a\\b", 0},
        {".hidden", 0}, {"-x", 0}, {"a b", 0}, {"\xA7x", 0}, {"caf\xC3\xA9", 0},
    };
    for (const auto &c : cases) EXPECT_EQ(KXIsApplicationName(c.name.c_str()), c.accepted) << c.name;
    EXPECT_EQ(KXIsApplicationName(nullptr), 0);
}

}  // namespace
