// Processes of tests and benchmarks: children that run a piece of the test
// at once, and servers for the time of a test (lighttpd, snmpsim, snmptrapd,
// snmptt): a free port of 127.0.0.1, the process started in a group of its
// own, waited for until it answers, and stopped with everything it started.
// Header only: the benchmarks include it without the test library.
#ifndef KX_TESTS_SUPPORT_SERVER_PROCESS_H
#define KX_TESTS_SUPPORT_SERVER_PROCESS_H

#include <arpa/inet.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace kx::test {

inline sockaddr_in Loopback(int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

// A port of 127.0.0.1 (type SOCK_STREAM or SOCK_DGRAM) that nothing is bound
// to right now: the kernel picks it for a moment. 0 when none was given.
inline int FreePort(int type) {
    const int fd = socket(AF_INET, type, 0);
    sockaddr_in address = Loopback(0);
    socklen_t size = sizeof address;
    int port = 0;
    if (bind(fd, reinterpret_cast<sockaddr *>(&address), size) == 0 &&
        getsockname(fd, reinterpret_cast<sockaddr *>(&address), &size) == 0)
        port = ntohs(address.sin_port);
    close(fd);
    return port;
}

// Waits until done() says yes, asking every 50 ms; false when limit ran out.
inline bool WaitFor(const std::function<bool()> &done, std::chrono::milliseconds limit) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!done()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return true;
}

// Runs body(i) for i = 0 .. count - 1, each in a child process of its own
// that ends with status 0 when body returns; the children's ids.
inline std::vector<pid_t> ForkEach(int count, const std::function<void(int)> &body) {
    std::vector<pid_t> children;
    for (int i = 0; i < count; ++i) {
        const pid_t child = fork();
        if (child == 0) {
            body(i);
            _exit(0);
        }
        children.push_back(child);
    }
    return children;
}

// Waits for the children; how many of them did not end with status 0.
inline int WaitEach(const std::vector<pid_t> &children) {
    int failed = 0;
    for (const pid_t child : children) {
        int status = -1;
        failed += child < 0 || waitpid(child, &status, 0) != child || status != 0;
    }
    return failed;
}

class ServerProcess {
public:
    ServerProcess() = default;
    ~ServerProcess() { Stop(); }
    ServerProcess(const ServerProcess &) = delete;
    ServerProcess &operator=(const ServerProcess &) = delete;

    // Runs argv (the program searched in PATH, its output discarded), then
    // waits up to limit for ready() (none: ready at once); true once ready.
    bool Start(const std::vector<std::string> &argv, const std::function<bool()> &ready = nullptr,
               std::chrono::milliseconds limit = std::chrono::seconds(5)) {
        std::fflush(nullptr);  // the child would write the parent's buffered output again
        pid_ = fork();
        if (pid_ == 0) {
            setpgid(0, 0);  // here and in the parent: whichever comes first
            std::vector<char *> args;
            for (const std::string &arg : argv) args.push_back(const_cast<char *>(arg.c_str()));
            args.push_back(nullptr);
            (void)!std::freopen("/dev/null", "w", stdout);
            (void)!std::freopen("/dev/null", "w", stderr);
            execvp(args[0], args.data());
            _exit(127);
        }
        if (pid_ > 0) setpgid(pid_, pid_);  // a script and the servers it starts end together
        ready_ = pid_ > 0 && (!ready || WaitFor(ready, limit));
        return ready_;
    }

    // SIGTERM to the whole group, then waits for the process.
    void Stop() {
        if (pid_ <= 0) return;
        kill(-pid_, SIGTERM);
        waitpid(pid_, nullptr, 0);
        pid_ = -1;
        ready_ = false;
    }

    bool ready() const { return ready_; }

private:
    pid_t pid_ = -1;
    bool ready_ = false;
};

}  // namespace kx::test

#endif
