// The trap store on disk: directories from "./snmptrapd.ini", listings,
// states renamed under lock files (left-behind locks included), MIB tags,
// and pruning by age and by number; and the store under concurrent
// processes.
#include <gtest/gtest.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <ctime>
#include <filesystem>
#include <set>

#include "companion/libKXUtils.h"
#include "kx_trap.h"
#include "support/kx_test.h"
#include "support/trap_stress.h"

namespace {

using kx::stress::TrapName;

class TrapStore : public ::testing::Test {
protected:
    void SetUp() override { Reset(); }
    void TearDown() override { Reset(); }
    static void Reset() {
        KXFreeListTrapfiles();
        TrapsDirectory[0] = DBDirectory[0] = '\0';
    }
    std::string Add(const std::string &name) { return dir.Write(name, "trap\n"); }
    std::set<std::string> Names() const {
        const auto names = kx::stress::Names(dir.path());
        return {names.begin(), names.end()};
    }
    kx::test::TempDir dir;
};

TEST_F(TrapStore, DirectoriesFromTheFirstTwoLinesOfSnmptrapdIni) {
    const std::string kTraps = "../../../htdocs/Korvanetix/SnmpTrap/uid/1/Traps";
    const std::string kDb = "../../../htdocs/Korvanetix/PeerScan/uid/1/hwinv.dba";
    const struct {
        const char *content;  // nullptr: no file
        std::string traps, db;
    } cases[] = {
        {nullptr, kTraps, kDb},
        {"a=1\nb=2\nTrapsDirectory=/t\n", kTraps, kDb},
        {"TrapsDirectory = \t/data/traps \t\r\n", "/data/traps", ""},
        {"dbdirectory=/db/hw.dba", "", "/db/hw.dba"},
        {"TRAPSDIRECTORY=/a\r\nDBDirectoryX=  /b  \n", "/a", "/b"},
        {"TrapsDirectory /a\n", kTraps, kDb},
        {"DBDirectory=", kTraps, kDb},  // an empty value sets nothing
    };
    const std::filesystem::path home = std::filesystem::current_path();
    std::filesystem::current_path(dir.path());
    for (const auto &c : cases) {
        Reset();
        std::filesystem::remove("snmptrapd.ini");
        if (c.content != nullptr) dir.Write("snmptrapd.ini", c.content);
        EXPECT_EQ(KXDetermineDirectories(), 0);
        EXPECT_EQ(TrapsDirectory, c.traps) << (c.content ? c.content : "no file");
        EXPECT_EQ(DBDirectory, c.db) << (c.content ? c.content : "no file");
    }
    Reset();
    dir.Write("snmptrapd.ini", "TrapsDirectory=" + std::string(1100, 'x') + "\n");
    KXDetermineDirectories();
    EXPECT_EQ(TrapsDirectory, std::string(1008, 'x'));  // a line is read in pieces of 1023 bytes
    std::filesystem::current_path(home);
}

// tests/data/trap_states.txt: states, the call, the states after it.
TEST_F(TrapStore, StatesRenamedByUniqueIdentifier) {
    for (const kx::test::DataRow &c : kx::test::DataTable("trap_states.txt")) {
        Reset();
        std::snprintf(TrapsDirectory, sizeof TrapsDirectory, "%s", dir.path().c_str());
        std::filesystem::remove_all(dir.path());
        std::filesystem::create_directory(dir.path());
        Add(TrapName(1, *c[0]));
        EXPECT_EQ(KXTrapRenameTrapfile(c[1]->c_str(), c[2] ? c[2]->c_str() : nullptr, c[3]->c_str(), c[4]->c_str(),
                                       std::stoi(*c[5])),
                  0);
        EXPECT_EQ(Names(), std::set<std::string>{TrapName(1, *c[6])}) << *c[1] << " " << *c[3];
    }
}

// A lock file with the given content, made seconds ago.
void Lock(const std::string &path, const std::string &content, int secondsAgo) {
    std::ofstream(path) << content;
    const timespec times[2] = {{std::time(nullptr) - secondsAgo, 0}, {std::time(nullptr) - secondsAgo, 0}};
    utimensat(AT_FDCWD, path.c_str(), times, 0);
}

pid_t DeadProcess() {
    const pid_t child = fork();
    if (child == 0) _exit(0);
    waitpid(child, nullptr, 0);
    return child;
}

TEST_F(TrapStore, RenameUnderLockFiles) {
    const std::string living = std::to_string(getppid()), dead = std::to_string(DeadProcess()),
                      own = std::to_string(getpid());
    const struct {
        const char *lockContent;  // nullptr: no lock
        int secondsAgo, result;
    } cases[] = {
        {nullptr, 0, 0},
        {living.c_str(), 0, -2},  // held by a running process
        {"", 0, -2},              // being made just now
        {dead.c_str(), 0, 0},     // left by a process that died
        {"", 60, 0},              // names no process and is old
        {own.c_str(), 0, -3},  // this process holds it: a second lock cannot be made
    };
    for (const auto &c : cases) {
        std::filesystem::remove_all(dir.path());
        const std::string trap = Add(TrapName(1)), lock = trap + ".loc";
        if (c.lockContent != nullptr) Lock(lock, c.lockContent, c.secondsAgo);
        char *path = strdup(trap.c_str()), *newPath = nullptr;
        EXPECT_EQ(GTRenameTrapFile(&path, FwdCount, 8, '1', &newPath), c.result) << c.lockContent;
        const std::string expected = dir.path() + "/" + TrapName(1, c.result == 0 ? "000000001" : "000000000");
        EXPECT_EQ(KXUtilsFileExists(expected.c_str()), 0);
        EXPECT_EQ(newPath ? std::string(newPath) : "<null>", c.result == 0 ? expected : "<null>");
        EXPECT_EQ(KXUtilsFileExists(lock.c_str()) == 0, c.result != 0);
        std::free(path);
        std::free(newPath);
    }
    char *path = strdup((dir.path() + "/T1_2_3_s_000000000").c_str()), *newPath = nullptr;
    EXPECT_EQ(GTRenameTrapFile(&path, FwdCount, 8, '1', &newPath), -1);  // no unique identifier
    EXPECT_EQ(GTRenameTrapFile(&path, FwdCount, 9, '1', &newPath), -1);
    std::free(path);
    path = strdup((dir.path() + "/" + TrapName(9)).c_str());
    EXPECT_EQ(GTRenameTrapFile(&path, FwdCount, 8, '0', &newPath), -1);  // found nowhere: not "already 0"
    std::free(path);
}

TEST_F(TrapStore, TrapFoundAgainAfterRenames) {
    Add(TrapName(2, "000000001"));
    Add(TrapName(2) + ".loc");
    Add("new-3");
    const struct {
        std::string path;
        int status;
        std::string found;
    } cases[] = {
        {dir.path() + "/" + TrapName(2, "000000001"), 0, TrapName(2, "000000001")},
        {dir.path() + "/" + TrapName(2), 1, TrapName(2, "000000001")},
        {dir.path() + "/" + TrapName(3), -1, TrapName(3)},
        {dir.path() + "/" + TrapName(3) + "/new-3", -1, TrapName(3) + "/new-3"},  // a dot in the directory counts
    };
    for (const auto &c : cases) {
        int status = 9;
        kx::test::HeapText found(GTDetermineTrapFile(strdup(c.path.c_str()), &status));
        EXPECT_EQ(status, c.status) << c.path;
        EXPECT_EQ(found.str(), dir.path() + "/" + c.found);
    }
    int status = 0;
    kx::test::HeapText found(GTDetermineTrapFile(strdup("no-dot"), &status));
    EXPECT_EQ(status, -2);
}

TEST_F(TrapStore, ListingsMatchWholeNames) {
    Add(TrapName(1));
    Add(TrapName(1) + ".loc");
    Add(TrapName(1) + ".4711.dead");
    Add("new-2");
    Add("xT1_2_3_s_000000000.5");
    Add("sub/" + TrapName(3));
    std::filesystem::create_directory(dir.path() + "/" + TrapName(4));
    EXPECT_EQ(KXListTrapfiles(dir.path().c_str(), nullptr), 0);
    // Any identifier pattern ".*" takes the lock files in; the trap expression does not.
    ASSERT_EQ(TrapfilesCount, 3);
    EXPECT_EQ(std::set<std::string>(TrapfilesOutput, TrapfilesOutput + 3),
              (std::set<std::string>{dir.path() + "/" + TrapName(1), dir.path() + "/" + TrapName(1) + ".loc",
                                     dir.path() + "/" + TrapName(1) + ".4711.dead"}));
    std::string sub = dir.path() + "/sub", top = dir.path(), missing = "/nonexistent";
    char *directories[] = {top.data(), missing.data(), sub.data()};
    char **list = nullptr;
    EXPECT_EQ(GTGetTrapFiles(3, directories, &list, nullptr), 2);
    GTFreeRessources(2, list);
    int count = 5;
    const char *expression = ".*";
    EXPECT_EQ(ListDirectory("/nonexistent", 0, 0, 1, 1, &expression, &count, &list), -1);
    EXPECT_EQ(count, 0);
}

TEST_F(TrapStore, PruningByAgeAndNumber) {
    const int now = int(std::time(nullptr)) - int(kx::stress::kFirstArrival);
    const int day = 86400;
    const struct {
        std::vector<int> ids;
        int (*prune)(const char *, const char *, const char *, const char *, const char *);
        const char *table, *number;
        std::vector<int> kept;
    } cases[] = {
        {{now - 2 * day, now - day - 10, now - day + 10, now}, KXProcessTrapAgeDelete, nullptr, "1", {now - day + 10, now}},
        {{now - 5, now + 100}, KXProcessTrapAgeDelete, nullptr, "0", {now + 100}},
        {{now - 5 * day}, KXProcessTrapAgeDelete, "SERVER_LIST", "1", {now - 5 * day}},  // no number in the database
        {{5, 1, 4, 2, 3}, KXProcessTrapMaxNumDelete, nullptr, "3 traps", {3, 4, 5}},
        {{1, 2}, KXProcessTrapMaxNumDelete, nullptr, "2", {1, 2}},
        {{1, 2}, KXProcessTrapMaxNumDelete, nullptr, "-1", {}},
    };
    for (const auto &c : cases) {
        std::filesystem::remove_all(dir.path());
        for (const int id : c.ids) Add(TrapName(id));
        EXPECT_EQ(c.prune(nullptr, c.table, c.number, dir.path().c_str(), nullptr), 0);
        std::set<std::string> kept;
        for (const int id : c.kept) kept.insert(TrapName(id));
        EXPECT_EQ(Names(), kept) << c.number;
    }
    std::filesystem::remove_all(dir.path());
    for (int id = 1; id <= 103; ++id) Add(TrapName((id * 37) % 103 + 1));
    KXProcessTrapMaxNumDelete(nullptr, nullptr, "100", dir.path().c_str(), "[tT]");
    const auto names = Names();
    EXPECT_EQ(names.size(), 100u);
    for (int id = 1; id <= 3; ++id) EXPECT_EQ(names.count(TrapName(id)), 0u);
    // A listing taken during an acknowledgement may hold trap 1 under both
    // names: it is one trap, and pruning to three deletes nothing.
    std::filesystem::remove_all(dir.path());
    for (const std::string &name : {TrapName(1), TrapName(1, "100000000"), TrapName(2), TrapName(3)}) Add(name);
    KXProcessTrapMaxNumDelete(nullptr, nullptr, "3", dir.path().c_str(), nullptr);
    EXPECT_EQ(Names().size(), 4u);
    KXProcessTrapMaxNumDelete(nullptr, nullptr, "2", dir.path().c_str(), nullptr);
    EXPECT_EQ(Names(), (std::set<std::string>{TrapName(2), TrapName(3)}));
}

TEST_F(TrapStore, MibTagPutIntoTheName) {
    const struct {
        std::string name, mib, renamed;
    } cases[] = {
        {"T99999l5nABCDE_6_1001_192_168_1_10_srv01_000000000.1", "WXYZ.mib", "T99999l4nWXYZ_6_1001_192_168_1_10_srv01_000000000.1"},
        {"T99999_6_1_1_2_3_4_s_000000000.1", "RFC1215-MIB.MiB", "T99999l11nRFC1215-MIB_6_1_1_2_3_4_s_000000000.1"},
        {"T7l99nAB", "C", "T7l1nC"},
    };
    for (const auto &c : cases) {
        std::filesystem::remove_all(dir.path());
        std::string mib = c.mib;
        EXPECT_EQ(GTAdaptTrapFileName(Add(c.name).c_str(), mib.data()), 0);
        EXPECT_EQ(Names(), std::set<std::string>{c.renamed});
    }
    char mib[] = "A.mib";
    EXPECT_EQ(GTAdaptTrapFileName((dir.path() + "/missing").c_str(), mib), -2);
    EXPECT_EQ(GTAdaptTrapFileName(nullptr, mib), -1);
    EXPECT_EQ(KXAdaptTrapFileName((dir.path() + "/missing").c_str()), -1);
    EXPECT_EQ(KXAdaptTrapFileName(dir.path().c_str()), 0);  // no MIB is known for the trap
    EXPECT_NE(KXUtilsFileExists((dir.path() + "/StandardRefresh").c_str()), 0);
}


// Nothing is lost while the trap receiver writes and CGI processes
// acknowledge and prune at the same time (processes, not threads).
TEST(TrapStoreUnderConcurrency, EveryKeptTrapOnceWithItsLastStates) {
    kx::test::TempDir work;
    const std::string traps = work.path() + "/Traps";
    std::filesystem::create_directory(traps);
    const kx::stress::Outcome outcome = kx::stress::RunTrapStress(traps, work.path(), 600, 200);
    EXPECT_TRUE(outcome.Clean()) << outcome.Text();
    EXPECT_GT(outcome.renames, 300) << outcome.Text();
}

}  // namespace
