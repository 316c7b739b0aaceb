// The search order of SearchForFile and the paths built from directory pieces.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "kx_input.h"
#include "support/kx_test.h"

namespace {

using kx::test::HeapText;
using Texts = std::vector<std::string>;

// A list declared from definition lines (names with their defaults), e.g.
// {"RootPath|n|base"}; the keyword index globals follow it.
class Search : public kx::test::FreshGlobals {
protected:
    void Declare(const Texts &lines) {
        std::string block = "|";
        block.push_back('\0');
        for (const std::string &line : lines) block.append(line).push_back('\0');
        block.push_back('\0');
        ASSERT_EQ(ErmittleEingabe(block.c_str(), &owned.list(), &owned.count(), nullptr, 0), 0);
    }
    std::string Found(const char *name, const std::string &settings = {}, int settingsCount = 0) {
        const char *found = SearchForFile(name, owned.list(), owned.count(), settings.empty() ? nullptr : settings.c_str(),
                                          settingsCount, nullptr);
        return found != nullptr ? found : "(none)";
    }
    std::string ApplicationFilePath(const char *directory, const char *file) {
        char buffer[KX_PATH_SIZE];
        CreateApplicationFilePath(owned.list(), owned.count(), buffer, directory, file);
        return buffer;
    }

    kx::test::TempDir tree;
    kx::test::CurrentDirectory inside{tree.path()};
    kx::test::InputList owned;
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
        owned.Clear();
        SetUp();
        Declare(c.entries);
        EXPECT_EQ(Found("x.ini", c.settings, c.settingsCount), c.expected);
    }
}

TEST_F(Search, EntryValuesAndTheKeywordsOfTheList) {
    tree.Write("value/x.ini", "x");
    tree.Write("base/x.ini", "x");
    Declare({"A|n|", "RootPath|n|base", "CGIPath|n|default"});
    EXPECT_EQ(Found("x.ini"), "base/x.ini");
    // A shorter list than the one that declared the keywords: nothing past it is read.
    EXPECT_EQ(SearchForFile("x.ini", owned.list(), 1, nullptr, 0, nullptr), nullptr);
    owned.Clear();
    SetUp();
    Declare({"CGIPath|n|default"});
    owned[0].Wert = strdup("--value");
    owned[0].WertPosition = 2;
    EXPECT_EQ(Found("x.ini"), "value/x.ini") << "the current value wins over the default";
}

TEST_F(Search, PeerScanFallsBackToTheConsoleDefinition) {
    tree.Write("Korvanetix/Korvanetix.ini", "|\nConsole|n|1\n");
    EXPECT_EQ(Found("peerscan.INI"), "Korvanetix/Korvanetix.ini");
    EXPECT_EQ(Found("Other.ini"), "(none)");
    ASSERT_EQ(ErmittleEingabe("PeerScan", &owned.list(), &owned.count(), nullptr, 0), 0);
    EXPECT_EQ(kx::test::Describe(owned.list(), owned.count()), "Console|n|1\n");
}

TEST_F(Search, OpensTheFileFoundAndSearchesAnEarlierResultAgain) {
    tree.Write("Korvanetix/x.ini", "content");
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
    tree.Write("base/root/app/data/f.txt", "x");
    EXPECT_EQ(ApplicationFilePath("data%2F", "f.txt"), "base/root/app/data/f.txt") << "where it is";
    tree.Write("data/f.txt", "x");
    EXPECT_EQ(ApplicationFilePath("data%2F", "f.txt"), "data/f.txt");
    owned.Clear();
    SetUp();
    Declare({"Application|n|app"});  // without RootPath, RootDirectory and Application still place the file
    EXPECT_EQ(ApplicationFilePath("d/", "new.txt"), "app/d/new.txt");
    EXPECT_EQ(ApplicationFilePath(nullptr, std::string(5000, 'f').c_str()).size(), KX_PATH_SIZE - 1u);
}

}  // namespace
