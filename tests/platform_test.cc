// The companion stand-ins: libparser's scanning, regular expressions, case and
// comparisons; libKXUtils's files, ini files and text replacement; the
// server-list database; trap files, read whole, broken and binary, and
// written so that readers never see a part of one; the MIB library's net-snmp
// look-ups over a MIB directory without IETF MIBs, TRAP-TYPE descriptions
// with their annotations, and broken MIB texts.
#include <fcntl.h>
#include <regex.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

#include "companion/libDBAsciiAccess.h"
#include "companion/libKXUtils.h"
#include "companion/libKXsnmp.h"
#include "companion/libKXsnmp_names.h"
#include "companion/libKXsnmp_traps.h"
#include "companion/libSnmpFile.h"
#include "companion/libparser.h"
#include "support/kx_test.h"

namespace {

using kx::test::HeapText;
using kx::test::TempDir;

TEST(Parser, ScanningPositions) {
    // function, text, start, set, set length, stop below; what it returns and where it leaves the position
    enum Function { InSet, Skip, SkipBack, Find, FindBack };
    struct Case { Function function; const char *text; int start; const char *set; int setLength, floor, result, end; };
    const Case cases[] = {
        {InSet, "a;b", 1, ",;", 2, 0, 1, 1},  {InSet, "a;b", 3, ",", 2, 0, 1, 3},  // a set length past the text takes the NUL in
        {Skip, "  \tx", 0, " \t", 2, 0, 3, 3}, {Skip, "abc", 0, " ", 1, 0, 0, 0}, {Skip, "   ", 0, " ", 2, 0, 3, 3},
        {SkipBack, "ab \r\n ", 5, " \r\n", 3, 0, 4, 1}, {SkipBack, "   ", 2, " ", 1, 1, 1, 1},  // never below start
        {Find, "ab\rc\n", 0, "\n\r", 2, 0, 1, 2}, {Find, "abc", 0, "\n\r", 2, 0, -1, 3},  // stops on the NUL
        {Find, "abc", 0, "\n\r", 3, 0, 2, 3},  // the NUL belongs to a set of length 3
        {FindBack, "a_b_cd", 6, "_", 1, 0, 0, 3}, {FindBack, "abc", 2, "_", 1, 0, -1, 0},
    };
    for (const Case &c : cases) {
        int position = c.start;
        int result = 0;
        switch (c.function) {
        case InSet: result = InhaltGleichZeichen(c.text, &position, c.set, c.setLength); break;
        case Skip: result = UeberleseZeichen(c.text, &position, c.set, c.setLength); break;
        case SkipBack: result = UeberleseZeichenRueckwaerts(c.text, &position, c.set, c.setLength, c.floor); break;
        case Find: result = PositioniereAufZeichen(c.text, &position, c.set, c.setLength); break;
        case FindBack: result = PositioniereAufZeichenRueckwaerts(c.text, &position, c.set, c.setLength, c.floor); break;
        }
        EXPECT_EQ(result, c.result) << c.function << " " << c.text;
        EXPECT_EQ(position, c.end) << c.function << " " << c.text;
    }
    int position = 0;
    EXPECT_LT(InhaltGleichZeichen("a;b", &position, ",;", 2), 0);
}

TEST(Parser, RegularExpressionsAndCase) {
    struct Case { const char *text, *expression; int length; };
    const Case cases[] = {{"123", "[0-9]+", 3}, {"12a", "[0-9]+", 2}, {"a12", "[0-9]+", -1}, {"", "[0-9]+", -1},
                          {"trap.mib", "^[a-z]+\\.(mib|my)$", 8}, {"x", "(", -1}, {"abc", "", 0}};
    for (const Case &c : cases) {
        const int length = Wertuebereinstimmung(c.text, c.expression);
        EXPECT_EQ(length < 0 ? -1 : length, c.length) << c.text << " ~ " << c.expression;
    }
    char text[] = "MiXeD 1\xC4";
    EXPECT_STREQ(KonvertiereZuKleinbuchstaben(text), "mixed 1\xC4");
    EXPECT_STREQ(KonvertiereZuGrossbuchstaben(text), "MIXED 1\xC4");
    EXPECT_EQ(stricmp("Hello", "hELLO"), 0);
    EXPECT_LT(stricmp("abc", "ABD"), 0);
    EXPECT_GT(stricmp("abcd", "ABC"), 0);
    EXPECT_EQ(strnicmp("abcX", "ABCy", 3), 0);
    EXPECT_EQ(memicmp("a\0B", "A\0b", 3), 0);
    EXPECT_EQ(HeapText(ErzeugeText("abcdef", 2)).str(), "ab");
}

using Comparison = int (*)(const char *, const char *);

// The six functions of one kind, in the order == != <= >= < >.
struct Kind { const char *name; Comparison functions[6]; };

const Kind kKinds[] = {
    {"text", {TextCompareEqual, TextCompareNotEqual, TextCompareLowerEqual, TextCompareGreaterEqual, TextCompareLower,
              TextCompareGreater}},
    {"text i", {TextCompareEquali, TextCompareNotEquali, TextCompareLowerEquali, TextCompareGreaterEquali,
                TextCompareLoweri, TextCompareGreateri}},
    {"text N", {TextCompareEqualN, TextCompareNotEqualN, TextCompareLowerEqualN, TextCompareGreaterEqualN,
                TextCompareLowerN, TextCompareGreaterN}},
    {"text Ni", {TextCompareEqualNi, TextCompareNotEqualNi, TextCompareLowerEqualNi, TextCompareGreaterEqualNi,
                 TextCompareLowerNi, TextCompareGreaterNi}},
    {"numeric", {NumericCompareEqual, NumericCompareNotEqual, NumericCompareLowerEqual, NumericCompareGreaterEqual,
                 NumericCompareLower, NumericCompareGreater}},
};

// tests/data/parser_comparisons.txt: kind, left, right, results.
TEST(Parser, EveryComparisonOfEveryKind) {
    for (const kx::test::DataRow &c : kx::test::DataTable("parser_comparisons.txt")) {
        const Kind *kind = std::find_if(std::begin(kKinds), std::end(kKinds), [&](const Kind &k) { return *c[0] == k.name; });
        ASSERT_NE(kind, std::end(kKinds)) << *c[0];
        for (int op = 0; op < 6; ++op)
            EXPECT_EQ(kind->functions[op](c[1] ? c[1]->c_str() : nullptr, c[2]->c_str()), (*c[3])[size_t(op)] - '0')
                << kind->name << " op " << op << ": '" << c[1].value_or("<null>") << "' vs '" << *c[2] << "'";
    }
}

TEST(KXUtils, FilesAndSizes) {
    TempDir dir;
    dir.Write("sub/file", "x");
    EXPECT_EQ(KXUtilsFileExists((dir.path() + "/sub/file").c_str()), 0);
    EXPECT_EQ(KXUtilsFileExists((dir.path() + "/sub").c_str()), 0);
    EXPECT_EQ(KXUtilsFileExists((dir.path() + "/missing").c_str()), -1);
    EXPECT_EQ(KXUtilsFileExists(""), -1);
    EXPECT_EQ(KXUtilsFileExists(nullptr), -1);
    EXPECT_EQ(KXUtilsFileSize(dir.Write("five", "12345").c_str()), 5);
    EXPECT_EQ(KXUtilsFileSize(dir.Write("zero", "").c_str()), 0);
    EXPECT_EQ(KXUtilsFileSize((dir.path() + "/none").c_str()), -1);
    EXPECT_EQ(KXUtilsFileSize(nullptr), -1);
}

TEST(KXUtils, ListingsMatchAsTheExpressionWould) {
    // Suffix expressions are matched without the regular expression engine;
    // every expression must list exactly the names regexec admits.
    TempDir dir;
    const std::vector<std::string> names = {"A.mib", "b.MIB", "c.MiB", "d.mibx", "mib", ".mib.txt", "e.m1b",
                                            "f\nx.mib", "g\xe9.Mib", "h.txt", "i.tXt", "j]k", "k-l", "x",
                                            "[x", "dir.mib"};
    for (const std::string &name : names) dir.Write(name == "dir.mib" ? name + "/inside" : name, "x");
    const char *expressions[] = {".*[.][Mm][Ii][Bb]$", ".*[.][Mm][Ii][Bb]", ".*.mib", ".*[.]txt$", ".*[tT]",
                                 ".*]k", ".*[-]l", ".*x", ".*[]]k", ".*[^x]", ".*[a-z]$", ".*\\.txt",
                                 ".*", ".*$", "x", ".*b*", ".*[[]x"};
    for (const char *expression : expressions) {
        regex_t regex;
        ASSERT_EQ(regcomp(&regex, ("^(" + std::string(expression) + ")$").c_str(), REG_EXTENDED | REG_NOSUB), 0)
            << expression;
        std::vector<std::string> expected;
        for (const std::string &name : names)
            if (name != "dir.mib" && name[0] != '.' && regexec(&regex, name.c_str(), 0, nullptr, 0) == 0)
                expected.push_back(name);
        regfree(&regex);
        std::sort(expected.begin(), expected.end());
        int count = -1;
        char **list = nullptr;
        ASSERT_EQ(ListDirectory(dir.path().c_str(), 0, 0, 0, 1, &expression, &count, &list), 0) << expression;
        EXPECT_EQ(std::vector<std::string>(list, list + count), expected) << expression;
        KXUtilsFreeResources(list);
    }
}

TEST(KXUtils, WholeFileOperations) {
    TempDir dir;
    char *buffer = reinterpret_cast<char *>(1);
    int error = 0;
    char *message = nullptr;
    const std::string missing = dir.path() + "/none", path = dir.path() + "/new.txt";
    EXPECT_EQ(KXUtilsReadFileToMemoryErrorOutput(missing.c_str(), &buffer, &error, &message), -1);
    EXPECT_EQ(buffer, nullptr);
    EXPECT_EQ(error, ENOENT);
    EXPECT_NE(HeapText(message).get(), nullptr);
    EXPECT_EQ(KXUtilsWriteMemoryToFileErrorOutput(path.c_str(), "hello", 0, &error, nullptr), 1);
    EXPECT_EQ(KXUtilsWriteMemoryToFileErrorOutput(path.c_str(), "hello", 4, &error, nullptr), 1);
    EXPECT_EQ(KXUtilsReadFileToMemoryErrorOutput(path.c_str(), &buffer, &error, nullptr), 4);
    EXPECT_STREQ(buffer, "hell");
    EXPECT_EQ(error, 0);
    KXUtilsFreeResources(buffer);
    EXPECT_EQ(KXUtilsWriteMemoryToFileErrorOutput((missing + "/x").c_str(), "x", 0, &error, nullptr), -1);
    EXPECT_EQ(error, ENOENT);
    EXPECT_EQ(HeapText(KXUtilsAppendText("ab", 2, "cd", 2, nullptr, -1)).str(), "abcd");
    EXPECT_EQ(HeapText(KXUtilsAppendText("ab", 1, "cd", 0, "XYZ", 2)).str(), "aXY");
}

TEST(KXUtils, StringReplace) {
    struct Case { const char *text, *from, *to, *expected; };
    const Case cases[] = {
        {"a\"b\"", "\"", "\\\"", "a\\\"b\\\""}, {"javascript%3Ago()", "javascript%3A", "javascript:", "javascript:go()"},
        {"aaa", "aa", "b", "ba"}, {"abc", "x", "y", "abc"}, {"", "x", "y", ""}, {"xx", "x", "", ""},
        {"x", "x", nullptr, ""}, {"abc", "", "y", "<null>"}, {nullptr, "x", "y", "<null>"}, {"abc", nullptr, "y", "<null>"},
    };
    for (const Case &c : cases) {
        char *out = KXUtilsStringReplace(c.text, c.from, c.to);
        EXPECT_EQ(std::string(out != nullptr ? out : "<null>"), c.expected) << (c.text ? c.text : "null");
        KXUtilsFreeResources(out);
    }
}

// The pairs of one read, flattened, released at once; the count first.
std::vector<std::string> ReadIni(const std::string &path, const char *section, const char *key, char separator = '.') {
    char **pairs = nullptr;
    const int count = KXUtilsReadIniFile(path.c_str(), section, 0, separator, key, &pairs, 0);
    std::vector<std::string> out{std::to_string(count)};
    for (int i = 0; i < 2 * count && pairs != nullptr; ++i) out.emplace_back(pairs[i]);
    if (count <= 0) EXPECT_EQ(pairs, nullptr) << key;
    KXUtilsFreeResources(pairs);
    return out;
}

TEST(KXUtils, IniFiles) {
    TempDir dir;
    const std::string path = dir.Write(
        "t.ini", "|\r\ntitle= Main; page: x \r\n# note\nempty=\n[Net]\nHost=h=1\nPort=80\n  [Other]\nHost=o\nnoequals\n");
    using Texts = std::vector<std::string>;
    struct Case { const char *section, *key; Texts expected; };
    const Case cases[] = {
        {nullptr, nullptr, {"5", "title", " Main; page: x ", "empty", "", "Net.Host", "h=1", "Net.Port", "80", "Other.Host", "o"}},
        {"Net", nullptr, {"2", "Host", "h=1", "Port", "80"}}, {nullptr, "title", {"1", "title", " Main; page: x "}},
        {"Other", "Host", {"1", "Host", "o"}}, {nullptr, "Net.Port", {"1", "Net.Port", "80"}}, {nullptr, "Host", {"0"}},
        {"Net", "title", {"0"}}, {"None", "Host", {"0"}},
    };
    for (const Case &c : cases) EXPECT_EQ(ReadIni(path, c.section, c.key), c.expected) << c.section << "/" << c.key;
    EXPECT_EQ(ReadIni(dir.path() + "/none.ini", nullptr, nullptr), Texts{"-1"});
    EXPECT_EQ(ReadIni(path, nullptr, "Host", '\0'), (Texts{"1", "Host", "h=1"})) << "unqualified names: the first Host";
    const std::string value(10000, 'v');
    EXPECT_EQ(ReadIni(dir.Write("long.ini", "k=" + value + "\n"), nullptr, "k"), (Texts{"1", "k", value}));
}

// --- the server-list database

class Database : public ::testing::Test {
protected:
    // The server list of a console (tests/data/hwinv.dba): a table twice, one
    // without a Type column, an empty one, missing and extra fields.
    void SetUp() override { ASSERT_EQ(DBAsciiAccessOpen(KX_SOURCE_DIR "/tests/data/hwinv.dba", DBASCII_ACCESS_READ, &db_), 0); }
    void TearDown() override { EXPECT_EQ(DBAsciiAccessCloseKeepStaticDllInfo(db_), 0); }
    DBAsciiAccessDatabase *db_ = nullptr;
};

// The fields of a row from the given one on.
std::vector<std::string> Tail(const kx::test::DataRow &row, size_t from) {
    std::vector<std::string> texts;
    for (size_t i = from; i < row.size(); ++i) texts.push_back(*row[i]);
    return texts;
}

// tests/data/database_reads.txt: entries and rows by condition; columns and schemes.
TEST_F(Database, ReadsColumnsAndSchemes) {
    for (const kx::test::DataRow &c : kx::test::DataTable("database_reads.txt")) {
        const char *table = c[1]->c_str(), *condition = c[2] ? c[2]->c_str() : nullptr;
        if (*c[0] == "entries") {
            char **entries = reinterpret_cast<char **>(&entries);
            const int n = DBAsciiAccessGetAllEntries(db_, table, condition, &entries, 0, 0);
            EXPECT_EQ(n, std::stoi(*c[3])) << c[2].value_or("<null>");
            EXPECT_EQ(std::vector<std::string>(entries, entries + std::max(n, 0)), Tail(c, 4)) << *c[1];
            EXPECT_EQ(entries == nullptr, n < 1) << c[2].value_or("<null>");
            DBAsciiAccessFree(entries);
            continue;
        }
        DBAsciiAccessRow *rows = nullptr;
        const int n = DBAsciiAccessGetAllEntriesByCondition(db_, table, condition, &rows, 0, c[3]->c_str(), std::stoi(*c[5]),
                                                            std::stoi(*c[4]), DBASCII_ORDER_AS_STORED, 0, 0);
        EXPECT_EQ(n, std::stoi(*c[6])) << *c[3];
        const std::vector<std::string> first = Tail(c, 7);
        if (n > 0) EXPECT_EQ(std::vector<std::string>(rows[0], rows[0] + first.size()), first) << *c[3];
        DBAsciiAccessFree(rows);
    }
    char **entries = nullptr;
    EXPECT_EQ(DBAsciiAccessGetAllEntries(db_, "SERVER_LIST", "ServerName", &entries, 2, 0), 2);
    DBAsciiAccessFree(entries);
    for (const auto &[table, column, index] : std::vector<std::tuple<const char *, const char *, int>>{
             {"SERVER_LIST", "Type", 2}, {"SERVER_LIST", "Community", 5}, {"NO_TYPE", "Type", DBASCII_BAD_ARGUMENT},
             {"NOWHERE", "Type", DBASCII_BAD_ARGUMENT}})
        EXPECT_EQ(DBAsciiAccessGetElementColumn(db_, table, column), index) << table << column;
    int count = -1;
    char **names = nullptr;
    ASSERT_EQ(DBAsciiAccessGetScheme(db_, "SERVER_LIST", &count, &names), 0);
    EXPECT_EQ(std::vector<std::string>(names, names + count),
              (std::vector<std::string>{"ServerName", "NetAddress", "Type", "SystemName", "RsbIpAddress", "Community"}));
    EXPECT_EQ(DBAsciiAccessGetScheme(db_, "EMPTY", &count, &names), 0);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(DBAsciiAccessGetScheme(db_, "NOWHERE", &count, &names), DBASCII_BAD_ARGUMENT);
    EXPECT_EQ(DBAsciiAccessTableOpen(db_, "EMPTY"), 0);
    EXPECT_EQ(DBAsciiAccessTableOpen(db_, "NOWHERE"), DBASCII_BAD_ARGUMENT);
}

TEST(DatabaseFile, UnreadableAndOddFiles) {
    DBAsciiAccessDatabase *db = reinterpret_cast<DBAsciiAccessDatabase *>(&db);
    EXPECT_EQ(DBAsciiAccessOpen("/nonexistent/hwinv.dba", DBASCII_ACCESS_READ, &db), DBASCII_UNREADABLE);
    EXPECT_EQ(db, nullptr);
    EXPECT_EQ(DBAsciiAccessOpen(nullptr, DBASCII_ACCESS_READ, &db), DBASCII_BAD_ARGUMENT);
    const char oddText[] = "row before any table\n[]\n[ T ]\n\xff\x00|\r\n|||\n";
    const std::string odd(oddText, sizeof oddText - 1);
    ASSERT_EQ(DBAsciiAccessOpenText(odd.data(), odd.size(), &db), 0);
    int count = 0;
    EXPECT_EQ(DBAsciiAccessGetScheme(db, "T", &count, nullptr), 0);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(DBAsciiAccessGetElementColumn(db, "T", "\xff"), 0) << "a field ends at a NUL byte";
    DBAsciiAccessRow *rows = nullptr;
    EXPECT_EQ(DBAsciiAccessGetAllEntriesByCondition(db, "T", "", &rows, 0, "", 114, 0, 110, 0, 0), 1);
    DBAsciiAccessFree(rows);
    DBAsciiAccessCloseKeepStaticDllInfo(db);
}

// --- trap files

const std::string kHead = "KXSNMPTRAP 1\n";

// The records of one read as "oid|type|value" lines (value bytes as read).
std::vector<std::string> Lines(const KXSnmpVar *records, int count) {
    std::vector<std::string> lines;
    for (int i = 0; i < count; ++i)
        lines.push_back(std::string(records[i].Oid) + "|" + records[i].Type + "|" +
                        std::string(records[i].Value, KXSnmpFileValueLength(records, i)));
    return lines;
}

// A record to write; the writer takes texts it does not change.
KXSnmpVar Var(const char *oid, const char *type, const char *value) {
    return {const_cast<char *>(oid), const_cast<char *>(type), const_cast<char *>(value)};
}

// tests/data/trap_file_texts.txt: text, count, records.
TEST(TrapFileText, WholeBrokenAndBinaryFiles) {
    for (const kx::test::DataRow &c : kx::test::DataTable("trap_file_texts.txt")) {
        KXSnmpVar *records = reinterpret_cast<KXSnmpVar *>(&records);
        const int n = KXSnmpFileReadText(c[0]->data(), c[0]->size(), &records);
        EXPECT_EQ(n, std::stoi(*c[1])) << *c[0];
        EXPECT_EQ(Lines(records, n), Tail(c, 2)) << *c[0];
        EXPECT_EQ(records == nullptr, n < 1) << *c[0];
        EXPECT_EQ(KXSnmpFileValueLength(records, n), 0u);
        KXSnmpFileFreeResources(records);
    }
    EXPECT_EQ(KXSnmpFileReadText("x", 1, nullptr), KX_SNMPFILE_BAD_ARGUMENT);
    EXPECT_EQ(KXSnmpFileRead(-1, nullptr, nullptr, 0), KX_SNMPFILE_BAD_ARGUMENT);
}

TEST(TrapFileDisk, WrittenWholeAndReadBack) {
    const TempDir dir;
    const std::string path = dir.path() + "/T0001.42";
    const std::string value("\x00\x19\x99\x0A\x0B\x0C", 6);
    const KXSnmpVar records[] = {Var(nullptr, "TIMETICKS", "12"), Var("1.3.6.1.4.1.99999", nullptr, "10.0.0.1"),
                                 Var("1.3.6.1.4.1.99999.5", "OCTETSTRING", value.data())};
    const size_t lengths[] = {2, 8, 6};
    ASSERT_EQ(KXSnmpFileWrite(path.c_str(), records, lengths, 3), 0);
    size_t length = 0;
    HeapText text(KXSnmpFileFormatText(records, lengths, 3, &length));
    EXPECT_EQ(std::string(text.Get(), length),
              kHead + "\tTIMETICKS\t12\n1.3.6.1.4.1.99999\t\t10.0.0.1\n"
                      "1.3.6.1.4.1.99999.5\tOCTETSTRING\t%00%19%99%0A%0B%0C\nEND\n");
    KXSnmpVar *read = nullptr;
    const int fd = open(path.c_str(), O_RDONLY);
    ASSERT_EQ(KXSnmpFileRead(fd, "ignored", &read, 0), 3);
    close(fd);
    EXPECT_EQ(Lines(read, 3)[2], "1.3.6.1.4.1.99999.5|OCTETSTRING|" + value);
    KXSnmpFileFreeResources(read);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}), 1) << "no temporary file left";
    EXPECT_EQ(KXSnmpFileRead(-1, (dir.path() + "/none").c_str(), &read, 0), KX_SNMPFILE_UNREADABLE);
    EXPECT_EQ(KXSnmpFileWrite((dir.path() + "/no/dir/T1").c_str(), records, lengths, 3), KX_SNMPFILE_UNREADABLE);
    EXPECT_EQ(KXSnmpFileWrite(path.c_str(), nullptr, nullptr, 1), KX_SNMPFILE_BAD_ARGUMENT);
    EXPECT_EQ(KXSnmpFileFormatText(records, nullptr, -1, nullptr), nullptr);
}

// A receiver rewrites one trap file again and again while a reader reads it:
// every read gets one whole version, never a part.
TEST(TrapFileDisk, ReadersNeverSeeAPartOfAFile) {
    const TempDir dir;
    const std::string path = dir.path() + "/T0002.7";
    const auto version = [](int count) {
        return std::vector<KXSnmpVar>(static_cast<size_t>(count),
                                      Var("1.3.6.1.2.1.1.5.0", "OCTETSTRING", "a value of some length"));
    };
    const std::vector<KXSnmpVar> small = version(300), large = version(3000);
    ASSERT_EQ(KXSnmpFileWrite(path.c_str(), small.data(), nullptr, 300), 0);
    const pid_t writer = fork();
    ASSERT_GE(writer, 0);
    if (writer == 0) {
        for (int i = 0; i < 40; ++i) {
            const auto &records = i % 2 ? small : large;
            if (KXSnmpFileWrite(path.c_str(), records.data(), nullptr, static_cast<int>(records.size())) != 0) _exit(1);
        }
        _exit(0);
    }
    int partial = 0, reads = 0;
    for (int status = 0; waitpid(writer, &status, WNOHANG) == 0; ++reads) {
        KXSnmpVar *records = nullptr;
        const int n = KXSnmpFileRead(-1, path.c_str(), &records, 0);
        if (n != 300 && n != 3000) ++partial;
        KXSnmpFileFreeResources(records);
    }
    EXPECT_EQ(partial, 0) << "of " << reads << " reads";
    EXPECT_GT(reads, 0);
}

// --- MIBs

class MibDirectory : public ::testing::Test {
protected:
    void SetUp() override {
        // A MIB as a vendor writes one: SMIv1 imports, a table, an enumeration,
        // traps with annotations, and comments that hide words.
        dir_.Write("Q47.MIB", kx::test::ReadFile(KX_SOURCE_DIR "/tests/data/Q47.MIB"));
        dir_.Write("notes.txt", "no MIB here\n");
        KXSetMibPath(dir_.path().c_str());
    }
    TempDir dir_;
};

std::string Text(const char *text, int length) { return text != nullptr ? std::string(text, length) : "<null>"; }

TEST_F(MibDirectory, NamesOidsAndSyntax) {
    struct Case { const char *oid, *mib, *object, *objectOid; };
    const std::vector<Case> cases = {
        {"1.3.6.1.4.1.99999.1.0", "Q47.MIB", "q47FanStatus", "1.3.6.1.4.1.99999.1"},
        {".1.3.6.1.4.1.99999.4.1.2.7", "Q47.MIB", "q47SvrNicIpAddress", "1.3.6.1.4.1.99999.4.1.2"},
        {"1.3.6.1.4.1.99999.77", "Q47.MIB", "q47", "1.3.6.1.4.1.99999"},
        {"1.3.6.1.4.1", nullptr, "enterprises", "1.3.6.1.4.1"},  // an SMI root belongs to no MIB
        {"1.3.6.1.6.3", nullptr, "snmpModules", "1.3.6.1.6.3"},
        {"1.3.x", nullptr, nullptr, nullptr},
        {"", nullptr, nullptr, nullptr},
    };
    for (const Case &c : cases) {
        KXMib *mib = nullptr;
        const HeapText name(KXGetMibname(&mib, c.oid));
        EXPECT_EQ(name.str(), c.mib ? c.mib : "<null>") << c.oid;
        EXPECT_EQ(mib != nullptr, c.mib != nullptr) << c.oid;
        char *object = nullptr, *objectOid = nullptr;
        EXPECT_EQ(KXGetName(mib, c.oid, &object, &objectOid, 0), c.object ? 0 : -1) << c.oid;
        EXPECT_EQ(HeapText(object).str(), c.object ? c.object : "<null>") << c.oid;
        EXPECT_EQ(HeapText(objectOid).str(), c.objectOid ? c.objectOid : "<null>") << c.oid;
        KXFreeResources(mib);
    }
    struct OidCase { const char *file, *entry, *column, *oid; };
    for (const OidCase &c : std::vector<OidCase>{
             {"q47.mib", "q47SvrNicInfoEntry", "q47SvrNicIpAddress", "1.3.6.1.4.1.99999.4.1.2"},
             {"Q47.MIB", nullptr, "q47FanName", "1.3.6.1.4.1.99999.3"},
             {"Q47.MIB", "q47SvrNicInfoEntry", nullptr, "1.3.6.1.4.1.99999.4.1"},
             {"Q47.MIB", "q47SvrNicInfoTable", "q47SvrNicIpAddress", nullptr},  // not its entry
             {"Other.mib", nullptr, "q47FanName", nullptr},
             {"Q47.MIB", nullptr, "enterprises", nullptr}}) {
        char *oid = reinterpret_cast<char *>(1);
        EXPECT_EQ(KXGetOID(c.file, c.entry, c.column, &oid), c.oid ? 0 : -1) << c.column;
        EXPECT_EQ(HeapText(oid).str(), c.oid ? c.oid : "<null>") << c.column;
    }
    for (const auto &[object, syntax] : std::vector<std::pair<const char *, const char *>>{
             {"q47FanStatus", "INTEGER"}, {"q47FanName", "OCTETSTRING"}, {"q47SvrNicIpAddress", "IPADDRESS"},
             {"q47SvrNicInErrors", "COUNTER"}, {"q47SvrNicInfoEntry", nullptr}, {"nothing", nullptr}}) {
        char *text = nullptr;
        EXPECT_EQ(KXGetSyntax(nullptr, object, nullptr, &text), syntax ? 0 : -1) << object;
        EXPECT_EQ(HeapText(text).str(), syntax ? syntax : "<null>") << object;
    }
}

TEST_F(MibDirectory, EnumerationsAndSeverities) {
    KXMibValues *values = nullptr;
    ASSERT_EQ(KXGetValues(nullptr, nullptr, "1.3.6.1.4.1.99999.1", KX_MIB_VALUES_ENUMERATION, &values), 6);
    const std::vector<const char *> expected = {nullptr, "unknown", "ok", "failed", nullptr, "removed"};
    for (int i = 0; i < values->NameCount; ++i) EXPECT_STREQ(values->Names[i], expected[i]) << i;
    EXPECT_STREQ(values->Object, "q47FanStatus");
    KXFreeResources(values);
    EXPECT_EQ(KXGetValues(nullptr, "q47FanName", nullptr, KX_MIB_VALUES_ENUMERATION, &values), 0);
    EXPECT_EQ(KXGetValues(nullptr, "q47FanStatus", nullptr, 1, &values), -1);
    EXPECT_EQ(KXGetValues(nullptr, "nothing", nullptr, KX_MIB_VALUES_ENUMERATION, &values), -1);
    EXPECT_EQ(values, nullptr);
    for (const auto &[text, number] : std::vector<std::pair<const char *, int>>{
             {"CRITICAL", 1}, {" major ", 2}, {"Minor", 3}, {"WARNING", 3}, {"INFORMATIONAL", 4},
             {"UNKNOWN", 0}, {"", 0}, {"loud", 0}, {nullptr, 0}})
        EXPECT_EQ(KXSeverityTextToNumber(text), number) << (text ? text : "NULL");
}

TEST_F(MibDirectory, AnotherDirectoryIsReadAfresh) {
    TempDir other;
    other.Write("Q48.mib", "Q48-MIB DEFINITIONS ::= BEGIN\nIMPORTS enterprises FROM RFC1155-SMI;\n"
                           "q48 OBJECT IDENTIFIER ::= { enterprises 48 }\nEND\n");
    KXMib *mib = nullptr;
    EXPECT_EQ(HeapText(KXGetMibname(&mib, "1.3.6.1.4.1.99999.1")).str(), "Q47.MIB");
    KXFreeResources(mib);
    KXSetMibPath(other.path().c_str());
    EXPECT_EQ(HeapText(KXGetMibname(&mib, "1.3.6.1.4.1.99999.1")).str(), "<null>");
    EXPECT_EQ(HeapText(KXGetMibname(&mib, "1.3.6.1.4.1.48.2")).str(), "Q48.mib");
    KXFreeResources(mib);
}

// A description as "name|variables|description|type|summary|arguments|severity".
std::string Described(const KXTrapDescription *d) {
    if (d == nullptr) return "<none>";
    std::string out = Text(d->Name, d->NameLength) + "|";
    for (int i = 0; i < d->VariableCount; ++i) out += std::string(i > 0 ? "," : "") + d->Variables[i];
    for (const auto &[text, length] : {std::pair{d->Description, d->DescriptionLength}, {d->Type, d->TypeLength},
                                       {d->Summary, d->SummaryLength}, {d->Arguments, d->ArgumentCount},
                                       {d->Severity, d->SeverityLength}})
        out += "|" + Text(text, length);
    return out;
}

TEST_F(MibDirectory, TrapDescriptionsFromTheFile) {
    const KXTrapDescription *fan = GetTrapPointer("Q47.MIB", ".1.3.6.1.4.1.99999", "3", "6");
    EXPECT_EQ(Described(fan), "q47FanFailed|q47FanName,q47FanStatus|A fan failed.|Fan failure|Fan %s failed (%d)|01|CRITICAL");
    ASSERT_NE(fan, nullptr);
    EXPECT_EQ(fan->Reserved3 | fan->Reserved4 | fan->Reserved17[0] | fan->Reserved17[6], 0);
    EXPECT_EQ(GetTrapPointer("Q47.MIB", "1.3.6.1.4.1.99999", "3", "6"), fan) << "kept, not parsed again";
    EXPECT_EQ(Described(GetTrapPointer("Q47.MIB", "1.3.6.1.4.1.99999.2.10", "12", "6")),
              "q47HostUp|q47FanName|Host is up.|Host state|Host %s is up|<null>|informational");
    struct Miss { const char *file, *oid, *specific, *generic; bool found; };
    for (const Miss &m : std::vector<Miss>{
             {"Q47.MIB", "1.3.6.1.4.1.99999", "77", "0", true},   // generic below 6: its number counts
             {"Q47.MIB", "1.3.6.1.4.1.99999", "0", "6", true},
             {"Q47.mib", "1.3.6.1.4.1.99999", "3", "6", true},    // the extension in any case
             {"Q47.MIB", "1.3.6.1.4.1.99999", "9", "6", false},   // only in a comment
             {"Q47.MIB", "1.3.6.1.4.1.99999", "3", "7", false},
             {"Q47.MIB", "1.3.6.1.4.1.99998", "3", "6", false},
             {"Q47.MIB", "1.3.6.1.4.1.99999", "x", "6", false},
             {"Missing.mib", "1.3.6.1.4.1.99999", "3", "6", false},
             {"Q47.MIB", nullptr, "3", "6", false}})
        EXPECT_EQ(GetTrapPointer(m.file, m.oid, m.specific, m.generic) != nullptr, m.found) << m.specific;
}

// tests/data/mib_texts.txt: text, traps found, enterprise OID, trap 5 found.
TEST(TrapMibText, BrokenAndOddTexts) {
    const std::vector<kx::test::DataRow> cases = kx::test::DataTable("mib_texts.txt");
    for (const kx::test::DataRow &c : cases) {
        EXPECT_EQ(KXSetTrapMibText("mem.mib", c[0]->data(), c[0]->size()), std::stoi(*c[1])) << *c[0];
        const KXTrapDescription *d = GetTrapPointer("mem.mib", c[2]->c_str(), "5", "6");
        EXPECT_EQ(d != nullptr ? Text(d->Name, d->NameLength) : "<null>", c[3].value_or("<null>")) << *c[0];
    }
    EXPECT_EQ(GetTrapPointer("mem.mib", "1.3.6.1.4.1", "5", "6"), nullptr);
    KXSetTrapMibText("mem.mib", cases[6][0]->data(), cases[6][0]->size());
    const KXTrapDescription *d = GetTrapPointer("mem.mib", "1.3.6.1.6", "5", "6");
    ASSERT_NE(d, nullptr);
    EXPECT_EQ(Text(d->Arguments, d->ArgumentCount), "01<");
    std::string comments;
    for (int i = 0; i < 2000; ++i) comments += "-- x TRAP-TYPE ENTERPRISE enterprises ::= 1\n";
    EXPECT_EQ(KXSetTrapMibText("mem.mib", comments.data(), comments.size()), 0);
    EXPECT_EQ(KXSetTrapMibText(nullptr, "", 0), -1);
    EXPECT_EQ(KXSetTrapMibText("mem.mib", nullptr, 1), -1);
}

}  // namespace
