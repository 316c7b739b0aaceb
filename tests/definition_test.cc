// Reading application definitions from memory and from files, the definition
// beside the program, and the record of the first two definition files read.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "kx_input.h"
#include "support/kx_test.h"

namespace {

using kx::test::CurrentDirectory;
using kx::test::Describe;
using kx::test::InputList;
using kx::test::Terminated;

// An in-memory definition: the texts, each with its NUL, and the empty text that ends the block.
std::string Block(std::initializer_list<std::string_view> texts) { return Terminated(texts) + '\0'; }

std::string Message(const std::string &file, int line, const std::string &missing, const char *separator = "|") {
    return "<! ErmittleEingabe: Fehler in '" + file + "' Zeile '" + std::to_string(line) + "': Kein '" + separator +
           "' hinter '" + missing + "'gefunden>\n";
}

// Each test runs in a directory of its own with fresh keyword indexes and no
// recorded definition files, and sees what the library writes to its page.
class Definition : public kx::test::FreshGlobals {
protected:
    void SetUp() override {
        FreshGlobals::SetUp();
        ForgetRecords();
    }
    void TearDown() override {
        ForgetRecords();
        FreshGlobals::TearDown();
    }
    static void ForgetRecords() {
        for (int slot = 0; slot < 2; ++slot) {
            std::free(_IniFilename[slot]);
            _IniFilename[slot] = nullptr;
            _IniFilenameDivideSign[slot] = '\0';
        }
    }
    int Read(const std::string &application) {
        return ErmittleEingabe(application.c_str(), &owned.list(), &owned.count(), nullptr, 0);
    }
    int Read2(const std::string &application, const char *programPath = nullptr) {
        return ErmittleEingabe2(application.c_str(), &owned.list(), &owned.count(), nullptr, programPath, 0);
    }
    std::string Entries() { return Describe(owned.list(), owned.count()); }

    kx::test::TempDir tree;
    CurrentDirectory inside{tree.path()};
    InputList owned;
    kx::test::CapturedPage page;
};

// A definition in memory or in the file App.ini, the entries it declares and
// the messages it writes.
struct Case {
    const char *what;
    std::string block;  // in memory unless file is set
    bool file;
    std::string entries, messages;
};

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
        owned.Clear();
        kx::test::CapturedPage messages;
        if (c.file) tree.Write("App.ini", c.block);
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
    EXPECT_EQ(owned[0].Art, 'j');
    EXPECT_STREQ(owned[0].Vorgabe, "/new");
    const std::pair<int, int> indexes[] = {{iRootPath, 0}, {iServer, 3}, {iErsetzungsAnfang, 4}, {iErsetzungsEnde, 5},
                                           {iCGIPath, 6}, {iAppSuffix, 7}, {iApplication, -1}};
    for (const auto &[index, expected] : indexes) EXPECT_EQ(index, expected);
}

TEST_F(Definition, BadArgumentsAndMissingFiles) {
    const std::string block = Block({"|", "A|n|1"});
    EXPECT_EQ(ErmittleEingabe(block.c_str(), nullptr, &owned.count(), nullptr, 0), 1);
    EXPECT_EQ(ErmittleEingabe2(block.c_str(), &owned.list(), nullptr, nullptr, nullptr, 0), 1);
    EXPECT_EQ(_pEingabe, nullptr);
    EXPECT_EQ(ErmittleEingabe(nullptr, &owned.list(), &owned.count(), nullptr, 0), 1);
    EXPECT_EQ(page.Text(), "<! ErmittleEingabe: Anwendung == NULL>\n");
    ASSERT_EQ(Read(block), 0);
    tree.Write("Dir.ini/inside", "");
    tree.Write("Empty.ini", "");
    for (const char *name : {"Missing", "Empty", "Dir"}) EXPECT_EQ(Read(name), 1) << name;
    EXPECT_EQ(Entries(), "A|n|1\n") << "the list is left as it was";
}

TEST_F(Definition, FirstCallRecordsTheListHandlesAndNeedsNoInitialisedList) {
    owned.list() = reinterpret_cast<EingabeElement *>(0x10);  // never read: the count is 0
    ASSERT_EQ(Read(Block({"|", "A|n|1"})), 0);
    InputList other;
    ASSERT_EQ(ErmittleEingabe(Block({"|", "B|n|"}).c_str(), &other.list(), &other.count(), nullptr, 0), 0);
    EXPECT_EQ(_pEingabe, &owned.list());
    EXPECT_EQ(_pEingabeAnzahl, &owned.count());
    EXPECT_EQ(Entries(), "A|n|1\n");
}

TEST_F(Definition, RequestedNameIsDecodedAndCannotLeaveTheSearchPlaces) {
    tree.Write("app/My App.ini", "|\nA|n|1\n");
    tree.Write("passwd.ini", "|\nOutside|n|1\n");  // outside the application's directory app/
    tree.Write("app/passwd.ini", "|\nInside|n|1\n");
    CurrentDirectory application(tree.path() + "/app");
    ASSERT_EQ(Read("My%20App"), 0);
    EXPECT_EQ(Entries(), "A|n|1\n");
    for (const std::string &name : {std::string("..%2F..%2Fetc%2Fpasswd"), std::string("..%2Fpasswd"),
                                    std::string("..%5Cpasswd"), std::string("../passwd"), tree.path() + "/passwd"}) {
        InputList list;
        EXPECT_EQ(ErmittleEingabe(name.c_str(), &list.list(), &list.count(), nullptr, 0), 0) << name;
        EXPECT_EQ(Describe(list.list(), list.count()), "Inside|n|1\n") << name;
    }
}

// --- the second form: the definition beside the program, and the record

TEST_F(Definition, FallsBackBesideTheProgram) {
    tree.Write("bin/Prog.ini", "~\nA~n~1\nbroken\n");
    tree.Write("bin/sub/Sub.ini", "|\nA|n|1\n");
    tree.Write("bin/My%20App.ini", "|\nA|n|1\n");
    struct Case { const char *application, *program, *recorded; char sign; };
    const Case cases[] = {
        {"Prog", "bin/prog.cgi", "bin/Prog.ini", '~'},
        {"Sub", "bin\\sub/prog.cgi", "bin/sub/Sub.ini", '|'},        // separators unified
        {"My%20App", "bin/prog.cgi", "bin/My%20App.ini", '|'},  // the name kept undecoded
    };
    for (const Case &c : cases) {
        ForgetRecords();
        ASSERT_EQ(Read2(c.application, c.program), 0) << c.application;
        EXPECT_STREQ(_IniFilename[0], c.recorded);
        EXPECT_EQ(_IniFilenameDivideSign[0], c.sign);
    }
    EXPECT_EQ(page.Text(), Message("bin/Prog.ini", 3, "Name", "~")) << "messages name the path that was opened";
    EXPECT_EQ(Entries(), "A|n|1\n");
    ForgetRecords();
    for (const char *program : {"prog.cgi", static_cast<const char *>(nullptr)}) EXPECT_EQ(Read2("Prog", program), 1);
    EXPECT_EQ(Read2("Missing", "bin/prog.cgi"), 1);
    EXPECT_EQ(_IniFilename[0], nullptr) << "no directory part, no fallback";
}

TEST_F(Definition, FallbackStaysInTheProgramDirectory) {
    tree.Write("secret.ini", "|\nOutside|n|1\n");
    tree.Write("bin/secret.ini", "|\nInside|n|1\n");
    tree.Write("work/empty", "");
    CurrentDirectory work(tree.path() + "/work");
    ASSERT_EQ(Read2("../secret", (tree.path() + "/bin/prog.cgi").c_str()), 0);
    EXPECT_EQ(Entries(), "Inside|n|1\n");
}

TEST_F(Definition, RecordsTheFirstTwoFilesOnly) {
    tree.Write("One.ini", "|\nA|n|1\n");
    tree.Write("Two.ini", "~\nB~n~1\n");
    tree.Write("Three.ini", "#\nC#n#1\n");
    ASSERT_EQ(Read2(std::string("^\0D^n^1\0\0", 9)), 0);  // a definition in memory is no file
    ASSERT_EQ(Read("One"), 0);                            // the first form keeps none
    for (const char *name : {"Two", "Three", "One"}) ASSERT_EQ(Read2(name), 0) << name;
    EXPECT_STREQ(_IniFilename[0], "Two.ini");
    EXPECT_EQ(_IniFilenameDivideSign[0], '~');
    EXPECT_STREQ(_IniFilename[1], "Three.ini");
    EXPECT_EQ(_IniFilenameDivideSign[1], '#');
    EXPECT_EQ(owned.count(), 4);
}

TEST_F(Definition, RecordShowsTheSearchedName) {
    tree.Write("Korvanetix/Korvanetix.ini", "|\nA|n|1\n");
    ASSERT_EQ(Read2("PeerScan"), 0);
    EXPECT_STREQ(_IniFilename[0], "PeerScan.ini");
}

}  // namespace
