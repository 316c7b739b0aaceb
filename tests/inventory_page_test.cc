// The console's inventory page behind lighttpd, reading the simulated
// chassis over SNMP: servers with their state, blades under their chassis,
// the popup banner until it is acknowledged.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>

#include "support/kx_test.h"
#include "support/snmp_agent.h"
#include "support/web_server.h"

namespace {

TEST(InventoryPage, ServersBladesAndPopups) {
    kx::test::SnmpAgent agent;
    ASSERT_TRUE(agent.running());
    kx::test::ConsoleServer server(KX_CONSOLE_CGI, agent.port());
    ASSERT_TRUE(server.running());
    const std::string queue = server.www() + "/AlarmPopups";
    kx::test::TempDir scratch;
    std::filesystem::copy_file(scratch.Write("q", "1700000000.7\tdesk1\tFan 1 of <rack7> failed\n"), queue);
    chmod(queue.c_str(), 0666);  // the page runs as another user when the test is root
    const kx::test::HttpReply page = server.Get("/inventory.cgi");
    ASSERT_EQ(page.status, 200) << page.body;
    const std::string at = agent.address();
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
