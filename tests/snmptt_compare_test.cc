// A second opinion on trap texts: the fixture MIB and traps through snmptt
// (daemon mode, MIB converted with snmpttconvertmib) and through the index
// and GTCreateTrapString. Every difference is listed with the rule of this
// system it follows from.
#include <gtest/gtest.h>

#include <string>

#include "companion/libKXsnmp.h"
#include "companion/libSnmpFile.h"
#include "kx_trap.h"
#include "support/kx_test.h"
#include "support/trap_fixture.h"

extern "C" const char *__lsan_default_suppressions() { return "leak:netsnmp_init_mib_internals\n"; }

namespace {

namespace fx = kx::fixture;

// Per fixture trap: our text, snmptt's, and why they differ (empty: equal).
const struct Expected {
    const char *ours, *snmptt, *rule;
} kExpected[] = {
    {"Fan FAN1 failed (3)", "Fan failure: Fan FAN1 failed (3)",
     "the --#TYPE text is the list line's display name, not part of the text"},
    {"Fan FAN2 is degraded(2)", "Fan FAN2 is 2", "an enumerated INTEGER under %s shows name(value)"},
    {"Fan FAN3 is EnumOutOfRange(7)", "Fan FAN3 is 7", "a value outside the enumeration is EnumOutOfRange(value)"},
    {"Temperature 71 C", "Temperature 71 C", ""},
    {"NIC address 00-19-99-0A-0B-0C", "NIC address 00 19 99 0A 0B 0C", "%m prints six bytes as a MAC address"},
    {"Disk sda at 91 percent", "Disk sda at 91 percent", ""},
    {"Host srv01 is up", "Host srv01.example.com is up",
     "the first variable under 1.3.6.1.4.1.99999.2.10 loses its domain"},
    {"Host 10.1.2.3 is up", "Host 10.1.2.3 is up", ""},
    {"Sensor FAN1 reads (NULL)", "Sensor FAN1 reads $2", "a missing variable under %s is (NULL)"},
    {"Load 100% on FAN1", "Load 100%% on FAN1", "%% in a summary is one percent sign"},
    {"Sensor report.\\nParameters:\\nkxFanName = FAN1\\nkxTemperature = 40\\n", "Sensor report. FAN1 40",
     "without a summary: the description, then each variable as name = value behind a literal \\n"},
};

std::string OurText(const fx::Trap &trap) {
    const std::string file = fx::TrapFileText(trap);
    KXSnmpVar *records = nullptr;
    const int count = KXSnmpFileReadText(file.data(), file.size(), &records);
    const std::string specific = std::to_string(trap.specific);
    KXTrapDescription *d = GTGetTrapPointer(records[2].Oid, records[1].Oid, specific.c_str(), "6", "", nullptr,
                                            nullptr);
    char text[KX_TRAP_TEXT_SIZE] = "";
    if (d != nullptr) GTCreateTrapString(text, nullptr, d, count, records, nullptr);
    KXSnmpFileFreeResources(records);
    return text;
}

TEST(SnmpttComparison, SameTrapsSameMib) {
    kx::test::TempDir dir;
    dir.Write("mibs/KXTEST.mib", fx::Mib());
    dir.Write("MibPath", dir.path() + "/mibs");
    kx::test::CurrentDirectory cwd(dir.path());
    KXSetMibPath((dir.path() + "/mibs").c_str());
    GTCreateTrapMibs(nullptr);

    fx::Snmptt snmptt(dir.path() + "/snmptt");
    ASSERT_TRUE(snmptt.converted()) << kx::test::ReadFile(dir.path() + "/snmptt/convert.log");
    const auto traps = fx::Traps();
    ASSERT_EQ(traps.size(), std::size(kExpected));
    for (std::size_t i = 0; i < traps.size(); ++i) snmptt.Spool(static_cast<int>(i), traps[i]);
    ASSERT_TRUE(snmptt.Start());
    const auto theirs = snmptt.Texts(traps.size(), std::chrono::seconds(30));
    snmptt.Stop();
    ASSERT_EQ(theirs.size(), traps.size());
    for (std::size_t i = 0; i < traps.size(); ++i) {
        const Expected &e = kExpected[i];
        EXPECT_EQ(OurText(traps[i]), e.ours) << i;
        EXPECT_EQ(theirs[i], e.snmptt) << i;
        EXPECT_EQ(std::string(e.ours) == e.snmptt, *e.rule == '\0') << "a difference without its rule: " << i;
    }
}

}  // namespace
