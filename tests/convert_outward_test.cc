// The conversions that reach outside the page: files inside the
// application's tree (the working directory) and hostile paths that must never
// reach a file outside it; program calls (without a shell, inside the tree,
// bounded in time); the network conversions, which only ever address loopback.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include "companion/libKXUtils.h"
#include "support/kx_test.h"

using kx::test::Convert;
using kx::test::HandlerCase;
using kx::test::ReadFile;
using kx::test::TempDir;

namespace {

// Each test runs in a tree of its own, with a sibling folder outside it.
class FileConversions : public kx::test::InTempDir {
protected:
    void SetUp() override {
        InTempDir::SetUp();
        dir_.Write("a.txt", "alpha");
        dir_.Write("pages/main.htm", "<html>");
        dir_.Write("pages/ini/main.ini", "|\n");
    }
    TempDir outside_;
    std::string secret_ = outside_.Write("secret.txt", "keep");
};

// One tree, steps in order: each step's printed result, then what it left.
TEST_F(FileConversions, StepsOnOneTree) {
    kx::test::ExpectAll({
        {ConvertFileExists, "", "a.txt", "0"},
        {ConvertFileExists, "", "missing", "-1"},
        {ConvertFileExists, "", nullptr, "-1"},
        {ConvertCreateFile, "", "new%20file", "0"},
        {ConvertCreateFile, "", "no/such/dir", "-1"},
        {ConvertCreateDir, "", "d", "0"},
        {ConvertCreateDir, "", "d", "0"},
        {ConvertListDir, "", "d", ""},
        {ConvertListDir, "", "pages", "ini main.htm"},
        {ConvertListDir, "", nullptr, ""},
        {ConvertWriteFile, "one%2C,", "w.txt", "0"},
        {ConvertWriteFile, "two,a", "w.txt", "0"},
        {ConvertWriteFile, "fresh,A", "n.txt", "0"},
        {ConvertWriteFile, "x", nullptr, "-1"},
        {ConvertRenameFile, "w.txt", "w.txt", "0"},
        {ConvertRenameFile, "r.txt", "w.txt", "0"},
        {ConvertRenameFile, "", "r.txt", "-1"},
        {ConvertFileCopy, "c.txt", "r.txt", "0"},
        {ConvertFileCopy, "c2.txt", "missing", "-2"},
        {ConvertFileRemove, "", "c.txt", "0"},
        {ConvertFileRemove, "", "c.txt", "-2"},
        {ConvertFileRegexpExists, "[an].*", ".", "a.txt n.txt new file"},  // whole names
        {ConvertFileRegexpExists, "zzz.*", ".", "."},
        {ConvertFileExists, "", dir_.path().c_str(), "0"},  // absolute, inside the tree
    });
    EXPECT_EQ(ReadFile("r.txt"), "one,two");
    EXPECT_EQ(ReadFile("n.txt"), "fresh");
    EXPECT_FALSE(std::filesystem::exists("w.txt"));
    EXPECT_FALSE(std::filesystem::exists("r.txt.loc"));
    dir_.Write("r.txt.loc", "");  // another process holds the lock: left as it is
    EXPECT_EQ(Convert(ConvertRenameFile, "s.txt", "r.txt"), "-2");
    EXPECT_TRUE(std::filesystem::exists("r.txt.loc"));
    const std::string temporary = Convert(ConvertCreateTemplateFile, "", "d");
    EXPECT_EQ(temporary.rfind(std::filesystem::canonical(dir_.path()).string() + "/d/kx.", 0), 0U) << temporary;
    EXPECT_TRUE(std::filesystem::exists(temporary));
}

TEST_F(FileConversions, IniReadJoinsKeysWithDefaultsAndDivider) {
    dir_.Write("net.ini", "|\nTop=t\n[Net]\nHost=h\nName=a|b\n");
    in_.Add("Ersetzungsanfang", 'n', "{");
    in_.Add("Ersetzungsende", 'n', "}");
    in_.Add("IniFile");
    Set("IniFile", "net.ini");
    iErsetzungsAnfang = 0;
    iErsetzungsEnde = 1;
    _pEingabe = &in_.list();
    _pEingabeAnzahl = &in_.count();
    kx::test::ExpectAll({
        {ConvertToIniRead, "{IniFile},DefaultValue=none,OutputDivider=;", "Net,Host|Net,Port", "h;none"},
        {ConvertToIniRead, "{IniFile}", "Net,Name|Top", "a%7Cb|t"},
        {ConvertToIniRead, "{IniFile},OutputDivider=%2F", "Net,Port|Net,Host", "/h"},
        {ConvertToIniRead, "DefaultValue=x", "Net,Host", ""},
        {ConvertToIniRead, "{IniFile}", "", ""},
        {ConvertToIniRead, "..%2Foutside.ini,DefaultValue=-", "Net,Host", "-"},
    });
}

// Hostile paths, as the value and as the argument: refused with "-1", and
// the file outside the tree neither changed nor deleted nor read.
TEST_F(FileConversions, HostilePathsStayOutside) {
    std::filesystem::create_symlink(outside_.path(), "dirlink");
    std::filesystem::create_symlink(secret_, "filelink");
    std::filesystem::create_symlink(outside_.path() + "/nothing", "dangling");
    std::filesystem::create_hard_link(secret_, "hardlink");  // a name inside, the file outside
    const std::string relative = std::filesystem::relative(secret_, dir_.path()).string();
    const std::vector<std::string> hostile = {
        relative, secret_, "..%2F" + relative, "pages/../../x", "a.txt%00.htm", "dirlink/secret.txt",
        "filelink", "dangling", "%2E%2E%2Fsecret.txt", "pages/%2e%2e/%2e%2e/x"};
    for (const std::string &path : hostile) {
        SCOPED_TRACE(path);
        const std::vector<HandlerCase> cases = {
            {ConvertFileRemove, "", path.c_str(), "-1"},   {ConvertCreateFile, "", path.c_str(), "-1"},
            {ConvertCreateDir, "", path.c_str(), "-1"},    {ConvertWriteFile, "x", path.c_str(), "-1"},
            {ConvertFileCopy, path, "a.txt", "-1"},        {ConvertFileCopy, "copy", path.c_str(), "-1"},
            {ConvertRenameFile, path, "a.txt", "-1"},      {ConvertRenameFile, "moved", path.c_str(), "-1"},
            {ConvertFileExists, "", path.c_str(), "-1"},   {ConvertListDir, "", path.c_str(), ""},
            {ConvertCreateTemplateFile, "", path.c_str(), ""},
        };
        kx::test::ExpectAll(cases);
        EXPECT_EQ(ReadFile(secret_), "keep");
    }
    kx::test::ExpectAll({{ConvertCreateFile, "", "hardlink", "0"},
                         {ConvertWriteFile, "new", "hardlink", "0"},
                         {ConvertFileCopy, "hardlink", "a.txt", "0"}});
    EXPECT_EQ(ReadFile(secret_), "keep");
    EXPECT_EQ(ReadFile("a.txt"), "alpha");
    EXPECT_FALSE(std::filesystem::exists("copy"));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(outside_.path()), {}), 1);
}

// --- program calls and the network

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
