// Blade discovery against the command line: KXDetermineBlades walking the
// server blade table of a simulated chassis (snmpsim on loopback) beside
// snmpwalk of the same table, for 64 blades x 4 interfaces and for tables
// of 1k and 10k interfaces. The ratio shows the library's overhead over the
// wire time (both use getnext, one request per interface).
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include "companion/libKXsnmp.h"
#include "kx_inventory.h"
#include "measure.h"

namespace {

constexpr const char *kNicColumn = "1.3.6.1.4.1.99999.5.1.1.3";

struct Chassis {
    const char *community;
    int blades;
};
constexpr Chassis kSizes[] = {
    {"blades64", 64},     // 256 interfaces
    {"blades256", 256},   // 1k
    {"blades2500", 2500}, // 10k
};
constexpr int kInterfaces = 4;

void WriteChassis(const std::string &dir, const Chassis &c) {
    std::ofstream out(dir + "/" + c.community + ".snmprec");
    for (int blade = 1; blade <= c.blades; ++blade)
        for (int nic = 1; nic <= kInterfaces; ++nic)
            out << kNicColumn << "." << blade << "." << nic << "|64|"
                << (nic == 1 ? "0.0.0.0" : "10." + std::to_string(blade / 250) + "." + std::to_string(blade % 250) +
                                               "." + std::to_string(nic))
                << "\n";
}

bool Answers(const std::string &address, const char *community) {
    KXSnmpVar *records = nullptr;
    const int got = KXSnmpFileGetValue(&records, address.c_str(), kNicColumn, "getnext", community, 0, 0, 1, 500, 0, 0);
    KXSnmpFileFreeResources(records);
    return got == 1;
}

int Discover(const std::string &address, const char *community) {
    KXBladeEntry *blades = nullptr;
    const int count = KXDetermineBlades(address.c_str(), nullptr, community, &blades);
    KXBladesStrFreeResources(count, &blades);
    return count;
}

}  // namespace

int main() {
    const std::filesystem::path data = std::filesystem::temp_directory_path() / "kx-blade-walk";
    std::filesystem::remove_all(data);
    std::filesystem::create_directories(data);
    for (const Chassis &c : kSizes) WriteChassis(data, c);
    const int port = 20000 + getpid() % 20000;
    const std::string address = "127.0.0.1:" + std::to_string(port);
    const pid_t agent = fork();
    if (agent == 0) {
        setpgid(0, 0);
        execl("/bin/sh", "sh", KX_SOURCE_DIR "/tools/snmp-agent.sh", data.c_str(), std::to_string(port).c_str(),
              static_cast<char *>(nullptr));
        _exit(127);
    }
    bool ready = false;
    for (int i = 0; i < 120 && !ready; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(250));
        ready = Answers(address, kSizes[0].community);
    }
    KXSetMibPath(KX_SOURCE_DIR "/examples/console/snmp/mibs");
    for (const Chassis &c : kSizes) {
        if (!ready) break;
        const int runs = c.blades > 256 ? 1 : 3;
        int found = 0;
        const double library = kx::bench::BestSeconds([&] { found = Discover(address, c.community); }, runs);
        const std::string command = "snmpwalk -v2c -On -Oq -c " + std::string(c.community) + " " + address + " " +
                                    kNicColumn + " >/dev/null";
        const double reference = kx::bench::BestSeconds([&] { (void)std::system(command.c_str()); }, runs);
        std::printf("KXDetermineBlades %5d interfaces (%4d blades) %9.1f ms   snmpwalk %9.1f ms   ratio %.2f\n",
                    c.blades * kInterfaces, found, library * 1e3, reference * 1e3, library / reference);
    }
    if (!ready) std::printf("the simulated chassis did not answer\n");
    kill(-agent, SIGTERM);
    waitpid(agent, nullptr, 0);
    std::filesystem::remove_all(data);
    return ready ? 0 : 1;
}
