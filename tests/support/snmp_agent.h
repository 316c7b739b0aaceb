// snmpsim on a free loopback UDP port serving the sample console's chassis
// data (examples/console/snmp/agent: one community per file).
#ifndef KX_TESTS_SUPPORT_SNMP_AGENT_H
#define KX_TESTS_SUPPORT_SNMP_AGENT_H

#include <string>

#include "companion/libSnmpFile.h"
#include "support/server_process.h"

namespace kx::test {

class SnmpAgent {
public:
    // Starts the agent and waits until it answers (at most 20 s).
    SnmpAgent() : port_(FreePort(SOCK_DGRAM)) {
        const std::string source = KX_SOURCE_DIR;
        server_.Start({"/bin/sh", source + "/tools/snmp-agent.sh", source + "/examples/console/snmp/agent",
                       std::to_string(port_)},
                      [this] {
                          KXSnmpVar *records = nullptr;
                          const bool answered = KXSnmpFileGetValue(&records, address().c_str(), "1.3.6.1.4.1.99999.5.4.0",
                                                                   "get", "norbel", 0, 0, 1, 200, 0, 0) == 1;
                          KXSnmpFileFreeResources(records);
                          return answered;
                      },
                      std::chrono::seconds(20));
    }

    bool running() const { return server_.ready(); }
    int port() const { return port_; }
    // "127.0.0.1:<port>"
    std::string address() const { return "127.0.0.1:" + std::to_string(port_); }

private:
    int port_;
    ServerProcess server_;
};

}  // namespace kx::test

#endif
