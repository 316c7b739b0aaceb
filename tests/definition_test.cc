// Reading application definitions from memory and from files, the definition
// beside the program, the record of the first two definition files read, the
// search order of SearchForFile and the paths built from directory pieces.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "kx_input.h"
#include "support/kx_test.h"

namespace {

using kx::test::CurrentDirectory;
using kx::test::Describe;
using kx::test::HeapText;
using kx::test::InputList;
using kx::test::Terminated;
using Texts = std::vector<std::string>;

// An in-memory definition: the texts, each with its NUL, and the empty text that ends the block.
std::string Block(std::initializer_list<std::string_view> texts) { return Terminated(texts) + '\0'; }

std::string Message(const std::string &file, int line, const std::string &missing, const char *separator = "|") {
    return "<! ErmittleEingabe: Fehler in '" + file + "' Zeile '" + std::to_string(line) + "': Kein '" + separator +
           "' hinter '" + missing + "'gefunden>\n";
}

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

// A definition in memory or in the file App.ini (block is the file's content
// when file is set), the entries it declares and the messages it writes.
struct Case { const char *what; std::string block; bool file; std::string entries, messages; };

const std::string kLong(10000, 'x');
const std::string kPiece(4095 - 7, 'x');  // lines count 4095 bytes, the rest is dropped

const Case kCases[] = {
    {"a line", Block({"|", "User|n|guest"}), false, "User|n|guest\n", ""},
    {"no default", Block({"|", "Flag|j"}), false, "Flag|n|<null>\n", Message("", 2, "TextElementErmittlung")},
    {"blanks kept", Block({"|", "  Pad|j|x"}), false, "  Pad|j|x\n", ""},
    {"kind's first letter", Block({"|", "Kind|jx|def"}), false, "Kind|j|def\n", ""},
    {"the rest is the default", Block({"|", "Rest|n|a|b"}), false, "Rest|n|a|b\n", ""},
    {"cut at a line end", Block({"|", "Cut|n|ab\rcd"}), false, "Cut|n|ab\n", ""},
    {"empty default", Block({"|", "Trail|n|"}), false, "Trail|n|\n", ""},
    {"empty kind", Block({"|", "Twice||x"}), false, "Twice|||x\n", ""},
    {"no name", Block({"|", "|n|nameless"}), false, "|n|nameless\n", ""},
    // the line number shown is the count at that point plus two
    {"line without separator", Block({"|", "A|n|1", "no separator", "B|n|2"}), false, "A|n|1\nB|n|2\n", Message("", 3, "Name")},
    {"blank lines", Block({"|", " \t\r\n", "A|n|1"}), false, "A|n|1\n", ""},
    {"separator line end", Block({"~\r\n", "A~j~x"}), false, "A|j|x\n", ""},
    {"a repeated name adds another", Block({"|", "X|n|", "X|n|again"}), false, "X|n|\nX|n|again\n", ""},
    {"long line in memory", Block({"|", "Long|n|" + kLong, "Next|n|1"}), false, "Long|n|" + kLong + "\nNext|n|1\n", ""},
    {"file with messages", "|\nA|n|1\nbroken\nB|j\n", true, "A|n|1\nB|n|<null>\n",
     Message("App.ini", 3, "Name") + Message("App.ini", 3, "TextElementErmittlung")},
    {"CR LF", "|\r\nA|n|x\r\nB|n|y\r\n", true, "A|n|x\nB|n|y\n", ""},
    {"no final line end", "|\nA|n|last", true, "A|n|last\n", ""},
    {"a NUL ends the line", std::string("|\nA|n|x\0yy|z\nB|n|\n", 18), true, "A|n|x\nB|n|\n", ""},
    // the tail of a long saved value must not become an entry of its own
    {"rest of a long file line dropped",
     "|\nLong|n|" + std::string(4084, 'A') + "Ersetzungsanfang|n|[\nNext|n|1\n", true,
     "Long|n|" + std::string(4084, 'A') + "Erse\nNext|n|1\n", ""},
    {"empty separator line", std::string("\0|\nA|n|1\n", 9), true, "", Message("App.ini", 2, "Name", "")},
};

TEST_F(Definition, DeclaresTheEntriesOfEachLine) {
    for (const Case &c : kCases) {
        SCOPED_TRACE(c.what);
        in_.Clear();
        kx::test::CapturedPage messages;
        if (c.file) dir_.Write("App.ini", c.block);
        ASSERT_EQ(Read(c.file ? std::string("App") : c.block), 0);
        EXPECT_EQ(Entries(), c.entries);
        EXPECT_EQ(messages.Text(), c.messages);
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
    EXPECT_EQ(page.Text(), Message("bin/Prog.ini", 3, "Name", "~")) << "messages name the path that was opened";
    EXPECT_EQ(Entries(), "A|n|1\n");
    kx::test::ForgetDefinitionFiles();
    for (const char *program : {"prog.cgi", static_cast<const char *>(nullptr)}) EXPECT_EQ(Read2("Prog", program), 1);
    EXPECT_EQ(Read2("Missing", "bin/prog.cgi"), 1);
    EXPECT_EQ(_IniFilename[0], nullptr) << "no directory part, no fallback";
}

TEST_F(Definition, FallbackStaysInTheProgramDirectory) {
    dir_.Write("secret.ini", "|\nOutside|n|1\n");
    dir_.Write("bin/secret.ini", "|\nInside|n|1\n");
    dir_.Write("work/empty", "");
    CurrentDirectory work(dir_.path() + "/work");
    ASSERT_EQ(Read2("../secret", (dir_.path() + "/bin/prog.cgi").c_str()), 0);
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
        std::string block = "|";
        block.push_back('\0');
        for (const std::string &line : lines) block.append(line).push_back('\0');
        block.push_back('\0');
        ASSERT_EQ(ErmittleEingabe(block.c_str(), &in_.list(), &in_.count(), nullptr, 0), 0);
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

const Texts kAll = {"RootPath|n|base", "RootDirectory|n|root", "Application|n|app", "CGIPath|n|cgi"};
const std::string kSettings("CGIPath=sc\0CGIDirectory=sd\0", 27);

TEST_F(Search, FindsTheFirstPlaceInOrder) {
    struct Case {
        const char *what;
        Texts files, entries;  // files created below the current directory; definition lines
        std::string settings;  // NUL-separated texts
        int settingsCount;
        const char *expected;
    };
    const Case cases[] = {
        {"current directory", {"x.ini", "Korvanetix/x.ini"}, kAll, kSettings, 2, "x.ini"},
        {"Korvanetix", {"Korvanetix/x.ini", "base/root/app/x.ini"}, kAll, kSettings, 2, "Korvanetix/x.ini"},
        {"application directory", {"base/root/app/x.ini", "cgi/root/x.ini"}, kAll, kSettings, 2, "base/root/app/x.ini"},
        {"no RootDirectory", {"base/app/x.ini"}, {"RootPath|n|base", "Application|n|app"}, "", 0, "base/app/x.ini"},
        {"no RootPath, no application directory", {"root/app/x.ini"}, {"RootDirectory|n|root", "Application|n|app"}, "", 0,
         "(none)"},
        {"CGIPath with RootDirectory", {"cgi/root/x.ini", "sc/sd/x.ini"}, kAll, kSettings, 2, "cgi/root/x.ini"},
        {"CGIPath alone", {"cgi/x.ini"}, {"CGIPath|n|cgi"}, "", 0, "cgi/x.ini"},
        {"settings", {"sc/sd/x.ini"}, kAll, kSettings, 2, "sc/sd/x.ini"},
        {"settings directory only", {"sd/x.ini"}, {}, std::string("CGIDirectory=sd\0", 16), 1, "sd/x.ini"},
        {"settings backslashes", {"sc/deep/sd/x.ini"}, {}, std::string("CGIPath=sc\\deep\0CGIDirectory=sd\0", 32), 2,
         "sc/deep/sd/x.ini"},
        {"settings beyond their count", {"sc/x.ini"}, {}, std::string("Other=1\0CGIPath=sc\0", 19), 1, "(none)"},
        {"setting without value", {"sd/x.ini"}, {}, std::string("CGIPath\0CGIDirectory=sd\0", 24), 2, "sd/x.ini"},
        {"the first setting wins", {"second/x.ini"}, {}, std::string("CGIPath=first\0CGIPath=second\0", 30), 2, "(none)"},
        {"nowhere", {"elsewhere/x.ini"}, kAll, kSettings, 2, "(none)"},
        {"the Application value counts by its base name", {"base/app/x.ini", "app/x.ini"},
         {"RootPath|n|base", "Application|n|../../app"}, "", 0, "base/app/x.ini"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        kx::test::TempDir place;
        kx::test::CurrentDirectory into{place.path()};
        for (const std::string &file : c.files) place.Write(file, "x");
        in_.Clear();
        SetUp();
        Declare(c.entries);
        EXPECT_EQ(Found("x.ini", c.settings, c.settingsCount), c.expected);
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

}  // namespace
