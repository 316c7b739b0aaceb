// Profiles of 1,000, 10,000 and 100,000 keys: reading and writing them, and
// checking in and merging as many values, beside inih parsing the same file
// in the same run. The time per key shows the growth: it stays flat when
// the cost grows linearly.
#include <ini.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <unordered_set>
#include <vector>

#include "bench_support.h"
#include "kx_profile.h"
#include "measure.h"

namespace {

// A list of n keys "K<i>" holding two values each, plus the entries the
// check-in needs.
struct List {
    explicit List(int n) {
        for (int i = 0; i < n; ++i) names.push_back(std::string("K").append(std::to_string(i)));
        for (const char *extra : {"UserID", "Sel", "Keys", "Texts", "Mibname"}) names.push_back(extra);
        count = static_cast<int>(names.size());
        list = static_cast<EingabeElement *>(std::calloc(names.size(), sizeof(EingabeElement)));
        for (int i = 0; i < count; ++i) {
            list[i].Name = strdup(names[static_cast<size_t>(i)].c_str());
            list[i].NameLaenge = static_cast<uint32_t>(names[static_cast<size_t>(i)].size());
            list[i].Art = 'n';
        }
        for (const std::string &name : names) pointers.push_back(name.c_str());
    }
    ~List() { KXFreeEingabeList(list, count); }
    void SetList(const char *name, const std::string &joined) { SetAt(EingabewertIndex(name, list, count), joined); }
    void SetAt(int index, const std::string &joined) {
        SetEingabeWertI(count, list, index, joined.c_str());
        list[index].WertGesetzt = ErmittleTextElemente(list[index].Wert, ",", nullptr, nullptr);
    }
    std::vector<std::string> names;
    std::vector<const char *> pointers;
    EingabeElement *list = nullptr;
    int count = 0;
};

// CPU seconds of the fastest of five runs: on a shared machine the wall
// time of a long run also counts the time other processes had the CPU.
template <typename Work>
double BestCpuSeconds(Work &&work) {
    double best = 1e30;
    for (int i = 0; i < 5; ++i) {
        timespec start{}, end{};
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &start);
        work();
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &end);
        best = std::min(best, static_cast<double>(end.tv_sec - start.tv_sec) + static_cast<double>(end.tv_nsec - start.tv_nsec) * 1e-9);
    }
    return best;
}

int CountPair(void *user, const char *, const char *name, const char *value) {
    *static_cast<size_t *>(user) += std::strlen(name) + std::strlen(value);
    return 1;
}

double InihSeconds(const std::string &path) {
    return BestCpuSeconds([&] {
        size_t bytes = 0;
        ini_parse(path.c_str(), CountPair, &bytes);
    });
}

std::string Numbers(int n, int from) {
    std::string joined;
    for (int i = 0; i < n; ++i) {
        if (i > 0) joined += ',';
        joined += std::to_string(from + i);
    }
    return joined;
}

void Row(const char *name, int n, double seconds, double reference) {
    std::printf("%-30s %7d keys %9.2f ms %8.1f ns/key   inih %8.2f ms   ratio %6.2f\n", name, n, seconds * 1e3,
                seconds * 1e9 / n, reference * 1e3, seconds / reference);
}

void Measure(int n, const std::string &folder) {
    List keys(n);
    for (int i = 0; i < n; ++i) keys.SetAt(i, std::string("value").append(std::to_string(i)).append(",x"));
    const std::string profile = folder + "/profile";
    const auto writeProfile = [&] {
        WriteIniFile(keys.count, keys.list, "|", "w", n, keys.pointers.data(), profile.c_str(), nullptr, nullptr);
    };
    const double write = BestCpuSeconds(writeProfile);
    const double writeWall = kx::bench::BestSeconds(writeProfile);
    const double read = BestCpuSeconds([&] { ReadIniFile(keys.count, keys.list, profile.c_str()); });
    const double inih = InihSeconds(profile);
    Row("WriteIniFile (atomic)", n, write, inih);
    std::printf("%-30s %7d keys %9.2f ms wall time, fsync included\n", "WriteIniFile (atomic, fsync)", n, writeWall * 1e3);
    Row("ReadIniFile", n, read, inih);

    // The key table as a user file: numbers 0 .. n-1 and their texts.
    SetEingabeWert(keys.count, keys.list, "UserID", "1");
    keys.SetList("Keys", Numbers(n, 0));
    keys.SetList("Texts", Numbers(n, 1000000));
    const char *table[] = {"Keys", "Texts"};
    WriteNamedUIDFile(keys.count, keys.list, "Keys", ",", 1, table + 1, nullptr);
    const std::string selection = Numbers(n, 0);
    const double checkIn = BestCpuSeconds([&] {
        keys.SetList("Sel", selection);
        CheckInHandling(keys.count, keys.list, "Sel", "Keys", ",", table, 2);
    });
    Row("CheckInHandling", n, checkIn, InihSeconds("uid/1/Keys"));
    const std::string added = Numbers(n, n / 2);
    const double merge = BestCpuSeconds([&] {
        keys.SetList("Mibname", selection);
        MergeElementValue(keys.count, keys.list, "Mibname", added.c_str(), ",");
        keys.SetList("Sel", selection);
        MergeElementValue(keys.count, keys.list, "Sel", added.c_str(), ",");
    });
    const double set = BestCpuSeconds([&] {
        std::unordered_set<std::string> seen;
        for (int i = 0; i < n + n / 2; ++i) seen.insert(std::to_string(i));
    });
    std::printf("%-30s %7d keys %9.2f ms %8.1f ns/key   hash set %5.2f ms   ratio %6.2f\n", "MergeElementValue (both kinds)", n,
                merge * 1e3, merge * 1e9 / n, set * 1e3, merge / set);
}

}  // namespace

int main() {
    char pattern[] = "/tmp/kx-bench-profile.XXXXXX";
    if (mkdtemp(pattern) == nullptr) return 1;
    const std::filesystem::path saved = std::filesystem::current_path();
    std::filesystem::current_path(pattern);
    std::filesystem::create_directories("uid/1");
    std::printf("Profiles and value lists (CPU time, best of 5; ns/key flat = linear growth)\n");
    for (const int n : {1000, 10000, 100000}) Measure(n, pattern);
    std::filesystem::current_path(saved);
    std::filesystem::remove_all(pattern);
    return 0;
}
