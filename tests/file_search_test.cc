// The search order of SearchForFile and the paths built from directory pieces.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "kx_input.h"
#include "support/kx_test.h"

namespace {

using kx::test::CurrentDirectory;
using kx::test::InputList;
using kx::test::TempDir;

// A list declared from definition lines (names with their defaults), e.g.
// {"RootPath|n|base"}; the keyword index globals follow it.
class SearchTest : public kx::test::FreshGlobals {
protected:
    void Declare(const std::vector<std::string> &lines) {
        std::string block = "|";
        block.push_back('\0');
        for (const std::string &line : lines) block.append(line).push_back('\0');
        block.push_back('\0');
        ASSERT_EQ(ErmittleEingabe(block.c_str(), &owned.list(), &owned.count(), nullptr, 0), 0);
    }
    std::string Found(const char *name, const std::string &settings = {}, int settingsCount = 0) {
        const char *block = settings.empty() ? nullptr : settings.c_str();
        const char *found = SearchForFile(name, owned.list(), owned.count(), block, settingsCount, nullptr);
        return found != nullptr ? found : "(none)";
    }

    TempDir tree;
    CurrentDirectory inside{tree.path()};
    InputList owned;
};

struct OrderCase {
    const char *what;
    std::vector<std::string> files;     // created below the current directory
    std::vector<std::string> entries;   // definition lines
    std::string settings;               // NUL-separated texts
    int settingsCount;
    std::string expected;               // the path found, or "(none)"
};

// Test names show the case, not its bytes.
void PrintTo(const OrderCase &c, std::ostream *out) { *out << c.what; }

class SearchOrderTest : public SearchTest, public ::testing::WithParamInterface<OrderCase> {};

TEST_P(SearchOrderTest, FindsTheFirstPlaceInOrder) {
    const OrderCase &c = GetParam();
    for (const std::string &file : c.files) tree.Write(file, "x");
    Declare(c.entries);
    EXPECT_EQ(Found("x.ini", c.settings, c.settingsCount), c.expected);
}

const std::vector<std::string> kAllDirectories = {"RootPath|n|base", "RootDirectory|n|root",
                                                  "Application|n|app", "CGIPath|n|cgi"};
const std::string kSettings("CGIPath=sc\0CGIDirectory=sd\0", 27);

INSTANTIATE_TEST_SUITE_P(Places, SearchOrderTest, ::testing::Values(
    OrderCase{"CurrentDirectory", {"x.ini", "Korvanetix/x.ini"}, kAllDirectories, kSettings, 2, "x.ini"},
    OrderCase{"Korvanetix", {"Korvanetix/x.ini", "base/root/app/x.ini"}, kAllDirectories, kSettings, 2,
              "Korvanetix/x.ini"},
    OrderCase{"ApplicationDirectory", {"base/root/app/x.ini", "cgi/root/x.ini"}, kAllDirectories, kSettings, 2,
              "base/root/app/x.ini"},
    OrderCase{"ApplicationDirectoryWithoutRootDirectory", {"base/app/x.ini"},
              {"RootPath|n|base", "Application|n|app"}, "", 0, "base/app/x.ini"},
    OrderCase{"NoApplicationDirectoryWithoutRootPath", {"root/app/x.ini"},
              {"RootDirectory|n|root", "Application|n|app"}, "", 0, "(none)"},
    OrderCase{"CGIPathWithRootDirectory", {"cgi/root/x.ini", "sc/sd/x.ini"}, kAllDirectories, kSettings, 2,
              "cgi/root/x.ini"},
    OrderCase{"CGIPathWithoutRootDirectory", {"cgi/x.ini"}, {"CGIPath|n|cgi"}, "", 0, "cgi/x.ini"},
    OrderCase{"SettingsBlock", {"sc/sd/x.ini"}, kAllDirectories, kSettings, 2, "sc/sd/x.ini"},
    OrderCase{"SettingsDirectoryOnly", {"sd/x.ini"}, {}, std::string("CGIDirectory=sd\0", 16), 1,
              "sd/x.ini"},
    OrderCase{"SettingsBackslashes", {"sc/deep/sd/x.ini"}, {}, std::string("CGIPath=sc\\deep\0CGIDirectory=sd\0", 32),
              2, "sc/deep/sd/x.ini"},
    OrderCase{"SettingsBeyondTheirCount", {"sc/x.ini"}, {}, std::string("Other=1\0CGIPath=sc\0", 19), 1,
              "(none)"},
    OrderCase{"SettingsNameWithoutValue", {"sd/x.ini"}, {}, std::string("CGIPath\0CGIDirectory=sd\0", 24), 2,
              "sd/x.ini"},
    OrderCase{"FirstSettingWins", {"second/x.ini"}, {}, std::string("CGIPath=first\0CGIPath=second\0", 30), 2,
              "(none)"},
    OrderCase{"Nowhere", {"elsewhere/x.ini"}, kAllDirectories, kSettings, 2, "(none)"}),
    [](const auto &row) { return std::string(row.param.what); });

TEST_F(SearchTest, EntryValueWinsOverItsDefault) {
    tree.Write("value/x.ini", "x");
    Declare({"CGIPath|n|default"});
    owned.list()[0].Wert = strdup("--value");
    owned.list()[0].WertPosition = 2;
    EXPECT_EQ(Found("x.ini"), "value/x.ini");
}

TEST_F(SearchTest, ApplicationValueCountsByItsBaseName) {
    tree.Write("base/app/x.ini", "x");
    tree.Write("app/x.ini", "outside");
    Declare({"RootPath|n|base", "Application|n|../../app"});
    EXPECT_EQ(Found("x.ini"), "base/app/x.ini");
}

TEST_F(SearchTest, IndexGlobalsBeyondTheListAreLeftOut) {
    tree.Write("base/x.ini", "x");
    tree.Write("cgi/x.ini", "x");
    Declare({"A|n|", "RootPath|n|base", "CGIPath|n|cgi"});
    EXPECT_EQ(Found("x.ini"), "base/x.ini");
    // A shorter list than the one that declared the keywords: nothing past it is read.
    EXPECT_EQ(SearchForFile("x.ini", owned.list(), 1, nullptr, 0, nullptr), nullptr);
}

TEST_F(SearchTest, PeerScanFallsBackToTheConsoleDefinition) {
    tree.Write("Korvanetix/Korvanetix.ini", "|\nConsole|n|1\n");
    EXPECT_EQ(Found("peerscan.INI"), "Korvanetix/Korvanetix.ini");
    EXPECT_EQ(Found("Other.ini"), "(none)");
    ASSERT_EQ(ErmittleEingabe("PeerScan", &owned.list(), &owned.count(), nullptr, 0), 0);
    ASSERT_EQ(owned.count(), 1);
    EXPECT_STREQ(owned.list()[0].Name, "Console");
}

TEST_F(SearchTest, OpensTheFileFoundAndClearsTheStreamOtherwise) {
    tree.Write("Korvanetix/x.ini", "content");
    FILE *stream = reinterpret_cast<FILE *>(0x10);
    EXPECT_EQ(SearchForFile("missing.ini", nullptr, 0, nullptr, 0, &stream), nullptr);
    EXPECT_EQ(stream, nullptr);
    ASSERT_NE(SearchForFile("x.ini", nullptr, 0, nullptr, 0, &stream), nullptr);
    ASSERT_NE(stream, nullptr);
    char text[16] = {};
    EXPECT_NE(fgets(text, sizeof text, stream), nullptr);
    fclose(stream);
    EXPECT_STREQ(text, "content");
}

TEST_F(SearchTest, EarlierResultCanBeSearchedAgain) {
    tree.Write("Korvanetix/x.ini", "x");
    const char *first = SearchForFile("x.ini", nullptr, 0, nullptr, 0, nullptr);
    ASSERT_NE(first, nullptr);
    EXPECT_STREQ(SearchForFile(first, nullptr, 0, nullptr, 0, nullptr), "Korvanetix/x.ini");
}

TEST_F(SearchTest, OverlongOrNullNameFindsNothing) {
    const std::string overlong(5000, 'n');
    EXPECT_EQ(SearchForFile(overlong.c_str(), nullptr, 0, nullptr, 0, nullptr), nullptr);
    EXPECT_EQ(SearchForFile(nullptr, nullptr, 0, nullptr, 0, nullptr), nullptr);
}

// --- paths from pieces

struct JoinCase {
    const char *first;
    const char *second;
    const char *third;
    const char *expected;
};

void PrintTo(const JoinCase &c, std::ostream *out) { *out << c.expected; }

class DirectorynameTest : public ::testing::TestWithParam<JoinCase> {};

TEST_P(DirectorynameTest, JoinsDecodedPieces) {
    const JoinCase &c = GetParam();
    char *joined = CreateDirectoryname(c.first, c.second, c.third);
    EXPECT_STREQ(joined, c.expected);
    free(joined);
}

INSTANTIATE_TEST_SUITE_P(Pieces, DirectorynameTest, ::testing::Values(
    JoinCase{"a", "b", "c", "a/b/c"},
    JoinCase{nullptr, "b", "c", "b/c"},
    JoinCase{"a", "", "c", "a/c"},
    JoinCase{"a", "b", nullptr, "a/b/"},
    JoinCase{"a%20b", nullptr, "c+d", "a b/c d"},
    JoinCase{nullptr, nullptr, nullptr, ""}));

TEST(Directoryname, JoinsWithTheDirectorySeparator) {
    const char *saved = Verzeichnistrenner;
    Verzeichnistrenner = "\\";
    char *backslashed = CreateDirectoryname("a", "b", "c");
    Verzeichnistrenner = "";
    char *unset = CreateDirectoryname("a", "b", "c");
    Verzeichnistrenner = saved;
    EXPECT_STREQ(backslashed, "a\\b\\c");
    EXPECT_STREQ(unset, "a/b/c");
    free(backslashed);
    free(unset);
}

TEST(Directoryname, StaysBelowThePathSize) {
    const std::string piece(3000, 'p');
    char *joined = CreateDirectoryname(piece.c_str(), piece.c_str(), "x");
    EXPECT_EQ(strlen(joined), KX_PATH_SIZE - 1u);
    free(joined);
}

TEST_F(SearchTest, ApplicationFilePathWhereTheFileIs) {
    tree.Write("base/root/app/data/f.txt", "x");
    Declare({"RootPath|n|base", "RootDirectory|n|root", "Application|n|app"});
    char buffer[KX_PATH_SIZE];
    CreateApplicationFilePath(owned.list(), owned.count(), buffer, "data%2F", "f.txt");
    EXPECT_STREQ(buffer, "base/root/app/data/f.txt");
    tree.Write("data/f.txt", "x");
    CreateApplicationFilePath(owned.list(), owned.count(), buffer, "data%2F", "f.txt");
    EXPECT_STREQ(buffer, "data/f.txt");
}

TEST_F(SearchTest, ApplicationFilePathWhereTheFileBelongs) {
    Declare({"RootPath|n|base", "RootDirectory|n|root", "Application|n|app"});
    char buffer[KX_PATH_SIZE];
    CreateApplicationFilePath(owned.list(), owned.count(), buffer, "data%5C", "sub\\new.txt");
    EXPECT_STREQ(buffer, "base/root/app/data/sub/new.txt");
    CreateApplicationFilePath(owned.list(), owned.count(), buffer, nullptr, "new.txt");
    EXPECT_STREQ(buffer, "base/root/app/new.txt");
}

TEST_F(SearchTest, ApplicationFilePathWithoutDirectories) {
    Declare({"Application|n|app"});
    char buffer[KX_PATH_SIZE];
    // Without RootPath, RootDirectory and Application still place the file.
    CreateApplicationFilePath(owned.list(), owned.count(), buffer, "d/", "new.txt");
    EXPECT_STREQ(buffer, "app/d/new.txt");
    const std::string overlong(5000, 'f');
    CreateApplicationFilePath(owned.list(), owned.count(), buffer, nullptr, overlong.c_str());
    EXPECT_EQ(strlen(buffer), KX_PATH_SIZE - 1u);
}

}  // namespace
