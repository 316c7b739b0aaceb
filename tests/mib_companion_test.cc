// MIB companion: net-snmp look-ups over a MIB directory without IETF MIBs,
// TRAP-TYPE descriptions with their annotations, broken MIB texts.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "companion/libKXsnmp.h"
#include "companion/libKXsnmp_names.h"
#include "companion/libKXsnmp_traps.h"
#include "support/kx_test.h"

// net-snmp loses its table of textual conventions when it drops the MIBs of
// one directory for another; that is its allocation, not ours.
extern "C" const char *__lsan_default_suppressions() { return "leak:netsnmp_init_mib_internals\n"; }

namespace {

using kx::test::HeapText;

// A MIB as a vendor writes one: SMIv1 imports, a table, an enumeration,
// traps with annotations, and comments that hide words.
constexpr const char *kQ47Mib = R"mib(Q47-MIB DEFINITIONS ::= BEGIN
-- q47Ghost TRAP-TYPE ENTERPRISE q47 ::= 9   (a comment defines nothing)
IMPORTS enterprises, Counter, IpAddress FROM RFC1155-SMI
        DisplayString FROM RFC1213-MIB
        OBJECT-TYPE FROM RFC-1212
        TRAP-TYPE FROM RFC-1215;
q47       OBJECT IDENTIFIER ::= { enterprises 99999 }
q47Server OBJECT IDENTIFIER ::= { q47 2 }
q47Hosts  OBJECT IDENTIFIER ::= { q47Server 10 }
q47FanStatus OBJECT-TYPE
    SYNTAX INTEGER { unknown(1), ok(2), failed(3), removed(5) }
    ACCESS read-only  STATUS mandatory
    DESCRIPTION "Fan state -- not a comment inside a text"
    ::= { q47 1 }
q47FanName OBJECT-TYPE
    SYNTAX DisplayString  ACCESS read-only  STATUS mandatory  DESCRIPTION "Fan"
    ::= { q47 3 }
q47SvrNicInfoTable OBJECT-TYPE
    SYNTAX SEQUENCE OF Q47SvrNicInfoEntry  ACCESS not-accessible  STATUS mandatory
    DESCRIPTION "NICs" ::= { q47 4 }
q47SvrNicInfoEntry OBJECT-TYPE
    SYNTAX Q47SvrNicInfoEntry  ACCESS not-accessible  STATUS mandatory
    DESCRIPTION "One NIC" INDEX { q47SvrNicIndex } ::= { q47SvrNicInfoTable 1 }
Q47SvrNicInfoEntry ::= SEQUENCE { q47SvrNicIndex INTEGER, q47SvrNicIpAddress IpAddress,
                                  q47SvrNicInErrors Counter }
q47SvrNicIndex OBJECT-TYPE SYNTAX INTEGER ACCESS read-only STATUS mandatory
    DESCRIPTION "i" ::= { q47SvrNicInfoEntry 1 }
q47SvrNicIpAddress OBJECT-TYPE SYNTAX IpAddress ACCESS read-only STATUS mandatory
    DESCRIPTION "a" ::= { q47SvrNicInfoEntry 2 }
q47SvrNicInErrors OBJECT-TYPE SYNTAX Counter ACCESS read-only STATUS mandatory
    DESCRIPTION "e" ::= { q47SvrNicInfoEntry 3 }
q47FanFailed TRAP-TYPE
    ENTERPRISE q47
    VARIABLES { q47FanName, q47FanStatus }
    DESCRIPTION "A fan failed."
    --#TYPE "Fan failure"
    --#SUMMARY "Fan %s failed (%d)"
    --#ARGUMENTS {0,1}
    --#SEVERITY CRITICAL
    ::= 3
q47HostUp TRAP-TYPE
    ENTERPRISE q47Hosts
    VARIABLES { q47FanName }
    DESCRIPTION "Host is up." -- note -- --#TYPE "Host state"
    --#SUMMARY "Host %s"
    --#SUMMARY "is up"
    --#SEVERITY informational --
    ::= 12
q47Reset TRAP-TYPE
    ENTERPRISE q47
    ::= 0
END
)mib";

class MibDirectory : public ::testing::Test {
protected:
    void SetUp() override {
        dir_.Write("Q47.MIB", kQ47Mib);
        dir_.Write("notes.txt", "no MIB here\n");
        KXSetMibPath(dir_.path().c_str());
    }
    kx::test::TempDir dir_;
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
    kx::test::TempDir other;
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

TEST_F(MibDirectory, TrapDescriptionsFromTheFile) {
    const KXTrapDescription *fan = GetTrapPointer("Q47.MIB", ".1.3.6.1.4.1.99999", "3", "6");
    ASSERT_NE(fan, nullptr);
    EXPECT_EQ(Text(fan->Name, fan->NameLength), "q47FanFailed");
    ASSERT_EQ(fan->VariableCount, 2);
    EXPECT_STREQ(fan->Variables[0], "q47FanName");
    EXPECT_STREQ(fan->Variables[1], "q47FanStatus");
    EXPECT_EQ(Text(fan->Description, fan->DescriptionLength), "A fan failed.");
    EXPECT_EQ(Text(fan->Type, fan->TypeLength), "Fan failure");
    EXPECT_EQ(Text(fan->Summary, fan->SummaryLength), "Fan %s failed (%d)");
    EXPECT_EQ(Text(fan->Arguments, fan->ArgumentCount), "01");
    EXPECT_EQ(Text(fan->Severity, fan->SeverityLength), "CRITICAL");
    EXPECT_EQ(fan->Reserved3 | fan->Reserved4 | fan->Reserved17[0] | fan->Reserved17[6], 0);
    EXPECT_EQ(GetTrapPointer("Q47.MIB", "1.3.6.1.4.1.99999", "3", "6"), fan) << "kept, not parsed again";

    const KXTrapDescription *up = GetTrapPointer("Q47.MIB", "1.3.6.1.4.1.99999.2.10", "12", "6");
    ASSERT_NE(up, nullptr);
    EXPECT_EQ(Text(up->Type, up->TypeLength), "Host state");
    EXPECT_EQ(Text(up->Summary, up->SummaryLength), "Host %s is up");
    EXPECT_EQ(Text(up->Severity, up->SeverityLength), "informational");
    EXPECT_EQ(Text(up->Arguments, up->ArgumentCount), "<null>");

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

TEST(TrapMibText, BrokenAndOddTexts) {
    struct Case {
        std::string text;
        int traps;
        const char *oid, *specific, *name;  // a look-up and the trap it finds (NULL: none)
    };
    const std::string tail = " ::= 5\n";
    const std::vector<Case> cases = {
        {"t TRAP-TYPE ENTERPRISE enterprises DESCRIPTION \"cut", 0, "1.3.6.1.4.1", "5", nullptr},
        {"t TRAP-TYPE ENTERPRISE enterprises VARIABLES { a, b ::= 4\n"
         "u TRAP-TYPE ENTERPRISE enterprises" + tail, 1, "1.3.6.1.4.1", "5", "u"},
        {"t TRAP-TYPE ENTERPRISE nowhere" + tail, 1, "1.3.6.1.4.1", "5", nullptr},
        {"a OBJECT IDENTIFIER ::= { b 1 }\nb OBJECT IDENTIFIER ::= { a 1 }\n"
         "t TRAP-TYPE ENTERPRISE a" + tail, 1, "1.3.6.1.4.1", "5", nullptr},
        {"t TRAP-TYPE ENTERPRISE { iso(1) org(3) dod(6) internet(1) private(4) enterprises(1) 7 }" + tail, 1,
         "1.3.6.1.4.1.7", "5", "t"},
        {"TRAP-TYPE MACRO ::= BEGIN TYPE NOTATION ::= \"ENTERPRISE\" value ::= 5 END\n"
         "t TRAP-TYPE ENTERPRISE mib-2" + tail, 1, "1.3.6.1.2.1", "5", "t"},
        {"t TRAP-TYPE ENTERPRISE snmpV2 --#ARGUMENTS { 0, 1, 12 }\n" + tail, 1, "1.3.6.1.6", "5", "t"},
        {"t TRAP-TYPE ENTERPRISE enterprises\n" + tail + "t TRAP-TYPE ENTERPRISE private" + tail, 2,
         "1.3.6.1.4", "5", "t"},
        {std::string("t\0u TRAP-TYPE ENTERPRISE enterprises", 36) + tail, 1, "1.3.6.1.4.1", "5", "t"},  // fuzz find
        {"t TRAP-TYPE ENTERPRISE enterprises ::= }", 0, "1.3.6.1.4.1", "5", nullptr},
        {"\xff\xfe{{{{ \"\" -- --# ::= ::=", 0, "1.3.6.1.4.1", "5", nullptr},
        {"", 0, "1.3.6.1.4.1", "5", nullptr},
    };
    for (const Case &c : cases) {
        EXPECT_EQ(KXSetTrapMibText("mem.mib", c.text.data(), c.text.size()), c.traps) << c.text;
        const KXTrapDescription *d = GetTrapPointer("mem.mib", c.oid, c.specific, "6");
        EXPECT_EQ(d != nullptr ? Text(d->Name, d->NameLength) : "<null>", c.name ? c.name : "<null>") << c.text;
    }
    const KXTrapDescription *d = GetTrapPointer("mem.mib", "1.3.6.1.4.1", "5", "6");
    EXPECT_EQ(d, nullptr);
    KXSetTrapMibText("mem.mib", cases[6].text.data(), cases[6].text.size());
    d = GetTrapPointer("mem.mib", "1.3.6.1.6", "5", "6");
    ASSERT_NE(d, nullptr);
    EXPECT_EQ(Text(d->Arguments, d->ArgumentCount), "01<");
    std::string comments;
    for (int i = 0; i < 2000; ++i) comments += "-- x TRAP-TYPE ENTERPRISE enterprises ::= 1\n";
    EXPECT_EQ(KXSetTrapMibText("mem.mib", comments.data(), comments.size()), 0);
    EXPECT_EQ(KXSetTrapMibText(nullptr, "", 0), -1);
    EXPECT_EQ(KXSetTrapMibText("mem.mib", nullptr, 1), -1);
}

}  // namespace
