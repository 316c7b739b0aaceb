// Trap MIB indexes, trap descriptions found through the OID-to-MIB file,
// TrapCache and the index, trap texts, unknown traps, variable types, the
// trap list line and database values, and the texts snmptt gives for the same
// traps; a MIB directory shared by all tests.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "companion/libKXUtils.h"
#include "companion/libKXsnmp.h"
#include "companion/libSnmpFile.h"
#include "kx_trap.h"
#include "support/kx_test.h"
#include "support/trap_fixture.h"

namespace {

using kx::test::HeapText;
namespace fx = kx::fixture;

bool WriteFile(const std::string &path, const std::string &content) {
    std::ofstream out(path, std::ios::binary);
    return static_cast<bool>(out << content);
}

// The working directory of the whole program: MIBs, lists and the trap store.
class Site : public ::testing::Environment {
public:
    void SetUp() override {
        dir_ = std::make_unique<kx::test::TempDir>();
        const std::string mibs = dir_->path() + "/mibs";
        // MIBs with and without traps, the lists naming them, a definition and a database.
        std::filesystem::copy(KX_SOURCE_DIR "/tests/data/trap_site", dir_->path(), std::filesystem::copy_options::recursive);
        dir_->Write("mibs/KXTEST.mib", fx::Mib());
        dir_->Write("MibPath", mibs + "\n");
        dir_->Write("snmptrapd.ini", "TrapsDirectory=" + dir_->path() + "/Traps\nDBDirectory=" + dir_->path() +
                                         "/hwinv.dba\n");
        std::filesystem::create_directory(dir_->path() + "/Traps");
        cwd_ = std::make_unique<kx::test::CurrentDirectory>(dir_->path());
        KXSetMibPath(mibs.c_str());
    }
    void TearDown() override { cwd_.reset(), dir_.reset(); }
    static std::string Traps() { return std::filesystem::current_path().string() + "/Traps"; }

private:
    std::unique_ptr<kx::test::TempDir> dir_;
    std::unique_ptr<kx::test::CurrentDirectory> cwd_;
};
const auto *const site = ::testing::AddGlobalTestEnvironment(new Site);

// A trap file's records, read back as the trap pages read them.
struct Read {
    KXSnmpVar *records = nullptr;
    int count;
    explicit Read(const std::string &file) : count(KXSnmpFileReadText(file.data(), file.size(), &records)) {}
    ~Read() { KXSnmpFileFreeResources(records); }
};

std::string TextOf(KXTrapDescription *d, const Read &trap, KXTrapDescription *unknown = nullptr) {
    char text[KX_TRAP_TEXT_SIZE] = "";
    EXPECT_EQ(GTCreateTrapString(text, nullptr, d, trap.count, trap.records, unknown), 0);
    return text;
}

TEST(TrapMibIndex, ListThenScanAndLookups) {
    EXPECT_EQ(GTItIsATrapMIB("Q47"), -1);  // nothing built yet
    EXPECT_EQ(GTCreateTrapMibs("missing-list"), 0);
    std::vector<std::string> names(GTTrapMIBs, GTTrapMIBs + GTTrapMIBsCount);
    EXPECT_EQ(names, (std::vector<std::string>{"Q47", "RFC1215", "HOST", "KXTEST", "cold"}));
    EXPECT_EQ(std::vector<int>(GTTrapMIBsLength, GTTrapMIBsLength + GTTrapMIBsCount),
              (std::vector<int>{3, 7, 4, 6, 4}));
    const struct { const char *name; int index; } found[] = {
        {"q47.mib", 0}, {"HOST", 2}, {"Cold.MIB.old", 4}, {"COMMENT", -2}, {"", -2}, {nullptr, -2}};
    for (const auto &f : found) EXPECT_EQ(GTItIsATrapMIB(f.name), f.index) << (f.name ? f.name : "null");
    EXPECT_STREQ(GTDetermineMIBSuffix("cold", 0), "MiB");
    EXPECT_STREQ(GTDetermineMIBSuffix("Q47.old", 3), "MIB");
    EXPECT_STREQ(GTDetermineMIBSuffix("none", 0), "mib");

    // The page engine's index, built when a definition is read.
    kx::test::InputList owned;
    ASSERT_EQ(ErmittleEingabe("app", &owned.list(), &owned.count(), nullptr, 0), 0);
    EXPECT_EQ(EingabeTrapMIBs, 1);
    EXPECT_EQ(std::vector<std::string>(TrapMIBs, TrapMIBs + TrapMIBsCount),
              (std::vector<std::string>{"Q47", "RFC1215", "HOST", "KXTEST", "cold"}));
    EXPECT_EQ(ItIsATrapMIB("kxtest.mib"), 3);
    EXPECT_EQ(CreateTrapMibs(nullptr, 0), -2);
    char *contents = nullptr, *copy = nullptr, **list = nullptr;
    int count = 0;
    ASSERT_EQ(CreateSpecialMibs(owned.list(), owned.count(), "Special", &contents, &copy, &count, &list), 0);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(ItIsASpecialMIB("beta.mib", count, list), 1);
    EXPECT_EQ(ItIsASpecialMIB("gamma", count, list), -2);
    EXPECT_EQ(ItIsASpecialMIB("beta", 0, list), -1);
    std::free(contents), std::free(copy), std::free(list);
    EXPECT_EQ(CreateSpecialMibs(owned.list(), owned.count(), "Absent", &contents, &copy, &count, &list), -1);

    int *got = nullptr, longest = 0;
    char text[] = "ab--c----d";
    EXPECT_EQ(GTErmittleTextElemente(text, "--", &longest, &got), 4);
    EXPECT_EQ(std::vector<int>(got, got + 4), (std::vector<int>{2, 1, 0, 1}));
    EXPECT_EQ(longest, 2);
    std::free(got);
}

TEST(TrapMibIndex, DescriptionsThroughOidFileCacheAndIndex) {
    GTCreateTrapMibs(nullptr);
    char *mib = nullptr;
    int all = -1;
    // A standard trap: the OID-to-MIB file is asked for the first OID.
    KXTrapDescription *cold = GTGetTrapPointer("1.3.6.1.4.1.4242", fx::kEnterprise, "0", "0", nullptr, &mib, &all);
    ASSERT_NE(cold, nullptr);
    EXPECT_EQ(std::string(cold->Name, cold->NameLength), "coldStart");
    EXPECT_STREQ(HeapText(mib).get(), "cold.MiB");
    EXPECT_EQ(all, 0);
    const int cached = TrapCacheCount;
    for (int round = 0; round < 2; ++round) {
        mib = nullptr;
        KXTrapDescription *fan = GTGetTrapPointer("1.3.6.1.4.1.99999.1.1.0", fx::kEnterprise, "1", "6", "", &mib, &all);
        ASSERT_NE(fan, nullptr);
        EXPECT_STREQ(HeapText(mib).get(), "KXTEST.mib");
        EXPECT_EQ(all, round == 0 ? 1 : 0) << "the second answer comes from TrapCache";
        EXPECT_EQ(TrapCacheCount, cached + 1);
    }
    EXPECT_STREQ(TrapCache[TrapCacheCount - 1].Oid, fx::kEnterprise);
    mib = nullptr;
    EXPECT_EQ(GTGetTrapPointer("1.3.6.1.4.1.1", nullptr, "1", "6", nullptr, &mib, &all), nullptr);
    EXPECT_EQ(all, 1);
    EXPECT_EQ(mib, nullptr);
    char given[] = "KXTEST.mib";
    char *named = given;
    EXPECT_NE(GTGetTrapPointer(fx::kEnterprise, nullptr, "9", "6", nullptr, &named, nullptr), nullptr);
    EXPECT_EQ(named, given) << "the caller's MIB is used and left as it was";
}

KXTrapDescription Described(const char *summary, const char *arguments, const char *text = nullptr,
                            std::vector<char *> *variables = nullptr) {
    KXTrapDescription d{};
    d.Name = const_cast<char *>("someTrap"), d.NameLength = 8;
    d.Summary = const_cast<char *>(summary), d.SummaryLength = summary ? static_cast<int>(strlen(summary)) : 0;
    d.Arguments = const_cast<char *>(arguments), d.ArgumentCount = arguments ? static_cast<int>(strlen(arguments)) : 0;
    d.Description = const_cast<char *>(text), d.DescriptionLength = text ? static_cast<int>(strlen(text)) : 0;
    if (variables) d.Variables = variables->data(), d.VariableCount = static_cast<int>(variables->size());
    return d;
}

// tests/data/trap_summaries.txt: summary, arguments, description, variables, text.
TEST(TrapText, SummaryRules) {
    const Read trap(fx::TrapFileText({1, {fx::Name("FAN1"), fx::Status(2), {"9.0", "GAUGE", "12", ""},
                                          {"2.10.1.0", "OCTETSTRING", "web.example.com", ""}}}));
    for (const kx::test::DataRow &c : kx::test::DataTable("trap_summaries.txt")) {
        const auto text = [&](size_t i) { return c[i] ? c[i]->c_str() : nullptr; };
        std::vector<std::string> owned;
        for (std::string_view name : kx::core::Split(*c[3], " "))
            if (!name.empty()) owned.emplace_back(name);
        std::vector<char *> names;
        for (std::string &name : owned) names.push_back(name.data());
        KXTrapDescription d = Described(text(0), text(1), text(2), names.empty() ? nullptr : &names);
        EXPECT_EQ(TextOf(&d, trap), *c[4]) << c[0].value_or("<none>");
    }
    KXTrapDescription d = Described("%s", "1");
    EXPECT_EQ(TextOf(&d, trap, &d), "2") << "the unknown-trap description names no values";
    EXPECT_EQ(GTCreateTrapString(nullptr, nullptr, &d, 0, nullptr, nullptr), -1);
    EXPECT_EQ(GTValidateNetAddress("10.1.2.3"), 0);
    EXPECT_EQ(GTValidateNetAddress("srv.a.b.c"), 1);
    EXPECT_EQ(GTValidateNetAddress(nullptr), 1);
}

TEST(TrapText, UnknownTrapsAndTypes) {
    KXTrapDescription d{};
    const std::string head = "Unknown trap: Enterprise = 1.3.6.1.4.1.7, Specific Trap Number = 5, Generic Trap Number = 6, ";
    const struct { int count; std::string summary, arguments; } cases[] = {
        {0, head + "0 Parameters", ""},
        {2, head + "2 Parameters: %s, %s", "01"},
        {12, head + "12 Parameters: %s, %s, %s, %s, %s, %s, %s, %s, %s, %s, ...", "0123456789"},
    };
    for (const auto &c : cases) {
        ASSERT_EQ(GTCreateUnknownTrap(&d, c.count, "1.3.6.1.4.1.7", "5", "6"), 0);
        EXPECT_EQ(d.Summary, c.summary);
        EXPECT_EQ(d.SummaryLength, static_cast<int>(c.summary.size()) - 2);
        EXPECT_EQ(d.Arguments, c.arguments);
        EXPECT_EQ(d.ArgumentCount, c.count);
    }
    EXPECT_EQ(std::string(d.Name) + "/" + d.Type + "/" + d.Severity, "unknownTrap/UNKNOWN TRAP/UNKNOWN");
    EXPECT_EQ(std::vector<int>(d.Reserved17, d.Reserved17 + 7), (std::vector<int>{-1, 0, 0, -1, 0, 0, -1}));
    EXPECT_EQ(GTCreateUnknownTrap(nullptr, 0, "", "", ""), -1);

    // Types looked up in the MIB for records that carry none.
    Read trap(fx::TrapFileText({1, {{"1.2.0", "", "2", ""}, {"77.1", "", "x", ""}, fx::Temperature(3)}}));
    trap.records[0].Type[0] = '\0';
    ASSERT_EQ(GTDetermineTypes(trap.records, trap.count, nullptr), 1);
    std::string types;
    for (int i = 0; i < trap.count; ++i) types += std::string(trap.records[i].Type) + " ";
    EXPECT_EQ(types, "OCTETSTRING IPADDRESS INTEGER UNKNOWN INTEGER ");
    EXPECT_EQ(GTDetermineTypes(trap.records, trap.count, nullptr), 0);
    for (int i = 0; i < trap.count; ++i) KXUtilsFreeResources(trap.records[i].Type);
}

// Trap files of the store: T<enterprise>_6_<specific>_127_0_0_1_<server>_<states>.<id>.
void Store(int id, int enterprise, const std::string &server, const std::string &states, fx::Trap trap,
           const char *recordOid = nullptr) {
    std::string file = fx::TrapFileText(trap);
    if (recordOid != nullptr) {
        const std::size_t at = file.find(fx::kEnterprise);
        file.replace(at, std::strlen(fx::kEnterprise), recordOid);
    }
    const std::string name = "T" + std::to_string(enterprise) + "_6_" + std::to_string(trap.specific) +
                             "_127_0_0_1_" + server + "_" + states + "." + std::to_string(1700000000 + id);
    ASSERT_TRUE(WriteFile(Site::Traps() + "/" + name, file));
}

TEST(TrapList, LinesOfShownPositions) {
    TrapsDirectory[0] = DBDirectory[0] = '\0';
    Store(1, 99999, "srv01", "010000001", {1, {fx::Name("FAN1"), fx::Status(3)}});
    Store(2, 12345, "0000", "000000000", {5, {fx::Name("FAN1")}}, "1.3.6.1.4.1.12345");
    Store(3, 99999, "srv03", "100000000", {8, {fx::Name("a b")}});
    WriteFile(Site::Traps() + "/TrapLastSortInfo", "1700000009~1700000003~1700000001~1700000002\n");
    char *result = reinterpret_cast<char *>(1);
    ASSERT_EQ(KXCreateUserValue("2|99|-1|0|3|1|", "<br>", &result), 0);
    EXPECT_EQ(HeapText(result).str(),
              "0,,Fan%20failure,,,,1,,srv01,,1,,0,,0,,0,,0,,0,,1,,,,1700000001,,,,Fan%20FAN1%20failed%20(3),,"
              "<br>0,,UNKNOWN%20TRAP,,,,0,,127.0.0.1,,0,,0,,0,,0,,0,,0,,0,,,,1700000002,,,,Unknown%20trap%3A%20"
              "Enterprise%20%3D%201.3.6.1.4.1.12345,%20Specific%20Trap%20Number%20%3D%205,%20Generic%20"
              "Trap%20Number%20%3D%206,%201%20Parameters%3A%20FAN1,,"
              "<br>0,,Full%20load.,,,,2,,srv03,,0,,0,,0,,0,,0,,1,,0,,,,1700000003,,,,Load%20100%25%20on%20a%20b,,");
    EXPECT_EQ(KXCreateUserValue(" 1", "|", &result), 0);
    EXPECT_EQ(result, nullptr);
    EXPECT_EQ(KXCreateUserValue(nullptr, "|", &result), -1);

    const struct { const char *table, *condition, *value; } values[] = {
        {"SETTINGS", "Value?Name=TrapMaxAge", "30"}, {"SETTINGS", "Value?Name=None", nullptr},
        {"NOTABLE", "Value", nullptr}, {nullptr, "Value", nullptr}, {"SETTINGS", nullptr, nullptr}};
    for (const auto &v : values)
        EXPECT_EQ(HeapText(KXGetDBValue(nullptr, v.table, v.condition)).str(), v.value ? v.value : "<null>");
    EXPECT_EQ(KXGetDBValue("missing.dba", "SETTINGS", "Value"), nullptr);
}

TEST(TrapList, TrapsRelabelledWithTheirMib) {
    const std::string traps = Site::Traps() + "/relabel";
    std::filesystem::create_directories(traps);
    const auto write = [&](const std::string &name, const char *recordOid) {
        std::string file = fx::TrapFileText({3, {fx::Temperature(1)}});
        file.replace(file.find(fx::kEnterprise), std::strlen(fx::kEnterprise), recordOid);
        WriteFile(traps + "/" + name, file);
    };
    write("T99999_6_3_1_2_3_4_s_000000000.1", "1.3.6.1.4.1.99999.0.3");
    write("T99999l8n_Unknown_6_3_1_2_3_4_s_000000000.2", "1.3.6.1.4.1.99999.0.3");
    write("T99999_6_3_1_2_3_4_s_000000000.3", "1.3.6.1.4.1.55555.0.3");  // no MIB describes it
    write("T99999l3nQ47_6_3_1_2_3_4_s_000000000.4", "1.3.6.1.4.1.99999.0.3");  // has its MIB
    EXPECT_EQ(KXAdaptTrapFileName(traps.c_str()), 2);
    std::vector<std::string> names;
    for (const auto &entry : std::filesystem::directory_iterator(traps)) names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (std::vector<std::string>{"StandardRefresh", "T99999_6_3_1_2_3_4_s_000000000.3",
                                               "T99999l3nQ47_6_3_1_2_3_4_s_000000000.4",
                                               "T99999l6nKXTEST_6_3_1_2_3_4_s_000000000.1",
                                               "T99999l6nKXTEST_6_3_1_2_3_4_s_000000000.2"}));
    EXPECT_EQ(kx::test::ReadFile(traps + "/StandardRefresh"), "Standard");
}

// A second opinion on trap texts: the fixture's traps through snmptt (daemon
// mode, MIB converted with snmpttconvertmib) and through the index and
// GTCreateTrapString; tests/data/snmptt_texts.txt lists every difference with
// the rule of this system it follows from.
std::string OurText(const fx::Trap &trap) {
    const Read read(fx::TrapFileText(trap));
    const std::string specific = std::to_string(trap.specific);
    KXTrapDescription *d = GTGetTrapPointer(read.records[2].Oid, read.records[1].Oid, specific.c_str(), "6", "",
                                            nullptr, nullptr);
    return d != nullptr ? TextOf(d, read) : "";
}

TEST(SnmpttComparison, SameTrapsSameMib) {
    GTCreateTrapMibs(nullptr);
    kx::test::TempDir dir;
    fx::Snmptt snmptt(dir.path());
    ASSERT_TRUE(snmptt.converted()) << kx::test::ReadFile(dir.path() + "/convert.log");
    const auto traps = fx::Traps();
    const auto expected = kx::test::DataTable("snmptt_texts.txt");
    ASSERT_EQ(traps.size(), expected.size());
    for (std::size_t i = 0; i < traps.size(); ++i) snmptt.Spool(static_cast<int>(i), traps[i]);
    ASSERT_TRUE(snmptt.Start());
    const auto theirs = snmptt.Texts(traps.size(), std::chrono::seconds(30));
    snmptt.Stop();
    ASSERT_EQ(theirs.size(), traps.size());
    for (std::size_t i = 0; i < traps.size(); ++i) {
        const kx::test::DataRow &e = expected[i];
        EXPECT_EQ(OurText(traps[i]), *e[0]) << i;
        EXPECT_EQ(theirs[i], *e[1]) << i;
        EXPECT_EQ(*e[0] == *e[1], e[2]->empty()) << "a difference without its rule: " << i;
    }
}

}  // namespace
