// Server-list database companion: tables, columns, conditions, rows, and
// databases with missing columns or fields.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "companion/libDBAsciiAccess.h"
#include "support/kx_test.h"

namespace {

constexpr const char *kDatabase = R"(# Server list of the console
[SERVER_LIST]
ServerName      | NetAddress | Type        | SystemName | RsbIpAddress | Community
srv01           | 10.0.0.1   | Server      | sys01      | 0.0.0.0      | public
chassis1\blade3 | 10.0.0.5   | Blade       |            | 0.0.0.0
rack7           | 10.0.0.9   | BladeServer | rack7      | 10.0.0.9     | pipe%7Cname | extra
[SETTINGS]
Name          | Value
TrapMaxAge    | 30
TrapMaxNumber | 1000
[NO_TYPE]
ServerName
x
[EMPTY]
[SETTINGS]
Name | Value
TrapMaxAge | 99
)";

class Database : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(DBAsciiAccessOpen(dir_.Write("hwinv.dba", kDatabase).c_str(), DBASCII_ACCESS_READ, &db_), 0); }
    void TearDown() override { EXPECT_EQ(DBAsciiAccessCloseKeepStaticDllInfo(db_), 0); }
    kx::test::TempDir dir_;
    DBAsciiAccessDatabase *db_ = nullptr;
};

TEST_F(Database, EntriesByCondition) {
    struct Case { const char *table, *condition; int result; std::vector<std::string> entries; };
    const std::vector<Case> cases = {
        {"SETTINGS", "Value?Name=TrapMaxAge", 1, {"30"}},  // the first table of a name counts
        {"SETTINGS", "Value ? Name = TrapMaxNumber", 1, {"1000"}},
        {"SERVER_LIST", "ServerName?Type=Blade", 1, {"chassis1\\blade3"}},
        {"SERVER_LIST", "ServerName?Type!=Blade&RsbIpAddress=0.0.0.0", 1, {"srv01"}},
        {"SERVER_LIST", "Community?ServerName=rack7", 1, {"pipe|name"}},
        {"SERVER_LIST", "Community?Community=", 1, {""}},  // a missing field is empty
        {"SERVER_LIST", "ServerName", 3, {"srv01", "chassis1\\blade3", "rack7"}},
        {"SETTINGS", "Value?Name=Nothing", 0, {}},
        {"SETTINGS", "Missing?Name=TrapMaxAge", DBASCII_BAD_CONDITION, {}},
        {"SETTINGS", "Value?Name", DBASCII_BAD_CONDITION, {}},
        {"SETTINGS", "Value?Other=1", DBASCII_BAD_CONDITION, {}},
        {"SETTINGS", "Value?Name=%G", DBASCII_BAD_CONDITION, {}},
        {"EMPTY", "Value", DBASCII_BAD_CONDITION, {}},
        {"NOWHERE", "Value", DBASCII_BAD_ARGUMENT, {}},
        {"SETTINGS", nullptr, DBASCII_BAD_ARGUMENT, {}},
    };
    for (const Case &c : cases) {
        char **entries = reinterpret_cast<char **>(&entries);
        const int n = DBAsciiAccessGetAllEntries(db_, c.table, c.condition, &entries, 0, 0);
        EXPECT_EQ(n, c.result) << c.condition;
        EXPECT_EQ(std::vector<std::string>(entries, entries + std::max(n, 0)), c.entries) << c.condition;
        EXPECT_EQ(entries == nullptr, n < 1) << c.condition;
        DBAsciiAccessFree(entries);
    }
    char **entries = nullptr;
    EXPECT_EQ(DBAsciiAccessGetAllEntries(db_, "SERVER_LIST", "ServerName", &entries, 2, 0), 2);
    DBAsciiAccessFree(entries);
}

TEST_F(Database, RowsColumnsAndSchemes) {
    struct Case { const char *table, *column, *value; int mode, comparison, result; std::vector<std::string> firstRow; };
    const std::vector<Case> cases = {
        {"SERVER_LIST", "NetAddress", "10.0.0.5", 0, 114, 1, {"chassis1\\blade3", "10.0.0.5", "Blade", "", "0.0.0.0", ""}},
        {"SERVER_LIST", "ServerName", "SRV01", 1, 114, 1, {"srv01", "10.0.0.1", "Server", "sys01", "0.0.0.0", "public"}},
        {"SERVER_LIST", "ServerName", "SRV01", 0, 114, 0, {}},
        {"SERVER_LIST", "RsbIpAddress", "0.0.0.0", 0, 114, 2, {"srv01", "10.0.0.1", "Server", "sys01", "0.0.0.0", "public"}},
        {"SERVER_LIST", "NetAddress", "10.0.0.5", 0, 99, DBASCII_BAD_CONDITION, {}},
        {"NO_TYPE", "Type", "Blade", 0, 114, DBASCII_BAD_ARGUMENT, {}},
        {"NOWHERE", "Type", "Blade", 0, 114, DBASCII_BAD_ARGUMENT, {}},
    };
    for (const Case &c : cases) {
        DBAsciiAccessRow *rows = nullptr;
        const int n = DBAsciiAccessGetAllEntriesByCondition(db_, c.table, c.column, &rows, 0, c.value, c.comparison,
                                                            c.mode, DBASCII_ORDER_AS_STORED, 0, 0);
        EXPECT_EQ(n, c.result) << c.value;
        if (n > 0) EXPECT_EQ(std::vector<std::string>(rows[0], rows[0] + c.firstRow.size()), c.firstRow) << c.value;
        DBAsciiAccessFree(rows);
    }
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

}  // namespace
