// WertzuweisungEingabe: request values into the input list, the page actions,
// and ChangeFileContent and ErweitereBlock, which write definition files.
#include <gtest/gtest.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "companion/libKXsnmp.h"
#include "kx_template.h"
#include "support/kx_test.h"
#include "support/server_process.h"

namespace {

using kx::test::InputList;
using kx::test::ReadFile;
using Texts = std::vector<std::string>;

char *Assign(InputList &l, const Texts &elements, const char *divider = "~") {
    std::string text;
    for (const std::string &e : elements) text.append(e).push_back('\0');
    return WertzuweisungEingabe(static_cast<int>(elements.size()), text.data(), &l.count(), &l.list(), divider);
}

// The entries every assignment case starts from.
void Declare(InputList &l) {
    const std::pair<const char *, char> entries[] = {{"Name", 'n'}, {"Save", 'n'}, {"Open", 'n'}, {"L", 'j'}, {"M", 'm'},
                                                     {"C", 'c'}, {"LInternalcount", 'n'}, {"a=b", 'n'}, {"PLSet", 'n'}};
    for (const auto &[name, kind] : entries) l.Add(name, kind);
}


// tests/data/assignments.txt: entry, values, pressed, request elements.
TEST(Assignment, RequestValuesIntoEntries) {
    for (const kx::test::DataRow &c : kx::test::DataTable("assignments.txt")) {
        SCOPED_TRACE(*c[3] + " -> " + *c[0]);
        InputList l;
        Declare(l);
        const int count = l.count();
        Texts elements;
        for (size_t i = 3; i < c.size(); ++i) elements.push_back(*c[i]);
        const char *pressed = Assign(l, elements);
        EXPECT_EQ(l.ValuesOf(c[0]->c_str()), *c[1]);
        EXPECT_EQ(l.count(), count) << "no entry is added once PLSet exists";
        EXPECT_EQ(pressed ? std::string(pressed) : "<null>", c[2].value_or("<null>"));
        if (c[2]) EXPECT_EQ(pressed, l[EingabewertIndex(c[2]->c_str(), l.list(), l.count())].Name) << "the entry's own Name";
    }
}

TEST(Assignment, WholeRequest) {
    InputList l;
    Declare(l);
    const char *pressed = Assign(l, {"Name=J%C3%BCrgen+M", "L=a~b", "Nobody=z", "L1=c~d", "M=x", "Save=Speichern",
                                     "M=y", "a^i^g^b=%3D", "C", "LInternalcount=2~2"});
    EXPECT_STREQ(pressed, "Save");
    EXPECT_EQ(kx::test::Describe(l.list(), l.count()),
              "Name|n|<null>=[J\xC3\xBCrgen M]\nSave|n|<null>=[on]\nOpen|n|<null>\nL|j|<null>=[a][b][c][d]\n"
              "M|m|<null>=[x][y]\nC|c|<null>=[]\nLInternalcount|n|<null>=[2~2]\na=b|n|<null>=[=]\nPLSet|n|<null>\n");
}

TEST(Assignment, DividerPositionStreamAndNamelessEntries) {
    for (const char *divider : {static_cast<const char *>(nullptr), ""}) {
        InputList l;
        Declare(l);
        Assign(l, {"L=a+b c"}, divider);
        EXPECT_EQ(l.ValuesOf("L"), "[a b][c]") << "the divider defaults to a blank";
    }
    InputList l;
    l.Add("");
    Declare(l);
    FILE *saved = _Utilsfpout;
    _Utilsfpout = nullptr;
    EXPECT_EQ(Assign(l, {"L=aaaa~b~c", "Save=1", "3=x"}), l[2].Name);
    EXPECT_EQ(_Utilsfpout, stdout) << "the output stream defaults to standard output";
    _Utilsfpout = saved;
    EXPECT_EQ(l[0].Wert, nullptr) << "an entry without a name takes nothing";
    l[4].WertPosition = 5;  // on "b"
    Assign(l, {"L=x~y"});
    EXPECT_EQ(l[4].WertPosition, 0) << "offset 5 is no value of x~y";
    l[4].WertPosition = 2;  // on "y"
    Assign(l, {"L3=z"});
    EXPECT_STREQ(l[4].Wert + l[4].WertPosition, "y") << "appending keeps the current value";
}

// --- page actions, carried out while the list has no "PLSet" entry

TEST(AssignmentActions, PLSetIsDeclaredOnceAndStopsTheActions) {
    InputList l;
    l.Add("MibPath", 'n', "/default/mibs");
    EXPECT_EQ(Assign(l, {}), nullptr);
    const int index = EingabewertIndex("PLSet", l.list(), l.count());
    ASSERT_LT(index, l.count());
    EXPECT_STREQ(l[index].Vorgabe, "yes");
    EXPECT_STREQ(KXGetMibPath(), "/default/mibs");
    Assign(l, {"MibPath=/other"});
    EXPECT_STREQ(KXGetMibPath(), "/default/mibs") << "the second call only assigns";
    InputList sent;
    sent.Add("MibPath", 'n', "/default/mibs");
    Assign(sent, {"MibPath=%2Fsent%2Fmibs"});
    EXPECT_STREQ(KXGetMibPath(), "/sent/mibs") << "the value wins over the default";
}

TEST(AssignmentActions, ParameterListDeclaresItsPairs) {
    InputList l;
    l.Add("ParameterList");
    l.Add("x", 'm');
    Assign(l, {"ParameterList=x--1,,y--a|b,,nopair,,n%20m--v%2Cw,,bad~name--1,,--empty"});
    // x is redeclared by its pair; a name with the separator, or none, declares nothing
    EXPECT_EQ(kx::test::Describe(l.list(), l.count()),
              "ParameterList|n|<null>=[x--1,,y--a%7Cb,,nopair,,n+m--v,w,,bad%7Ename--1,,--empty]\nx|n|1=[1]\n"
              "PLSet|n|yes\ny|j|a|b=[a][b]\nn m|n|v,w=[v,w]\n");
}

// Runs the test body inside a directory of its own, and puts everything back.
class DefinitionFiles : public kx::test::InTempDir {
protected:
    static void Record(int file, const char *name, char sign) {
        _IniFilename[file] = strdup(name);
        _IniFilenameDivideSign[file] = sign;
    }
    // Assigns the request to a list of Port (with its default) and SetIniValue.
    static void SetIniValue(const Texts &request, const char *portDefault = nullptr) {
        InputList l;
        l.Add("Port", 'n', portDefault);
        l.Add("SetIniValue");
        Assign(l, request);
    }
};

// SetIniValue writes the value into the first recorded file that has the key
// at a line start, the value ending at its line break; a recorded name too
// long is skipped; a target or value without text changes nothing.
TEST_F(DefinitionFiles, SetIniValueWritesIntoTheRecordedFile) {
    struct Case { std::string first, second; Texts request; const char *portDefault; std::string firstAfter, secondAfter; };
    const std::string one = "|\nMyPort|n|1\nPort|n|80\nTail|n|end\n", port = "|\nPort|n|80\n";
    const Case cases[] = {
        {one, "", {"Port=8080%0AEvil|n|x", "SetIniValue=Port"}, "80", "|\nMyPort|n|1\nPort|n|8080\nTail|n|end\n", ""},
        {"|\nOther|n|1\n", "~\nPort~n~80\n", {"Port=9", "SetIniValue=Port"}, "80", "|\nOther|n|1\n", "~\nPort~n~9\n"},
        {"", port, {"SetIniValue=Nobody"}, nullptr, "", port},  // first: a name too long
        {"", port, {"SetIniValue="}, nullptr, "", port},
        {"", port, {"Port=", "SetIniValue=Port"}, nullptr, "", port},
        {"", port, {"Port=5", "SetIniValue=Port"}, nullptr, "", "|\nPort|n|5\n"},
    };
    for (const Case &c : cases) {
        dir_.Write("a.ini", c.first);
        dir_.Write("b.ini", c.second);
        Record(0, c.first.empty() ? std::string(500, 'x').c_str() : "a.ini", c.first[0]);
        Record(1, "b.ini", c.second[0]);
        SetIniValue(c.request, c.portDefault);
        EXPECT_EQ(ReadFile("b.ini"), c.secondAfter) << c.request.front();
        if (!c.first.empty()) EXPECT_EQ(ReadFile("a.ini"), c.firstAfter) << c.request.front();
        kx::test::ForgetDefinitionFiles();
    }
}

// Eight processes save eight different values again and again, each
// through the whole read-modify-write of the file; every reader sees a whole
// file, and at the end every value holds its last save: no update is lost.
TEST_F(DefinitionFiles, ConcurrentSavesLoseNoUpdate) {
    constexpr int kWriters = 8, kWrites = 60;
    constexpr size_t kPadding = 40;  // values of different lengths move the lines
    std::string content = "|\n";
    for (int c = 0; c < kWriters; ++c) content += "K" + std::to_string(c) + "|n|0\n";
    dir_.Write("app.ini", content + "Tail|n|end\n");
    Record(0, "app.ini", '|');
    const auto children = kx::test::ForkEach(kWriters, [&](int c) {
        const std::string key = "K" + std::to_string(c);
        for (int i = 1; i <= kWrites; ++i) {
            InputList l;
            l.Add(key.c_str(), 'n');
            l.Add("SetIniValue");
            Assign(l, {key + "=" + std::to_string(i) + std::string(static_cast<size_t>(i) % kPadding, 'x'), "SetIniValue=" + key});
        }
    });
    for (int alive = kWriters; alive > 0;) {
        const std::string now = ReadFile("app.ini");
        ASSERT_TRUE(now.starts_with("|\nK0|n|") && now.ends_with("\nTail|n|end\n")) << now;
        alive = 0;
        for (pid_t child : children) alive += waitpid(child, nullptr, WNOHANG) == 0 ? 1 : 0;
    }
    for (pid_t child : children) waitpid(child, nullptr, 0);
    const std::string last = std::to_string(kWrites) + std::string(kWrites % kPadding, 'x');
    std::string expected = "|\n";
    for (int c = 0; c < kWriters; ++c) expected += "K" + std::to_string(c) + "|n|" + last + "\n";
    EXPECT_EQ(ReadFile("app.ini"), expected + "Tail|n|end\n");
    for (const auto &entry : std::filesystem::directory_iterator(dir_.path()))
        EXPECT_NE(entry.path().extension(), ".tmp") << "no temporary file is left";
}

// Saves that do not happen: the file stays as it was, and "ErrorText" says why.
TEST_F(DefinitionFiles, RefusedSavesAreReported) {
    struct Case {
        const char *what;
        const char *writable;  // default of SetIniValueNames, or none
        std::string value;
        mode_t mode;
        const char *recorded;  // the definition file's recorded name
        const char *reason;
    };
    const std::string fits(4093 - std::strlen("Port|n|"), '9');
    const Case cases[] = {
        {"longest line", nullptr, fits, 0644, "app.ini", nullptr},
        {"one byte more", nullptr, fits + "9", 0644, "app.ini", "the value is too long"},
        {"a line injected", nullptr, std::string(4084, 'A') + "Ersetzungsanfang|n|[", 0644, "app.ini",
         "the value is too long"},
        {"listed", "Other~Port", "7", 0644, "app.ini", nullptr},
        {"not listed", "Other~Por", "7", 0644, "app.ini", "the entry may not be written"},
        {"empty list", "", "7", 0644, "app.ini", "the entry may not be written"},
        {"read-only", nullptr, "7", 0444, "app.ini", "the definition file is read-only"},
        {"found elsewhere", nullptr, "7", 0644, "elsewhere.ini", "the definition file is not in the working directory"},
    };
    for (const Case &c : cases) {
        const std::string before = "|\nPort|n|80\nTail|n|end\n";
        chmod("app.ini", 0644);
        dir_.Write("app.ini", before);
        ASSERT_EQ(chmod("app.ini", c.mode), 0);
        Record(0, c.recorded, '|');
        InputList l;
        l.Add("Port", 'n');
        l.Add("SetIniValue");
        l.Add("ErrorText");
        if (c.writable != nullptr) l.Add("SetIniValueNames", 'n', c.writable);
        // A request cannot widen the list of writable names.
        Assign(l, {"Port=" + c.value, "SetIniValue=Port", "SetIniValueNames=Port"});
        const bool saved = c.reason == nullptr;
        EXPECT_EQ(ReadFile("app.ini"), saved ? "|\nPort|n|" + c.value + "\nTail|n|end\n" : before) << c.what;
        EXPECT_EQ(l.ValuesOf("ErrorText"),
                  saved ? "" : std::string("[SetIniValue: Port was not saved (") + c.reason + ")]")
            << c.what;
        kx::test::ForgetDefinitionFiles();
    }
}

// --- changing a file in place

struct FileCase {  // after empty: the file is unchanged
    std::string before; const char *key, *text, *stopSet; int stopSetLength, result; std::string after; };

const FileCase kFileCases[] = {
    {"k;n;old\nrest", "k;n;", "new", "\n\r", 2, 0, "k;n;new\nrest"}, {"k;n;old", "k;n;", "new", "\n\r", 2, -1, ""},
    {"k;n;old\r\nrest", "k;n;", "new", "\n\r", 2, 0, "k;n;new\r\nrest"},
    {"k;n;old\nrest", "k;n;", nullptr, "\n\r", 2, 0, "k;n;\nrest"}, {"k;n;old\n", "k;n;", "new", nullptr, 2, -1, ""},
    {"k;n;a\nk;n;b\n", "k;n;", "X", "\n\r", 2, 0, "k;n;X\nk;n;b\n"},
    {"k;n;\n", "k;n;", "longer value", "\n\r", 2, 0, "k;n;longer value\n"},
    {"k;n;old", "k;n;", "new", "\n\r", 3, 0, "k;n;new"},  // the NUL is in the set
    {"k;n;old", "k;n;", "new", "\n\r", 99, 0, "k;n;new"},  // a set never reaches past its NUL
    {"x;n;old\n", "k;n;", "new", "\n\r", 2, -1, ""}, {"k;n;old\n", "", "new", "\n\r", 2, -1, ""},
    {std::string("k;n;old\nA\0B", 11), "k;n;", "v", "\n", 1, 0, std::string("k;n;v\nA\0B", 9)},
};

TEST(FileContent, ChangeFileContentAndBadArguments) {
    for (const FileCase &c : kFileCases) {
        kx::test::TempDir dir;
        const std::string path = dir.Write("f.ini", c.before);
        EXPECT_EQ(ChangeFileContent(path.c_str(), c.key, c.text, c.stopSet, c.stopSetLength), c.result) << c.before;
        EXPECT_EQ(kx::test::ReadFile(path), c.after.empty() ? c.before : c.after) << c.before;
    }
    kx::test::TempDir dir;  // a missing file and missing arguments
    const std::string path = dir.path() + "/none.ini";
    EXPECT_EQ(ChangeFileContent(path.c_str(), "k", "v", "\n", 1), -1);
    EXPECT_FALSE(std::filesystem::exists(path));
    EXPECT_EQ(ChangeFileContent(nullptr, "k", "v", "\n", 1), -1);
    const std::string file = dir.Write("f.ini", "k=1\n");
    EXPECT_EQ(ChangeFileContent(file.c_str(), nullptr, "v", "\n", 1), -1);
}

// What a write leaves: the mode kept, no temporary file, one of a writer that
// died removed while one still being written (its lock held) stays, a
// read-only file refused, a symbolic link written through to its target.
TEST(FileContent, ReplacementRespectsTheFileAndCleansUp) {
    enum Other { kNone, kAbandoned, kLive };  // another writer's temporary file
    struct Case { const char *what; mode_t mode; bool link; Other other; int result; };
    const Case cases[] = {
        {"plain", 0640, false, kNone, 0}, {"abandoned temporary", 0600, false, kAbandoned, 0},
        {"temporary being written", 0600, false, kLive, 0}, {"read-only", 0444, false, kNone, -1},
        {"through a link", 0644, true, kNone, 0},
    };
    for (const Case &c : cases) {
        kx::test::TempDir dir;
        const std::string real = dir.Write("real/f.ini", "k=1\n");
        ASSERT_EQ(chmod(real.c_str(), c.mode), 0);
        const std::string path = c.link ? dir.path() + "/f.ini" : real;
        if (c.link) ASSERT_EQ(symlink("real/f.ini", path.c_str()), 0);
        const std::string other = c.other != kNone ? dir.Write("real/.f.ini.Ab12Cd.tmp", "partial") : "";
        const int held = c.other == kLive ? open(other.c_str(), O_RDONLY) : -1;
        if (held >= 0) ASSERT_EQ(flock(held, LOCK_EX), 0);
        EXPECT_EQ(ChangeFileContent(path.c_str(), "k=", "2", "\n", 1), c.result) << c.what;
        if (held >= 0) close(held);
        struct stat info;
        ASSERT_EQ(lstat(real.c_str(), &info), 0);
        EXPECT_EQ(info.st_mode & 07777, c.mode) << c.what;
        EXPECT_EQ(ReadFile(real).substr(0, 3), c.result == 0 ? "k=2" : "k=1") << c.what;
        EXPECT_EQ(std::filesystem::is_symlink(path), c.link) << c.what;
        int temporary = 0;
        for (const auto &entry : std::filesystem::directory_iterator(dir.path() + "/real"))
            temporary += entry.path().extension() == ".tmp";
        EXPECT_EQ(temporary, c.other == kLive ? 1 : 0) << c.what;
    }
}

TEST(FileContent, ErweitereBlock) {
    struct Block { const char *front; int frontLength; const char *back; int backLength; const char *middle;
                   int middleLength; std::string expected; };
    const Block cases[] = {
        {"ab", 2, "cd", 2, "XY", 2, "abXYcd"}, {"ab", 2, "cd", 2, "XY", 0, "abcd"},
        {"ab", -1, "cd", 2, "XY", 2, "XYcd"},  {"a\0b", 3, nullptr, 5, nullptr, -1, std::string("a\0b", 3)},
        {nullptr, 0, nullptr, 0, nullptr, 0, ""},
    };
    for (const Block &c : cases) {
        char *block = ErweitereBlock(c.front, c.frontLength, c.back, c.backLength, c.middle, c.middleLength);
        ASSERT_NE(block, nullptr) << c.expected;
        EXPECT_EQ(std::string(block, c.expected.size()), c.expected);
        std::free(block);
    }
}

}  // namespace
