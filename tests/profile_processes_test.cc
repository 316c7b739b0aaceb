// Profile and counter files under several processes at once: unique user
// ids, and no torn file when writers are killed at any moment.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "kx_profile.h"
#include "support/kx_test.h"

namespace {

namespace fs = std::filesystem;

std::string Slurp(const std::string &path) {
    std::string content;
    if (FILE *f = std::fopen(path.c_str(), "rb")) {
        for (int c; (c = std::fgetc(f)) != EOF;) content += static_cast<char>(c);
        std::fclose(f);
    }
    return content;
}

class Processes : public kx::test::FreshGlobals {
protected:
    void SetUp() override {
        FreshGlobals::SetUp();
        saved_ = fs::current_path();
        fs::current_path(dir_.path());
        for (const char *name : {"UserID", "Profile", "Refresh", "Filter", "ErrorText"}) in_.Add(name);
    }
    void TearDown() override {
        fs::current_path(saved_);
        FreshGlobals::TearDown();
    }
    void Set(const char *name, const char *text) { SetEingabeWert(in_.count(), in_.list(), name, text); }

    kx::test::TempDir dir_;
    fs::path saved_;
    kx::test::InputList in_;
};

TEST_F(Processes, UserIdsStayUniqueAcrossProcesses) {
    constexpr int kProcesses = 8, kIds = 200;
    int ids[2];
    ASSERT_EQ(pipe(ids), 0);
    std::vector<pid_t> children;
    for (int p = 0; p < kProcesses; ++p) {
        const pid_t child = fork();
        if (child == 0) {
            close(ids[0]);
            for (int i = 0; i < kIds; ++i) {
                Set("UserID", nullptr);
                const int id = CreateUID(in_.count(), in_.list());
                if (write(ids[1], &id, sizeof id) != sizeof id) _exit(2);
            }
            _exit(0);
        }
        children.push_back(child);
    }
    close(ids[1]);
    std::set<int> seen;
    for (int id; read(ids[0], &id, sizeof id) == sizeof id;) EXPECT_TRUE(seen.insert(id).second) << id;
    close(ids[0]);
    for (const pid_t child : children) {
        int status = -1;
        waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
    }
    EXPECT_EQ(seen.size(), static_cast<size_t>(kProcesses * kIds));
    EXPECT_EQ(*seen.begin(), 1);
    EXPECT_EQ(*seen.rbegin(), kProcesses * kIds);
    EXPECT_EQ(Slurp("uids"), std::to_string(kProcesses * kIds));
}

// A writer killed with SIGKILL at a random moment leaves every file it was
// replacing either as it was or as it was to become.
TEST_F(Processes, KilledWritersLeaveWholeFiles) {
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
        EXPECT_EQ(profiles.count(Slurp("uid/1/P")), 1u) << round;
        EXPECT_EQ(named.count(Slurp("uid/1/FilterP")), 1u) << round;
        const std::string counter = Slurp("uids");
        EXPECT_EQ(counter.find_first_not_of("0123456789"), std::string::npos) << counter;
    }
    EXPECT_FALSE(Slurp("uids").empty());
}

}  // namespace
