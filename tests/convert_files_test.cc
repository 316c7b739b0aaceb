// File conversions inside the application's tree (the working directory),
// and hostile paths that must never reach a file outside it.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

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

}  // namespace
