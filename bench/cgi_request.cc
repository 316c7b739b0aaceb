// One whole CGI request of the sample console, from process start to the
// last byte of its page, against a program that only writes the same bytes.
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "bench_support.h"

namespace {

constexpr int kRuns = 200;

// Runs program in folder with the CGI environment; returns what it wrote.
std::string Run(const std::string &folder, const std::vector<std::string> &command) {
    int out[2];
    if (pipe(out) != 0) return {};
    const pid_t child = fork();
    if (child == 0) {
        dup2(out[1], 1);
        close(out[0]);
        close(out[1]);
        if (chdir(folder.c_str()) != 0) _exit(127);
        setenv("REQUEST_METHOD", "GET", 1);
        // A signed-in operator's page view: the user id is known already.
        setenv("QUERY_STRING", "Application=console&UserID=1&Operator=ann", 1);
        std::vector<char *> argv;
        for (const std::string &word : command) argv.push_back(const_cast<char *>(word.c_str()));
        argv.push_back(nullptr);
        execv(argv[0], argv.data());
        _exit(127);
    }
    close(out[1]);
    std::string page;
    char buffer[65536];
    for (ssize_t n; (n = read(out[0], buffer, sizeof buffer)) > 0;) page.append(buffer, static_cast<size_t>(n));
    close(out[0]);
    waitpid(child, nullptr, 0);
    return page;
}

// The median time of a request, in milliseconds.
double MedianMs(const std::string &folder, const std::vector<std::string> &command) {
    std::vector<double> times;
    for (int i = 0; i < kRuns; ++i) {
        const auto start = std::chrono::steady_clock::now();
        Run(folder, command);
        times.push_back(std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count());
    }
    std::nth_element(times.begin(), times.begin() + kRuns / 2, times.end());
    return times[kRuns / 2];
}

}  // namespace

int main() {
    const kx::bench::Files files;
    const std::string site = files.Write("keep", "");  // a path inside the folder
    const std::string folder = site.substr(0, site.rfind('/'));
    const std::string layout = std::string(KX_SOURCE_DIR) + "/tools/console-site.sh " + folder + " " +
                               KX_CONSOLE_CGI + " 0";
    if (std::system(layout.c_str()) != 0) return 1;
    const std::string www = folder + "/www";
    const std::string page = Run(www, {www + "/console.cgi"});
    const std::string copy = files.Write("page.out", page);
    if (page.size() < 100 || Run(www, {KX_PAGE_WRITER, copy}) != page) return 1;

    const double cgi = MedianMs(www, {www + "/console.cgi"});
    const double writer = MedianMs(www, {KX_PAGE_WRITER, copy});
    std::printf("One CGI request of the overview page, %zu bytes (median of %d)\n", page.size(), kRuns);
    std::printf("%-32s %8.3f ms\n", "console.cgi", cgi);
    std::printf("%-32s %8.3f ms   ratio %.2f\n", "program writing the same bytes", writer, cgi / writer);
    return 0;
}
