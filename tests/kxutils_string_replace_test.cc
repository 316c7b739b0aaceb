// KXUtils stand-in: replacing texts, and releasing what it returns.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "companion/libKXUtils.h"

namespace {

std::string Replaced(const char *text, const char *from, const char *to) {
    char *out = KXUtilsStringReplace(text, from, to);
    std::string result = out != nullptr ? out : "<null>";
    KXUtilsFreeResources(out);
    return result;
}

TEST(KXUtilsStringReplace, Table) {
    struct Case { const char *text, *from, *to, *expected; };
    const std::vector<Case> cases = {
        {"a\"b\"", "\"", "\\\"", "a\\\"b\\\""},
        {"javascript%3Ago()", "javascript%3A", "javascript:", "javascript:go()"},
        {"aaa", "aa", "b", "ba"},
        {"abc", "x", "y", "abc"},
        {"", "x", "y", ""},
        {"xx", "x", "", ""},
        {"x", "x", nullptr, ""},
        {"abc", "", "y", "<null>"},
        {nullptr, "x", "y", "<null>"},
        {"abc", nullptr, "y", "<null>"},
    };
    for (const Case &c : cases)
        EXPECT_EQ(Replaced(c.text, c.from, c.to), c.expected) << (c.text ? c.text : "null");
}

}  // namespace
