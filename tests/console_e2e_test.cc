// The sample console behind a real lighttpd (pages, forms and bad requests),
// and kxpage, which renders templates from the command line.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>

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
    EXPECT_EQ(reply.body, kx::test::ReadFile(std::string(KX_SOURCE_DIR) + "/tests/golden/console_overview.html"));
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
    const std::string definition = kx::test::ReadFile(server_->www() + "/console.ini");
    EXPECT_NE(definition.find("\nRefreshSeconds|n|15\n"), std::string::npos) << definition;
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

// --- kxpage

struct Outcome {
    int status;
    std::string out;  // standard output and standard error together
};

Outcome RunPageTool(const std::string &arguments) {
    const std::string command = std::string(KX_PAGE_TOOL) + " " + arguments + " 2>&1";
    FILE *pipe = popen(command.c_str(), "r");
    Outcome outcome{-1, {}};
    char buffer[4096];
    for (size_t n; (n = fread(buffer, 1, sizeof buffer, pipe)) > 0;) outcome.out.append(buffer, n);
    const int status = pclose(pipe);
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return outcome;
}

TEST(KxPage, RendersWithADefinitionFileAndAQuery) {
    kx::test::TempDir dir;
    const std::string definition = dir.Write("app.ini", "|\nWho|n|nobody\nMode|n|\n");
    const std::string page = dir.Write("page.htm", "<p>{Who}/{{Mode}}</p>\n<!{IF Mode==a b}>\nyes\n<!{/IF}>\n");
    const Outcome outcome = RunPageTool("--app " + definition + " --query 'Who=ann&Mode=a+b' " + page);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, "<p>ann/a+b</p>\nyes\n");
}

TEST(KxPage, ReportsWhatIsMissing) {
    kx::test::TempDir dir;
    const std::string page = dir.Write("page.htm", "x\n");
    struct Case { std::string arguments; int status; std::string message; };
    const Case cases[] = {
        {"", 2, "usage: kxpage"},
        {"--app", 2, "usage: kxpage"},
        {dir.path() + "/none.htm", 1, "kxpage: cannot open template " + dir.path() + "/none.htm\n"},
        {"--app nothere " + page, 1, "kxpage: no application definition for nothere\n"},
        {"--app " + dir.path() + "/none.ini " + page, 1, "kxpage: no application definition for"},
    };
    for (const Case &c : cases) {
        const Outcome outcome = RunPageTool(c.arguments);
        EXPECT_EQ(outcome.status, c.status) << c.arguments;
        EXPECT_EQ(outcome.out.rfind(c.message, 0), 0u) << c.arguments << ": " << outcome.out;
    }
}

}  // namespace
