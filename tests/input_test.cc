// The input list and the text helpers under it: lookups and values, copies,
// splitting, replacing, marker pairing, query keys, element ranges, base
// names, URL encoding and decoding, and posted data.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "companion/libKXUtils.h"
#include "support/kx_test.h"

namespace {

using kx::test::HeapText;
using kx::test::InputList;

TEST(InputList, LookupIsExactAndFirstMatchWins) {
    InputList l;
    EXPECT_EQ(EingabewertIndex("User", l.list(), l.count()), 0) << "empty list gives its count";
    for (const char *name : {"User", "user", "Use", "User"}) l.Add(name);
    const std::pair<const char *, int> cases[] = {{"User", 0}, {"user", 1}, {"Use", 2}, {"Us", 4}, {"Users", 4}, {nullptr, 4}};
    for (const auto &[name, index] : cases) EXPECT_EQ(EingabewertIndex(name, l.list(), l.count()), index) << name;
}

// Each step on one list, and the list it leaves (see Describe).
TEST(InputList, SettersCopyAppendAndFallBackToTheDefault) {
    InputList l;
    l.Add("Color", 'n', "blue");
    l.Add("A");
    auto list = [&] { return kx::test::Describe(l.list(), l.count()); };
    EXPECT_EQ(SetEingabeWert(l.count(), l.list(), "Color", "red"), 0);
    EXPECT_EQ(list(), "Color|n|blue=[red]\nA|n|<null>\n");
    l[0].WertPosition = 1;
    char text[] = "green";
    EXPECT_EQ(SetEingabeWertI(l.count(), l.list(), 0, text), 0);
    text[0] = 'X';
    EXPECT_EQ(list(), "Color|n|blue=[green]\nA|n|<null>\n") << "its own copy, current from its start";
    EXPECT_EQ(SetEingabeWert(l.count(), l.list(), "Color", nullptr), 0);
    // The index set comes back; unknown names and indexes leave the list alone.
    EXPECT_EQ(SetEingabeWert(l.count(), l.list(), "B", "x"), 2);
    EXPECT_EQ(SetEingabeWertI(l.count(), l.list(), 2, "x"), 2);
    EXPECT_EQ(SetEingabeWertI(l.count(), l.list(), -1, "x"), -1);
    EXPECT_EQ(AppendEingabeWert(l.count(), l.list(), "B", "x"), 2);
    EXPECT_EQ(AppendEingabeWert(l.count(), l.list(), "A", "ab"), 1);
    EXPECT_EQ(list(), "Color|n|blue\nA|n|<null>=[ab]\n");
    l[1].WertPosition = 1;
    l[1].WertGesetzt = 2;
    AppendEingabeWert(l.count(), l.list(), "A", "cd");
    EXPECT_EQ(list(), "Color|n|blue\nA|n|<null>=[abcd]\n") << "joined without separator, one value, position 0";
    // AppendToEingabe declares a new name, and redeclares a known one keeping its value.
    ASSERT_EQ(AppendToEingabe(&l.count(), &l.list(), nullptr, "Hosts", 2, "a~b"), 0);
    ASSERT_EQ(AppendToEingabe(&l.count(), &l.list(), "~", "A", 1, nullptr), 0);
    EXPECT_EQ(list(), "Color|n|blue\nA|n|=[abcd]\nHosts|j|a~b\n");
    // A separator that is no definition marker declares too.
    ASSERT_EQ(AppendToEingabe(&l.count(), &l.list(), ";", "Zone", 1, "eu"), 0);
    EXPECT_EQ(list(), "Color|n|blue\nA|n|=[abcd]\nHosts|j|a~b\nZone|n|eu\n");
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

TEST(TextHelpers, CopiesJoinsAndLists) {
    EXPECT_EQ(HeapText(UtilsErzeugeText("abcdef", 3)).str(), "abc");
    EXPECT_EQ(HeapText(UtilsErzeugeText("abc", 0)).str(), "");
    EXPECT_EQ(HeapText(EweitereText("a", "bcd", 2, ", ")).str(), "a, bc");
    EXPECT_EQ(HeapText(EweitereText(nullptr, "b", 1, nullptr)).str(), "b");
    EXPECT_EQ(HeapText(EweitereText("a", nullptr, 5, ",")).str(), "a,");
    char *list = AddElement(nullptr, nullptr, "a");
    list = AddElement(list, ",", "b");
    EXPECT_EQ(AddElement(list, ",", nullptr), list) << "a missing piece leaves the very same text";
    list = AddElementToInput(list, "|", "c", strdup("!"));
    EXPECT_EQ(HeapText(list).str(), "a,b|c!");
    EXPECT_EQ(HeapText(AddElementToInput(nullptr, "|", "c", strdup("t"))).str(), "ct")
        << "no separator before the first element; the tail is taken over";
    char path[] = "a/b\\c/d";
    UtilsErsetzeZeichen(path, "/\\", 2, '|');
    EXPECT_STREQ(path, "a|b|c|d");
    struct Cut { std::string in, out; int length; };
    for (const Cut &c : {Cut{"ab\r\ncd", "ab", 2}, {"abc", "abc", 3}, {"\nx", "", 0}, {"a\rb", "a", 1}}) {
        std::string text = c.in;
        EXPECT_EQ(MacheLetztesElementZumText(text.data()), c.length) << c.in;
        EXPECT_STREQ(text.c_str(), c.out.c_str());
    }
}

TEST(TextHelpers, SplitCountsElementsAndLengths) {
    struct Case { std::string text, separator; int count, longest; std::vector<int> lengths; };
    const Case cases[] = {{"a,b,", ",", 3, 1, {1, 1, 0}}, {"", ",", 1, 0, {0}}, {",", ",", 2, 0, {0, 0}},
                          {"abc::d::", "::", 3, 3, {3, 1, 0}}, {"no separator", "|", 1, 12, {12}}};
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
        {"a|b|c", "1", "|", "b"}, {"a|b|c", "0", "|", "a"}, {"a|b|c", "3", "|", nullptr}, {"a::b::c", "2", "::", "c"},
        {"a|b", "1", nullptr, nullptr}, {"a|b", "99999999999999999999", "|", nullptr}, {"a1|b", "1a", "|", nullptr},
        {"Size:  42 kB\nx", "Size:", nullptr, "42 kB"}, {"Name:\tvalue \r\nrest", "Name:", nullptr, "value "},
        {"Key:", "Key:", nullptr, ""}, {"x", "Missing", nullptr, nullptr},
    };
    for (const Case &c : cases)
        EXPECT_EQ(HeapText(GetIndexedValue(c.text, c.key, c.separator)).str(), c.value ? c.value : "<null>")
            << c.text << " / " << c.key;
    EXPECT_EQ(GetIndexedValue(nullptr, "1", "|"), nullptr);
}

TEST(TextHelpers, ReplaceEveryOccurrenceWithoutOverlap) {
    struct Case { const char *text, *old, *replacement, *result; };
    const Case cases[] = {{"x.y.z", ".", "::", "x::y::z"}, {"aaa", "aa", "b", "ba"}, {"abc", "x", "y", "abc"},
                          {"abab", "ab", "", ""}, {"ab", "b", "bb", "abb"}, {"", "a", "b", ""}, {"abc", "", "x", "abc"}};
    for (const Case &c : cases) EXPECT_EQ(HeapText(StringReplace(c.text, c.old, c.replacement)).str(), c.result) << c.text;
    EXPECT_EQ(HeapText(StringNReplace("a.b", 5, ".", 1, "-!")).str(), "a-") << "never steps past the end";
}

TEST(TextHelpers, ChangeSubText) {
    const char *text = "plain";
    int length = -7;
    EXPECT_EQ(ChangeSubText(text, "<>", 2, "&lt;", &length), text) << "nothing matches: the argument itself";
    EXPECT_EQ(length, -7) << "length is not written";
    EXPECT_EQ(HeapText(ChangeSubText("a<b>c", "<>", 2, "&#", &length)).str(), "a&#b&#c");
    EXPECT_EQ(length, 7);
    EXPECT_EQ(HeapText(ChangeSubText("a<b>", "<>", 1, "", nullptr)).str(), "ab>") << "only the first set characters";
    // Growing past the first blocks.
    std::string quoted;
    for (int i = 0; i < 20000; ++i) quoted += "&quot;";
    EXPECT_EQ(HeapText(ChangeSubText(std::string(20000, '"').c_str(), "\"", 1, "&quot;", &length)).str(), quoted);
    EXPECT_EQ(length, 20000 * 6);
    const std::string replacement(5000, 'q');
    EXPECT_EQ(HeapText(ChangeSubText("a\"b", "\"", 1, replacement.c_str(), &length)).str(), "a" + replacement + "b");
}

TEST(TextHelpers, PairItBalancesMarkersAndSkipsJavascriptTargets) {
    struct Case { const char *text, *open, *close; long offset; };  // -1: the text itself
    const Case cases[] = {
        {"{a{b}c}d", "{", "}", 6}, {"{a}", "{", "}", 2}, {"{a", "{", "}", -1}, {"{a{b}", "{", "}", -1},
        {"plain", "{", "}", -1}, {"{href=javascript}x}", "{", "}", 18}, {"{JavaScript}", "{", "}", -1},
        {"{javascript}", "{", "}", -1}, {"<!a<!b!>c!>d", "<!", "!>", 9}, {"{}", "{", "}", 1},
    };
    for (const Case &c : cases) {
        const char *closing = PairIt(c.text, c.open, c.close);
        EXPECT_EQ(closing == c.text ? -1 : closing - c.text, c.offset) << c.text;
    }
}

TEST(RequestText, KeyValuePointsIntoTheQuery) {
    struct Case { const char *query, *key, *assign, *value; };  // value null: none
    const std::string key254(254, 'k'), key253(253, 'k'), query254 = key254 + "=v", query253 = key253 + "=v";
    const Case cases[] = {
        {"x=1&Application=Traps&y=2", nullptr, nullptr, "Traps&y=2"}, {"Application=Traps", nullptr, nullptr, "Traps"},
        {"MyApplication=Traps", nullptr, nullptr, nullptr}, {"x=1", nullptr, nullptr, nullptr}, {"", nullptr, nullptr, nullptr},
        {"a=1&User:me", "User", ":", "me"}, {"User=me&Application=", nullptr, nullptr, ""},
        {"Page=1&x=2&Page=3", "Page", nullptr, "3"},  // "&key=" anywhere comes before "key=" at the start
        {query254.c_str(), key254.c_str(), nullptr, nullptr},  // "&" + key + "=" needs 256 bytes
        {query253.c_str(), key253.c_str(), nullptr, "v"}, {nullptr, nullptr, nullptr, nullptr},
    };
    for (const Case &c : cases) {
        const char *value = PositioniereAufSchluesselwortWert(c.query, c.key, c.assign);
        if (c.value == nullptr) {
            EXPECT_EQ(value, nullptr) << c.query;
            continue;
        }
        ASSERT_NE(value, nullptr) << c.query;
        EXPECT_GE(value, c.query) << "a pointer into the query, not a copy";
        EXPECT_STREQ(value, c.value);
    }
}

TEST(RequestText, ElementRanges) {
    struct Case { const char *text, *separator; int first, number; const char *expected; };  // null: unchanged
    const Case cases[] = {
        {"a\nb\nc\nd", "\n", 2, 2, "b\nc"}, {"a\nb\nc\nd", "\n", 3, 0, "c\nd"}, {"a\nb\nc\nd", "\n", 1, 1, "a"},
        {"a\nb\nc\nd", "\n", 4, 5, "d"}, {"a\nb\nc\nd", "\n", 4, -1, "d"}, {"a\nb\nc\nd", "\n", 5, 1, nullptr},
        {"a\nb\nc\nd", "\n", 1, 0, nullptr}, {"a\nb\nc\nd", "\n", -3, -3, nullptr}, {"a\nb\nc\nd", "\n", 0, 2, "a\nb"},
        {"a,,b", ",", 2, 1, ""}, {"a,b,", ",", 3, 1, ""}, {"a::b::c", "::", 2, 1, "b:"}, {"a::b::c", "::", 2, 0, "b::c"},
        {"abc", "", 2, 1, nullptr},
    };
    for (const Case &c : cases) {
        char *text = strdup(c.text);
        char *result = UtilsCreateOuput(text, c.separator, c.first, c.number);
        EXPECT_EQ(result == text, c.expected == nullptr) << c.text << " " << c.first << "," << c.number
                                                         << ": a new text, the old one freed, or the text itself";
        EXPECT_STREQ(result, c.expected ? c.expected : c.text) << c.first << "," << c.number;
        free(result);
    }
    EXPECT_EQ(UtilsCreateOuput(nullptr, ",", 2, 1), nullptr);
    char text[] = "a,b";
    EXPECT_EQ(UtilsCreateOuput(text, nullptr, 2, 1), text);
}

TEST(RequestText, BaseNames) {
    struct Case { const char *path; std::size_t offset; };
    for (const Case &c : {Case{"a/b\\c.html", 4}, {"a\\b/c.html", 4}, {"c.html", 0}, {"/", 1}, {"", 0}, {"dir/", 4},
                          {"/usr/bin/prog", 9}})
        for (const char *base : {HTMLBasename(c.path), ErmittleProgrammname(c.path), KXUtilsBasename(c.path, 0)})
            EXPECT_EQ(base, c.path + c.offset) << c.path;
    EXPECT_EQ(HTMLBasename(nullptr), nullptr);
    EXPECT_EQ(KXUtilsBasename(nullptr, 0), nullptr);
}

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

TEST(UrlCodec, DecodesEscapesAndKeepsBadOnes) {
    struct Case { const char *in, *out; };
    const Case cases[] = {
        {"a+b%2Fc", "a b/c"}, {"%41%42", "AB"}, {"%e4%C4", "\xE4\xC4"}, {"100%", "100%"}, {"%G1", "%G1"}, {"%4", "%4"},
        {"%", "%"}, {"%%41", "%A"}, {"%1G%", "%1G%"}, {"%u", "%u"}, {"%u30", "%u30"}, {"%u304", "%u304"}, {"", ""},
    };
    for (const Case &c : cases) EXPECT_EQ(HeapText(ServerDecoding(c.in)).str(), c.out) << c.in;
    EXPECT_EQ(HeapText(ServerDecoding(nullptr)).str(), "") << "an empty heap text, not null";
    HeapText nul(ServerDecoding("a%00b"));
    EXPECT_EQ(std::string(nul.Get(), 3), std::string("a\0b", 3)) << "%00 is decoded like any byte";
    for (const auto &[hex, byte] : {std::pair{"41", 0x41}, {"fF", 0xFF}, {"aB", 0xAB}})
        EXPECT_EQ(static_cast<unsigned char>(x2c(hex)), byte) << hex;
    for (const auto &[digit, value] : {std::pair{'c', 12}, {'C', 12}, {'7', 7}, {'x', 'x'}}) EXPECT_EQ(atox(digit), value);
}

TEST(UrlCodec, EncodesTheFixedSetAndDecodingUndoesIt) {
    struct Case { const char *in; int blank, doubled; const char *out; };
    const Case cases[] = {
        {"a b&c", 0, 0, "a+b%26c"}, {"a b&c", 1, 0, "a%20b%26c"}, {"a b&c", 0, 1, "a+b%%26c"},
        {"a b&c", 1, 1, "a%%20b%%26c"}, {"a b&c", 0, 2, "a+b%26c"}, {nullptr, 0, 0, ""},
        {" \"/:+&=%~#'`>|", 1, 0, "%20%22%2F%3A%2B%26%3D%25%7E%23%27%60%3E%7C"},
        {"azAZ09.-_?<;!*()[]{}\\@$^,\x80\xFF", 0, 0, "azAZ09.-_?<;!*()[]{}\\@$^,\x80\xFF"},
    };
    for (const Case &c : cases) {
        int length = -1;
        EXPECT_EQ(HeapText(ServerEncoding(c.in, &length, c.blank, c.doubled)).str(), c.out) << c.in << c.blank << c.doubled;
        EXPECT_EQ(length, static_cast<int>(std::strlen(c.out)));
    }
    std::string all;
    for (int b = 1; b < 256; ++b) all += static_cast<char>(b);
    for (int blank = 0; blank < 2; ++blank)
        EXPECT_EQ(HeapText(ServerDecoding(HeapText(ServerEncoding(all.c_str(), nullptr, blank, 0)).Get())).str(), all);
}

// Decodes text in a child with LOCPATH set: "%u" escapes switch the whole
// process to the locale "Japanese" on first use, once.
std::string DecodeInChild(const std::string &locpath, const char *text) {
    int fds[2];
    if (pipe(fds) != 0) return "<pipe>";
    const pid_t child = fork();
    if (child == 0) {
        close(fds[0]);
        setenv("LOCPATH", locpath.c_str(), 1);
        const std::string result = HeapText(ServerDecoding(text)).str();
        _exit(write(fds[1], result.data(), result.size()) == static_cast<ssize_t>(result.size()) ? 0 : 1);
    }
    close(fds[1]);
    std::string result;
    char buffer[256];
    for (ssize_t n; (n = read(fds[0], buffer, sizeof buffer)) > 0;) result.append(buffer, static_cast<size_t>(n));
    close(fds[0]);
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? result : "<child failed>";
}

TEST(UrlCodec, WideEscapesDecodeIntoTheJapaneseLocale) {
    kx::test::TempDir locales, empty;
    // The C library resolves "Japanese" through its alias table (to
    // ja_JP.eucJP) where it has one, and takes the name as it is otherwise.
    const std::string command = "localedef -i ja_JP -f EUC-JP " + locales.path() + "/Japanese && ln -s Japanese " +
                                locales.path() + "/ja_JP.eucJP";
    ASSERT_EQ(system(command.c_str()), 0) << "localedef builds ja_JP in EUC-JP";
    EXPECT_EQ(DecodeInChild(locales.path(), "x%u3042y"), "x\xA4\xA2y") << "six characters make one character";
    EXPECT_EQ(DecodeInChild(locales.path(), "%u00e9%41"), "\x8F\xAB\xB1" "A") << "three bytes are kept";
    EXPECT_EQ(DecodeInChild(locales.path(), "%u304"), "%u304") << "an escape cut short stays";
    EXPECT_EQ(DecodeInChild(empty.path(), "x%u3042y%20"), "x%u3042y ") << "kept when the locale is missing";
}

TEST(Posted, ReadsEverything) {
    struct Case { int initialSize; std::size_t bytes; };  // around the first block and its growth
    for (const Case &c : {Case{0, 1}, {16, 40000}, {8, 7}, {8, 8}, {-5, 5000}, {1, 300}}) {
        std::string data;
        for (std::size_t i = 0; i < c.bytes; ++i) data.push_back(static_cast<char>('a' + i % 26));
        kx::test::StandardInputPipe input;
        input.WriteAndClose(data);
        int length = -1;
        HeapText text(UtilsGetPostedInformation(c.initialSize, nullptr, &length));
        EXPECT_EQ(length, static_cast<int>(data.size())) << c.initialSize << "/" << c.bytes;
        EXPECT_EQ(text.str(), data) << c.initialSize << "/" << c.bytes;
    }
    kx::test::StandardInputPipe input;
    input.WriteAndClose("");
    char data[] = "a=1&b=2";
    FILE *stream = fmemopen(data, sizeof data - 1, "r");
    HeapText text(UtilsGetPostedInformation(0, stream, nullptr));
    fclose(stream);
    EXPECT_EQ(text.str(), "a=1&b=2") << "the given stream is read once standard input is ready";
}

// Empty input gives null and length 0; so do the tests that wait, but they
// leave the length: nothing arrives within the 5 seconds, or the input stops
// before its end; the limit covers the whole read.
TEST(Posted, InputThatDoesNotArriveWholeGivesNull) {
    for (const auto &[sent, closed] : {std::pair{"", true}, {"", false}, {"a=1&b=", false}}) {
        kx::test::StandardInputPipe input;
        closed ? input.WriteAndClose(sent) : input.Write(sent);
        int length = 42;
        EXPECT_EQ(UtilsGetPostedInformation(0, nullptr, &length), nullptr) << sent;
        EXPECT_EQ(length, closed ? 0 : 42) << sent;
    }
}

}  // namespace
