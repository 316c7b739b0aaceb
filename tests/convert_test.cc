// Conversions: each handler's exact results, the conversion table and the
// chain dispatcher (times are read in a fixed zone, five hours behind UTC, no
// summer time, and the "C" locale); and those that reach outside the page:
// files inside the application's tree (the working directory) and hostile
// paths that must never reach a file outside it; program calls (without a
// shell, inside the tree, bounded in time); the network conversions, which
// only ever address loopback.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <chrono>
#include <clocale>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <string>
#include <tuple>
#include <vector>

#include "companion/libKXUtils.h"
#include "convert/chain.h"
#include "convert/convert_internal.h"
#include "kx_convert.h"
#include "support/kx_test.h"

namespace {

using kx::test::Convert;
using kx::test::HandlerCase;
using kx::test::HeapText;
using kx::test::InputList;
using kx::test::ReadFile;
using kx::test::TempDir;

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wold-style-cast"  // the C header's own cast
const char *const kUnbounded = KX_CONVERT_UNBOUNDED;
#pragma GCC diagnostic pop

// A chain written as text applied to a heap copy of value, given up to it.
std::string Chain(std::string text, const char *value) {
    return HeapText(ConvertIt(text.data(), kUnbounded, value ? strdup(value) : nullptr, 1, -1)).str();
}

const KonvertierungsEintrag *Row(const std::string &name) {
    for (int i = 0; i < ConvertTableCount; ++i)
        if (name == ConvertTable[i].name) return &ConvertTable[i];
    return nullptr;
}

// Each test is a process of its own: the zone and the locale need no restoring.
class Conversions : public kx::test::FreshGlobals {
protected:
    void SetUp() override {
        FreshGlobals::SetUp();
        setenv("TZ", "EST5", 1);
        tzset();
        std::setlocale(LC_TIME, "C");
    }
};

// The calls of a table in tests/data, in order: the conversion's name (none:
// the argument is a whole chain), argument, value and result.
void ExpectTable(const std::string &name) {
    for (const kx::test::DataRow &row : kx::test::DataTable(name)) {
        ASSERT_EQ(row.size(), 4u);
        const char *value = row[2] ? row[2]->c_str() : nullptr;
        if (!row[0]) {
            EXPECT_EQ(Chain(*row[1], value), row[3].value_or("<null>")) << *row[1];
            continue;
        }
        const KonvertierungsEintrag *conversion = Row(*row[0]);
        ASSERT_NE(conversion, nullptr) << *row[0];
        EXPECT_EQ(Convert(conversion->handler, *row[1], value), row[3].value_or("<null>")) << *row[0] << " " << *row[1];
    }
}

TEST_F(Conversions, HandlerResults) {
    EXPECT_EQ(Convert(ConvertToValueIndex, "{Prefix[{Key[CPU]}]},none", "warn"), "none") << "without a list";
    InputList list;
    for (const char *name : {"Key", "Prefix", "Short"}) list.Add(name, 'j');
    list.SetValues(0, {"Fan", "CPU", "CPU", "Disk"});
    list.SetValues(1, {"ok", "warn", "bad", "fine"});
    list.SetValues(2, {"ok"});
    _pEingabe = &list.list();
    _pEingabeAnzahl = &list.count();
    ExpectTable("conversions.txt");
}

// Numbers are read as atoi reads them on a 32-bit platform, sticking at the limits.
TEST_F(Conversions, ReadIntInternally) {
    const std::pair<const char *, int32_t> cases[] = {
        {"3abc", 3}, {" \t-5", -5}, {"+7", 7}, {"abc", 0}, {"", 0}, {"- 1", 0}, {"2147483647", 2147483647},
        {"99999999999", 2147483647}, {"-2147483648", INT32_MIN}, {"-99999999999999999999", INT32_MIN}};
    for (const auto &[text, number] : cases) EXPECT_EQ(kx::convert::ReadInt(text), number) << text;
}

// "_gmtime" computes the calendar itself: it agrees with the C library's
// gmtime_r on every day of the 32-bit range of seconds, at a different time
// of day each day.
TEST_F(Conversions, GmtimeAgreesWithTheCLibrary) {
    for (int64_t seconds = INT32_MIN; seconds <= INT32_MAX; seconds += 86400 + 7919) {
        const time_t at = static_cast<time_t>(seconds);
        std::tm broken{};
        ASSERT_NE(gmtime_r(&at, &broken), nullptr);
        char expected[64];
        std::snprintf(expected, sizeof expected, "%02d/%02d/%02d %02d:%02d:%02d", broken.tm_mon + 1, broken.tm_mday,
                      broken.tm_year % 100, broken.tm_hour, broken.tm_min, broken.tm_sec);
        ASSERT_EQ(Convert(ConvertToGmtime, "", std::to_string(seconds).c_str()), expected) << seconds;
    }
}

TEST_F(Conversions, EdgesOfSingleHandlers) {
    char value[] = "1", empty[] = "";
    EXPECT_EQ(ConvertToCount(empty, value, -1), value) << "_count gives the value itself";
    EXPECT_EQ(ConvertToCount(empty, nullptr, -1), nullptr);
    EXPECT_EQ(ConvertBitFieldToText(nullptr, value, -1), value);
    // A new text holding its old text doubles the value at every step; the
    // value stops growing at 1023 characters, or at its own length when longer.
    std::string doubling = "a";
    for (int i = 1; i < 40; ++i) doubling += "|a";
    EXPECT_EQ(Convert(ConvertToStringReplace, doubling + ",aa", "a"), std::string(1023, 'a'));
    EXPECT_EQ(Convert(ConvertToStringReplace, "b,cc", std::string(3000, 'b').c_str()), std::string(3000, 'c'));
    const std::string pages = Convert(ConvertDivideList, ",1", "2147483647");
    EXPECT_LE(pages.size(), 1023U);
    EXPECT_EQ(pages.substr(0, 9), "123456789");
    EXPECT_EQ(pages.substr(pages.size() - 3), "377") << "whole page numbers only";
}

TEST_F(Conversions, LastOccurrence) {
    const char text[] = "a-b-c", aaa[] = "aaa";
    const std::tuple<const char *, const char *, const char *> cases[] = {
        {text, "-", text + 3}, {text, "b-c", text + 2}, {text, "x", nullptr}, {text, "", text + 5},
        {aaa, "aa", aaa + 1}, {nullptr, "a", nullptr}, {text, nullptr, nullptr}};
    for (const auto &[in, needle, found] : cases) EXPECT_EQ(KXUtils_strrstr(in, needle), found) << in << " " << needle;
}

TEST_F(Conversions, HexToOctetString) {
    unsigned char out[4] = {7, 7, 7, 7};
    EXPECT_EQ(HexToOctetString(out, "0B02FF"), 3);
    EXPECT_EQ(std::vector<int>(out, out + 4), (std::vector<int>{0x0B, 0x02, 0xFF, 7})) << "no terminator";
    EXPECT_EQ(HexToOctetString(out, "ABC"), 1);
    EXPECT_EQ(out[0], 0xAB);
    EXPECT_EQ(HexToOctetString(out, ""), 0);
    EXPECT_EQ(HexToOctetString(nullptr, "AB"), 0);
    EXPECT_EQ(HexToOctetString(out, nullptr), 0);
}

TEST_F(Conversions, SecondsSinceNow) {
    const time_t before = std::time(nullptr);
    const long long now = std::stoll(Convert(ConvertCreateTime, "", std::to_string(before).c_str()));
    const long long future = std::stoll(Convert(ConvertCreateTime, "", std::to_string(before + 1000).c_str()));
    const time_t after = std::time(nullptr);
    EXPECT_LE(now, after - before);
    EXPECT_GE(future, 1000 - (after - before));
    EXPECT_LE(future, 1000);
    EXPECT_GE(std::stoll(Convert(ConvertCreateTime, "", nullptr)), before);
}

// --- the conversion table, as properties of every row

std::string Spelled(std::string name, int variant) {
    for (std::size_t i = 0; i < name.size(); ++i) {
        const bool upper = variant == 1 || (variant == 2 && i % 2 == 1);
        const auto c = static_cast<unsigned char>(name[i]);
        name[i] = static_cast<char>(upper ? std::toupper(c) : std::tolower(c));
    }
    return name;
}

// Conversions whose two calls need not agree: the clock may move, and files,
// programs and hosts change under them (a host must stay on loopback); their
// own tests cover their results.
bool ActsOnTheWorld(const std::string &name) {
    static const std::vector<std::string> kActing = {
        "_call,", "_callp,", "_fremove", "_mktemp", "_createdir", "_listdir", "_fcreate", "_frename,",
        "_fexists,", "_fexists", "_fcopy,", "_ping", "_hostname", "_ipaddress", "_iniread,", "_fwrite,"};
    return std::find(kActing.begin(), kActing.end(), name) != kActing.end();
}

// Every row is reachable (no earlier row is a prefix of it), carries its own
// length and a handler, is found by its name in any letter case, and a
// chain of it gives what its handler gives.
TEST_F(Conversions, EveryRowOfTheTable) {
    ASSERT_EQ(ConvertTableCount, 51);
    for (int i = 0; i < ConvertTableCount; ++i) {
        const std::string name = ConvertTable[i].name;
        SCOPED_TRACE(name);
        EXPECT_EQ(ConvertTable[i].length, static_cast<int>(name.size()));
        ASSERT_NE(ConvertTable[i].handler, nullptr);
        for (int earlier = 0; earlier < i; ++earlier)
            EXPECT_FALSE(name.starts_with(ConvertTable[earlier].name)) << "hidden behind " << ConvertTable[earlier].name;
        const std::string argument = name.back() == ',' ? "3" : "";
        for (int variant = 0; variant < 3; ++variant) {
            std::string text = "pre" + Spelled(name, variant) + argument + ".Name";
            char *start = nullptr;
            EXPECT_STREQ(DetermineConversion(text.data(), &start), "Name") << text;
            EXPECT_EQ(start, text.data() + 3) << text;
            if (name == "_time" || ActsOnTheWorld(name)) continue;
            EXPECT_EQ(Chain(text.substr(3), "0B02031A0809"), Convert(ConvertTable[i].handler, argument, "0B02031A0809"));
        }
    }
    // Short names share the long names' handlers.
    for (const auto &[shortName, longName] : {std::pair{"_+,", "_plus,"}, {"_-,", "_minus,"}, {"_*,", "_multiply,"},
                                              {"_-r,", "_minusr,"}})
        EXPECT_EQ(Row(shortName)->handler, Row(longName)->handler) << shortName;
}

TEST_F(Conversions, DetermineConversionFindsTheNameBehindTheChain) {
    struct Case { std::string text; int name, start; };  // offsets; start -1: none
    const Case cases[] = {
        {"_plus,1._hex.Counter", 13, 0}, {"ab_HEX.X", 7, 2}, {"_hextime.T", 9, 0},
        {"_plus,2._mult,3.X", 16, 0},  // "_mult," is no conversion but the name is after the last "."
        {"Name", 0, -1}, {"my_x _hex.X", 0, -1},  // only the first "_" is tried
        {"_hex", 0, -1},                           // no "." after the name
        {"x_this", 0, 1}, {"_This", 0, -1},        // "_this" marks where the value goes, with case
    };
    for (const Case &c : cases) {
        std::string text = c.text;
        char *start = text.data() + 99;
        EXPECT_EQ(DetermineConversion(text.data(), &start) - text.data(), c.name) << c.text;
        EXPECT_EQ(start, c.start < 0 ? nullptr : text.data() + c.start) << c.text;
        // Found once, the chain applies as ConvertIt applies it.
        const kx::convert::Conversion found = kx::convert::FindConversion(c.text.c_str());
        EXPECT_EQ(found.name, static_cast<size_t>(c.name)) << c.text;
        EXPECT_EQ(found.start, c.start) << c.text;
        EXPECT_EQ(HeapText(kx::convert::ApplyChain(found.chain, text.data(), strdup("26"), true, -1)).str(),
                  Chain(c.text, "26")) << c.text;
        EXPECT_EQ(text, c.text);
    }
}

TEST_F(Conversions, ChainTextLeftAsItWas) {
    std::string text = "_substring,1,3._strreplace,a|b,x.Y";
    EXPECT_EQ(Chain(text, "ab-ab"), "x-");
    EXPECT_EQ(text, "_substring,1,3._strreplace,a|b,x.Y") << "the chain text is left as it was";
}

TEST_F(Conversions, ChainsOwnTheValueOnlyWhenAsked) {
    char value[] = "12";
    std::string none = "Name", chain = "_hex.X", plus = "_plus,1.X", count = "_count.X";
    EXPECT_EQ(ConvertIt(none.data(), kUnbounded, value, 1, -1), value) << "nothing to apply, nothing freed";
    EXPECT_EQ(ConvertIt(chain.data(), chain.data(), value, 1, -1), value) << "empty range";
    EXPECT_EQ(ConvertIt(nullptr, kUnbounded, value, 0, -1), value);
    EXPECT_EQ(HeapText(ConvertIt(plus.data(), kUnbounded, value, 0, -1)).str(), "13");
    EXPECT_STREQ(value, "12");
    char *owned = strdup("7");
    EXPECT_EQ(ConvertIt(count.data(), kUnbounded, owned, 1, -1), owned) << "a result equal to the value is not freed";
    std::free(owned);
}

// --- conversions that reach outside the page

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

// tests/data/file_conversions.txt: steps in order on one tree; then what they left.
TEST_F(FileConversions, StepsOnOneTree) {
    ExpectTable("file_conversions.txt");
    EXPECT_EQ(Convert(ConvertFileExists, "", dir_.path().c_str()), "0") << "absolute, inside the tree";
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

TEST(Network, LoopbackHostsAnswerAndResolveInRounds) {
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
    // Long host lists: one thread per host in rounds, every one joined.
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
