// Program calls (without a shell, inside the application's tree, bounded in
// time) and the network conversions, which only ever address loopback.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <string>

#include "companion/libKXUtils.h"
#include "support/kx_test.h"

using kx::test::Convert;
using kx::test::ReadFile;

namespace {

class ProgramCalls : public kx::test::InTempDir {
protected:
    void SetUp() override {
        InTempDir::SetUp();
        // Records its arguments one a line and exits with 3.
        Script("args.sh", "printf '%s\\n' \"$@\" > args.txt; exit 3");
        // A known application: keeps its query and the name of its query file.
        Script("PeerScan.cgi", "cp \"$1\" query.txt; echo \"$1\" > input.txt; printf 'answer' > \"$2\"");
        Script("PeerScat.cgi", "exit 1");
        in_.Add("SSL", 'n', "on");
        in_.Add("Server");
        Set("Server", "host a");
        _pEingabe = &in_.list();
        _pEingabeAnzahl = &in_.count();
    }
    void Script(const std::string &name, const std::string &body) {
        const std::string path = dir_.Write(name, "#!/bin/sh\n" + body + "\n");
        std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    }
};

TEST_F(ProgramCalls, UnknownProgramsGetTheirArgumentsAndGiveTheirStatus) {
    kx::test::ExpectAll({
        {ConvertByCall, "a,b%2Cc,x;touch pwned,$(touch pwned2)", "args.sh", "3"},
        {ConvertByCall, "", "missing.sh", "-1"},
        {ConvertByCall, "", "/bin/true", "-1"},        // outside the tree
        {ConvertByCall, "", "../bin/true", "-1"},
        {ConvertByCall, "", nullptr, "-1"},
        {ConvertByCallBasic, "1,2,3,4,5,6,7,8,9,10,11", "./args.sh", "3"},
    });
    EXPECT_EQ(ReadFile("args.txt"), "1\n2\n3\n4\n5\n6\n7\n8\n9\n10\n11\n");
    Convert(ConvertByCall, "1,2,3,4,5,6,7,8,9,10,11", "args.sh");
    EXPECT_EQ(ReadFile("args.txt"), "1\n2\n3\n4\n5\n6\n7\n8\n9\n") << "at most 9 for _call,";
    Convert(ConvertByCall, "a,b%2Cc,x;touch pwned,$(touch pwned2)", "args.sh");
    EXPECT_EQ(ReadFile("args.txt"), "a\nb,c\nx;touch pwned\n$(touch pwned2)\n");
    EXPECT_FALSE(std::filesystem::exists("pwned") || std::filesystem::exists("pwned2"));
}

TEST_F(ProgramCalls, KnownApplicationsReadTheQueryFile) {
    EXPECT_EQ(Convert(ConvertByCall, "&Extra=1,fail", "PeerScan.cgi"), "answer");
    EXPECT_EQ(ReadFile("query.txt"),
              "SSL=on&Server=host a&CGIDirectory=&RootDirectory=&CGIPath=&RootPath=&AppSuffix=&Application="
              "&Extension=&UserID=&Extra=1&ParameterList=DeleteCopyright--y");
    std::string input = ReadFile("input.txt");
    input.pop_back();
    EXPECT_FALSE(std::filesystem::exists(input)) << "the query file is deleted";
    kx::test::ExpectAll({
        {ConvertByCall, ",fail", "PeerScat.cgi", "fail"},
        {ConvertByCall, "", "PeerScat.cgi", "PeerScat.cgi"},
        {ConvertByCallBasic, "", "PeerScan.cgi", "answer"},  // the whole value names it
        {ConvertByCall, ",none", "PeerScan; touch pwned", "none"},
    });
    EXPECT_FALSE(std::filesystem::exists("pwned"));
}

// A program that outlives its time is killed with what it started, and reaped.
TEST_F(ProgramCalls, HangingProgramIsStoppedAtItsLimit) {
    Script("hang.sh", "sleep 30 & sleep 30");
    char *argv[] = {const_cast<char *>("./hang.sh"), nullptr};
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(KXUtilsStartProgram("synchron", 1, argv, 1), -1);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "no child left behind";
    EXPECT_EQ(errno, ECHILD);
    EXPECT_EQ(KXUtilsStartProgram("asynchron", 1, argv, 1), -1);
}

TEST(Network, LoopbackHostsAnswerAndResolve) {
    kx::test::ExpectAll({
        {ConvertPing, "", "127.0.0.1|::1|localhost", "1|1|1"},
        {ConvertPing, ",;", "127.0.0.1|", "1;0"},
        {ConvertPing, "", nullptr, "0"},
        {ConvertToHostname, "", "127.0.0.1|x|", "localhost|Unknown|Unknown"},
        {ConvertToHostname, ",;,y|n", "127.0.0.1|127.0.0.1|127.0.0.1", "localhost;;localhost"},
        {ConvertToHostname, "", nullptr, "Unknown"},
        {ConvertToIPAddress, "", "localhost|127.0.0.1|", "127.0.0.1|127.0.0.1|Unknown"},
        {ConvertToIPAddress, "", nullptr, "Unknown"},
    });
    EXPECT_EQ(PingThreadInfo, nullptr);
    EXPECT_EQ(HostnameThreadInfo, nullptr);
}

// Long host lists: one thread per host in rounds, every one joined.
TEST(Network, ThousandsOfHosts) {
    std::string loopback = "127.0.0.1", empty, up = "1", down = "0", unknown = "Unknown";
    for (int i = 1; i < 300; ++i) loopback += "|127.0.0.1", up += "|1";
    for (int i = 1; i < 3000; ++i) empty += "|", down += "|0", unknown += "|Unknown";
    EXPECT_EQ(Convert(ConvertPing, "", loopback.c_str()), up);
    EXPECT_EQ(Convert(ConvertPing, "", empty.c_str()), down);
    EXPECT_EQ(Convert(ConvertToHostname, "", empty.c_str()), unknown);
    EXPECT_EQ(PingRepeat, 0);
    EXPECT_EQ(HostnameRepeat, 0);
}

}  // namespace
