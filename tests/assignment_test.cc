// WertzuweisungEingabe: request values into the input list, and the page actions.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "companion/libKXsnmp.h"
#include "kx_template.h"
#include "support/kx_test.h"

namespace {

using kx::test::InputList;
using kx::test::TempDir;
using Texts = std::vector<std::string>;

// The elements laid end to end, each with its NUL.
std::string AssignmentText(const Texts &elements) {
    std::string text;
    for (const std::string &e : elements) text.append(e).push_back('\0');
    return text;
}

char *Assign(InputList &l, const Texts &elements, const char *divider = "~") {
    const std::string text = AssignmentText(elements);
    return WertzuweisungEingabe(static_cast<int>(elements.size()), text.data(), &l.count(), &l.list(), divider);
}

// The entry's values, walked by their NULs.
Texts Values(const EingabeElement &e) {
    Texts values;
    const char *p = e.Wert;
    for (int i = 0; p != nullptr && i < e.WertGesetzt; ++i, p += std::strlen(p) + 1) values.emplace_back(p);
    return values;
}

Texts ValuesOf(InputList &l, const char *name) {
    const int i = EingabewertIndex(name, l.list(), l.count());
    return i < l.count() ? Values(l[i]) : Texts{"<no entry>"};
}

// The entries every assignment case starts from.
void Declare(InputList &l) {
    const struct { const char *name; char kind; } entries[] = {
        {"Name", 'n'}, {"Save", 'n'}, {"Open", 'n'}, {"L", 'j'}, {"M", 'm'}, {"C", 'c'},
        {"LInternalcount", 'n'}, {"a=b", 'n'}, {"PLSet", 'n'},
    };
    for (const auto &e : entries) l.Add(e.name, e.kind);
}

struct Case {
    Texts elements;
    const char *entry;
    Texts values;
    const char *pressed;
};

const Case kCases[] = {
    {{"Name=a%20b"}, "Name", {"a b"}, nullptr},
    {{"Name=a+b%2Fc"}, "Name", {"a b/c"}, nullptr},
    {{"Save=Speichern"}, "Save", {"on"}, "Save"},
    {{"SaveAll=x"}, "Save", {"on"}, "Save"},
    {{"Save=1", "Open=2"}, "Open", {"on"}, "Open"},
    {{"L=a~b~c"}, "L", {"a", "b", "c"}, nullptr},
    {{"L=a%7E~b"}, "L", {"a~", "b"}, nullptr},
    {{"L="}, "L", {""}, nullptr},
    {{"L=a~b", "L2=d"}, "L", {"a", "b", "d"}, nullptr},
    {{"Name=a", "Name3=x~y"}, "Name", {"a", "x~y"}, nullptr},
    {{"M=x", "M=y"}, "M", {"x", "y"}, nullptr},
    {{"C=x", "C=%41"}, "C", {"x", "A"}, nullptr},
    {{"LInternalcount=3"}, "L", {}, nullptr},
    {{"LInternalcount=3"}, "LInternalcount", {"3"}, nullptr},
    {{"a^i^g^b=1"}, "a=b", {"1"}, nullptr},
    {{"Name=x%00y"}, "Name", {"x"}, nullptr},
    {{"Name=%ZZ%"}, "Name", {"%ZZ%"}, nullptr},
    {{"Name=%FF%01%7F\xFE\t"}, "Name", {"\xFF\x01\x7F\xFE\t"}, nullptr},
    {{"L=%00~~%7E%00x"}, "L", {"", "", "~"}, nullptr},
    {{"Name"}, "Name", {""}, nullptr},
    {{"Namex=1"}, "Name", {}, nullptr},
    {{"Nobody=1", "Delete=1"}, "Name", {}, nullptr},
    {{"Name=1", "Name=2"}, "Name", {"2"}, nullptr},
};

TEST(Assignment, RequestValuesIntoEntries) {
    for (const Case &c : kCases) {
        InputList l;
        Declare(l);
        const int count = l.count();
        const char *pressed = Assign(l, c.elements);
        const std::string where = c.elements.front() + " -> " + c.entry;
        EXPECT_EQ(ValuesOf(l, c.entry), c.values) << where;
        EXPECT_EQ(l.count(), count) << where << ": no entry is added once PLSet exists";
        if (c.pressed == nullptr) {
            EXPECT_EQ(pressed, nullptr) << where;
        } else {
            ASSERT_NE(pressed, nullptr) << where;
            EXPECT_STREQ(pressed, c.pressed) << where;
            EXPECT_EQ(pressed, l[EingabewertIndex(c.pressed, l.list(), l.count())].Name) << "the entry's own Name";
        }
    }
}

TEST(Assignment, WholeRequest) {
    InputList l;
    Declare(l);
    const char *pressed = Assign(l, {"Name=J%C3%BCrgen+M", "L=a~b", "Nobody=z", "L1=c~d", "M=x", "Save=Speichern",
                                     "M=y", "a^i^g^b=%3D", "C", "LInternalcount=2~2"});
    EXPECT_STREQ(pressed, "Save");
    const struct { const char *name; Texts values; } expected[] = {
        {"Name", {"J\xC3\xBCrgen M"}}, {"Save", {"on"}}, {"Open", {}}, {"L", {"a", "b", "c", "d"}},
        {"M", {"x", "y"}}, {"C", {""}}, {"LInternalcount", {"2~2"}}, {"a=b", {"="}}, {"PLSet", {}},
    };
    ASSERT_EQ(l.count(), static_cast<int>(std::size(expected)));
    for (int i = 0; i < l.count(); ++i) {
        EXPECT_STREQ(l[i].Name, expected[i].name);
        EXPECT_EQ(Values(l[i]), expected[i].values) << expected[i].name;
        EXPECT_EQ(l[i].WertGesetzt, static_cast<int>(expected[i].values.size())) << expected[i].name;
        EXPECT_EQ(l[i].WertPosition, 0) << expected[i].name;
    }
}

TEST(Assignment, DividerDefaultsToBlank) {
    for (const char *divider : {static_cast<const char *>(nullptr), ""}) {
        InputList l;
        Declare(l);
        Assign(l, {"L=a+b c"}, divider);
        EXPECT_EQ(ValuesOf(l, "L"), (Texts{"a b", "c"}));
    }
}

TEST(Assignment, PositionStaysOnAValue) {
    InputList l;
    Declare(l);
    Assign(l, {"L=aaaa~b~c"});
    l[3].WertPosition = 5;  // on "b"
    Assign(l, {"L=x~y"});
    EXPECT_EQ(l[3].WertPosition, 0) << "offset 5 is no value of x~y";
    l[3].WertPosition = 2;  // on "y"
    Assign(l, {"L3=z"});
    EXPECT_STREQ(l[3].Wert + l[3].WertPosition, "y") << "appending keeps the current value";
}

TEST(Assignment, OutputStreamDefaultsToStandardOutput) {
    FILE *saved = _Utilsfpout;
    _Utilsfpout = nullptr;
    InputList l;
    Declare(l);
    Assign(l, {});
    EXPECT_EQ(_Utilsfpout, stdout);
    _Utilsfpout = saved;
}

TEST(Assignment, EntriesWithoutNameTakeNothing) {
    InputList l;
    l.Add("");
    Declare(l);
    EXPECT_EQ(Assign(l, {"Save=1", "3=x"}), l[2].Name);
    EXPECT_EQ(l[0].Wert, nullptr);
}

// --- page actions, carried out while the list has no "PLSet" entry ---------

TEST(AssignmentActions, PLSetIsDeclaredOnceAndStopsTheActions) {
    InputList l;
    l.Add("MibPath", 'n', "/default/mibs");
    EXPECT_EQ(Assign(l, {}), nullptr);
    const int index = EingabewertIndex("PLSet", l.list(), l.count());
    ASSERT_LT(index, l.count());
    EXPECT_STREQ(l[index].Vorgabe, "yes");
    ASSERT_NE(KXGetMibPath(), nullptr);
    EXPECT_STREQ(KXGetMibPath(), "/default/mibs");

    Assign(l, {"MibPath=/other"});
    EXPECT_STREQ(KXGetMibPath(), "/default/mibs") << "the second call only assigns";
}

TEST(AssignmentActions, MibPathPrefersTheValue) {
    InputList l;
    l.Add("MibPath", 'n', "/default/mibs");
    Assign(l, {"MibPath=%2Fsent%2Fmibs"});
    EXPECT_STREQ(KXGetMibPath(), "/sent/mibs");
}

TEST(AssignmentActions, ParameterListDeclaresItsPairs) {
    InputList l;
    l.Add("ParameterList");
    l.Add("x", 'm');
    Assign(l, {"ParameterList=x--1,,y--a|b,,nopair,,n%20m--v%2Cw,,bad~name--1,,--empty"});
    EXPECT_EQ(ValuesOf(l, "x"), Texts{"1"});
    EXPECT_EQ(l[EingabewertIndex("x", l.list(), l.count())].Art, 'n') << "redeclared by the pair";
    EXPECT_EQ(ValuesOf(l, "y"), (Texts{"a", "b"}));
    EXPECT_EQ(l[EingabewertIndex("y", l.list(), l.count())].Art, 'j');
    EXPECT_EQ(ValuesOf(l, "n m"), Texts{"v,w"});
    EXPECT_EQ(EingabewertIndex("bad~name", l.list(), l.count()), l.count()) << "a name with the separator";
    EXPECT_EQ(EingabewertIndex("bad", l.list(), l.count()), l.count());
    EXPECT_EQ(EingabewertIndex("", l.list(), l.count()), l.count());
    EXPECT_EQ(ValuesOf(l, "ParameterList"),
              Texts{"x--1,,y--a%7Cb,,nopair,,n+m--v,w,,bad%7Ename--1,,--empty"});
}

// Runs the test body inside a directory of its own, and puts everything back.
class DefinitionFiles : public ::testing::Test {
protected:
    void SetUp() override {
        saved_ = std::filesystem::current_path();
        std::filesystem::current_path(dir_.path());
    }
    void TearDown() override {
        std::filesystem::current_path(saved_);
        for (char *&name : _IniFilename) {
            std::free(name);
            name = nullptr;
        }
    }
    static void Record(int file, const char *name, char sign) {
        _IniFilename[file] = strdup(name);
        _IniFilenameDivideSign[file] = sign;
    }
    static std::string Read(const char *name) {
        std::ifstream in(name, std::ios::binary);
        std::stringstream s;
        s << in.rdbuf();
        return s.str();
    }

    TempDir dir_;
    std::filesystem::path saved_;
};

TEST_F(DefinitionFiles, SetIniValueWritesTheDefault) {
    dir_.Write("app.ini", "|\nMyPort|n|1\nPort|n|80\nTail|n|end\n");
    Record(0, "app.ini", '|');
    InputList l;
    l.Add("Port", 'n', "80");
    l.Add("SetIniValue");
    Assign(l, {"Port=8080%0AEvil|n|x", "SetIniValue=Port"});
    EXPECT_EQ(Read("app.ini"), "|\nMyPort|n|1\nPort|n|8080\nTail|n|end\n")
        << "the key starts a line, and the value ends at its line break";
}

TEST_F(DefinitionFiles, SetIniValueFallsBackToTheSecondFile) {
    dir_.Write("a.ini", "|\nOther|n|1\n");
    dir_.Write("b.ini", "~\nPort~n~80\n");
    Record(0, "a.ini", '|');
    Record(1, "b.ini", '~');
    InputList l;
    l.Add("Port", 'n', "80");
    l.Add("SetIniValue");
    Assign(l, {"Port=9", "SetIniValue=Port"});
    EXPECT_EQ(Read("a.ini"), "|\nOther|n|1\n");
    EXPECT_EQ(Read("b.ini"), "~\nPort~n~9\n");
}

TEST_F(DefinitionFiles, SetIniValueNeedsATargetWithText) {
    const char *content = "|\nPort|n|80\n";
    dir_.Write("app.ini", content);
    Record(0, std::string(500, 'x').c_str(), '|');  // too long a name is skipped
    Record(1, "app.ini", '|');
    const Texts requests[] = {{"SetIniValue=Nobody"}, {"SetIniValue="}, {"Port=", "SetIniValue=Port"}};
    for (const Texts &request : requests) {
        InputList l;
        l.Add("Port", 'n');
        l.Add("SetIniValue");
        Assign(l, request);
        EXPECT_EQ(Read("app.ini"), content) << request.back();
    }
    InputList l;
    l.Add("Port", 'n');
    l.Add("SetIniValue");
    Assign(l, {"Port=5", "SetIniValue=Port"});
    EXPECT_EQ(Read("app.ini"), "|\nPort|n|5\n") << "the second file, after the first was skipped";
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
    std::vector<pid_t> children;
    for (int c = 0; c < kWriters; ++c) {
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child != 0) {
            children.push_back(child);
            continue;
        }
        const std::string key = "K" + std::to_string(c);
        for (int i = 1; i <= kWrites; ++i) {
            InputList l;
            l.Add(key.c_str(), 'n');
            l.Add("SetIniValue");
            Assign(l, {key + "=" + std::to_string(i) + std::string(static_cast<size_t>(i) % kPadding, 'x'), "SetIniValue=" + key});
        }
        _exit(0);
    }
    for (int alive = kWriters; alive > 0;) {
        const std::string now = Read("app.ini");
        ASSERT_TRUE(now.starts_with("|\nK0|n|") && now.ends_with("\nTail|n|end\n")) << now;
        alive = 0;
        for (pid_t child : children) alive += waitpid(child, nullptr, WNOHANG) == 0 ? 1 : 0;
    }
    for (pid_t child : children) waitpid(child, nullptr, 0);
    const std::string last = std::to_string(kWrites) + std::string(kWrites % kPadding, 'x');
    std::string expected = "|\n";
    for (int c = 0; c < kWriters; ++c) expected += "K" + std::to_string(c) + "|n|" + last + "\n";
    EXPECT_EQ(Read("app.ini"), expected + "Tail|n|end\n");
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
        EXPECT_EQ(Read("app.ini"), saved ? "|\nPort|n|" + c.value + "\nTail|n|end\n" : before) << c.what;
        EXPECT_EQ(ValuesOf(l, "ErrorText"),
                  saved ? Texts{} : Texts{std::string("SetIniValue: Port was not saved (") + c.reason + ")"})
            << c.what;
        std::free(_IniFilename[0]);
        _IniFilename[0] = nullptr;
    }
}

}  // namespace
