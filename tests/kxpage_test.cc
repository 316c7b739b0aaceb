// kxpage renders templates from the command line and reports what is missing.
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cstdio>
#include <string>

#include "support/kx_test.h"

namespace {

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
        // Names that would be read as a definition in memory, past their end.
        {"--app '~" + std::string(300, 'x') + "' " + page, 1, "kxpage: no application definition for ~xx"},
        {"--query 'Application=%2e%2e%2fetc%2fpasswd' " + page, 1,
         "kxpage: no application definition for ../etc/passwd\n"},
        {"--query 'Application=%7Cx' " + page, 1, "kxpage: no application definition for |x\n"},
    };
    for (const Case &c : cases) {
        const Outcome outcome = RunPageTool(c.arguments);
        EXPECT_EQ(outcome.status, c.status) << c.arguments;
        EXPECT_EQ(outcome.out.rfind(c.message, 0), 0u) << c.arguments << ": " << outcome.out;
    }
}

}  // namespace
