// The sample console behind a real lighttpd: pages, forms and bad requests.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <thread>

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

// Two operators at once: each gets a user id and keeps the page's settings
// in a profile of their own, read again by every later request.
TEST_F(Console, OperatorsKeepTheirSettingsInTheirProfiles) {
    const std::regex idField("name=\"UserID\" value=\"([0-9]+)\"");
    std::string ids[2];
    const char *operators[] = {"ann", "bob"}, *columns[] = {"Server+State", "Server+Memory+Free"};
    std::thread first[2];
    for (int u = 0; u < 2; ++u)
        first[u] = std::thread([&, u] {
            const HttpReply page = server_->Get(std::string("/console.cgi?Application=console&Operator=") + operators[u]);
            std::smatch id;
            if (std::regex_search(page.body, id, idField)) ids[u] = id[1];
        });
    for (std::thread &t : first) t.join();
    ASSERT_FALSE(ids[0].empty());
    ASSERT_FALSE(ids[1].empty());
    EXPECT_NE(ids[0], ids[1]);
    std::thread save[2];
    for (int u = 0; u < 2; ++u)
        save[u] = std::thread([&, u] {
            server_->Post("/console.cgi", "Application=console&SaveSettings=1&UserID=" + ids[u] + "&Operator=" +
                                              operators[u] + "&RefreshSeconds=" + std::to_string(11 * (u + 1)) +
                                              "&Columns=" + columns[u]);
        });
    for (std::thread &t : save) t.join();
    for (int u = 0; u < 2; ++u) {
        const HttpReply next = server_->Get("/console.cgi?Application=console&UserID=" + ids[u] + "&Operator=" + operators[u]);
        EXPECT_TRUE(Contains(next, "content=\"" + std::to_string(11 * (u + 1)) + "\"")) << operators[u];
        EXPECT_EQ(Contains(next, ".servers td:nth-child(5)"), u == 0) << "Memory shown to bob only";
        EXPECT_TRUE(Contains(next, "nth-child(2)")) << "Id hidden for both";
    }
    EXPECT_TRUE(std::filesystem::exists(server_->www() + "/../console/uid/" + ids[0] + "/ann"));
}

// Operator and user id names that would leave the user directory are
// refused: nothing is written anywhere else in the site.
TEST_F(Console, ProfilePathsCannotLeaveTheUserDirectory) {
    namespace fs = std::filesystem;
    const fs::path site = fs::path(server_->www()).parent_path();
    const auto files = [&] {
        std::set<std::string> found;
        for (const auto &entry : fs::recursive_directory_iterator(site))
            if (entry.is_regular_file() && entry.path().string().find("/uid/") == std::string::npos)
                found.insert(entry.path().string());
        return found;
    };
    server_->Get("/console.cgi?Application=console");
    const std::set<std::string> before = files();
    const std::string definition = server_->www() + "/console.ini";
    const auto modified = fs::last_write_time(definition);
    for (const char *attack : {"Operator=..%2F..%2F..%2Fwww%2Fconsole.ini", "Operator=%252e%252e", "Operator=%2Ftmp%2Fkx-profile-escape",
                               "UserID=..%2F..&Operator=x", "UserID=1%2F..%2F..%2F..&Operator=console.ini",
                               "Operator=..%5C..%5Cx", "Operator=a%00%2F..%2F..%2Fb"}) {
        const HttpReply reply = server_->Post("/console.cgi", std::string("Application=console&SaveSettings=1&RefreshSeconds=1&") + attack);
        EXPECT_EQ(reply.status, 200) << attack;
    }
    EXPECT_EQ(files(), before);
    EXPECT_EQ(fs::last_write_time(definition), modified);
    EXPECT_FALSE(fs::exists("/tmp/kx-profile-escape"));
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
