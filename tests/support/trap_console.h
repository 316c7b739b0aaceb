// The trap console's road in tests and benchmarks (no GoogleTest here): snmptrapd receiving into a console
// site's trap store, a fast trap sender, and headless Chromium.
#ifndef KX_TESTS_SUPPORT_TRAP_CONSOLE_H
#define KX_TESTS_SUPPORT_TRAP_CONSOLE_H

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

#include "support/server_process.h"

namespace kx::test {

// The names of the trap files in the store of a console site, sorted.
std::vector<std::string> StoredTraps(const std::string &site);

// tools/trap-receiver.sh for a site laid out by console-site.sh, on a free
// UDP port of 127.0.0.1; stopped with the object.
class TrapReceiver {
public:
    explicit TrapReceiver(const std::string &site);

    bool running() const { return server_.ready(); }
    int port() const { return port_; }
    // The traps snmptrapd logged as received.
    int Accepted() const;
    std::vector<std::string> Traps() const { return StoredTraps(site_); }
    // Waits until the store holds at least count trap files.
    bool WaitForTraps(size_t count, std::chrono::seconds limit) const;

private:
    std::string site_;
    int port_ = 0;
    ServerProcess server_;
};

// Sends one SNMPv2c trap (community "public") with one octet string
// variable to 127.0.0.1:port, as one datagram; false when it was not sent.
bool SendTrap(int port, std::string_view trapOid, std::string_view variableOid, std::string_view value);

// The DOM of url after headless Chromium loaded it (and whatever its
// scripts did within budgetMs of virtual time), with a fresh profile.
std::string BrowserDom(const std::string &url, int budgetMs = 5000);

}  // namespace kx::test

#endif
