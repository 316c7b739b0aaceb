// The companion stand-ins: libparser's scanning, regular expressions, case and
// comparisons; libKXUtils's files, ini files and text replacement.
#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <vector>

#include "companion/libKXUtils.h"
#include "companion/libparser.h"
#include "support/kx_test.h"

namespace {

using kx::test::TempDir;

TEST(Parser, ScanningPositions) {
    // function, text, start, set, set length, stop below; what it returns and where it leaves the position
    enum Function { InSet, Skip, SkipBack, Find, FindBack };
    struct Case { Function function; const char *text; int start; const char *set; int setLength, floor, result, end; };
    const Case cases[] = {
        {InSet, "a;b", 1, ",;", 2, 0, 1, 1},  {InSet, "a;b", 3, ",", 2, 0, 1, 3},  // a set length past the text takes the NUL in
        {Skip, "  \tx", 0, " \t", 2, 0, 3, 3}, {Skip, "abc", 0, " ", 1, 0, 0, 0}, {Skip, "   ", 0, " ", 2, 0, 3, 3},
        {SkipBack, "ab \r\n ", 5, " \r\n", 3, 0, 4, 1}, {SkipBack, "   ", 2, " ", 1, 1, 1, 1},  // never below start
        {Find, "ab\rc\n", 0, "\n\r", 2, 0, 1, 2}, {Find, "abc", 0, "\n\r", 2, 0, -1, 3},  // stops on the NUL
        {Find, "abc", 0, "\n\r", 3, 0, 2, 3},  // the NUL belongs to a set of length 3
        {FindBack, "a_b_cd", 6, "_", 1, 0, 0, 3}, {FindBack, "abc", 2, "_", 1, 0, -1, 0},
    };
    for (const Case &c : cases) {
        int position = c.start;
        int result = 0;
        switch (c.function) {
        case InSet: result = InhaltGleichZeichen(c.text, &position, c.set, c.setLength); break;
        case Skip: result = UeberleseZeichen(c.text, &position, c.set, c.setLength); break;
        case SkipBack: result = UeberleseZeichenRueckwaerts(c.text, &position, c.set, c.setLength, c.floor); break;
        case Find: result = PositioniereAufZeichen(c.text, &position, c.set, c.setLength); break;
        case FindBack: result = PositioniereAufZeichenRueckwaerts(c.text, &position, c.set, c.setLength, c.floor); break;
        }
        EXPECT_EQ(result, c.result) << c.function << " " << c.text;
        EXPECT_EQ(position, c.end) << c.function << " " << c.text;
    }
    int position = 0;
    EXPECT_LT(InhaltGleichZeichen("a;b", &position, ",;", 2), 0);
}

TEST(Parser, RegularExpressionsAndCase) {
    struct Case { const char *text, *expression; int length; };
    const Case cases[] = {{"123", "[0-9]+", 3}, {"12a", "[0-9]+", 2}, {"a12", "[0-9]+", -1}, {"", "[0-9]+", -1},
                          {"trap.mib", "^[a-z]+\\.(mib|my)$", 8}, {"x", "(", -1}, {"abc", "", 0}};
    for (const Case &c : cases) {
        const int length = Wertuebereinstimmung(c.text, c.expression);
        EXPECT_EQ(length < 0 ? -1 : length, c.length) << c.text << " ~ " << c.expression;
    }
    char text[] = "MiXeD 1\xC4";
    EXPECT_STREQ(KonvertiereZuKleinbuchstaben(text), "mixed 1\xC4");
    EXPECT_STREQ(KonvertiereZuGrossbuchstaben(text), "MIXED 1\xC4");
    EXPECT_EQ(stricmp("Hello", "hELLO"), 0);
    EXPECT_LT(stricmp("abc", "ABD"), 0);
    EXPECT_GT(stricmp("abcd", "ABC"), 0);
    EXPECT_EQ(strnicmp("abcX", "ABCy", 3), 0);
    EXPECT_EQ(memicmp("a\0B", "A\0b", 3), 0);
    EXPECT_EQ(kx::test::HeapText(ErzeugeText("abcdef", 2)).str(), "ab");
}

using Comparison = int (*)(const char *, const char *);

// The six functions of one kind, in the order == != <= >= < >.
struct Kind {
    const char *name;
    Comparison functions[6];
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
constexpr const char *kEqual = "101100", *kLower = "011010", *kGreater = "010101", *kUnordered = "010000";

TEST(Parser, EveryComparisonOfEveryKind) {
    struct Case { const Kind *kind; const char *left, *right, *expected; };
    const Case cases[] = {
        {&kText, "abc", "abc", kEqual}, {&kText, "abc", "abd", kLower}, {&kText, "b", "abc", kGreater},
        {&kText, "ab", "abc", kLower}, {&kText, "ABC", "abc", kLower}, {&kText, "\xE4", "z", kGreater},  // unsigned bytes
        {&kText, nullptr, "", kEqual}, {&kText, "", "a", kLower}, {&kText, "10", "9", kLower},  // texts, not numbers
        {&kTextI, "ABC", "abc", kEqual}, {&kTextI, "abc", "ABD", kLower}, {&kTextI, "Zeta", "alpha", kGreater},
        {&kTextI, "\xC4", "\xE4", kLower},  // only ASCII letters are folded
        {&kTextI, nullptr, "x", kLower}, {&kTextN, "abcdef", "abc", kEqual}, {&kTextN, "abx", "abc", kGreater},
        {&kTextN, "ab", "abc", kLower}, {&kTextN, "anything", "", kEqual}, {&kTextN, nullptr, "", kEqual},
        {&kTextN, "ABCdef", "abc", kLower}, {&kTextNi, "ABCdef", "abc", kEqual}, {&kTextNi, "ABD", "abc", kGreater},
        {&kTextNi, "a", "AB", kLower}, {&kTextNi, "xyz", "", kEqual}, {&kNumeric, "10", "9", kGreater},
        {&kNumeric, "  42\t", "42.0", kEqual}, {&kNumeric, "-1.5", "1e0", kLower}, {&kNumeric, "+7", "7", kEqual},
        {&kNumeric, ".5", "0.5", kEqual},
        {&kNumeric, "9007199254740993", "9007199254740992", kGreater},  // integers stay exact
        {&kNumeric, "abc", "abc", kUnordered}, {&kNumeric, "", "0", kUnordered}, {&kNumeric, "12abc", "12", kUnordered},
        {&kNumeric, nullptr, "0", kUnordered}, {&kNumeric, "1e400", "1", kUnordered},
        {&kNumeric, "0x10", "16", kUnordered}, {&kNumeric, "inf", "1", kUnordered},
    };
    for (const Case &c : cases)
        for (int op = 0; op < 6; ++op)
            EXPECT_EQ(c.kind->functions[op](c.left, c.right), c.expected[op] - '0')
                << c.kind->name << " op " << op << ": '" << (c.left ? c.left : "<null>") << "' vs '" << c.right << "'";
}

TEST(KXUtils, FilesAndNames) {
    struct Case { const char *path; std::size_t offset; };
    for (const Case &c : {Case{"prog", 0}, {"/usr/bin/prog", 9}, {"a\\b/c", 4}, {"a/b\\c", 4}, {"dir/", 4}, {"", 0}})
        EXPECT_EQ(KXUtilsBasename(c.path, 0), c.path + c.offset) << c.path;
    EXPECT_EQ(KXUtilsBasename(nullptr, 0), nullptr);
    TempDir dir;
    dir.Write("sub/file", "x");
    EXPECT_EQ(KXUtilsFileExists((dir.path() + "/sub/file").c_str()), 0);
    EXPECT_EQ(KXUtilsFileExists((dir.path() + "/sub").c_str()), 0);
    EXPECT_EQ(KXUtilsFileExists((dir.path() + "/missing").c_str()), -1);
    EXPECT_EQ(KXUtilsFileExists(""), -1);
    EXPECT_EQ(KXUtilsFileExists(nullptr), -1);
    EXPECT_EQ(KXUtilsFileSize(dir.Write("five", "12345").c_str()), 5);
    EXPECT_EQ(KXUtilsFileSize(dir.Write("zero", "").c_str()), 0);
    EXPECT_EQ(KXUtilsFileSize((dir.path() + "/none").c_str()), -1);
    EXPECT_EQ(KXUtilsFileSize(nullptr), -1);
}

TEST(KXUtils, WholeFileOperations) {
    TempDir dir;
    char *buffer = reinterpret_cast<char *>(1);
    int error = 0;
    char *message = nullptr;
    const std::string missing = dir.path() + "/none", path = dir.path() + "/new.txt";
    EXPECT_EQ(KXUtilsReadFileToMemoryErrorOutput(missing.c_str(), &buffer, &error, &message), -1);
    EXPECT_EQ(buffer, nullptr);
    EXPECT_EQ(error, ENOENT);
    ASSERT_NE(message, nullptr);
    KXUtilsFreeResources(message);
    EXPECT_EQ(KXUtilsWriteMemoryToFileErrorOutput(path.c_str(), "hello", 0, &error, nullptr), 1);
    EXPECT_EQ(KXUtilsWriteMemoryToFileErrorOutput(path.c_str(), "hello", 4, &error, nullptr), 1);
    EXPECT_EQ(KXUtilsReadFileToMemoryErrorOutput(path.c_str(), &buffer, &error, nullptr), 4);
    EXPECT_STREQ(buffer, "hell");
    EXPECT_EQ(error, 0);
    KXUtilsFreeResources(buffer);
    EXPECT_EQ(KXUtilsWriteMemoryToFileErrorOutput((missing + "/x").c_str(), "x", 0, &error, nullptr), -1);
    EXPECT_EQ(error, ENOENT);
    char *text = KXUtilsAppendText("ab", 2, "cd", 2, nullptr, -1);
    EXPECT_STREQ(text, "abcd");
    KXUtilsFreeResources(text);
    text = KXUtilsAppendText("ab", 1, "cd", 0, "XYZ", 2);
    EXPECT_STREQ(text, "aXY");
    KXUtilsFreeResources(text);
}

TEST(KXUtils, StringReplace) {
    struct Case { const char *text, *from, *to, *expected; };
    const Case cases[] = {
        {"a\"b\"", "\"", "\\\"", "a\\\"b\\\""}, {"javascript%3Ago()", "javascript%3A", "javascript:", "javascript:go()"},
        {"aaa", "aa", "b", "ba"}, {"abc", "x", "y", "abc"}, {"", "x", "y", ""}, {"xx", "x", "", ""},
        {"x", "x", nullptr, ""}, {"abc", "", "y", "<null>"}, {nullptr, "x", "y", "<null>"}, {"abc", nullptr, "y", "<null>"},
    };
    for (const Case &c : cases) {
        char *out = KXUtilsStringReplace(c.text, c.from, c.to);
        EXPECT_EQ(std::string(out != nullptr ? out : "<null>"), c.expected) << (c.text ? c.text : "null");
        KXUtilsFreeResources(out);
    }
}

// The pairs of one read, flattened, released at once; the count first.
std::vector<std::string> ReadIni(const std::string &path, const char *section, const char *key, char separator = '.') {
    char **pairs = nullptr;
    const int count = KXUtilsReadIniFile(path.c_str(), section, 0, separator, key, &pairs, 0);
    std::vector<std::string> out{std::to_string(count)};
    for (int i = 0; i < 2 * count && pairs != nullptr; ++i) out.emplace_back(pairs[i]);
    if (count <= 0) EXPECT_EQ(pairs, nullptr) << key;
    KXUtilsFreeResources(pairs);
    return out;
}

TEST(KXUtils, IniFiles) {
    TempDir dir;
    const std::string path = dir.Write(
        "t.ini", "|\r\ntitle= Main; page: x \r\n# note\nempty=\n[Net]\nHost=h=1\nPort=80\n  [Other]\nHost=o\nnoequals\n");
    using Texts = std::vector<std::string>;
    struct Case { const char *section, *key; Texts expected; };
    const Case cases[] = {
        {nullptr, nullptr, {"5", "title", " Main; page: x ", "empty", "", "Net.Host", "h=1", "Net.Port", "80", "Other.Host", "o"}},
        {"Net", nullptr, {"2", "Host", "h=1", "Port", "80"}}, {nullptr, "title", {"1", "title", " Main; page: x "}},
        {"Other", "Host", {"1", "Host", "o"}}, {nullptr, "Net.Port", {"1", "Net.Port", "80"}}, {nullptr, "Host", {"0"}},
        {"Net", "title", {"0"}}, {"None", "Host", {"0"}},
    };
    for (const Case &c : cases) EXPECT_EQ(ReadIni(path, c.section, c.key), c.expected) << c.section << "/" << c.key;
    EXPECT_EQ(ReadIni(dir.path() + "/none.ini", nullptr, nullptr), Texts{"-1"});
    EXPECT_EQ(ReadIni(path, nullptr, "Host", '\0'), (Texts{"1", "Host", "h=1"})) << "unqualified names: the first Host";
    const std::string value(10000, 'v');
    EXPECT_EQ(ReadIni(dir.Write("long.ini", "k=" + value + "\n"), nullptr, "k"), (Texts{"1", "k", value}));
}

}  // namespace
