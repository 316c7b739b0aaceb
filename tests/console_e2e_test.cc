// The sample console behind a real lighttpd: pages, forms and bad requests.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

#include "support/web_server.h"

using kx::test::ConsoleServer;
using kx::test::HttpReply;

namespace {

class Console : public ::testing::Test {
protected:
    static void SetUpTestSuite() { server_ = new ConsoleServer(KX_CONSOLE_CGI); }
    static void TearDownTestSuite() {
        delete server_;
        server_ = nullptr;
    }
    void SetUp() override { ASSERT_TRUE(server_->running()) << "lighttpd did not start"; }

    static bool Contains(const HttpReply &reply, const std::string &text) {
        return reply.body.find(text) != std::string::npos;
    }

    static ConsoleServer *server_;
};

ConsoleServer *Console::server_ = nullptr;

TEST_F(Console, RootRedirectsToTheOverview) {
    const HttpReply reply = server_->Get("/");
    EXPECT_EQ(reply.status, 301);
    EXPECT_NE(reply.headers.find("Location: /console.cgi?Application=console"), std::string::npos);
}

// The whole overview page: texts, the server table with its nested group
// cycle, converted values, the selection summary and the settings form.
TEST_F(Console, OverviewPageIsTheGoldenPage) {
    const HttpReply reply = server_->Get("/console.cgi?Application=console");
    ASSERT_EQ(reply.status, 200) << reply.body;
    EXPECT_NE(reply.headers.find("Content-Type: text/html"), std::string::npos);
    std::ifstream golden(std::string(KX_SOURCE_DIR) + "/tests/golden/console_overview.html", std::ios::binary);
    std::stringstream expected;
    expected << golden.rdbuf();
    EXPECT_EQ(reply.body, expected.str());
}

TEST_F(Console, RequestValuesReachThePage) {
    const HttpReply shown = server_->Get("/console.cgi?Application=console&ShowGroups=0&Operator=ann+b%26c");
    ASSERT_EQ(shown.status, 200);
    EXPECT_TRUE(Contains(shown, "Groups are hidden."));
    EXPECT_TRUE(Contains(shown, "Signed in as ann b&c"));
}

TEST_F(Console, PostedSettingPersistsInTheDefinition) {
    const HttpReply saved = server_->Post("/console.cgi", "Application=console&SetIniValue=RefreshSeconds&RefreshSeconds=15");
    ASSERT_EQ(saved.status, 200) << saved.body;
    EXPECT_TRUE(Contains(saved, "content=\"15\""));
    const HttpReply next = server_->Get("/console.cgi?Application=console");
    EXPECT_TRUE(Contains(next, "content=\"15\"")) << "the next page reads the saved value";
    std::ifstream definition(server_->www() + "/console.ini");
    std::stringstream text;
    text << definition.rdbuf();
    EXPECT_NE(text.str().find("\nRefreshSeconds|n|15\n"), std::string::npos) << text.str();
    server_->Post("/console.cgi", "Application=console&SetIniValue=RefreshSeconds&RefreshSeconds=60");
}

TEST_F(Console, BadRequestsGetAPageAndTheServerKeepsServing) {
    struct Case { std::string target; int status; const char *text; };
    const Case cases[] = {
        {"/console.cgi", 400, "names no application"},
        {"/console.cgi?x=1", 400, "names no application"},
        {"/console.cgi?Application=..%2F..%2Fetc%2Fpasswd", 404, "not installed"},
        {"/console.cgi?Application=%2Fetc%2Fconsole", 200, "Server overview"},
        {"/console.cgi?Application=%7Cx", 400, "names no application"},
        {"/console.cgi?Application=%7E%7E", 400, "names no application"},
        {"/console.cgi?Application=nothere", 404, "not installed"},
        {"/console.cgi?Application=console&Operator=%zz%4%u12&x=%", 200, "Signed in as %zz%4%u12"},
        {"/console.cgi?Application=console&Page=..%2F..%2Fconsole.ini", 200,
         "pages/console.ini konnte nicht geoeffnet werden"},
    };
    for (const Case &c : cases) {
        const HttpReply reply = server_->Get(c.target);
        EXPECT_EQ(reply.status, c.status) << c.target;
        EXPECT_TRUE(Contains(reply, c.text)) << c.target << "\n" << reply.body.substr(0, 400);
    }
    EXPECT_EQ(server_->Get("/console.cgi?Application=console").status, 200);
}

TEST_F(Console, HugeRequestsEndInAPage) {
    std::string many = "Application=console";
    for (int i = 0; i < 100000; ++i) many += "&p" + std::to_string(i) + "=" + std::to_string(i);
    const HttpReply parameters = server_->Post("/console.cgi", many);
    EXPECT_EQ(parameters.status, 200);
    EXPECT_TRUE(Contains(parameters, "</html>"));
    const HttpReply big = server_->Post("/console.cgi", "Application=console&Operator=" + std::string(10 << 20, 'x'));
    EXPECT_EQ(big.status, 200);
    EXPECT_TRUE(Contains(big, "</html>"));
    EXPECT_EQ(server_->Get("/console.cgi?Application=console").status, 200) << "still serving";
}

}  // namespace
