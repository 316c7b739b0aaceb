// The trap store on a Traps directory of 100,000 trap files: acknowledging
// one trap by unique identifier and listing the trap files, each against a
// bare readdir + regexec scan of the same directory with the same
// expression; pruning to 90 % by number at 1k, 10k and 100k files.
#include <dirent.h>
#include <regex.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <string>

#include <filesystem>

#include "kx_trap.h"
#include "measure.h"

namespace {

constexpr unsigned kFirstArrival = 1700000000;

std::string TrapName(int id) {
    return "T99999_6_1001_192_168_1_10_srv01_000000000." + std::to_string(kFirstArrival + unsigned(id));
}

// A scratch folder, removed with everything in it.
struct Folder {
    std::string path;
    explicit Folder(const std::string &name) : path(std::filesystem::temp_directory_path() / ("kx-" + name)) {
        std::filesystem::remove_all(path);
        std::filesystem::create_directory(path);
    }
    ~Folder() { std::filesystem::remove_all(path); }
};

void AddTraps(const std::string &dir, int from, int to) {
    for (int id = from; id <= to; ++id) std::ofstream(dir + "/" + TrapName(id)) << "trap\n";
}

// The reference: every name of the directory tested against the whole-name expression.
int BareScan(const std::string &dir, const std::string &expression) {
    regex_t regex;
    if (regcomp(&regex, ("^(" + expression + ")$").c_str(), REG_EXTENDED | REG_NOSUB) != 0) return -1;
    DIR *folder = opendir(dir.c_str());
    int matches = 0;
    while (const dirent *entry = readdir(folder)) matches += regexec(&regex, entry->d_name, 0, nullptr, 0) == 0;
    closedir(folder);
    regfree(&regex);
    return matches;
}

void Ratio(const char *name, double seconds, double reference) {
    std::printf("%-34s %9.2f ms   bare readdir+regexec %9.2f ms   ratio %.2f\n", name, seconds * 1e3,
                reference * 1e3, seconds / reference);
}

void AcknowledgeAndList(const std::string &dir) {
    std::snprintf(TrapsDirectory, sizeof TrapsDirectory, "%s", dir.c_str());
    const std::string id = std::to_string(kFirstArrival + 50000);
    const std::string idExpression = "[tT].*[.]" + id + "$";
    int flip = 0;
    const double acknowledge = kx::bench::BestSeconds(
        [&] { KXTrapRenameTrapfile("alarmack", nullptr, (flip++ % 2) ? "0" : "1", id.c_str(), 0); });
    const double scanOne = kx::bench::BestSeconds([&] { BareScan(dir, idExpression); });
    Ratio("acknowledge one trap by id", acknowledge, scanOne);
    char *dirs[] = {TrapsDirectory};
    const double listing = kx::bench::BestSeconds([&] {
        char **list = nullptr;
        GTFreeRessources(GTGetTrapFiles(1, dirs, &list, nullptr), list);
    });
    const double scanAll =
        kx::bench::BestSeconds([&] { BareScan(dir, "[tT][0-9]+.*_[0-9]+_[0-9]+.*[.][0-9]+$"); });
    Ratio("list the trap files", listing, scanAll);
}

// Pruning n files to 90 %, best of three, the deleted files made again between runs.
// The reference scans the same directory and unlinks the same files by name.
void Prune(int n) {
    const Folder scratch("bench-prune-" + std::to_string(getpid()));
    const std::string &folder = scratch.path;
    AddTraps(folder, 1, n);
    const std::string maximum = std::to_string(n - n / 10);
    double best = 1e30, scan = 1e30;
    for (int run = 0; run < 3; ++run) {
        const double took = kx::bench::BestSeconds(
            [&] { KXProcessTrapMaxNumDelete(nullptr, nullptr, maximum.c_str(), folder.c_str(), nullptr); }, 1);
        best = std::min(best, took);
        const double bare = kx::bench::BestSeconds([&] {
            BareScan(folder, "[tT][0-9]+.*_[0-9]+_[0-9]+.*[.][0-9]+$");
            for (int id = 1; id <= n / 10; ++id) unlink((folder + "/" + TrapName(id)).c_str());
        }, 1);
        scan = std::min(scan, bare);
        AddTraps(folder, 1, n / 10);
    }
    const double nlogn = n * std::log2(double(n));
    std::printf("prune %6d to 90 %%  %9.2f ms  %6.1f ns per n log2 n   scan + unlink %9.2f ms   ratio %.2f\n", n,
                best * 1e3, best * 1e9 / nlogn, scan * 1e3, best / scan);
}

}  // namespace

int main() {
    const Folder traps("bench-traps-" + std::to_string(getpid()));
    const std::string &dir = traps.path;
    AddTraps(dir, 1, 100000);
    std::printf("Traps directory of 100000 trap files\n");
    AcknowledgeAndList(dir);
    for (const int n : {1000, 10000, 100000}) Prune(n);
    return 0;
}
