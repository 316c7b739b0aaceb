// A lighttpd serving the sample console on a free loopback port, and a
// small HTTP client to talk to it.
#ifndef KX_TESTS_SUPPORT_WEB_SERVER_H
#define KX_TESTS_SUPPORT_WEB_SERVER_H

#include <string>

#include "support/kx_test.h"
#include "support/server_process.h"

namespace kx::test {

struct HttpReply {
    int status = 0;  // 0 when no reply came
    std::string headers;
    std::string body;
};

class ConsoleServer {
public:
    // Lays out the site with the given CGI program and starts lighttpd; with
    // agentPort, the inventory page's server list names the SNMP agent there.
    explicit ConsoleServer(const std::string &program, int agentPort = 0);

    bool running() const { return server_.ready(); }
    int port() const { return port_; }
    // The site's folder the CGI program runs in.
    std::string www() const { return site_.path() + "/www"; }
    // headers: further header lines, each ending in "\r\n" ("Cookie: ...").
    HttpReply Get(const std::string &target, const std::string &headers = "") const;
    HttpReply Post(const std::string &target, const std::string &form, const std::string &headers = "") const;

private:
    HttpReply Exchange(const std::string &request) const;

    TempDir site_;
    int port_ = 0;
    ServerProcess server_;
};

}  // namespace kx::test

#endif
