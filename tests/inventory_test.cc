// Server inventory: blade properties from server lists, database values,
// the popup queue, and reads of a real SNMP agent (snmpsim) serving the
// sample console's chassis (blade lists from odd records: fuzz/blade_list),
// and the inventory page behind lighttpd.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <vector>

#include "companion/libForwarding.h"
#include "companion/libKXsnmp.h"
#include "core/text.h"
#include "kx_inventory.h"
#include "support/kx_test.h"
#include "support/snmp_agent.h"
#include "support/web_server.h"

namespace {

using kx::test::HeapText;
using kx::test::TempDir;

constexpr const char *kHeader =
    "[SERVER_LIST]\nServerName | NetAddress | Type | SystemName | RsbIpAddress | Community | TimeOut\n";

std::string Show(const KXBladeProperties *p) {
    if (p == nullptr) return "none";
    const auto text = [](const char *t) { return t != nullptr ? std::string(t) : std::string("-"); };
    return text(p->Type) + "|" + text(p->ServerName) + "|" + text(p->ChassisName) + "|" + text(p->SystemName) + "|" +
           std::to_string(p->BladeMark);
}

// tests/data/blade_properties.txt: rows, address, rows found, properties.
TEST(Inventory, BladePropertiesFromTheServerList) {
    TempDir dir;
    for (const kx::test::DataRow &c : kx::test::DataTable("blade_properties.txt")) {
        const std::string db = dir.Write("hwinv.dba", std::string(kHeader) + *c[0]);
        KXBladeProperties *properties = reinterpret_cast<KXBladeProperties *>(1);
        EXPECT_EQ(KXDetermineBladeProperties(db.c_str(), c[1]->c_str(), nullptr, &properties), std::stoi(*c[2])) << *c[0];
        EXPECT_EQ(Show(properties), *c[3]) << *c[0];
        free(properties);
    }
}

TEST(Inventory, BladePropertiesCodesAndHandles) {
    TempDir dir;
    const std::string db = dir.Write("a.dba", std::string(kHeader) + "rack7|10.0.0.9|BladeServer\n");
    const std::string noType = dir.Write("b.dba", "[SERVER_LIST]\nServerName|NetAddress\nx|10.0.0.9\n");
    const std::string noName = dir.Write("c.dba", "[SERVER_LIST]\nType|NetAddress\nBlade|10.0.0.9\n");
    const std::string noTable = dir.Write("d.dba", "[OTHER]\nType\n");
    DBAsciiAccessDatabase *handle = nullptr;
    EXPECT_EQ(KXDetermineBladeProperties(db.c_str(), nullptr, &handle, nullptr), KX_BLADE_NO_ADDRESS);
    EXPECT_EQ(KXDetermineBladeProperties(nullptr, "10.0.0.9", nullptr, nullptr), KX_BLADE_NO_HANDLE);
    EXPECT_EQ(KXDetermineBladeProperties("/nonexistent/x.dba", "10.0.0.9", nullptr, nullptr), KX_BLADE_NO_DATABASE);
    EXPECT_EQ(KXDetermineBladeProperties(noTable.c_str(), "10.0.0.9", nullptr, nullptr), KX_BLADE_NO_DATABASE);
    EXPECT_EQ(KXDetermineBladeProperties(noType.c_str(), "10.0.0.9", nullptr, nullptr), KX_BLADE_NO_TYPE);
    EXPECT_EQ(KXDetermineBladeProperties(noName.c_str(), "10.0.0.9", nullptr, nullptr), KX_BLADE_NO_SERVERNAME);
    EXPECT_EQ(KXDetermineBladeProperties(noType.c_str(), "10.1.1.1", nullptr, nullptr), 0);  // no rows: no question
    // Opened into the caller's variable, kept, and used without dbFile after.
    EXPECT_EQ(KXDetermineBladeProperties(db.c_str(), "10.0.0.9", &handle, nullptr), 1);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(KXDetermineBladeProperties(nullptr, "10.0.0.9", &handle, nullptr), 1);
    DBAsciiAccessCloseKeepStaticDllInfo(handle);
}

TEST(Inventory, AddressesAndDatabaseValues) {
    for (const auto &[text, result] : std::vector<std::pair<const char *, int>>{
             {"10.0.0.1", 0}, {"127.0.0.1:1161", 0}, {"srv01", 1}, {"10.0.0", 1}, {"a10.0.0.1", 1}, {nullptr, 1}})
        EXPECT_EQ(KXValidateNetAddress(text), result) << (text ? text : "null");
    TempDir dir;
    const std::string db = dir.Write("hwinv.dba", std::string(kHeader) + "srv01|10.0.0.1|Server||0.0.0.0|public|7\n");
    EXPECT_EQ(HeapText(KXGetDBValues(db.c_str(), "SERVER_LIST", "ServerName", "srv01", 0, "Community")).str(), "public");
    EXPECT_EQ(HeapText(KXGetDBValues(db.c_str(), "SERVER_LIST", "ServerName", "SRV01", 1, "TimeOut")).str(), "7");
    EXPECT_EQ(KXGetDBValues(db.c_str(), "SERVER_LIST", "ServerName", "SRV01", 0, "TimeOut"), nullptr);
    EXPECT_EQ(KXGetDBValues(db.c_str(), "SERVER_LIST", "ServerName", "srv01", 0, "Nope"), nullptr);
    EXPECT_EQ(KXGetDBValues(db.c_str(), "NOPE", "ServerName", "srv01", 0, "TimeOut"), nullptr);
    EXPECT_EQ(KXGetDBValues(db.c_str(), nullptr, "ServerName", "srv01", 0, "TimeOut"), nullptr);
    EXPECT_EQ(KXGetDBValues(nullptr, "SERVER_LIST", "ServerName", "srv01", 0, "TimeOut"), nullptr);  // default path
    KXSnmpTrapDllFreeResources(nullptr);
}

TEST(Inventory, PopupsAreWholeLinesFromManyProcesses) {
    TempDir dir;
    kx::test::CurrentDirectory here(dir.path());
    const std::string db = dir.Write("hwinv.dba", "[SETTINGS]\nName | Value\nPopup | on\nStation | desk%091\n");
    const char *station = "Value?Name=Station";
    EXPECT_EQ(KXPopupMessage(db.c_str(), "SETTINGS", "Value?Name=Popup", "off", nullptr, nullptr, nullptr, "no"), 0);
    EXPECT_EQ(KXPopupMessage(db.c_str(), "SETTINGS", "Value?Name=Gone", "on", nullptr, nullptr, nullptr, "no"), 0);
    KXPopupMessage(db.c_str(), "SETTINGS", "Value?Name=Popup", "on", db.c_str(), "SETTINGS", station, "Fan\n1 %");
    KXPopupMessage(nullptr, nullptr, nullptr, nullptr, db.c_str(), "SETTINGS", nullptr, "all");
    const std::string queue = kx::test::ReadFile(ALARM_POPUP_QUEUE);
    const std::string pid = std::to_string(getpid());
    EXPECT_NE(queue.find("." + pid + "\tdesk%091\tFan%0A1 %25\n"), std::string::npos) << queue;
    EXPECT_NE(queue.find("." + pid + "\t*\tall\n"), std::string::npos) << queue;
    EXPECT_EQ(AlarmFwdPopup(0, nullptr, nullptr, 0, 0), ALARM_FWD_BAD_ARGUMENT);
    unlink(ALARM_POPUP_QUEUE);
    constexpr int kProcesses = 4, kEach = 200;
    const std::string message(3000, 'm');  // longer than a pipe's atomic write
    EXPECT_EQ(kx::test::WaitEach(kx::test::ForkEach(kProcesses, [&](int) {
                  for (int i = 0; i < kEach; ++i) AlarmFwdPopup(0, "t", message.c_str(), 0, 0);
              })),
              0);
    const std::string all = kx::test::ReadFile(ALARM_POPUP_QUEUE);
    const std::vector<std::string_view> lines = kx::core::Split(all, "\n");
    ASSERT_EQ(lines.size(), kProcesses * kEach + 1u);
    for (std::size_t i = 0; i + 1 < lines.size(); ++i) ASSERT_TRUE(lines[i].ends_with("\tt\t" + message)) << i;
}

class InventoryAgent : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        agent_ = new kx::test::SnmpAgent();
        KXSetMibPath(KX_SOURCE_DIR "/examples/console/snmp/mibs");
    }
    static void TearDownTestSuite() {
        delete agent_;
        KXSetMibPath("");
    }
    static kx::test::SnmpAgent *agent_;
};
kx::test::SnmpAgent *InventoryAgent::agent_ = nullptr;

std::string Blades(const char *server, const char *community) {
    KXBladeEntry *list = nullptr;
    const int count = KXDetermineBlades(server, nullptr, community, &list);
    std::string shown = std::to_string(count) + ":";
    for (int i = 0; i < count; ++i)
        shown += std::string(list[i].Address) + "," + std::to_string(list[i].Number) + "," + list[i].Type + ";";
    KXBladesStrFreeResources(count, &list);
    return list == nullptr ? shown : "not released";
}

TEST_F(InventoryAgent, BladesOfTheSimulatedChassis) {
    ASSERT_TRUE(agent_->running());
    const std::string at = agent_->address();
    EXPECT_EQ(Blades(at.c_str(), nullptr),
              "5:10.0.0.5,1,Blade;10.0.0.6,2,Blade;0.0.0.0,3,Blade;10.0.1.1,1,SwitchBlade;10.0.1.2,2,SwitchBlade;");
    EXPECT_EQ(Blades(at.c_str(), "noswitch"), "2:10.0.2.4,4,Blade;10.0.2.7,7,Blade;");
    // Wrong types, blanks and an "errorS..." text are taken as the agent gave them.
    EXPECT_EQ(Blades(at.c_str(), "oddity"), "3:errorStatus2,1,Blade;10.0.3.2,3,Blade;17,1,Blade;");
    EXPECT_EQ(Blades(nullptr, nullptr), "-1:");
    KXBladesStrFreeResources(3, nullptr);
    EXPECT_EQ(KXBladeTypeNameCount, 3);
}

TEST_F(InventoryAgent, MibValuesByNameIndexAndTimeOut) {
    TempDir dir;
    const std::string at = agent_->address();
    const std::string db = dir.Write("hwinv.dba", std::string(kHeader) + "rack7|" + at + "|BladeServer||||\n" +
                                                      "odd|" + at + "||||oddity|\n");
    KXSnmpVar *records = nullptr;
    // By name: the row's address, "norbel" for its empty community; the
    // chassis state (1) walked under the index object picks blade 1.
    EXPECT_EQ(KXGetMibValues("rack7", "Q47.MIB", "q47SvrNicInfoEntry", "q47SvrNicIpAddress", nullptr, "q47Blade",
                             "q47ChassisStatus", nullptr, 0, nullptr, db.c_str(), &records), 3);
    ASSERT_NE(records, nullptr);
    EXPECT_STREQ(records[2].Oid, "1.3.6.1.4.1.99999.5.1.1.3.1.3");
    KXSnmpFileFreeResources(records);
    // An index value beginning with "errorS" adds no suffix.
    EXPECT_EQ(KXGetMibValues("odd", "Q47.MIB", "q47Blade", "q47ChassisName", nullptr, "q47SvrNicInfoEntry",
                             "q47SvrNicIpAddress", "walk", 0, nullptr, db.c_str(), &records), 1);
    EXPECT_STREQ(records[0].Value, "odd");
    KXSnmpFileFreeResources(records);
    EXPECT_EQ(KXGetMibValues("rack7", "Q47.MIB", "q47Blade", "q47Nothing", nullptr, nullptr, nullptr, nullptr, 0,
                             nullptr, db.c_str(), &records), -1);
    EXPECT_EQ(KXGetMibValues(nullptr, "Q47.MIB", "q47Blade", "q47ChassisName", nullptr, nullptr, nullptr, nullptr, 0,
                             nullptr, db.c_str(), &records), -1);
    // Nothing listens: the time-out code within the time-out and a margin,
    // also when the index walk is the read that times out.
    const std::string silent = "127.0.0.1:" + std::to_string(kx::test::FreePort(SOCK_DGRAM));
    for (const char *index : {static_cast<const char *>(nullptr), "q47SvrNicInfoEntry"}) {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(KXGetMibValues(silent.c_str(), "Q47.MIB", "q47Blade", "q47ChassisName", nullptr, index,
                                 "q47SvrNicIpAddress", "get", 1, "norbel", db.c_str(), &records),
                  KX_SNMPFILE_TIMEOUT);
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(1500));
        EXPECT_EQ(records, nullptr);
    }
}

// tests/data/snmp_reads.txt: OID, operation, version, result, first record.
TEST_F(InventoryAgent, SnmpReadsOfTheAgent) {
    const std::string at = agent_->address();
    for (const kx::test::DataRow &c : kx::test::DataTable("snmp_reads.txt")) {
        KXSnmpVar *records = nullptr;
        EXPECT_EQ(KXSnmpFileGetValue(&records, at.c_str(), c[0]->c_str(), c[1]->c_str(), "norbel", 0, 0, std::stoi(*c[2]),
                                     2000, 0, KX_SNMPFILE_WALK_SUBTREE),
                  std::stoi(*c[3]))
            << *c[0] << " " << *c[1];
        const std::string first = records ? std::string(records[0].Type) + "=" + records[0].Value : "";
        EXPECT_EQ(first, *c[4]) << *c[0] << " " << *c[1];
        KXSnmpFileFreeResources(records);
    }
}


// The console's inventory page behind lighttpd, reading the simulated
// chassis over SNMP: servers with their state, blades under their chassis,
// the popup banner until it is acknowledged.
TEST_F(InventoryAgent, InventoryPageServersBladesAndPopups) {
    ASSERT_TRUE(agent_->running());
    kx::test::ConsoleServer server(KX_CONSOLE_CGI, agent_->port());
    ASSERT_TRUE(server.running());
    const std::string queue = server.www() + "/AlarmPopups";
    kx::test::TempDir scratch;
    std::filesystem::copy_file(scratch.Write("q", "1700000000.7\tdesk1\tFan 1 of <rack7> failed\n"), queue);
    chmod(queue.c_str(), 0666);  // the page runs as another user when the test is root
    const kx::test::HttpReply page = server.Get("/inventory.cgi");
    ASSERT_EQ(page.status, 200) << page.body;
    const std::string at = agent_->address();
    for (const std::string &expected : std::initializer_list<std::string>{
             "<li><b>desk1</b> Fan 1 of &lt;rack7&gt; failed</li>",
             "<b>rack7</b> (BladeServer, " + at + ") <span class=\"state ok\">ok</span><ul class=\"blades\">\n"
             "<li>Blade 1: 10.0.0.5 <i>rack7\\blade1</i></li>\n<li>Blade 2: 10.0.0.6 <i>rack7\\blade2</i></li>\n"
             "<li>Blade 3: 0.0.0.0 <i>not in the server list</i></li>\n"
             "<li>SwitchBlade 1: 10.0.1.1 <i>rack7\\switch1</i></li>\n"
             "<li>SwitchBlade 2: 10.0.1.2 <i>not in the server list</i></li>\n</ul>",
             "<b>rack9</b> (BladeServer, " + at + ") <span class=\"state degraded\">degraded</span><ul class=\"blades\">\n"
             "<li>Blade 4: 10.0.2.4 <i>rack9\\web4</i></li>\n<li>Blade 7: 10.0.2.7 <i>not in the server list</i></li>\n</ul>",
             std::string("<b>lost01</b> (Server, 127.0.0.1:9) <span class=\"state silent\">no answer</span>"),
         })
        EXPECT_NE(page.body.find(expected), std::string::npos) << expected << "\n---\n" << page.body;
    EXPECT_EQ(page.body.find("blade1</b>"), std::string::npos);  // blades only under their chassis
    const kx::test::HttpReply acknowledged = server.Post("/inventory.cgi", "Acknowledge=1");
    EXPECT_EQ(acknowledged.status, 200);
    EXPECT_EQ(acknowledged.body.find("popups"), std::string::npos) << acknowledged.body;
}

}  // namespace
