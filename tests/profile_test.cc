// Profiles, ini and user files: reading and writing, user ids, the user
// tree and its confinement, value lists and sort tables, under several
// processes at once.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "companion/libKXUtils.h"
#include "kx_profile.h"
#include "kx_template.h"
#include "support/kx_test.h"
#include "support/server_process.h"

namespace {

namespace fs = std::filesystem;
using kx::test::HeapText;
using kx::test::ReadFile;

// Every test runs in a fresh directory: the application directory of a
// list without RootPath, RootDirectory and Application pieces.
class Profile : public kx::test::InTempDir {
protected:
    void SetUp() override {
        InTempDir::SetUp();
        for (const char *name : {"UserID", "Profile", "NewProfile", "ErrorText", "Columns", "Refresh", "Filter",
                                 "Application", "Keys", "Texts", "Mibname"})
            in_.Add(name);
    }
    EingabeElement &At(const char *name) { return in_[EingabewertIndex(name, in_.list(), in_.count())]; }
    std::string Values(const char *name) const { return in_.ValuesOf(name); }  // each in brackets
    std::string Error() { return At("ErrorText").Wert ? At("ErrorText").Wert : ""; }
    int Write(const char *divider, const char *mode, std::vector<const char *> names, const char *path) {
        return WriteIniFile(in_.count(), in_.list(), divider, mode, static_cast<int>(names.size()), names.data(), path,
                            nullptr, nullptr);
    }
};

// tests/data/profile_files.txt: profile files read and written.
TEST_F(Profile, ReadsWritesAndAppendsIniFiles) {
    for (const kx::test::DataRow &c : kx::test::DataTable("profile_files.txt")) {
        if (*c[0] == "read") {
            Set("Columns", nullptr);
            dir_.Write("p.ini", *c[1]);
            EXPECT_EQ(ReadIniFile(in_.count(), in_.list(), "p.ini"), 0);
            EXPECT_EQ(Values("Columns"), *c[2]) << c[1]->substr(0, 40);
            EXPECT_EQ(At("Columns").WertPosition, 0);
            continue;
        }
        Set("Columns", "x|y");
        ErmittleTextElemente(At("Columns").Wert, "|", nullptr, nullptr);
        At("Columns").WertGesetzt = 2;
        Set("Refresh", "30");
        std::remove("w.ini");
        Set("ErrorText", nullptr);
        if (c[3]) dir_.Write("w.ini", *c[3]);
        EXPECT_EQ(Write(c[1] ? c[1]->c_str() : nullptr, c[2]->c_str(), {"Columns", "Filter", "Refresh", "Nobody"}, "w.ini"),
                  std::stoi(*c[4]));
        EXPECT_EQ(ReadFile("w.ini"), *c[5]) << *c[2];
        EXPECT_EQ(Error(), *c[6]);
        EXPECT_EQ(At("Columns").WertPosition, 0);
    }
    EXPECT_EQ(ReadIniFile(in_.count(), in_.list(), "missing.ini"), -1);
    EXPECT_EQ(Error(), "Open: OpenUIDFile missing.ini fails!");
    EXPECT_EQ(ReadIniFile(in_.count(), in_.list(), nullptr), 0);  // no profile selected
    // A handed-back stream goes on replacing the file whole until fclose.
    FILE *stream = nullptr;
    char *written = nullptr;
    const char *names[] = {"Refresh"};
    ASSERT_EQ(WriteIniFile(in_.count(), in_.list(), "|", "w", 1, names, "s.ini", &stream, &written), 0);
    EXPECT_STREQ(HeapText(written).Get(), "s.ini");
    EXPECT_EQ(ReadFile("s.ini"), "|\nRefresh=30\n");
    std::fputs("Extra=1\n", stream);
    std::fflush(stream);
    EXPECT_EQ(ReadFile("s.ini"), "|\nRefresh=30\nExtra=1\n");
    std::fclose(stream);
    EXPECT_EQ(Write("|", "w", {"Refresh"}, nullptr), -1);  // no user directory: ENOENT
    EXPECT_EQ(Error(), "WriteIniFile: CreateUIDFile  fails with 2");
}

TEST_F(Profile, ReadsFilesDroppingLines) {
    dir_.Write("m.txt", "a TRAP-TYPE\r\nkeep\r\nlast");
    dir_.Write("empty.txt", "");
    const char *exclusions[] = {nullptr, "TRAP-TYPE", ""};
    int length = -1;
    EXPECT_EQ(HeapText(UtilsReadFile("m.txt", &length, exclusions, 3)).str(), "keep\nlast");
    EXPECT_EQ(length, 9);
    EXPECT_EQ(UtilsReadFile("empty.txt", &length, nullptr, 0), nullptr);
    EXPECT_EQ(length, 0);
}

TEST_F(Profile, NameValueFilesThroughInih) {
    dir_.Write("OID2Mib.ini",
               "; comment\n1.3.6.1.4.1.231 = FSC-SERVER.mib\n[x]\n1.3.6.1.2=RFC1213.mib\n1.3.6.1.2=second\n");
    struct Case { const char *name, *value; };
    const std::vector<Case> cases = {{"1.3.6.1.4.1.231", "FSC-SERVER.mib"}, {"1.3.6.1.2", "RFC1213.mib"}, {"1.3", nullptr}};
    for (const Case &c : cases)
        EXPECT_EQ(HeapText(KXUtilsGetValueFromName("OID2Mib.ini", c.name, 0)).str(), c.value ? c.value : "<null>");
    EXPECT_EQ(KXUtilsGetValueFromName("missing.ini", "1.3", 0), nullptr);
}

TEST_F(Profile, AllocatesUserIdsAndFindsProfiles) {
    Set("UserID", "7");
    EXPECT_EQ(CreateUID(in_.count(), in_.list()), 7);
    EXPECT_FALSE(fs::exists("uids"));
    Set("UserID", nullptr);
    EXPECT_EQ(CreateUID(in_.count(), in_.list()), 1);
    EXPECT_EQ(ReadFile("uids"), "1");
    EXPECT_EQ(Values("UserID"), "[1]");
    Set("UserID", "0");
    EXPECT_EQ(CreateUID(in_.count(), in_.list()), 2);
    EXPECT_TRUE(fs::is_directory("uid/2"));

    char buffer[KX_PATH_SIZE];
    CreateUIDFIleDirectoryname(in_.count(), in_.list(), buffer);
    EXPECT_STREQ(buffer, "uid/2");
    Set("Profile", "Default");
    Set("NewProfile", "Mine");
    char *profile = nullptr;
    EXPECT_EQ(ValidateProfile(in_.count(), in_.list(), &profile), 0);
    EXPECT_EQ(profile, At("NewProfile").Wert);
    char *path = nullptr;
    EXPECT_EQ(CreateUIDFIle(in_.count(), in_.list(), 1, &path), 0);
    EXPECT_STREQ(HeapText(path).Get(), "uid/2/Mine");
    Set("NewProfile", " \t\xA0");
    Set("Profile", "  ");
    EXPECT_EQ(ValidateProfile(in_.count(), in_.list(), &profile), 3);
    EXPECT_EQ(CreateUIDFIle(in_.count(), in_.list(), 1, &path), -1);
    EXPECT_EQ(path, nullptr);
    CreateArchiveDataFileDirectory(in_.count(), in_.list(), buffer, "5");
    EXPECT_STREQ(buffer, "uid/5/ArchiveData");
    Set("UserID", nullptr);
    CreateArchiveDataFileDirectory(in_.count(), in_.list(), buffer, nullptr);
    EXPECT_STREQ(buffer, "");
    char **files = nullptr;
    EXPECT_EQ(CreateUIDFileList(in_.count(), in_.list(), &files), 2);
    EXPECT_STREQ(files[1], "2");
    EXPECT_EQ(files[2], nullptr) << "a NULL pointer ends the list";
    KXUtilsFreeResources(files);
}

// The page engine gives a user id to a page named unlike its application
// (the last character does not count).
TEST_F(Profile, PagesOfOtherNamesGetAUserId) {
    const std::string page = dir_.Write("pages/main.htm", "text\n");
    for (const auto &[application, id] : std::vector<std::pair<const char *, const char *>>{
             {"bin/mait", nullptr}, {"main", nullptr}, {"console", "1"}, {"other", "1"}}) {
        Set("Application", application);
        kx::test::CapturedPage output;
        ErsetzeUndGebeHtmlDateiAus(page.c_str(), nullptr, -1, -1, &in_.count(), &in_.list());
        EXPECT_EQ(output.Text(), "text\n");
        EXPECT_STREQ(At("UserID").Wert, id) << application;
    }
}

TEST_F(Profile, NamedFilesOfTheTrapApplication) {
    Set("Application", "bin/SnmpTrap");
    Set("UserID", "4");
    Set("Profile", "P1");
    fs::create_directories("uid/4");
    Set("Filter", "on");
    Set("Columns", "c");
    const char *names[] = {"Columns"};
    char *path = nullptr;
    EXPECT_EQ(WriteNamedUIDFile(in_.count(), in_.list(), "Filter", "|", 1, names, &path), 0);
    EXPECT_STREQ(HeapText(path).Get(), "uid/4/Traps/FilterP1");
    EXPECT_EQ(ReadFile("uid/4/Traps/FilterP1"), "|\nFilter=on\nColumns=c\n");
    dir_.Write("uid/4/Traps/Filter", "|\nFilter=plain\n");
    EXPECT_EQ(DeleteNamedUIDFile(in_.count(), in_.list(), "Filter"), 0);
    EXPECT_EQ(ReadNamedUIDFile(in_.count(), in_.list(), "Filter"), 0);
    EXPECT_EQ(Values("Filter"), "[plain]");
    Set("Refresh", nullptr);
    EXPECT_EQ(WriteNamedUIDFile(in_.count(), in_.list(), "Refresh", "|", 1, names, nullptr), 0);
    EXPECT_FALSE(fs::exists("uid/4/Traps/RefreshP1"));
    char **files = nullptr;
    EXPECT_EQ(CreateProfileFileList(in_.count(), in_.list(), &files, nullptr), 1);  // "Traps"
    KXUtilsFreeResources(files);
}

// Request values that would leave the user directory are refused, and
// nothing outside it is read, made or deleted.
TEST_F(Profile, ConfinesRequestPathsToTheUserDirectory) {
    fs::create_directories("uid/3");
    dir_.Write("victim", "|\nFilter=secret\n");
    dir_.Write("uid/victim", "|\nFilter=secret\n");
    struct Case { const char *entry, *value; };
    const std::vector<Case> cases = {
        {"UserID", "3/../.."}, {"UserID", ".."},         {"UserID", "/tmp"},        {"UserID", "3\\..\\.."},
        {"UserID", "%2e%2e"},  {"UserID", "3%2F..%2F.."}, {"UserID", "%252e%252e"}, {"UserID", "3\n"},
        {"Profile", "../../victim"}, {"Profile", "..%2F..%2Fvictim"}, {"Profile", "%2e%2e"}, {"Profile", "\\x"},
        {"Profile", "%25%32%65%25%32%65"}, {"Profile", "a%00/../b"}, {"Profile", "/etc/passwd"},
    };
    const char *names[] = {"Filter"};
    for (const Case &c : cases) {
        Set("UserID", "3");
        Set("Profile", "Safe");
        Set("Filter", "x");
        Set(c.entry, c.value);
        char *path = nullptr;
        const int profile = CreateUIDFIle(in_.count(), in_.list(), 1, &path);
        std::free(path);
        EXPECT_NE(profile, 0) << c.value;
        EXPECT_NE(WriteNamedUIDFile(in_.count(), in_.list(), "Filter", "|", 1, names, nullptr), 0) << c.value;
        EXPECT_EQ(ReadNamedUIDFile(in_.count(), in_.list(), "Filter"), -1) << c.value;
        EXPECT_EQ(DeleteNamedUIDFile(in_.count(), in_.list(), "Filter"), -1) << c.value;
        EXPECT_EQ(Values("Filter"), "[x]") << c.value;
    }
    Set("Profile", "");
    for (const char *name : {"..", "/x"}) EXPECT_EQ(DeleteNamedUIDFile(in_.count(), in_.list(), name), -1);
    EXPECT_EQ(CreateProfileFileList(in_.count(), in_.list(), nullptr, "../.."), 0);
    EXPECT_EQ(ReadFile("victim"), "|\nFilter=secret\n");
    EXPECT_EQ(ReadFile("uid/victim"), "|\nFilter=secret\n");
    EXPECT_EQ(std::distance(fs::directory_iterator("uid/3"), {}), 0);
}

TEST_F(Profile, ChecksInNumbersThroughTheKeyTable) {
    Set("UserID", "1");
    fs::create_directories("uid/1");
    dir_.Write("uid/1/Keys", ",\nKeys=2,5\nTexts=a,b\nMibname=c,d\n");
    const char *keys[] = {"Keys", "Texts", "Mibname"};
    struct Case { const char *values, *result; };
    const std::vector<Case> cases = {{"2,x,5", "[a_c][x][b_d]"}, {"2,9,5", "[a_c]"}, {"5,2", "[b_d][a_c]"}};
    for (const Case &c : cases) {
        std::string values = c.values;
        Set("Columns", values.c_str());
        At("Columns").WertGesetzt = ErmittleTextElemente(At("Columns").Wert, ",", nullptr, nullptr);
        EXPECT_EQ(CheckInHandling(in_.count(), in_.list(), "Columns", "Keys", ",", keys, 3), 4);
        EXPECT_EQ(Values("Columns"), c.result) << c.values;
    }
    EXPECT_EQ(CheckInHandling(in_.count(), in_.list(), "None", "Keys", ",", keys, 3), in_.count());
}

TEST_F(Profile, ReworksValueLists) {
    struct Case { const char *name, *old, *added; std::string stream; };
    const std::vector<Case> cases = {
        {"Mibname", "a.mib,c.mib", "B.mib,sc.mib", "a.mib,B.mib,c.mib,sc.mib"},
        {"Mibname", "a.mib", "sc.mib", "sc.mib,a.mib"},
        {"Mibname", nullptr, "z,a", "z,a"},
        {"Columns", "red,green", "Green,blue", "red,green,blue"},
        {"Columns", "a,b", "A,B", "a,b"},
    };
    for (const Case &c : cases) {
        Set(c.name, nullptr);
        if (c.old) MergeElementValue(in_.count(), in_.list(), c.name, c.old, ",");
        const int index = EingabewertIndex(c.name, in_.list(), in_.count());
        EXPECT_EQ(MergeElementValue(in_.count(), in_.list(), c.name, c.added, ","), index);
        EXPECT_EQ(HeapText(ConvertToStream(in_.count(), in_.list(), c.name, ",")).str(), c.stream) << c.added;
    }
    EXPECT_EQ(ConvertToStream(in_.count(), in_.list(), "Refresh", ","), nullptr);

    const char cells[] = "h1\0h2\0a\0b\0c\0d\0e\0f";
    const int drop[] = {1};
    struct Shape { int removeCount, start, end, step, groupSize; const char *markers; int keep; std::string result; };
    for (const Shape &s : std::vector<Shape>{
             {0, 0, 0, 0, 0, nullptr, 0, "h1|h2|a|b|c|d|e|f"},
             {1, 2, 8, 3, 3, nullptr, 1, "h1|h2|a|c|d|e"},
             {1, 2, 8, 3, 3, nullptr, 0, "h1|h2|a,b|c|d,e|f"},
             {0, 2, 8, 2, 2, "1|1|2", 0, "h1|h2|a||b|c||d|e||f"},
             {0, 2, 8, 2, 3, "7", 0, "h1|h2|a|||b|c|||d|e|||f"},
         }) {
        EXPECT_EQ(HeapText(ConvertToStream2(cells, 8, "|", s.removeCount, drop, s.start, s.end, s.step, s.groupSize,
                                            s.markers, s.keep))
                      .str(),
                  s.result);
    }
    in_.Clear();
    in_.Add("Listening");
    EXPECT_EQ(SetListeningEingabeWerte(in_.count(), in_.list(), "e", "c", "a", "yes", "9"), -23);
    EXPECT_STREQ(in_[0].Wert, "yes");
}

TEST_F(Profile, CutsIdentifiersAtMarkers) {
    char leaf[] = ".1.3.6:rest", pair[] = "a:b:c", single[] = "a:b", name[] = "Trap:x";
    char *after = nullptr, *second = nullptr;
    EXPECT_EQ(AnalyzeLeafIDCheck(leaf, ":", &after, &second), 0);
    EXPECT_STREQ(leaf, ".1.3.6");
    EXPECT_STREQ(after, "rest");
    EXPECT_EQ(AnalyzeLeafIDCheck(pair, ":", &after, &second), 0);
    EXPECT_STREQ(pair, "a");
    EXPECT_STREQ(second, "b");
    EXPECT_STREQ(after, "c");
    EXPECT_EQ(AnalyzeLeafIDCheck(single, ":", &after, &second), 1);
    EXPECT_EQ(after, nullptr);
    EXPECT_EQ(AnalyzeTrapNameCheck(name, ":", &after), 0);
    EXPECT_STREQ(after, "x");
    EXPECT_EQ(AnalyzeTrapNameCheck(name, "#", &after), 1);
}

TEST_F(Profile, SortTablesKeepTheListsInStep) {
    const char *lists[] = {"b|a|c", "2|1|3"};
    SortTableEntry **table = nullptr;
    ASSERT_EQ(CreateSortTable(lists, 2, "|", &table, 11, 22), 3);
    EXPECT_STREQ(table[1]->Values[0], "a");
    EXPECT_STREQ(table[2]->Values[1], "3");
    EXPECT_EQ(table[2]->Position, 2);
    EXPECT_EQ(table[0]->First + table[0]->Second, 33);
    std::sort(table, table + 3, [](auto *l, auto *r) { return std::string(l->Values[0]) < r->Values[0]; });
    EXPECT_EQ(HeapText(SortText(strdup("x|y|z"), "|", table, 3)).str(), "y|x|z");
    EXPECT_EQ(HeapText(SortText(strdup("x|y"), "|", table, 0)).str(), "");
    EXPECT_EQ(FreeSortTable(3, table), 0);  // the copies go with position 0, now at index 1
    const char *uneven[] = {"a", "x|y|z"};  // found by the stream_merge fuzz target
    ASSERT_EQ(CreateSortTable(uneven, 2, "|", &table, 0, 0), 3);
    EXPECT_STREQ(table[2]->Values[0], "");
    FreeSortTable(3, table);
    EXPECT_EQ(CreateSortTable(lists, 2, nullptr, &table, 0, 0), 0);
    EXPECT_EQ(table, nullptr);
}

// --- several processes at once: unique user ids, and no torn file when
// writers are killed at any moment

TEST_F(Profile, UserIdsStayUniqueAcrossProcesses) {
    constexpr int kProcesses = 8, kIds = 200;
    int ids[2];
    ASSERT_EQ(pipe(ids), 0);
    const auto children = kx::test::ForkEach(kProcesses, [&](int) {
        close(ids[0]);
        for (int i = 0; i < kIds; ++i) {
            Set("UserID", nullptr);
            const int id = CreateUID(in_.count(), in_.list());
            if (write(ids[1], &id, sizeof id) != sizeof id) _exit(2);
        }
    });
    close(ids[1]);
    std::set<int> seen;
    for (int id; read(ids[0], &id, sizeof id) == sizeof id;) EXPECT_TRUE(seen.insert(id).second) << id;
    close(ids[0]);
    EXPECT_EQ(kx::test::WaitEach(children), 0);
    EXPECT_EQ(seen.size(), static_cast<size_t>(kProcesses * kIds));
    EXPECT_EQ(*seen.begin(), 1);
    EXPECT_EQ(*seen.rbegin(), kProcesses * kIds);
    EXPECT_EQ(ReadFile("uids"), std::to_string(kProcesses * kIds));
}

// A writer killed with SIGKILL at a random moment leaves every file it was
// replacing either as it was or as it was to become.
TEST_F(Profile, KilledWritersLeaveWholeFiles) {
    fs::create_directories("uid/1");
    const std::string a(20000, 'a'), b(30000, 'b');
    const std::set<std::string> profiles = {"", "|\nRefresh=" + a + "\n", "|\nRefresh=" + b + "\n"};
    const std::set<std::string> named = {"", "|\nFilter=on\nRefresh=" + a + "\n", "|\nFilter=on\nRefresh=" + b + "\n"};
    const char *names[] = {"Refresh"};
    srand(12345);
    for (int round = 0; round < 60; ++round) {
        const pid_t child = fork();
        if (child == 0) {
            for (int i = 0;; ++i) {
                Set("UserID", "1");
                Set("Profile", "P");
                Set("Filter", "on");
                Set("Refresh", (i % 2 ? a : b).c_str());
                WriteIniFile(in_.count(), in_.list(), "|", "w", 1, names, nullptr, nullptr, nullptr);
                WriteNamedUIDFile(in_.count(), in_.list(), "Filter", "|", 1, names, nullptr);
                Set("UserID", nullptr);
                CreateUID(in_.count(), in_.list());
            }
        }
        usleep(static_cast<useconds_t>(1000 + rand() % 20000));
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        EXPECT_EQ(profiles.count(ReadFile("uid/1/P")), 1u) << round;
        EXPECT_EQ(named.count(ReadFile("uid/1/FilterP")), 1u) << round;
        const std::string counter = ReadFile("uids");
        EXPECT_EQ(counter.find_first_not_of("0123456789"), std::string::npos) << counter;
    }
    EXPECT_FALSE(ReadFile("uids").empty());
}

}  // namespace
