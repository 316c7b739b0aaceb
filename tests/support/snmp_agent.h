// snmpsim on a free loopback UDP port serving the sample console's chassis
// data (examples/console/snmp/agent: one community per file).
#ifndef KX_TESTS_SUPPORT_SNMP_AGENT_H
#define KX_TESTS_SUPPORT_SNMP_AGENT_H

#include <sys/types.h>

#include <string>

namespace kx::test {

// A UDP port on 127.0.0.1 that nothing is bound to right now.
int FreeUdpPort();

class SnmpAgent {
public:
    // Starts the agent and waits until it answers (at most 20 s).
    SnmpAgent();
    ~SnmpAgent();
    SnmpAgent(const SnmpAgent &) = delete;
    SnmpAgent &operator=(const SnmpAgent &) = delete;

    bool running() const { return ready_; }
    int port() const { return port_; }
    // "127.0.0.1:<port>"
    std::string address() const { return "127.0.0.1:" + std::to_string(port_); }

private:
    int port_;
    pid_t pid_ = -1;
    bool ready_ = false;
};

}  // namespace kx::test

#endif
