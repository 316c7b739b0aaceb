#include "support/web_server.h"

#include <cstdlib>

namespace kx::test {
namespace {

int Connect(int port) {
    const int fd = socket(AF_INET, SOCK_STREAM, 0);
    const sockaddr_in address = Loopback(port);
    if (connect(fd, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0) return fd;
    close(fd);
    return -1;
}

HttpReply ParseReply(const std::string &raw) {
    HttpReply reply;
    const size_t end = raw.find("\r\n\r\n");
    if (raw.rfind("HTTP/1.", 0) != 0 || end == std::string::npos) return reply;
    reply.status = std::atoi(raw.c_str() + raw.find(' ') + 1);
    reply.headers = raw.substr(0, end);
    reply.body = raw.substr(end + 4);
    return reply;
}

}  // namespace

ConsoleServer::ConsoleServer(const std::string &program, int agentPort) : port_(FreePort(SOCK_STREAM)) {
    const std::string layout = std::string(KX_SOURCE_DIR) + "/tools/console-site.sh " + site_.path() + " " +
                               program + " " + std::to_string(port_) +
                               (agentPort > 0 ? " " + std::to_string(agentPort) : std::string());
    if (port_ == 0 || std::system(layout.c_str()) != 0) return;
    server_.Start({"lighttpd", "-D", "-f", site_.path() + "/lighttpd.conf"}, [this] {
        const int fd = Connect(port_);
        if (fd >= 0) close(fd);
        return fd >= 0;
    });
}

HttpReply ConsoleServer::Exchange(const std::string &request) const {
    const int fd = Connect(port_);
    if (fd < 0) return {};
    timeval timeout{30, 0};  // a hanging page fails the test instead of the run
    setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof timeout);
    for (size_t sent = 0; sent < request.size();) {
        const ssize_t n = send(fd, request.data() + sent, request.size() - sent, MSG_NOSIGNAL);
        if (n <= 0) break;
        sent += static_cast<size_t>(n);
    }
    std::string raw;
    char buffer[65536];
    for (ssize_t n; (n = recv(fd, buffer, sizeof buffer, 0)) > 0;) raw.append(buffer, static_cast<size_t>(n));
    close(fd);
    return ParseReply(raw);
}

HttpReply ConsoleServer::Get(const std::string &target, const std::string &headers) const {
    return Exchange("GET " + target + " HTTP/1.0\r\nHost: 127.0.0.1\r\n" + headers + "\r\n");
}

HttpReply ConsoleServer::Post(const std::string &target, const std::string &form, const std::string &headers) const {
    return Exchange("POST " + target + " HTTP/1.0\r\nHost: 127.0.0.1\r\n" + headers +
                    "Content-Type: application/x-www-form-urlencoded\r\nContent-Length: " +
                    std::to_string(form.size()) + "\r\n\r\n" + form);
}

}  // namespace kx::test
