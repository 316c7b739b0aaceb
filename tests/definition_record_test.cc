// ErmittleEingabe2: the definition beside the program and the record of the
// first two definition files read.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "kx_input.h"
#include "support/kx_test.h"
#include "support/request_fixtures.h"

namespace {

using kx::test::CurrentDirectory;
using kx::test::InputList;
using kx::test::CapturedPage;
using kx::test::TempDir;

void ForgetRecords() {
    for (int slot = 0; slot < 2; ++slot) {
        free(_IniFilename[slot]);
        _IniFilename[slot] = nullptr;
        _IniFilenameDivideSign[slot] = '\0';
    }
}

class DefinitionRecordTest : public ::testing::Test {
protected:
    void SetUp() override { ForgetRecords(); }
    void TearDown() override {
        ForgetRecords();
        _pEingabe = nullptr;
        _pEingabeAnzahl = nullptr;
    }
    int Read(const char *application, const char *programPath) {
        return ErmittleEingabe2(application, &owned.list(), &owned.count(), nullptr, programPath, 0);
    }

    TempDir tree;
    CurrentDirectory inside{tree.path()};
    InputList owned;
    CapturedPage page;
};

TEST_F(DefinitionRecordTest, FallsBackBesideTheProgram) {
    tree.Write("bin/Prog.ini", "~\nA~n~1\nbroken\n");
    ASSERT_EQ(Read("Prog", "bin/prog.cgi"), 0);
    ASSERT_EQ(owned.count(), 1);
    EXPECT_STREQ(_IniFilename[0], "bin/Prog.ini");
    EXPECT_EQ(_IniFilenameDivideSign[0], '~');
    // Messages name the path that was opened.
    EXPECT_EQ(page.Text(), "<! ErmittleEingabe: Fehler in 'bin/Prog.ini' Zeile '3': Kein '~' hinter 'Name'gefunden>\n");
}

TEST_F(DefinitionRecordTest, ProgramPathSeparatorsAreUnified) {
    tree.Write("bin/sub/Prog.ini", "|\nA|n|1\n");
    ASSERT_EQ(Read("Prog", "bin\\sub/prog.cgi"), 0);
    EXPECT_STREQ(_IniFilename[0], "bin/sub/Prog.ini");
}

TEST_F(DefinitionRecordTest, FallbackKeepsTheNameUndecoded) {
    tree.Write("bin/My%20App.ini", "|\nA|n|1\n");
    ASSERT_EQ(Read("My%20App", "bin/prog.cgi"), 0);
    EXPECT_STREQ(_IniFilename[0], "bin/My%20App.ini");
}

TEST_F(DefinitionRecordTest, NoFallbackWithoutADirectoryPart) {
    tree.Write("bin/Prog.ini", "|\nA|n|1\n");
    EXPECT_EQ(Read("Prog", "prog.cgi"), 1);
    EXPECT_EQ(Read("Prog", nullptr), 1);
    EXPECT_EQ(Read("Missing", "bin/prog.cgi"), 1);
    EXPECT_EQ(_IniFilename[0], nullptr);
    EXPECT_EQ(owned.count(), 0);
}

TEST_F(DefinitionRecordTest, FallbackStaysInTheProgramDirectory) {
    tree.Write("secret.ini", "|\nOutside|n|1\n");
    tree.Write("bin/secret.ini", "|\nInside|n|1\n");
    tree.Write("work/empty", "");
    CurrentDirectory work(tree.path() + "/work");
    const std::string program = tree.path() + "/bin/prog.cgi";
    ASSERT_EQ(Read("../secret", program.c_str()), 0);
    ASSERT_EQ(owned.count(), 1);
    EXPECT_STREQ(owned.list()[0].Name, "Inside");
}

TEST_F(DefinitionRecordTest, RecordsTheFirstTwoFilesOnly) {
    tree.Write("One.ini", "|\nA|n|1\n");
    tree.Write("Two.ini", "~\nB~n~1\n");
    tree.Write("Three.ini", "#\nC#n#1\n");
    std::string block("^\0D^n^1\0\0", 9);
    ASSERT_EQ(Read(block.c_str(), nullptr), 0);  // a definition in memory is no file
    ASSERT_EQ(ErmittleEingabe("One", &owned.list(), &owned.count(), nullptr, 0), 0);  // the first form keeps none
    ASSERT_EQ(Read("Two", nullptr), 0);
    ASSERT_EQ(Read("Three", nullptr), 0);
    ASSERT_EQ(Read("One", nullptr), 0);
    EXPECT_STREQ(_IniFilename[0], "Two.ini");
    EXPECT_EQ(_IniFilenameDivideSign[0], '~');
    EXPECT_STREQ(_IniFilename[1], "Three.ini");
    EXPECT_EQ(_IniFilenameDivideSign[1], '#');
    EXPECT_EQ(owned.count(), 4);
}

TEST_F(DefinitionRecordTest, RecordShowsTheSearchedName) {
    tree.Write("Korvanetix/Korvanetix.ini", "|\nA|n|1\n");
    ASSERT_EQ(Read("PeerScan", nullptr), 0);
    EXPECT_STREQ(_IniFilename[0], "PeerScan.ini");
}

}  // namespace
