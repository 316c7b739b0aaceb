// One whole CGI request of the sample console, from process start to the
// last byte of its page, against a program that only writes the same bytes.
#include <sys/resource.h>
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

// One request: its wall time from fork to the child's end and the child's
// CPU time (user and system), both in milliseconds.
struct Timing {
    double wall = 0;
    double cpu = 0;
};

double Ms(const timeval &time) { return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3; }

// Runs program in folder with the CGI environment; returns what it wrote.
std::string Run(const std::string &folder, const std::vector<std::string> &command, Timing *timing = nullptr) {
    const auto start = std::chrono::steady_clock::now();
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
    int status = 0;
    rusage usage{};
    wait4(child, &status, 0, &usage);
    if (timing != nullptr) {
        timing->wall = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
        timing->cpu = Ms(usage.ru_utime) + Ms(usage.ru_stime);
    }
    return page;
}

double Median(std::vector<double> values) {
    std::nth_element(values.begin(), values.begin() + static_cast<long>(values.size() / 2), values.end());
    return values[values.size() / 2];
}

double Minimum(const std::vector<double> &values) { return *std::min_element(values.begin(), values.end()); }

// Wall and CPU times of each program's requests.
struct Series {
    std::vector<double> wall, cpu;
    void Add(const Timing &timing) {
        wall.push_back(timing.wall);
        cpu.push_back(timing.cpu);
    }
};

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

    // The two programs take turns, so that both meet the same load of a
    // shared machine; the CPU times are the kernel's count for each child.
    Series cgi, writer;
    for (int i = 0; i < kRuns; ++i) {
        Timing timing;
        Run(www, {www + "/console.cgi"}, &timing);
        cgi.Add(timing);
        Run(www, {KX_PAGE_WRITER, copy}, &timing);
        writer.Add(timing);
    }
    std::printf("One CGI request of the overview page, %zu bytes (%d requests of each, taking turns)\n",
                page.size(), kRuns);
    std::printf("%-32s %8s %8s %8s\n", "", "median", "fastest", "CPU");
    std::printf("%-32s %8.3f %8.3f %8.3f ms\n", "console.cgi", Median(cgi.wall), Minimum(cgi.wall), Median(cgi.cpu));
    std::printf("%-32s %8.3f %8.3f %8.3f ms\n", "program writing the same bytes", Median(writer.wall),
                Minimum(writer.wall), Median(writer.cpu));
    std::printf("%-32s %8.2f %8.2f %8.2f\n", "ratio", Median(cgi.wall) / Median(writer.wall),
                Minimum(cgi.wall) / Minimum(writer.wall), Median(cgi.cpu) / Median(writer.cpu));
    return 0;
}
