// The sample console behind a real lighttpd (pages, forms and bad requests),
// and kxpage, which renders templates from the command line.
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <pwd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <string>
#include <thread>
#include <vector>

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
    static std::string Definition() { return kx::test::ReadFile(server_->www() + "/console.ini"); }
    // A session of the browser: its cookie, and the form field that goes with it.
    static constexpr const char *kToken = "0123456789abcdef0123456789abcdef";
    static std::string Session() { return std::string("Cookie: FormToken=") + kToken + "\r\n"; }
    static std::string Save(const std::string &fields) {
        return "Application=console&FormToken=" + std::string(kToken) + "&" + fields;
    }

    static ConsoleServer *server_;
};

ConsoleServer *Console::server_ = nullptr;

// The whole overview page: texts, the server table with its nested group
// cycle, converted values, the selection summary and the settings form.
TEST_F(Console, OverviewPageIsTheGoldenPage) {
    const HttpReply reply = server_->Get("/console.cgi?Application=console", Session());
    ASSERT_EQ(reply.status, 200) << reply.body;
    EXPECT_NE(reply.headers.find("Content-Type: text/html"), std::string::npos);
    EXPECT_EQ(reply.headers.find("Set-Cookie"), std::string::npos) << "the session keeps its token";
    EXPECT_EQ(reply.body, kx::test::ReadFile(std::string(KX_SOURCE_DIR) + "/tests/golden/console_overview.html"));
}

TEST_F(Console, PostedSettingPersistsInTheDefinition) {
    const HttpReply form = server_->Get("/console.cgi?Application=console");
    const size_t cookie = form.headers.find("Set-Cookie: FormToken=");
    ASSERT_NE(cookie, std::string::npos) << "a new session gets its token";
    const std::string token = form.headers.substr(cookie + 22, 32);
    EXPECT_TRUE(Contains(form, "name=\"FormToken\" value=\"" + token + "\""));
    const HttpReply saved = server_->Post("/console.cgi",
                                          "Application=console&FormToken=" + token +
                                              "&SetIniValue=RefreshSeconds&RefreshSeconds=15",
                                          "Cookie: FormToken=" + token + "\r\n");
    ASSERT_EQ(saved.status, 200) << saved.body;
    EXPECT_TRUE(Contains(saved, "content=\"15\""));
    const HttpReply next = server_->Get("/console.cgi?Application=console");
    EXPECT_TRUE(Contains(next, "content=\"15\"")) << "the next page reads the saved value";
    EXPECT_NE(Definition().find("\nRefreshSeconds|n|15\n"), std::string::npos) << Definition();
    struct stat info;
    ASSERT_EQ(stat((server_->www() + "/console.ini").c_str(), &info), 0);
    if (getuid() == 0) EXPECT_NE(info.st_uid, 0u) << "started as root, the CGI program runs unprivileged";
    server_->Post("/console.cgi", Save("SetIniValue=RefreshSeconds&RefreshSeconds=60"), Session());
}

// Request values reach the page, and the attacks of a client without a login,
// replayed: each gets its page (or a refusal), nothing reaches the
// definition, no file is written in the site outside the user directory
// (operator and user id names that would leave it are refused), and the
// console keeps serving.
// tests/data/console_requests.txt: what, method, request, cookie, status, shown, absent.
TEST_F(Console, RequestsLeaveTheDefinitionAndThePagesWhole) {
    namespace fs = std::filesystem;
    const auto files = [site = fs::path(server_->www()).parent_path()] {
        std::set<std::string> found;  // lock files come and go
        for (const auto &entry : fs::recursive_directory_iterator(site))
            if (entry.is_regular_file() && entry.path().string().find("/uid/") == std::string::npos &&
                entry.path().filename().string().find(".lock") == std::string::npos)
                found.insert(entry.path().string());
        return found;
    };
    server_->Get("/console.cgi?Application=console");
    const std::set<std::string> kept = files();
    const std::string before = Definition();
    for (const kx::test::DataRow &c : kx::test::DataTable("console_requests.txt")) {
        const std::string headers = *c[3] == "session" ? Session() : "";
        const HttpReply reply = *c[1] == "GET" ? server_->Get("/console.cgi?Application=console&" + *c[2], headers)
                                               : server_->Post("/console.cgi", *c[2], headers);
        EXPECT_EQ(reply.status, std::stoi(*c[4])) << *c[0];
        EXPECT_TRUE(Contains(reply, *c[5])) << *c[0] << "\n" << reply.body.substr(0, 300);
        if (!c[6]->empty()) EXPECT_FALSE(Contains(reply, *c[6])) << *c[0];
        EXPECT_EQ(Definition(), before) << *c[0];
    }
    EXPECT_EQ(files(), kept);
    EXPECT_FALSE(fs::exists("/tmp/kx-profile-escape"));
    EXPECT_EQ(server_->Get("/console.cgi?Application=console").status, 200);
}

// What a killed writer left is neither served nor kept; nor are lock files,
// backups and the definition itself served.
TEST_F(Console, TemporaryFilesAreNeitherServedNorKept) {
    const std::string www = server_->www();
    const std::string abandoned = www + "/.console.ini.Ab12Cd.tmp";
    std::ofstream(abandoned) << std::string(100000, 'x');
    std::ofstream(www + "/console.ini~") << "backup";
    for (const char *hidden : {"/.console.ini.Ab12Cd.tmp", "/.console.ini.lock", "/console.ini~", "/console.ini"})
        EXPECT_EQ(server_->Get(hidden).status, 403) << hidden;
    const HttpReply saved =
        server_->Post("/console.cgi", Save("SetIniValue=RefreshSeconds&RefreshSeconds=60"), Session());
    EXPECT_FALSE(Contains(saved, "not saved")) << saved.body.substr(0, 300);
    EXPECT_FALSE(std::filesystem::exists(abandoned)) << "the next save removes what a killed writer left";
}

// The library's messages about a faulty definition come after the header.
TEST_F(Console, DefinitionMessagesFollowTheHeader) {
    const std::string definition = Definition();
    std::ofstream(server_->www() + "/console.ini", std::ios::app) << "broken line\n";
    const HttpReply reply = server_->Get("/console.cgi?Application=console");
    std::ofstream(server_->www() + "/console.ini") << definition;
    EXPECT_EQ(reply.status, 200);
    EXPECT_EQ(reply.body.rfind("<! ErmittleEingabe: Fehler in 'console.ini'", 0), 0u) << reply.body.substr(0, 200);
    EXPECT_TRUE(Contains(reply, "</html>"));
}

// Two operators at once: each gets a user id and keeps the page's settings
// in a profile of their own, read again by every later request.
TEST_F(Console, OperatorsKeepTheirSettingsInTheirProfiles) {
    const std::regex idField("name=\"UserID\" value=\"([0-9]+)\"");
    std::string ids[2];
    const char *operators[] = {"ann", "bob"}, *columns[] = {"Server+State", "Server+Memory+Free"};
    const auto bothAtOnce = [](auto request) {  // the two operators' requests at the same time
        std::thread other(request, 1);
        request(0);
        other.join();
    };
    bothAtOnce([&](int u) {
        const HttpReply page = server_->Get(std::string("/console.cgi?Application=console&Operator=") + operators[u]);
        std::smatch id;
        if (std::regex_search(page.body, id, idField)) ids[u] = id[1];
    });
    ASSERT_FALSE(ids[0].empty() || ids[1].empty());
    EXPECT_NE(ids[0], ids[1]);
    bothAtOnce([&](int u) {
        server_->Post("/console.cgi",
                      Save("SaveSettings=1&UserID=" + ids[u] + "&Operator=" + operators[u] + "&RefreshSeconds=" +
                           std::to_string(11 * (u + 1)) + "&Columns=" + columns[u]),
                      Session());
    });
    for (int u = 0; u < 2; ++u) {
        const HttpReply next = server_->Get("/console.cgi?Application=console&UserID=" + ids[u] + "&Operator=" + operators[u]);
        EXPECT_TRUE(Contains(next, "content=\"" + std::to_string(11 * (u + 1)) + "\"")) << operators[u];
        EXPECT_EQ(Contains(next, ".servers td:nth-child(5)"), u == 0) << "Memory shown to bob only";
        EXPECT_TRUE(Contains(next, "nth-child(2)")) << "Id hidden for both";
    }
    EXPECT_TRUE(std::filesystem::exists(server_->www() + "/../console/uid/" + ids[0] + "/ann"));
}

// Bad requests get their page; the ways out of the site that were tried, in
// the application name, the page name and the URL itself, show no file
// outside the site's pages; and the console keeps serving.
TEST_F(Console, BadRequestsAndPathTraversalsStayInside) {
    std::vector<kx::test::DataRow> cases;
    std::vector<std::string> ways, urls;
    for (const kx::test::DataRow &row : kx::test::DataTable("bad_requests.txt")) {
        if (row.size() == 3) cases.push_back(row);
        else (*row[0] == "way" ? ways : urls).push_back(*row[1]);
    }
    const std::vector<std::string> dots = {".", "%2e", "%2E", "%u002e", "%c0%ae", "%e0%80%ae", "%252e"};
    const std::vector<std::string> slashes = {"/", "%2f", "%2F", "\\", "%5c", "%c0%af", "%u2215", "%252f"};
    for (const std::string &dot : dots)
        for (const std::string &slash : slashes) {
            std::string up;
            for (int i = 0; i < 4; ++i) up += dot + dot + slash;
            ways.push_back(up + "etc" + slash + "passwd");
        }
    auto check = [&](const std::string &target) {
        HttpReply reply = server_->Get(target);
        EXPECT_FALSE(Contains(reply, "root:x:0:0")) << target;
        EXPECT_FALSE(Contains(reply, "Ersetzungsanfang|n|")) << target;
        EXPECT_FALSE(Contains(reply, "Title=Server overview")) << target;
        reply.body.insert(0, reply.headers);
        return reply;
    };
    for (const kx::test::DataRow &c : cases) {
        const HttpReply reply = check(*c[0]);
        EXPECT_EQ(reply.status, std::stoi(*c[1])) << *c[0];
        EXPECT_TRUE(Contains(reply, *c[2])) << *c[0] << "\n" << reply.body.substr(0, 400);
    }
    for (const std::string &way : ways) {
        check("/console.cgi?Application=" + way);
        check("/console.cgi?Application=console&Page=" + way);
    }
    for (const std::string &url : urls) check(url);
    EXPECT_EQ(server_->Get("/console.cgi?Application=console").status, 200);
}

// Whether the CGI program may send an ICMP echo: lighttpd started as root
// runs it as nobody, who needs a ping socket (ping_group_range) or CAP_NET_RAW.
bool CgiProgramMayPing() {
    const pid_t child = fork();
    if (child == 0) {
        const passwd *nobody = getuid() == 0 ? getpwnam("nobody") : nullptr;
        if (nobody != nullptr && (setgid(nobody->pw_gid) != 0 || setuid(nobody->pw_uid) != 0)) _exit(1);
        const bool may = socket(AF_INET, SOCK_DGRAM, IPPROTO_ICMP) >= 0 || socket(AF_INET, SOCK_RAW, IPPROTO_ICMP) >= 0;
        _exit(may ? 0 : 1);
    }
    int status = 1;
    waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// The tools page: one conversion of each family (files, program calls,
// network), run by the CGI program in its own folder.
TEST_F(Console, ToolsPageListsCallsAndPings) {
    const HttpReply reply = server_->Get("/console.cgi?Application=console&Page=tools.htm");
    ASSERT_EQ(reply.status, 200) << reply.body;
    for (const char *shown : {"<span id=\"pages\">ini main.htm tools.htm traps.htm</span>",
                              "<span id=\"scan\">no peers found for console (asked by tools)</span>",
                              CgiProgramMayPing() ? "<span id=\"ping\">1</span>" : "<span id=\"ping\">0</span>"})
        EXPECT_TRUE(Contains(reply, shown)) << shown << "\n" << reply.body;
}

TEST_F(Console, HugeRequestsEndInAPage) {
    std::string many = "Application=console";
    for (int i = 0; i < 100000; ++i) many += "&p" + std::to_string(i) + "=" + std::to_string(i);
    const HttpReply parameters = server_->Post("/console.cgi", many);
    EXPECT_EQ(parameters.status, 200);
    EXPECT_TRUE(Contains(parameters, "</html>"));
    // One indexed name a hundred thousand times: appends cost constant time.
    std::string repeated = "Application=console";
    for (int i = 0; i < 100000; ++i) repeated += "&ServerNames0=x";
    EXPECT_EQ(server_->Post("/console.cgi", repeated).status, 200);
    const HttpReply big = server_->Post("/console.cgi", "Application=console&Operator=" + std::string(10 << 20, 'x'));
    EXPECT_EQ(big.status, 200);
    EXPECT_TRUE(Contains(big, "</html>"));
    EXPECT_EQ(server_->Get("/console.cgi?Application=console").status, 200) << "still serving";
}

// --- kxpage

struct Outcome { int status; std::string out; };  // out: standard output and standard error together

Outcome RunPageTool(const std::string &arguments, const std::string &environment = "") {
    const std::string command = environment + " " + KX_PAGE_TOOL + " " + arguments + " 2>&1";
    FILE *pipe = popen(command.c_str(), "r");
    Outcome outcome{-1, {}};
    char buffer[4096];
    for (size_t n; (n = fread(buffer, 1, sizeof buffer, pipe)) > 0;) outcome.out.append(buffer, n);
    const int status = pclose(pipe);
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return outcome;
}

// Rendering a template, and each missing piece with its message; a message
// is the start of the output, a page all of it.
TEST(KxPage, RendersOrReportsWhatIsMissing) {
    kx::test::TempDir dir;
    const std::string definition = dir.Write("app.ini", "|\nWho|n|nobody\nMode|n|\n");
    const std::string page = dir.Write("page.htm", "<p>{Who}/{{Mode}}</p>\n<!{IF Mode==a b}>\nyes\n<!{/IF}>\n");
    struct Case { std::string arguments; int status; std::string message; };
    const Case cases[] = {
        {"--app " + definition + " --query 'Who=ann&Mode=a+b' " + page, 0, "<p>ann/a+b</p>\nyes\n"},
        {"", 2, "usage: kxpage"},
        {"--app", 2, "usage: kxpage"},
        {dir.path() + "/none.htm", 1, "kxpage: cannot open template " + dir.path() + "/none.htm\n"},
        {"--app nothere " + page, 1, "kxpage: no application definition for nothere\n"},
        {"--app " + dir.path() + "/none.ini " + page, 1, "kxpage: no application definition for"},
        // Names that would be read as a definition in memory, past their end.
        {"--app '~" + std::string(300, 'x') + "' " + page, 1, "kxpage: no application definition for ~xx"},
        {"--query 'Application=%2e%2e%2fetc%2fpasswd' " + page, 1,
         "kxpage: no application definition for ../etc/passwd\n"},
        {"--query 'Application=%7Cx' " + page, 1, "kxpage: no application definition for |x\n"},
    };
    for (const Case &c : cases) {
        const Outcome outcome = RunPageTool(c.arguments);
        EXPECT_EQ(outcome.status, c.status) << c.arguments;
        if (c.status == 0) EXPECT_EQ(outcome.out, c.message);
        EXPECT_EQ(outcome.out.rfind(c.message, 0), 0u) << c.arguments << ": " << outcome.out;
    }
}

// A page that reads no MIB and asks no agent does not load net-snmp (the
// dynamic linker lists what it loads).
TEST(KxPage, LoadsNetSnmpOnlyWhenAsked) {
    kx::test::TempDir dir;
    const std::string definition = dir.Write("app.ini", "|\nWho|n|nobody\n");
    const Outcome outcome = RunPageTool("--app " + definition + " " + dir.Write("page.htm", "{Who}\n"), "LD_DEBUG=libs");
    EXPECT_EQ(outcome.status, 0) << outcome.out;
    // The loader's report is there (the MIB library itself is loaded at start
    // only where the program links it directly, as the sanitizer builds do).
    EXPECT_NE(outcome.out.find("libKXSnmpTrapDll.so"), std::string::npos) << outcome.out;
    EXPECT_EQ(outcome.out.find("libnetsnmp"), std::string::npos);
}

}  // namespace
