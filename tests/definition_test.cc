// Reading application definitions from memory and from files.
#include <gtest/gtest.h>

#include <cstring>
#include <initializer_list>
#include <string>

#include "kx_input.h"
#include "support/kx_test.h"
#include "support/request_fixtures.h"

namespace {

using kx::test::CurrentDirectory;
using kx::test::InputList;
using kx::test::CapturedPage;
using kx::test::TempDir;

// An in-memory definition: the texts laid end to end, each with its NUL, and
// the empty text that ends the block.
std::string Block(std::initializer_list<std::string> texts) {
    std::string block;
    for (const std::string &text : texts) block.append(text).push_back('\0');
    block.push_back('\0');
    return block;
}

std::string Message(const std::string &file, int line, const std::string &missing) {
    return "<! ErmittleEingabe: Fehler in '" + file + "' Zeile '" + std::to_string(line) +
           "': Kein '|' hinter '" + missing + "'gefunden>\n";
}

class DefinitionTest : public kx::test::FreshGlobals {
protected:
    int Read(const std::string &block) { return ErmittleEingabe(block.c_str(), &owned.list(), &owned.count(), nullptr, 0); }
    int Read2(const std::string &block) {
        return ErmittleEingabe2(block.c_str(), &owned.list(), &owned.count(), nullptr, nullptr, 0);
    }

    InputList owned;
    CapturedPage page;
};

struct LineCase {
    const char *line;
    const char *name;
    char art;
    const char *vorgabe;  // null: no default
    bool reported;        // the "TextElementErmittlung" message
};

class DefinitionLineTest : public DefinitionTest, public ::testing::WithParamInterface<LineCase> {};

TEST_P(DefinitionLineTest, DeclaresOneEntry) {
    const LineCase &c = GetParam();
    ASSERT_EQ(Read(Block({"|", c.line})), 0);
    ASSERT_EQ(owned.count(), 1);
    const EingabeElement &entry = owned.list()[0];
    EXPECT_STREQ(entry.Name, c.name);
    EXPECT_EQ(entry.NameLaenge, std::strlen(c.name));
    EXPECT_EQ(entry.Art, c.art);
    if (c.vorgabe == nullptr) EXPECT_EQ(entry.Vorgabe, nullptr);
    else EXPECT_STREQ(entry.Vorgabe, c.vorgabe);
    EXPECT_EQ(entry.Wert, nullptr);
    EXPECT_EQ(entry.WertGesetzt, 0);
    EXPECT_EQ(entry.WertPosition, 0);
    EXPECT_EQ(page.Text(), c.reported ? Message("", 2, "TextElementErmittlung") : "");
}

INSTANTIATE_TEST_SUITE_P(Lines, DefinitionLineTest, ::testing::Values(
    LineCase{"User|n|guest", "User", 'n', "guest", false},
    LineCase{"Flag|j", "Flag", 'n', nullptr, true},
    LineCase{"  Pad|j|x", "  Pad", 'j', "x", false},
    LineCase{"Kind|jx|def", "Kind", 'j', "def", false},
    LineCase{"Rest|n|a|b", "Rest", 'n', "a|b", false},
    LineCase{"Cut|n|ab\rcd", "Cut", 'n', "ab", false},
    LineCase{"Trail|n|", "Trail", 'n', "", false},
    LineCase{"Twice||x", "Twice", '|', "x", false},
    LineCase{"|n|nameless", "", 'n', "nameless", false}));

TEST_F(DefinitionTest, LineWithoutSeparatorIsReportedAndSkipped) {
    ASSERT_EQ(Read(Block({"|", "A|n|1", "no separator", "B|n|2"})), 0);
    ASSERT_EQ(owned.count(), 2);
    EXPECT_STREQ(owned.list()[1].Name, "B");
    // The line number shown is the count at that point plus two.
    EXPECT_EQ(page.Text(), Message("", 3, "Name"));
}

TEST_F(DefinitionTest, BlankLinesAreSkippedSilently) {
    ASSERT_EQ(Read(Block({"|", " \t\r\n", "A|n|1"})), 0);
    EXPECT_EQ(owned.count(), 1);
    EXPECT_EQ(page.Text(), "");
}

TEST_F(DefinitionTest, SeparatorLineIsCutAtItsLineEnd) {
    ASSERT_EQ(Read(Block({"~\r\n", "A~j~x"})), 0);
    ASSERT_EQ(owned.count(), 1);
    EXPECT_EQ(owned.list()[0].Art, 'j');
    EXPECT_STREQ(owned.list()[0].Vorgabe, "x");
}

TEST_F(DefinitionTest, EarlierEntryIsUpdatedAndRepeatedNameAddsAnother) {
    ASSERT_EQ(Read(Block({"|", "RootPath|n|/old"})), 0);
    EXPECT_EQ(iRootPath, 0);
    ASSERT_EQ(Read(Block({"|", "X|n|", "RootPath|j|/new", "X|n|again"})), 0);
    ASSERT_EQ(owned.count(), 3);
    EXPECT_EQ(iRootPath, 0);
    EXPECT_EQ(owned.list()[0].Art, 'j');
    EXPECT_STREQ(owned.list()[0].Vorgabe, "/new");
    // Within one definition only entries from before it are looked up.
    EXPECT_STREQ(owned.list()[1].Name, "X");
    EXPECT_STREQ(owned.list()[2].Name, "X");
    EXPECT_STREQ(owned.list()[2].Vorgabe, "again");
}

TEST_F(DefinitionTest, KeywordsRecordTheirEntriesCaseSensitively) {
    ASSERT_EQ(Read(Block({"|", "server|n|", "Server|n|", "Ersetzungsanfang|n|{", "Ersetzungsende|n|}",
                          "CGIPath|n|", "AppSuffix|n|"})),
              0);
    EXPECT_EQ(iServer, 1);
    EXPECT_EQ(iErsetzungsAnfang, 2);
    EXPECT_EQ(iErsetzungsEnde, 3);
    EXPECT_EQ(iCGIPath, 4);
    EXPECT_EQ(iAppSuffix, 5);
    EXPECT_EQ(iRootPath, -1);
    EXPECT_EQ(iApplication, -1);
}

TEST_F(DefinitionTest, NullApplicationIsReported) {
    EXPECT_EQ(ErmittleEingabe(nullptr, &owned.list(), &owned.count(), nullptr, 0), 1);
    EXPECT_EQ(page.Text(), "<! ErmittleEingabe: Anwendung == NULL>\n");
}

TEST_F(DefinitionTest, NullListOrCountAddressFails) {
    const std::string block = Block({"|", "A|n|1"});
    EXPECT_EQ(ErmittleEingabe(block.c_str(), nullptr, &owned.count(), nullptr, 0), 1);
    EXPECT_EQ(ErmittleEingabe2(block.c_str(), &owned.list(), nullptr, nullptr, nullptr, 0), 1);
    EXPECT_EQ(_pEingabe, nullptr);
    EXPECT_EQ(page.Text(), "");
}

TEST_F(DefinitionTest, EmptyCountNeedsNoInitialisedList) {
    owned.list() = reinterpret_cast<EingabeElement *>(0x10);  // never read
    ASSERT_EQ(Read(Block({"|", "A|n|1"})), 0);
    EXPECT_EQ(owned.count(), 1);
}

TEST_F(DefinitionTest, FirstCallRecordsTheListHandles) {
    InputList other;
    ASSERT_EQ(Read(Block({"|", "A|n|1"})), 0);
    ASSERT_EQ(ErmittleEingabe(Block({"|", "B|n|"}).c_str(), &other.list(), &other.count(), nullptr, 0), 0);
    EXPECT_EQ(_pEingabe, &owned.list());
    EXPECT_EQ(_pEingabeAnzahl, &owned.count());
}

TEST_F(DefinitionTest, LongInMemoryLineGrowsTheBuffer) {
    const std::string longDefault(10000, 'x');
    ASSERT_EQ(Read(Block({"|", "Long|n|" + longDefault, "Next|n|1"})), 0);
    ASSERT_EQ(owned.count(), 2);
    EXPECT_EQ(owned.list()[0].Vorgabe, longDefault);
    EXPECT_EQ(page.Text(), "");
}

TEST_F(DefinitionTest, SecondFormDropsTheRestOfLongInMemoryLines) {
    // 4095 bytes count; the rest never becomes a line of its own.
    const std::string line = "Long|n|" + std::string(10000, 'x') + "Planted|n|y";
    ASSERT_EQ(Read2(Block({"|", line})), 0);
    ASSERT_EQ(owned.count(), 1);
    EXPECT_EQ(owned.list()[0].Vorgabe, std::string(4095 - 7, 'x'));
    EXPECT_EQ(page.Text(), "");
}

// --- from files

class DefinitionFileTest : public DefinitionTest {
protected:
    TempDir tree;
    CurrentDirectory inside{tree.path()};
};

TEST_F(DefinitionFileTest, MessagesNameTheFileAndLine) {
    tree.Write("App.ini", "|\nA|n|1\nbroken\nB|j\n");
    ASSERT_EQ(ErmittleEingabe("App", &owned.list(), &owned.count(), nullptr, 0), 0);
    ASSERT_EQ(owned.count(), 2);
    EXPECT_EQ(page.Text(), Message("App.ini", 3, "Name") + Message("App.ini", 3, "TextElementErmittlung"));
}

TEST_F(DefinitionFileTest, NameIsDecodedBeforeTheSearch) {
    tree.Write("My App.ini", "|\nA|n|1\n");
    ASSERT_EQ(ErmittleEingabe("My%20App", &owned.list(), &owned.count(), nullptr, 0), 0);
    EXPECT_EQ(owned.count(), 1);
}

struct FileCase {
    const char *what;
    std::string content;
    const char *aDefault;  // default of entry "A"
    int count;
};

void PrintTo(const FileCase &c, std::ostream *out) { *out << c.what; }

class DefinitionFileContentTest : public DefinitionFileTest, public ::testing::WithParamInterface<FileCase> {};

TEST_P(DefinitionFileContentTest, IsReadWithinItsLines) {
    tree.Write("App.ini", GetParam().content);
    ASSERT_EQ(ErmittleEingabe("App", &owned.list(), &owned.count(), nullptr, 0), 0);
    ASSERT_EQ(owned.count(), GetParam().count);
    EXPECT_STREQ(owned.list()[0].Name, "A");
    EXPECT_STREQ(owned.list()[0].Vorgabe, GetParam().aDefault);
}

INSTANTIATE_TEST_SUITE_P(Contents, DefinitionFileContentTest, ::testing::Values(
    FileCase{"CrLf", "|\r\nA|n|x\r\nB|n|y\r\n", "x", 2},
    FileCase{"NoFinalLineEnd", "|\nA|n|last", "last", 1},
    FileCase{"NulEndsTheLine", std::string("|\nA|n|x\0yy|z\nB|n|\n", 18), "x", 2},
    FileCase{"EmptyDefault", "|\nA|n|\n", "", 1}),
    [](const auto &row) { return std::string(row.param.what); });

TEST_F(DefinitionFileTest, DirectoryOfThatNameFails) {
    tree.Write("App.ini/inside", "");
    EXPECT_EQ(ErmittleEingabe("App", &owned.list(), &owned.count(), nullptr, 0), 1);
    EXPECT_EQ(owned.count(), 0);
}

// The attack of a long saved value: its tail must not become an entry.
TEST_F(DefinitionFileTest, RestOfALongFileLineIsDropped) {
    tree.Write("App.ini", "|\nLong|n|" + std::string(4084, 'A') + "Ersetzungsanfang|n|[\nNext|n|1\n");
    ASSERT_EQ(ErmittleEingabe("App", &owned.list(), &owned.count(), nullptr, 0), 0);
    ASSERT_EQ(owned.count(), 2);
    EXPECT_EQ(owned.list()[0].Vorgabe, std::string(4084, 'A') + std::string("Ersetzungsanfang|n|[").substr(0, 4))
        << "cut at 4095 bytes";
    EXPECT_STREQ(owned.list()[1].Name, "Next");
    EXPECT_EQ(page.Text(), "");
}

TEST_F(DefinitionFileTest, EmptySeparatorLineFindsNoNames) {
    tree.Write("App.ini", std::string("\0|\nA|n|1\n", 9));
    ASSERT_EQ(ErmittleEingabe("App", &owned.list(), &owned.count(), nullptr, 0), 0);
    EXPECT_EQ(owned.count(), 0);
    EXPECT_EQ(page.Text(), "<! ErmittleEingabe: Fehler in 'App.ini' Zeile '2': Kein '' hinter 'Name'gefunden>\n");
}

TEST_F(DefinitionFileTest, MissingOrEmptyFileFails) {
    ASSERT_EQ(Read(Block({"|", "Kept|n|1"})), 0);
    tree.Write("Empty.ini", "");
    EXPECT_EQ(ErmittleEingabe("Missing", &owned.list(), &owned.count(), nullptr, 0), 1);
    EXPECT_EQ(ErmittleEingabe("Empty", &owned.list(), &owned.count(), nullptr, 0), 1);
    EXPECT_EQ(owned.count(), 1);
}

TEST_F(DefinitionFileTest, RequestedNameCannotLeaveTheSearchPlaces) {
    // The application runs in app/; a definition of the same name lies outside.
    tree.Write("passwd.ini", "|\nOutside|n|1\n");
    tree.Write("app/passwd.ini", "|\nInside|n|1\n");
    CurrentDirectory application(tree.path() + "/app");
    const std::string absolute = tree.path() + "/passwd";
    for (const std::string &name : {std::string("..%2F..%2Fetc%2Fpasswd"), std::string("..%2Fpasswd"),
                                    std::string("..%5Cpasswd"), std::string("../passwd"), absolute}) {
        InputList list;
        EXPECT_EQ(ErmittleEingabe(name.c_str(), &list.list(), &list.count(), nullptr, 0), 0) << name;
        ASSERT_EQ(list.count(), 1) << name;
        EXPECT_STREQ(list.list()[0].Name, "Inside") << name;
    }
}

}  // namespace
