#include "support/snmp_agent.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "companion/libSnmpFile.h"

namespace kx::test {

int FreeUdpPort() {
    const int fd = socket(AF_INET, SOCK_DGRAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    int port = 0;
    if (bind(fd, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0 &&
        getsockname(fd, reinterpret_cast<sockaddr *>(&address), &size) == 0)
        port = ntohs(address.sin_port);
    close(fd);
    return port;
}

SnmpAgent::SnmpAgent() : port_(FreeUdpPort()) {
    const std::string script = std::string(KX_SOURCE_DIR) + "/tools/snmp-agent.sh";
    const std::string data = std::string(KX_SOURCE_DIR) + "/examples/console/snmp/agent";
    pid_ = fork();
    if (pid_ == 0) {
        setpgid(0, 0);  // the script and snmpsim end together
        execl("/bin/sh", "sh", script.c_str(), data.c_str(), std::to_string(port_).c_str(), static_cast<char *>(nullptr));
        _exit(127);
    }
    for (int attempt = 0; attempt < 80 && pid_ > 0 && !ready_; ++attempt) {
        std::this_thread::sleep_for(std::chrono::milliseconds(250));
        KXSnmpVar *records = nullptr;
        ready_ = KXSnmpFileGetValue(&records, address().c_str(), "1.3.6.1.4.1.99999.5.4.0", "get", "norbel", 0, 0, 1,
                                    200, 0, 0) == 1;
        KXSnmpFileFreeResources(records);
    }
}

SnmpAgent::~SnmpAgent() {
    if (pid_ <= 0) return;
    kill(-pid_, SIGTERM);  // the script and the agent it started
    waitpid(pid_, nullptr, 0);
}

}  // namespace kx::test
