// Trap texts per second: read the trap file, find its MIB through the trap
// MIB index and TrapCache, format the text; at 1k, 10k and 100k trap files.
// The reference is snmptt in daemon mode on the same MIB and traps (1k and
// 10k; its time runs from its first logged text to the last, so its start
// and spool polling are left out).
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "companion/libKXsnmp.h"
#include "companion/libSnmpFile.h"
#include "kx_trap.h"
#include "measure.h"
#include "support/trap_fixture.h"

namespace {

namespace fx = kx::fixture;
using Clock = std::chrono::steady_clock;

// Renders every trap file once; returns the bytes of text made (so nothing is optimised away).
std::size_t RenderAll(const std::vector<std::string> &paths) {
    std::size_t bytes = 0;
    char text[KX_TRAP_TEXT_SIZE];
    for (const std::string &path : paths) {
        KXSnmpVar *records = nullptr;
        const int count = KXSnmpFileRead(-1, path.c_str(), &records, 0);
        if (count > 2) {
            const std::string number = path.substr(path.rfind('_') + 1);  // the specific number ends the name
            KXTrapDescription *d = GTGetTrapPointer(records[2].Oid, records[1].Oid, number.c_str(), "6",
                                                    "OID2Mib.ini", nullptr, nullptr);
            text[0] = '\0';
            if (d != nullptr) GTCreateTrapString(text, nullptr, d, count, records, nullptr);
            bytes += std::strlen(text);
        }
        KXSnmpFileFreeResources(records);
    }
    return bytes;
}

std::vector<std::string> WriteTraps(const std::string &dir, int n) {
    const auto traps = fx::Traps();
    std::vector<std::string> paths;
    for (int i = 0; i < n; ++i) {
        const fx::Trap &trap = traps[static_cast<std::size_t>(i) % traps.size()];
        paths.push_back(dir + "/trap" + std::to_string(i) + "_" + std::to_string(trap.specific));
        std::ofstream(paths.back()) << fx::TrapFileText(trap);
    }
    return paths;
}

// snmptt's traps per second over n traps, or 0 when it logged fewer.
double SnmpttRate(const std::string &dir, int n) {
    fx::Snmptt snmptt(dir + "/snmptt-" + std::to_string(n));
    if (!snmptt.converted()) return 0;
    const auto traps = fx::Traps();
    for (int i = 0; i < n; ++i) snmptt.Spool(i, traps[static_cast<std::size_t>(i) % traps.size()]);
    snmptt.Start();
    snmptt.Texts(1, std::chrono::seconds(60));
    const auto first = Clock::now();
    const std::size_t logged = snmptt.Texts(static_cast<std::size_t>(n), std::chrono::seconds(600)).size();
    const std::chrono::duration<double> took = Clock::now() - first;
    snmptt.Stop();
    return logged >= static_cast<std::size_t>(n) ? (n - 1) / took.count() : 0;
}

}  // namespace

int main() {
    const std::string dir = std::filesystem::temp_directory_path() / ("kx-bench-traptext-" + std::to_string(getpid()));
    std::filesystem::create_directories(dir + "/mibs");
    std::ofstream(dir + "/mibs/KXTEST.mib") << fx::Mib();
    std::ofstream(dir + "/MibPath") << dir + "/mibs";
    std::filesystem::current_path(dir);
    KXSetMibPath((dir + "/mibs").c_str());
    GTCreateTrapMibs(nullptr);
    for (const int n : {1000, 10000, 100000}) {
        const std::string traps = dir + "/traps" + std::to_string(n);
        std::filesystem::create_directories(traps);
        const auto paths = WriteTraps(traps, n);
        std::size_t bytes = 0;
        const double seconds = kx::bench::BestSeconds([&] { bytes = RenderAll(paths); }, 3);
        const double rate = n / seconds;
        const double reference = n <= 10000 ? SnmpttRate(dir, n) : 0;
        if (reference > 0)
            std::printf("trap texts %6d  %10.0f traps/s  (%zu bytes)   snmptt daemon %8.0f traps/s   ratio %.1f\n", n,
                        rate, bytes, reference, rate / reference);
        else
            std::printf("trap texts %6d  %10.0f traps/s  (%zu bytes)   %.2f us per trap\n", n, rate, bytes,
                        seconds * 1e6 / n);
    }
    std::filesystem::current_path("/");
    std::filesystem::remove_all(dir);
    return 0;
}
