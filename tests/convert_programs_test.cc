// Program calls (without a shell, inside the application's tree, bounded in
// time) and the network conversions, which only ever address loopback.
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <pwd.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "companion/libKXUtils.h"
#include "support/kx_test.h"
#include "support/web_server.h"

using kx::test::Convert;
using kx::test::TempDir;

namespace {

std::string Read(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
}

class ProgramCalls : public kx::test::FreshGlobals {
protected:
    void SetUp() override {
        FreshGlobals::SetUp();
        saved_ = std::filesystem::current_path();
        // Records its arguments one a line and exits with 3.
        Script("args.sh", "printf '%s\\n' \"$@\" > args.txt; exit 3");
        // A known application: keeps its query and the name of its query file.
        Script("PeerScan.cgi", "cp \"$1\" query.txt; echo \"$1\" > input.txt; printf 'answer' > \"$2\"");
        Script("PeerScat.cgi", "exit 1");
        list_.Add("SSL", 'n', "on");
        list_.Add("Server");
        SetEingabeWert(list_.count(), list_.list(), "Server", "host a");
        _pEingabe = &list_.list();
        _pEingabeAnzahl = &list_.count();
        std::filesystem::current_path(tree_.path());
    }
    void TearDown() override {
        std::filesystem::current_path(saved_);
        FreshGlobals::TearDown();
    }
    void Script(const std::string &name, const std::string &body) {
        const std::string path = tree_.Write(name, "#!/bin/sh\n" + body + "\n");
        std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    }
    std::filesystem::path saved_;
    TempDir tree_;
    kx::test::InputList list_;
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
    EXPECT_EQ(Read("args.txt"), "1\n2\n3\n4\n5\n6\n7\n8\n9\n10\n11\n");
    Convert(ConvertByCall, "1,2,3,4,5,6,7,8,9,10,11", "args.sh");
    EXPECT_EQ(Read("args.txt"), "1\n2\n3\n4\n5\n6\n7\n8\n9\n") << "at most 9 for _call,";
    Convert(ConvertByCall, "a,b%2Cc,x;touch pwned,$(touch pwned2)", "args.sh");
    EXPECT_EQ(Read("args.txt"), "a\nb,c\nx;touch pwned\n$(touch pwned2)\n");
    EXPECT_FALSE(std::filesystem::exists("pwned") || std::filesystem::exists("pwned2"));
}

TEST_F(ProgramCalls, KnownApplicationsReadTheQueryFile) {
    EXPECT_EQ(Convert(ConvertByCall, "&Extra=1,fail", "PeerScan.cgi"), "answer");
    EXPECT_EQ(Read("query.txt"),
              "SSL=on&Server=host a&CGIDirectory=&RootDirectory=&CGIPath=&RootPath=&AppSuffix=&Application="
              "&Extension=&UserID=&Extra=1&ParameterList=DeleteCopyright--y");
    std::string input = Read("input.txt");
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

// Whether the CGI program may send an ICMP echo: lighttpd started as root
// runs it as nobody, who needs a ping socket (ping_group_range) or CAP_NET_RAW.
bool CgiProgramMayPing() {
    const pid_t child = fork();
    if (child == 0) {
        const passwd *nobody = getuid() == 0 ? getpwnam("nobody") : nullptr;
        if (nobody != nullptr && (setgid(nobody->pw_gid) != 0 || setuid(nobody->pw_uid) != 0)) _exit(1);
        const bool may = socket(AF_INET, SOCK_DGRAM, IPPROTO_ICMP) >= 0 || socket(AF_INET, SOCK_RAW, IPPROTO_ICMP) >= 0;
        _exit(may ? 0 : 1);
    }
    int status = 1;
    waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// The sample console's tools page behind lighttpd: one conversion of each
// family, run by the CGI program in its own folder.
TEST(ConsoleTools, PageListsCallsAndPings) {
    const kx::test::ConsoleServer server(KX_CONSOLE_CGI);
    ASSERT_TRUE(server.running());
    const kx::test::HttpReply reply = server.Get("/console.cgi?Application=console&Page=tools.htm");
    ASSERT_EQ(reply.status, 200) << reply.body;
    for (const char *shown : {"<span id=\"pages\">ini main.htm tools.htm</span>",
                              "<span id=\"scan\">no peers found for console (asked by tools)</span>",
                              CgiProgramMayPing() ? "<span id=\"ping\">1</span>" : "<span id=\"ping\">0</span>"})
        EXPECT_NE(reply.body.find(shown), std::string::npos) << shown << "\n" << reply.body;
}

}  // namespace
