// The trap store under concurrent processes: one writer (the trap receiver's
// way: a file under a name no listing matches, then renamed into place), four
// acknowledgers that set states by unique identifier, one pruner by number.
// Shared by the stress test and the full-size stress benchmark.
#ifndef KX_TESTS_SUPPORT_TRAP_STRESS_H
#define KX_TESTS_SUPPORT_TRAP_STRESS_H

#include <sys/mman.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <new>
#include <random>
#include <string>
#include <vector>

#include "companion/libKXUtils.h"
#include "kx_trap.h"
#include "support/server_process.h"

namespace kx::stress {

constexpr unsigned kFirstArrival = 1700000000;
constexpr int kAcknowledgers = 4;
constexpr int kPositions[kAcknowledgers] = {8, 4, 5, 6};  // alarmack and three forwarding states
constexpr int kRetries = 200;
constexpr int kHotTraps = 32;

inline std::string TrapName(int id, const std::string &states = "000000000") {
    return "T99999_6_1001_127_0_0_1_srv01_" + states + "." + std::to_string(kFirstArrival + unsigned(id));
}
inline int IdOf(const std::string &name) {
    return int(std::strtoul(name.substr(name.rfind('.') + 1).c_str(), nullptr, 10) - kFirstArrival);
}

struct Shared {
    std::atomic<int> written;
    std::atomic<int> writerDone;
    std::atomic<int> failures;  // renames of the writer that failed
    std::atomic<long> renames, refused;
};

inline std::vector<std::string> Names(const std::string &dir, const char *expression = ".*") {
    int count = 0;
    char **list = nullptr;
    ListDirectory(dir.c_str(), 0, 0, 0, 1, &expression, &count, &list);
    std::vector<std::string> names(list, list + count);
    KXUtilsFreeResources(list);
    return names;
}

inline void Writer(const std::string &dir, int traps, Shared &shared) {
    for (int id = 1; id <= traps; ++id) {
        const std::string scratch = dir + "/new-" + std::to_string(id);
        std::ofstream(scratch) << "trap " << id << "\n";
        if (std::rename(scratch.c_str(), (dir + "/" + TrapName(id)).c_str()) != 0) ++shared.failures;
        shared.written = id;
    }
    shared.writerDone = 1;
}

// Sets random states of random traps; a refusal is retried while the trap exists.
// The last value each trap got from this acknowledger goes to lastFile.
inline void Acknowledger(int k, const std::string &dir, int traps, Shared &shared, const std::string &lastFile) {
    std::mt19937 random(unsigned(k) + 1);
    std::string last(size_t(traps) + 1, '0');
    for (int round = 0; shared.writerDone == 0 || round < traps / 2; ++round) {
        const int written = shared.written;
        if (written == 0) continue;
        // The newest traps: they outlive the pruner, and the four meet on them.
        const int id = written - int(random() % unsigned(std::min(written, kHotTraps)));
        const char value = char('0' + random() % 3);
        for (int attempt = 0; attempt < kRetries; ++attempt) {
            char *path = strdup((dir + "/" + TrapName(id)).c_str()), *newPath = nullptr;
            const int result = GTRenameTrapFile(&path, FwdCount, kPositions[k], value, &newPath);
            std::free(path);
            std::free(newPath);
            if (result == 0) {
                last[size_t(id)] = value;
                ++shared.renames;
                break;
            }
            ++shared.refused;
            if (Names(dir, ("[tT].*[.]" + std::to_string(kFirstArrival + unsigned(id))).c_str()).empty()) break;
        }
    }
    std::ofstream(lastFile) << last;
}

inline void Pruner(const std::string &dir, int maximum, Shared &shared) {
    const std::string number = std::to_string(maximum);
    while (shared.writerDone == 0) KXProcessTrapMaxNumDelete(nullptr, nullptr, number.c_str(), dir.c_str(), nullptr);
}

struct Outcome {
    int childFailures = 0, strayFiles = 0, duplicates = 0, missing = 0, wrongStates = 0;
    long renames = 0, refused = 0;
    bool Clean() const { return childFailures + strayFiles + duplicates + missing + wrongStates == 0; }
    std::string Text() const {
        return "child failures " + std::to_string(childFailures) + ", stray files " + std::to_string(strayFiles) +
               ", duplicates " + std::to_string(duplicates) + ", missing " + std::to_string(missing) +
               ", wrong states " + std::to_string(wrongStates) + " (renames " + std::to_string(renames) +
               ", refused and retried " + std::to_string(refused) + ")";
    }
};

// After the last prune exactly the newest `maximum` traps remain, once each,
// carrying the last state every acknowledger set, and nothing else is left.
inline Outcome Check(const std::string &dir, const std::string &work, int traps, int maximum) {
    Outcome outcome;
    KXProcessTrapMaxNumDelete(nullptr, nullptr, std::to_string(maximum).c_str(), dir.c_str(), nullptr);
    std::string last[kAcknowledgers];
    for (int k = 0; k < kAcknowledgers; ++k) std::getline(std::ifstream(work + "/ack-" + std::to_string(k)), last[k]);
    std::map<int, std::string> found;
    for (const std::string &name : Names(dir)) {
        const int id = IdOf(name);
        const size_t dot = name.rfind('.');
        if (dot == std::string::npos || dot < 9 || name != TrapName(id, name.substr(dot - 9, 9))) ++outcome.strayFiles;
        else if (!found.emplace(id, name).second) ++outcome.duplicates;
    }
    for (int id = traps - maximum + 1; id <= traps; ++id) {
        const auto at = found.find(id);
        if (at == found.end()) {
            ++outcome.missing;
            continue;
        }
        std::string states(9, '0');
        for (int k = 0; k < kAcknowledgers; ++k)
            states[size_t(kPositions[k])] = last[k].size() > size_t(id) ? last[k][size_t(id)] : '?';
        outcome.wrongStates += at->second != TrapName(id, states);
    }
    return outcome;
}

inline Outcome RunTrapStress(const std::string &dir, const std::string &work, int traps, int maximum) {
    void *memory = mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    Shared &shared = *new (memory) Shared{};
    const int childFailures = kx::test::WaitEach(kx::test::ForkEach(2 + kAcknowledgers, [&](int i) {
        if (i == 0) Writer(dir, traps, shared);
        else if (i == 1) Pruner(dir, maximum, shared);
        else Acknowledger(i - 2, dir, traps, shared, work + "/ack-" + std::to_string(i - 2));
    }));
    Outcome outcome = Check(dir, work, traps, maximum);
    outcome.childFailures = childFailures + shared.failures;
    outcome.renames = shared.renames;
    outcome.refused = shared.refused;
    munmap(memory, sizeof(Shared));
    return outcome;
}

}  // namespace kx::stress

#endif
