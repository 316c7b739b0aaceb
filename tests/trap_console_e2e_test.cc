// The trap console's road: snmptrapd and kxtrapreceive fill the store of a
// console site, lighttpd serves its trap page, headless Chromium shows and
// acknowledges it.
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "companion/libSnmpFile.h"
#include "support/kx_test.h"
#include "support/trap_console.h"
#include "support/web_server.h"

namespace {

using kx::test::ConsoleServer;
using kx::test::TrapReceiver;
using namespace std::chrono_literals;

const std::string kTrapPage = "/console.cgi?Application=console&Page=traps.htm";
constexpr size_t kSamples = 4;  // the sample traps of every console site

std::string Site(const ConsoleServer &server) { return server.www() + "/.."; }

// The identifier after the last "." of a trap file name.
unsigned long long Identifier(const std::string &name) { return std::stoull(name.substr(name.rfind('.') + 1)); }

// The text of the page's <pre id="out"> or <body>: what the browser shows.
std::string Shown(const std::string &dom) {
    static const std::regex tags("<[^>]*>");
    return std::regex_replace(dom, tags, " ");
}

// kxtrapreceive on one trap as snmptrapd hands it on, in the CGI folder.
std::string Receive(const ConsoleServer &server, const std::string &trap) {
    const std::string input = Site(server) + "/run/input" + std::to_string(getpid());
    std::ofstream(input) << trap;
    const std::string command = "cd " + server.www() + " && " + Site(server) + "/run/kxtrapreceive < " + input;
    FILE *pipe = popen(command.c_str(), "r");
    char path[1024] = "";
    if (fgets(path, sizeof path, pipe) == nullptr) path[0] = '\0';
    pclose(pipe);
    const std::string name = path;
    return name.substr(name.rfind('/') + 1, name.find_last_not_of('\n') - name.rfind('/'));
}

TEST(TrapReceive, NamesAsTheConsoleReadsThem) {
    ConsoleServer server(KX_CONSOLE_CGI);
    const std::string head = "host\nUDP: [10.0.0.2]:161->[127.0.0.1]:10162\n.1.3.6.1.2.1.1.3.0 5\n";
    for (const kx::test::DataRow &row : kx::test::DataTable("received_traps.txt")) {
        const std::string name = Receive(server, head + *row[0]);
        EXPECT_EQ(name.substr(0, name.rfind('.') + 1), *row[1]) << *row[0];
    }
    // Hex bytes come back byte for byte; the header records carry uptime, enterprise and agent.
    const std::string name = Receive(server, head + ".1.3.6.1.6.3.1.1.4.1.0 .1.3.6.1.4.1.99999.0.3\n"
                                                    ".1.3.6.1.4.1.99999.2.1.0 \"00 19 99 0A \n0B 0C \"\n");
    KXSnmpVar *records = nullptr;
    ASSERT_EQ(KXSnmpFileRead(-1, (Site(server) + "/traps/" + name).c_str(), &records, 0), 3);
    EXPECT_STREQ(records[0].Value, "5");
    EXPECT_STREQ(records[1].Oid, "1.3.6.1.4.1.99999");
    EXPECT_STREQ(records[1].Value, "10.0.0.2");
    EXPECT_EQ(std::string(records[2].Value, KXSnmpFileValueLength(records, 2)), std::string("\0\x19\x99\n\v\f", 6));
    KXSnmpFileFreeResources(records);
}

// Traps arriving in the same second, in processes running at once, get
// distinct identifiers: the arrival second, then the seconds after it.
TEST(TrapReceive, SameSecondDistinctIdentifiers) {
    ConsoleServer server(KX_CONSOLE_CGI);
    constexpr int kProcesses = 12;
    const std::string trap = "host\nUDP: [10.0.0.2]:161->[127.0.0.1]:10162\n.1.3.6.1.6.3.1.1.4.1.0 .1.3.6.1.4.1.99999.0.3\n";
    const size_t before = kx::test::StoredTraps(Site(server)).size();
    const unsigned long long newest = Identifier(kx::test::StoredTraps(Site(server)).back());
    EXPECT_EQ(kx::test::WaitEach(kx::test::ForkEach(kProcesses, [&](int) {
                  if (Receive(server, trap).empty()) _exit(1);
              })),
              0);
    const auto names = kx::test::StoredTraps(Site(server));
    std::set<unsigned long long> ids;
    for (const std::string &name : names) ids.insert(Identifier(name));
    EXPECT_EQ(names.size(), before + kProcesses);
    EXPECT_EQ(ids.size(), names.size());
    EXPECT_GT(*ids.rbegin(), newest);
    EXPECT_LE(*ids.rbegin(), static_cast<unsigned long long>(std::time(nullptr)) + kProcesses + kSamples);
    // The last identifier is written over the old text in place; a longer
    // old text does not leave its tail behind.
    const std::string counter = Site(server) + "/traps/.trapid";
    EXPECT_EQ(kx::test::ReadFile(counter), std::to_string(*ids.rbegin()) + "\n");
    std::ofstream(counter) << "9999999998\n and a stale tail\n";
    ASSERT_FALSE(Receive(server, trap).empty());
    EXPECT_EQ(kx::test::ReadFile(counter), "9999999999\n");
}

// snmptrap to the receiver, the trap page in Chromium, one line acknowledged
// through its button.
TEST(TrapConsole, SentTrapsShownFoldedAndAcknowledged) {
    ConsoleServer server(KX_CONSOLE_CGI);
    TrapReceiver receiver(Site(server));
    ASSERT_TRUE(server.running() && receiver.running());
    const std::string to = "127.0.0.1:" + std::to_string(receiver.port());
    const std::string sends[] = {
        "snmptrap -v1 -c public " + to + " 1.3.6.1.4.1.99999 10.0.0.2 6 3 '' 1.3.6.1.4.1.99999.2.1.0 s FAN7 1.3.6.1.4.1.99999.2.2.0 i 2",
        "snmptrap -v2c -c public " + to + " '' 1.3.6.1.4.1.77777.0.9 1.3.6.1.4.1.77777.1 s 'disk 4 lost'",
    };
    for (const std::string &send : sends) ASSERT_EQ(std::system(send.c_str()), 0) << send;
    ASSERT_TRUE(receiver.WaitForTraps(kSamples + 2, 20s));
    EXPECT_EQ(receiver.Accepted(), 2);

    const std::string page = "http://127.0.0.1:" + std::to_string(server.port()) + kTrapPage;
    std::string shown = Shown(kx::test::BrowserDom(page));
    // Newest first: the unknown trap of 127.0.0.1 (srv01), then the three fan traps of storage-01 folded.
    const size_t unknown = shown.find("UNKNOWN TRAP");
    const size_t fan = shown.find("Fan FAN7 is degraded(2)");
    ASSERT_NE(unknown, std::string::npos) << shown;
    ASSERT_NE(fan, std::string::npos) << shown;
    EXPECT_LT(unknown, fan);
    EXPECT_NE(shown.find("srv01"), std::string::npos);
    EXPECT_NE(shown.find("disk 4 lost"), std::string::npos);
    EXPECT_NE(shown.find("Traps stored: 6, lines: 4"), std::string::npos) << shown;
    EXPECT_NE(Shown(kx::test::BrowserDom(page + "&Unfold=1")).find("lines: 6"), std::string::npos);

    // A page of the site clicks the fan line's button inside a frame and shows the page that follows.
    std::filesystem::copy_file(KX_SOURCE_DIR "/tests/data/trap_ack.html", server.www() + "/ack.html");
    shown = Shown(kx::test::BrowserDom("http://127.0.0.1:" + std::to_string(server.port()) + "/ack.html"));
    EXPECT_NE(shown.find("Fan FAN7 is degraded(2)"), std::string::npos) << shown;
    EXPECT_NE(shown.find("acknowledged"), std::string::npos) << shown;
    int acknowledged = 0;
    for (const std::string &name : receiver.Traps()) {
        const bool fanTrap = name.starts_with("T99999l5nRACK7_6_3_10_0_0_2_storage-01_");
        EXPECT_EQ(name.substr(name.rfind('_') + 1, 9), fanTrap ? "000000001" : "000000000") << name;
        acknowledged += fanTrap;
    }
    EXPECT_EQ(acknowledged, 3);
}

// Traps sent as fast as one sender can while pages are asked for: every trap
// snmptrapd accepted is stored once and whole, and the pages keep answering.
TEST(TrapConsole, LoadStoresEachAcceptedTrapOnce) {
    ConsoleServer server(KX_CONSOLE_CGI);
    TrapReceiver receiver(Site(server));
    ASSERT_TRUE(server.running() && receiver.running());
    constexpr int kTraps = 200;
    std::atomic<bool> sending = true;
    std::atomic<int> pages = 0, failed = 0;
    std::thread reader([&] {
        while (sending) (server.Get(kTrapPage).status == 200 ? pages : failed)++;
    });
    for (int i = 0; i < kTraps; ++i)
        ASSERT_TRUE(kx::test::SendTrap(receiver.port(), "1.3.6.1.4.1.99999.0.3", "1.3.6.1.4.1.99999.2.1.0",
                                       "FAN" + std::to_string(i)));
    // Accepted traps are handed on one after the other: wait until the store stops growing.
    size_t stored = 0;
    for (int quiet = 0; quiet < 20; std::this_thread::sleep_for(100ms)) {
        const size_t now = receiver.Traps().size();
        quiet = now == stored ? quiet + 1 : 0;
        stored = now;
    }
    sending = false;
    reader.join();
    EXPECT_GT(pages, 0);
    EXPECT_EQ(failed, 0);
    const auto names = receiver.Traps();
    EXPECT_EQ(names.size(), kSamples + static_cast<size_t>(receiver.Accepted()));
    EXPECT_GT(receiver.Accepted(), 0);
    std::set<std::string> values;
    for (const std::string &name : names) {
        KXSnmpVar *records = nullptr;
        const int count = KXSnmpFileRead(-1, (Site(server) + "/traps/" + name).c_str(), &records, 0);
        EXPECT_GE(count, 2) << name;  // a torn file does not read
        if (count == 3 && std::string(records[2].Value).starts_with("FAN")) values.insert(records[2].Value);
        KXSnmpFileFreeResources(records);
    }
    EXPECT_EQ(values.size(), static_cast<size_t>(receiver.Accepted()));  // none stored twice
}

}  // namespace
