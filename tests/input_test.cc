// The input list and the text helpers under it: lookups and values, copies,
// splitting, replacing, marker pairing, query keys, element ranges, base
// names, URL encoding and decoding, and posted data; application definitions
// read from memory and from files, the definition beside the program, the
// record of the first two definition files read, the search order of
// SearchForFile and the paths built from directory pieces.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "companion/libKXUtils.h"
#include "core/entry.h"
#include "core/name_index.h"
#include "input/url_decoding.h"
#include "kx_list.h"
#include "support/kx_test.h"

namespace {

using kx::test::CurrentDirectory;
using kx::test::Describe;
using kx::test::HeapText;
using kx::test::InputList;
using kx::test::Terminated;
using Texts = std::vector<std::string>;

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

// AppendToEingabe declares what the line "<name><sep><kind><sep><default>"
// declares, also where the parts do not come apart where they were joined.
TEST(InputList, AppendToEingabeDeclaresAsItsLineWould) {
    struct Row {
        const char *separator, *name;
        int kind;
        const char *defaultText, *declared;
    };
    const Row rows[] = {
        {"|", "Plain", 1, "a\rb", "Plain|n|a\n"},            // the default ends at a line end
        {"|", "a|b", 1, "x", "a|b|n|x\n"},                    // the name's separator splits it
        {"n", "Q", 1, "v", "Q|n|nv\n"},                       // the kind is the separator
        {"|\r", "R", 2, "w", "R|\r|\n"},                     // the parsing separator is cut
        {"||", "S", 2, "t", "S||||t\n"},                      // a longer separator
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        InputList l;
        ASSERT_EQ(AppendToEingabe(&l.count(), &l.list(), row.separator, row.name, row.kind, row.defaultText), 0);
        EXPECT_EQ(kx::test::Describe(l.list(), l.count()), row.declared);
    }
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

// One call of a text function of tests/data/text_functions.txt; "<null>" for
// no text (from UtilsCreateOuput: the text itself came back).
std::string Call(const kx::test::DataRow &r) {
    const auto text = [&](size_t i) { return r[i] ? r[i]->c_str() : nullptr; };
    const auto number = [&](size_t i) { return std::stoi(*r[i]); };
    const std::string &function = *r[0];
    if (function == "indexed") return HeapText(GetIndexedValue(text(1), text(2), text(3))).str();
    if (function == "replace") return HeapText(StringReplace(text(1), text(2), text(3))).str();
    if (function == "decode") return HeapText(ServerDecoding(text(1))).str();
    if (function == "application") return std::to_string(KXIsApplicationName(text(1)));
    if (function == "keyvalue") {  // a pointer into the query, not a copy
        const char *value = PositioniereAufSchluesselwortWert(text(1), text(2), text(3));
        if (value != nullptr) EXPECT_TRUE(value >= text(1) && value <= text(1) + r[1]->size());
        return value != nullptr ? value : "<null>";
    }
    if (function == "basename") {  // three functions, one answer: a pointer into the path
        const char *path = text(1), *base = HTMLBasename(path);
        EXPECT_EQ(base, ErmittleProgrammname(path));
        EXPECT_EQ(base, KXUtilsBasename(path, 0));
        EXPECT_TRUE(base >= path && base <= path + r[1]->size());
        return base;
    }
    if (function == "pairit") {
        const char *closing = PairIt(text(1), text(2), text(3));
        return std::to_string(closing == text(1) ? -1 : closing - text(1));
    }
    if (function == "encode") {
        int length = -1;
        const std::string encoded = HeapText(ServerEncoding(text(1), &length, number(2), number(3))).str();
        EXPECT_EQ(length, static_cast<int>(encoded.size())) << encoded;
        return encoded;
    }
    EXPECT_EQ(function, "ranges");
    char *copy = strdup(text(1));  // a new text, the old one freed, or the text itself
    char *result = UtilsCreateOuput(copy, text(2), number(3), number(4));
    const std::string shown = result == copy ? "<null>" : result;
    free(result);
    return shown;
}

TEST(TextFunctions, OneCallPerLine) {
    for (const kx::test::DataRow &row : kx::test::DataTable("text_functions.txt")) {
        std::string call;
        for (const auto &field : row) call += field.value_or("<null>") + " ";
        EXPECT_EQ(Call(row), row.back().value_or("<null>")) << call;
    }
    EXPECT_EQ(GetIndexedValue(nullptr, "1", "|"), nullptr);
    EXPECT_EQ(HTMLBasename(nullptr), nullptr);
    EXPECT_EQ(KXUtilsBasename(nullptr, 0), nullptr);
    EXPECT_EQ(HeapText(StringNReplace("a.b", 5, ".", 1, "-!")).str(), "a-") << "never steps past the end";
    EXPECT_EQ(UtilsCreateOuput(nullptr, ",", 2, 1), nullptr);
    char text[] = "a,b";
    EXPECT_EQ(UtilsCreateOuput(text, nullptr, 2, 1), text);
    EXPECT_EQ(HeapText(ServerDecoding(nullptr)).str(), "") << "an empty heap text, not null";
    HeapText nul(ServerDecoding("a%00b"));
    EXPECT_EQ(std::string(nul.Get(), 3), std::string("a\0b", 3)) << "%00 is decoded like any byte";
    for (const auto &[hex, byte] : {std::pair{"41", 0x41}, {"fF", 0xFF}, {"aB", 0xAB}})
        EXPECT_EQ(static_cast<unsigned char>(x2c(hex)), byte) << hex;
    for (const auto &[digit, value] : {std::pair{'c', 12}, {'C', 12}, {'7', 7}, {'x', 'x'}}) EXPECT_EQ(atox(digit), value);
    std::string all;
    for (int b = 1; b < 256; ++b) all += static_cast<char>(b);
    for (int blank = 0; blank < 2; ++blank)
        EXPECT_EQ(HeapText(ServerDecoding(HeapText(ServerEncoding(all.c_str(), nullptr, blank, 0)).Get())).str(), all);
}

// Every decoder on text placed so that its escapes meet the edges of the
// 16-byte registers and blocks and of the 64-byte steps: an escape whose
// digits lie in the next block, a "%" that may start a "%u" escape behind
// them, the last lanes a block reads, the first escape after a run of plain
// text long enough to be copied in steps; tails of several lengths follow, so
// that the steps in the text and in a padded copy of the last bytes, and
// the bytes left behind the last block, take part. (No case is a whole "%u"
// escape: its first use fixes the locale state for the process, and the
// children of the test below inherit it.)
TEST(UrlCodec, BlockDecodersMatchByteWiseAtEveryEdge) {
    struct Case { size_t pad; const char *text, *out; };
    const Case cases[] = {
        {15, "%41", "A"}, {14, "%41+", "A "}, {63, "%41", "A"}, {62, "%41%42", "AB"}, {61, "%4", "%4"},
        {63, "%", "%"}, {64, "%G1", "%G1"}, {63, "%4G", "%4G"}, {47, "%%41", "%A"}, {62, "%u3", "%u3"},
        {60, "%uG042", "%uG042"}, {0, "+%2B+%2b", " + +"}, {1, "%41" "................................................"
        "................................................%42", "A................................................"
        "................................................B"}, {5, "%41%42%43%44%45%46%47", "ABCDEFG"},
        {13, "%41", "A"}, {15, "%41%42+", "AB "}, {14, "%41%uG0", "A%uG0"}, {15, "%u3", "%u3"}, {31, "%4a", "J"},
        {16, "%%%41", "%%A"}, {15, "%4", "%4"}, {14, "%41%4", "A%4"}, {17, "%4+%41", "%4 A"},
        {207, "%41%42", "AB"}, {200, "%u3+", "%u3 "}, {255, "%41", "A"},
        {3, "%/0%:0%@A%`a%Gf%g1%Ff%aF%\xC6" "1", "%/0%:0%@A%`a%Gf%g1\xFF\xAF%\xC6" "1"},
    };
    const std::vector<kx::input::UrlDecoder> decoders = kx::input::AvailableDecoders();
    for (const Case &c : cases)
        for (const auto decode : decoders)
            for (const std::string &end : {std::string(), std::string(100, 'y'), std::string(200, 'y')}) {
                const std::string in = std::string(c.pad, 'x') + c.text + end;
                std::vector<char> out(in.size());  // exactly the room promised, for ASan
                EXPECT_EQ(std::string(out.data(), decode(in.c_str(), in.size(), out.data())),
                          std::string(c.pad, 'x') + c.out + end) << c.pad << c.text << end.size();
            }
    std::string many, decoded;  // escapes back to back across many steps
    for (int k = 0; k < 100; ++k) many += "%4" + std::string(1, "0123456789"[k % 10]) + (k % 7 ? "" : "+");
    for (int k = 0; k < 100; ++k) decoded += static_cast<char>(0x40 + k % 10) + std::string(k % 7 ? "" : " ");
    EXPECT_EQ(HeapText(ServerDecoding((many + "%").c_str())).str(), decoded + "%");
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
    const std::string pad(40, 'x'), tail(100, 'y');  // the escape takes a "%" its step had found
    EXPECT_EQ(DecodeInChild(locales.path(), (pad + "%u30%41" + tail).c_str()), pad + "\xA4\xB4" "1" + tail);
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

// --- application definitions

// An in-memory definition: the texts, each with its NUL, and the empty text that ends the block.
std::string Block(const std::vector<std::string_view> &texts) { return Terminated(texts) + '\0'; }


// Each test runs in a directory of its own with fresh keyword indexes and no
// recorded definition files, and sees what the library writes to its page.
class Definition : public kx::test::InTempDir {
protected:
    int Read(const std::string &application) {
        return ErmittleEingabe(application.c_str(), &in_.list(), &in_.count(), nullptr, 0);
    }
    int Read2(const std::string &application, const char *programPath = nullptr) {
        return ErmittleEingabe2(application.c_str(), &in_.list(), &in_.count(), nullptr, programPath, 0);
    }
    std::string Entries() { return Describe(in_.list(), in_.count()); }

    kx::test::CapturedPage page;
};

const std::string kLong(10000, 'x');
const std::string kPiece(4095 - 7, 'x');  // lines count 4095 bytes, the rest is dropped

// tests/data/definitions.txt: what, where, definition, entries, messages.
TEST_F(Definition, DeclaresTheEntriesOfEachLine) {
    for (const kx::test::DataRow &c : kx::test::DataTable("definitions.txt")) {
        SCOPED_TRACE(*c[0]);
        in_.Clear();
        kx::test::CapturedPage messages;
        if (*c[1] == "file") dir_.Write("App.ini", *c[2]);
        ASSERT_EQ(Read(*c[1] == "file" ? std::string("App") : *c[2]), 0);
        EXPECT_EQ(Entries(), *c[3]);
        EXPECT_EQ(messages.Text(), *c[4]);
    }
}

TEST_F(Definition, SecondFormDropsTheRestOfLongInMemoryLines) {
    ASSERT_EQ(Read2(Block({"|", "Long|n|" + kLong + "Planted|n|y"})), 0);
    EXPECT_EQ(Entries(), "Long|n|" + kPiece + "\n");
    EXPECT_EQ(page.Text(), "");
}

TEST_F(Definition, EarlierEntryIsUpdatedAndKeywordsRecordedCaseSensitively) {
    ASSERT_EQ(Read(Block({"|", "RootPath|n|/old"})), 0);
    EXPECT_EQ(iRootPath, 0);
    ASSERT_EQ(Read(Block({"|", "X|n|", "RootPath|j|/new", "server|n|", "Server|n|", "Ersetzungsanfang|n|{",
                          "Ersetzungsende|n|}", "CGIPath|n|", "AppSuffix|n|"})), 0);
    EXPECT_EQ(in_[0].Art, 'j');
    EXPECT_STREQ(in_[0].Vorgabe, "/new");
    const std::pair<int, int> indexes[] = {{iRootPath, 0}, {iServer, 3}, {iErsetzungsAnfang, 4}, {iErsetzungsEnde, 5},
                                           {iCGIPath, 6}, {iAppSuffix, 7}, {iApplication, -1}};
    for (const auto &[index, expected] : indexes) EXPECT_EQ(index, expected);
}

TEST_F(Definition, BadArgumentsAndMissingFiles) {
    const std::string block = Block({"|", "A|n|1"});
    EXPECT_EQ(ErmittleEingabe(block.c_str(), nullptr, &in_.count(), nullptr, 0), 1);
    EXPECT_EQ(ErmittleEingabe2(block.c_str(), &in_.list(), nullptr, nullptr, nullptr, 0), 1);
    EXPECT_EQ(_pEingabe, nullptr);
    EXPECT_EQ(ErmittleEingabe(nullptr, &in_.list(), &in_.count(), nullptr, 0), 1);
    EXPECT_EQ(page.Text(), "<! ErmittleEingabe: Anwendung == NULL>\n");
    ASSERT_EQ(Read(block), 0);
    dir_.Write("Dir.ini/inside", "");
    dir_.Write("Empty.ini", "");
    for (const char *name : {"Missing", "Empty", "Dir"}) EXPECT_EQ(Read(name), 1) << name;
    EXPECT_EQ(Entries(), "A|n|1\n") << "the list is left as it was";
}

TEST_F(Definition, FirstCallRecordsTheListHandlesAndNeedsNoInitialisedList) {
    in_.list() = reinterpret_cast<EingabeElement *>(0x10);  // never read: the count is 0
    ASSERT_EQ(Read(Block({"|", "A|n|1"})), 0);
    InputList other;
    ASSERT_EQ(ErmittleEingabe(Block({"|", "B|n|"}).c_str(), &other.list(), &other.count(), nullptr, 0), 0);
    EXPECT_EQ(_pEingabe, &in_.list());
    EXPECT_EQ(_pEingabeAnzahl, &in_.count());
    EXPECT_EQ(Entries(), "A|n|1\n");
}

TEST_F(Definition, RequestedNameIsDecodedAndCannotLeaveTheSearchPlaces) {
    dir_.Write("app/My App.ini", "|\nA|n|1\n");
    dir_.Write("passwd.ini", "|\nOutside|n|1\n");  // outside the application's directory app/
    dir_.Write("app/passwd.ini", "|\nInside|n|1\n");
    CurrentDirectory application(dir_.path() + "/app");
    ASSERT_EQ(Read("My%20App"), 0);
    EXPECT_EQ(Entries(), "A|n|1\n");
    for (const std::string &name : {std::string("..%2F..%2Fetc%2Fpasswd"), std::string("..%2Fpasswd"),
                                    std::string("..%5Cpasswd"), std::string("../passwd"), dir_.path() + "/passwd"}) {
        InputList list;
        EXPECT_EQ(ErmittleEingabe(name.c_str(), &list.list(), &list.count(), nullptr, 0), 0) << name;
        EXPECT_EQ(Describe(list.list(), list.count()), "Inside|n|1\n") << name;
    }
}

// --- the second form: the definition beside the program, and the record

TEST_F(Definition, FallsBackBesideTheProgram) {
    dir_.Write("bin/Prog.ini", "~\nA~n~1\nbroken\n");
    dir_.Write("bin/sub/Sub.ini", "|\nA|n|1\n");
    dir_.Write("bin/My%20App.ini", "|\nA|n|1\n");
    struct Case { const char *application, *program, *recorded; char sign; };
    const Case cases[] = {
        {"Prog", "bin/prog.cgi", "bin/Prog.ini", '~'},
        {"Sub", "bin\\sub/prog.cgi", "bin/sub/Sub.ini", '|'},        // separators unified
        {"My%20App", "bin/prog.cgi", "bin/My%20App.ini", '|'},  // the name kept undecoded
    };
    for (const Case &c : cases) {
        kx::test::ForgetDefinitionFiles();
        ASSERT_EQ(Read2(c.application, c.program), 0) << c.application;
        EXPECT_STREQ(_IniFilename[0], c.recorded);
        EXPECT_EQ(_IniFilenameDivideSign[0], c.sign);
    }
    EXPECT_EQ(page.Text(), "<! ErmittleEingabe: Fehler in 'bin/Prog.ini' Zeile '3': Kein '~' hinter 'Name'gefunden>\n")
        << "messages name the path that was opened";
    EXPECT_EQ(Entries(), "A|n|1\n");
    kx::test::ForgetDefinitionFiles();
    for (const char *program : {"prog.cgi", static_cast<const char *>(nullptr)}) EXPECT_EQ(Read2("Prog", program), 1);
    EXPECT_EQ(Read2("Missing", "bin/prog.cgi"), 1);
    EXPECT_EQ(_IniFilename[0], nullptr) << "no directory part, no fallback";
    // The fallback stays in the program's directory.
    dir_.Write("secret.ini", "|\nOutside|n|1\n");
    dir_.Write("bin/secret.ini", "|\nInside|n|1\n");
    CurrentDirectory work(dir_.path() + "/bin/sub");
    in_.Clear();
    ASSERT_EQ(Read2("../../secret", (dir_.path() + "/bin/prog.cgi").c_str()), 0);
    EXPECT_EQ(Entries(), "Inside|n|1\n");
}

TEST_F(Definition, RecordsTheFirstTwoFilesOnly) {
    dir_.Write("One.ini", "|\nA|n|1\n");
    dir_.Write("Two.ini", "~\nB~n~1\n");
    dir_.Write("Three.ini", "#\nC#n#1\n");
    ASSERT_EQ(Read2(std::string("^\0D^n^1\0\0", 9)), 0);  // a definition in memory is no file
    ASSERT_EQ(Read("One"), 0);                            // the first form keeps none
    for (const char *name : {"Two", "Three", "One"}) ASSERT_EQ(Read2(name), 0) << name;
    EXPECT_STREQ(_IniFilename[0], "Two.ini");
    EXPECT_EQ(_IniFilenameDivideSign[0], '~');
    EXPECT_STREQ(_IniFilename[1], "Three.ini");
    EXPECT_EQ(_IniFilenameDivideSign[1], '#');
    EXPECT_EQ(in_.count(), 4);
}

// --- SearchForFile and the paths built from directory pieces

// A list declared from definition lines (names with their defaults), e.g.
// {"RootPath|n|base"}; the keyword index globals follow it.
class Search : public Definition {
protected:
    void Declare(const Texts &lines) {
        std::vector<std::string_view> texts = {"|"};
        texts.insert(texts.end(), lines.begin(), lines.end());
        ASSERT_EQ(Read(Block(texts)), 0);
    }
    std::string Found(const char *name, const std::string &settings = {}, int settingsCount = 0) {
        const char *found = SearchForFile(name, in_.list(), in_.count(), settings.empty() ? nullptr : settings.c_str(),
                                          settingsCount, nullptr);
        return found != nullptr ? found : "(none)";
    }
    std::string ApplicationFilePath(const char *directory, const char *file) {
        char buffer[KX_PATH_SIZE];
        CreateApplicationFilePath(in_.list(), in_.count(), buffer, directory, file);
        return buffer;
    }
};

// tests/data/search_places.txt: files, definition lines, settings, the path found.
TEST_F(Search, FindsTheFirstPlaceInOrder) {
    for (const kx::test::DataRow &c : kx::test::DataTable("search_places.txt")) {
        SCOPED_TRACE(*c[0]);
        kx::test::TempDir place;
        kx::test::CurrentDirectory into{place.path()};
        for (std::string_view file : kx::core::Split(*c[1], " ")) place.Write(std::string(file), "x");
        in_.Clear();
        SetUp();
        Texts lines;
        for (std::string_view line : kx::core::Split(*c[2], " "))
            if (!line.empty()) lines.emplace_back(line);
        Declare(lines);
        EXPECT_EQ(Found("x.ini", *c[3], std::stoi(*c[4])), *c[5]);
    }
}

TEST_F(Search, EntryValuesAndTheKeywordsOfTheList) {
    dir_.Write("value/x.ini", "x");
    dir_.Write("base/x.ini", "x");
    Declare({"A|n|", "RootPath|n|base", "CGIPath|n|default"});
    EXPECT_EQ(Found("x.ini"), "base/x.ini");
    // A shorter list than the one that declared the keywords: nothing past it is read.
    EXPECT_EQ(SearchForFile("x.ini", in_.list(), 1, nullptr, 0, nullptr), nullptr);
    in_.Clear();
    SetUp();
    Declare({"CGIPath|n|default"});
    in_[0].Wert = strdup("--value");
    in_[0].WertPosition = 2;
    EXPECT_EQ(Found("x.ini"), "value/x.ini") << "the current value wins over the default";
}

TEST_F(Search, PeerScanFallsBackToTheConsoleDefinition) {
    dir_.Write("Korvanetix/Korvanetix.ini", "|\nConsole|n|1\n");
    EXPECT_EQ(Found("peerscan.INI"), "Korvanetix/Korvanetix.ini");
    EXPECT_EQ(Found("Other.ini"), "(none)");
    ASSERT_EQ(ErmittleEingabe("PeerScan", &in_.list(), &in_.count(), nullptr, 0), 0);
    EXPECT_EQ(kx::test::Describe(in_.list(), in_.count()), "Console|n|1\n");
    ASSERT_EQ(Read2("PeerScan"), 0);
    EXPECT_STREQ(_IniFilename[0], "PeerScan.ini") << "the record shows the name searched for";
}

TEST_F(Search, OpensTheFileFoundAndSearchesAnEarlierResultAgain) {
    dir_.Write("Korvanetix/x.ini", "content");
    FILE *stream = reinterpret_cast<FILE *>(0x10);
    EXPECT_EQ(SearchForFile("missing.ini", nullptr, 0, nullptr, 0, &stream), nullptr);
    EXPECT_EQ(stream, nullptr) << "cleared when nothing is found";
    const char *first = SearchForFile("x.ini", nullptr, 0, nullptr, 0, &stream);
    ASSERT_NE(first, nullptr);
    ASSERT_NE(stream, nullptr);
    char text[16] = {};
    EXPECT_NE(fgets(text, sizeof text, stream), nullptr);
    fclose(stream);
    EXPECT_STREQ(text, "content");
    EXPECT_STREQ(SearchForFile(first, nullptr, 0, nullptr, 0, nullptr), "Korvanetix/x.ini");
    EXPECT_EQ(SearchForFile(std::string(5000, 'n').c_str(), nullptr, 0, nullptr, 0, nullptr), nullptr);
    EXPECT_EQ(SearchForFile(nullptr, nullptr, 0, nullptr, 0, nullptr), nullptr);
}

TEST(Directoryname, JoinsDecodedPiecesBelowThePathSize) {
    struct Case { const char *first, *second, *third, *separator, *expected; };
    const Case cases[] = {
        {"a", "b", "c", "/", "a/b/c"}, {nullptr, "b", "c", "/", "b/c"}, {"a", "", "c", "/", "a/c"},
        {"a", "b", nullptr, "/", "a/b/"}, {"a%20b", nullptr, "c+d", "/", "a b/c d"}, {nullptr, nullptr, nullptr, "/", ""},
        {"a", "b", "c", "\\", "a\\b\\c"}, {"a", "b", "c", "", "a/b/c"},
    };
    const char *saved = Verzeichnistrenner;
    for (const Case &c : cases) {
        Verzeichnistrenner = c.separator;
        EXPECT_EQ(HeapText(CreateDirectoryname(c.first, c.second, c.third)).str(), c.expected);
    }
    Verzeichnistrenner = saved;
    const std::string piece(3000, 'p');
    EXPECT_EQ(HeapText(CreateDirectoryname(piece.c_str(), piece.c_str(), "x")).str().size(), KX_PATH_SIZE - 1u);
}

TEST_F(Search, ApplicationFilePath) {
    Declare({"RootPath|n|base", "RootDirectory|n|root", "Application|n|app"});
    EXPECT_EQ(ApplicationFilePath("data%5C", "sub\\new.txt"), "base/root/app/data/sub/new.txt") << "where it belongs";
    EXPECT_EQ(ApplicationFilePath(nullptr, "new.txt"), "base/root/app/new.txt");
    dir_.Write("base/root/app/data/f.txt", "x");
    EXPECT_EQ(ApplicationFilePath("data%2F", "f.txt"), "base/root/app/data/f.txt") << "where it is";
    dir_.Write("data/f.txt", "x");
    EXPECT_EQ(ApplicationFilePath("data%2F", "f.txt"), "data/f.txt");
    in_.Clear();
    SetUp();
    Declare({"Application|n|app"});  // without RootPath, RootDirectory and Application still place the file
    EXPECT_EQ(ApplicationFilePath("d/", "new.txt"), "app/d/new.txt");
    EXPECT_EQ(ApplicationFilePath(nullptr, std::string(5000, 'f').c_str()).size(), KX_PATH_SIZE - 1u);
}


// core::NameIndex gives FindEntry's answer while the list changes under it.
EingabeElement Entry(const std::string &name) {
    return EingabeElement{strdup(name.c_str()), static_cast<uint32_t>(name.size()), nullptr, 0, 0, 'n', nullptr};
}

TEST(NameIndex, FollowsTheList) {
    int count = 40;
    auto *list = static_cast<EingabeElement *>(std::malloc(sizeof(EingabeElement) * 100));
    for (int i = 0; i < count; ++i) list[i] = Entry("e" + std::to_string(i % 30));  // e0..e9 twice
    kx::core::NameIndex index;
    // The first lookups in a list walk it; these make the index answer.
    for (int i = 0; i < 40; ++i) ASSERT_EQ(index.Find(list, count, "e3"), 3);
    struct Row { const char *what; void (*change)(EingabeElement *&, int &); const char *name; };
    const Row rows[] = {
        {"first of two", [](EingabeElement *&, int &) {}, "e5"},
        {"appended", [](EingabeElement *&l, int &c) { l[c++] = Entry("new"); }, "new"},
        {"renamed behind", [](EingabeElement *&l, int &) { std::free(l[7].Name); l[7].Name = strdup("e5"); }, "e5"},
        {"renamed, its old name", [](EingabeElement *&, int &) {}, "e7"},
        {"moved", [](EingabeElement *&l, int &) { l = static_cast<EingabeElement *>(std::realloc(l, sizeof(EingabeElement) * 400)); }, "e29"},
        {"grown past its table", [](EingabeElement *&l, int &c) { while (c < 300) l[c] = Entry("n" + std::to_string(c)), ++c; }, "n250"},
        {"shrunk", [](EingabeElement *&l, int &c) { std::free(l[--c].Name); }, "n299"},
        {"missing", [](EingabeElement *&, int &) {}, "absent"},
    };
    for (const Row &row : rows) {
        row.change(list, count);
        EXPECT_EQ(index.Find(list, count, row.name), kx::core::FindEntry(list, count, row.name)) << row.what;
    }
    KXFreeEingabeList(list, count);
}

}  // namespace
