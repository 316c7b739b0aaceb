// Reachability and name resolution. A ping is a real ICMP echo: through an
// unprivileged ICMP datagram socket where the system allows one
// (net.ipv4.ping_group_range), else through a raw socket (root or
// CAP_NET_RAW). Without either the host counts as not answering.
#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/icmp6.h>
#include <netinet/in.h>
#include <netinet/ip.h>
#include <netinet/ip_icmp.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>

#include "companion/libKXUtils.h"

namespace kxutils {
namespace {

constexpr std::size_t kPayloadBytes = 16;
constexpr std::size_t kEchoBytes = 8 + kPayloadBytes;

// One resolved address of a host.
struct Target {
    sockaddr_storage address{};
    socklen_t length = 0;
    int family = AF_UNSPEC;
};

// An ICMP socket that closes itself; raw tells whether replies carry the
// IPv4 header and whether the echo identifier is ours to check.
struct IcmpSocket {
    int fd = -1;
    bool raw = false;
    IcmpSocket(const IcmpSocket &) = delete;
    IcmpSocket &operator=(const IcmpSocket &) = delete;
    explicit IcmpSocket(int family) {
        const int protocol = family == AF_INET6 ? int{IPPROTO_ICMPV6} : int{IPPROTO_ICMP};
        fd = socket(family, SOCK_DGRAM | SOCK_CLOEXEC, protocol);
        if (fd >= 0) return;
        fd = socket(family, SOCK_RAW | SOCK_CLOEXEC, protocol);
        raw = fd >= 0;
    }
    ~IcmpSocket() {
        if (fd >= 0) close(fd);
    }
};

bool Resolve(const char *host, int flags, Target &target) {
    addrinfo hints{};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_DGRAM;
    hints.ai_flags = flags;
    addrinfo *found = nullptr;
    if (getaddrinfo(host, nullptr, &hints, &found) != 0 || found == nullptr) return false;
    const addrinfo *pick = found;  // an IPv4 address when the host has one
    for (const addrinfo *a = found; a != nullptr; a = a->ai_next)
        if (a->ai_family == AF_INET) { pick = a; break; }
    std::memcpy(&target.address, pick->ai_addr, pick->ai_addrlen);
    target.length = pick->ai_addrlen;
    target.family = pick->ai_family;
    freeaddrinfo(found);
    return true;
}

uint16_t Checksum(const unsigned char *bytes, std::size_t size) {
    uint32_t sum = 0;
    for (std::size_t i = 0; i + 1 < size; i += 2) sum += static_cast<uint32_t>(bytes[i] << 8 | bytes[i + 1]);
    if (size % 2 != 0) sum += static_cast<uint32_t>(bytes[size - 1] << 8);
    while (sum >> 16) sum = (sum & 0xffff) + (sum >> 16);
    return static_cast<uint16_t>(~sum);
}

double Now() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

// The echo request: type, code, checksum, identifier, sequence, and a
// payload unique to this request (thread, time) that the reply must echo.
std::array<unsigned char, kEchoBytes> EchoRequest(int family, uint16_t identifier, uint16_t sequence) {
    std::array<unsigned char, kEchoBytes> echo{};
    echo[0] = family == AF_INET6 ? ICMP6_ECHO_REQUEST : ICMP_ECHO;
    echo[4] = static_cast<unsigned char>(identifier >> 8);
    echo[5] = static_cast<unsigned char>(identifier & 0xff);
    echo[6] = static_cast<unsigned char>(sequence >> 8);
    echo[7] = static_cast<unsigned char>(sequence & 0xff);
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    const long thread = syscall(SYS_gettid);
    std::memcpy(&echo[8], &now, std::min(sizeof now, std::size_t{8}));
    std::memcpy(&echo[16], &thread, std::min(sizeof thread, std::size_t{8}));
    const uint16_t sum = Checksum(echo.data(), echo.size());
    echo[2] = static_cast<unsigned char>(sum >> 8);
    echo[3] = static_cast<unsigned char>(sum & 0xff);
    return echo;
}

// Whether bytes (after any IPv4 header) are the reply to request.
bool IsReply(const IcmpSocket &sock, int family, const unsigned char *bytes, std::size_t size,
             const std::array<unsigned char, kEchoBytes> &request) {
    if (sock.raw && family == AF_INET) {
        if (size < 20) return false;
        const std::size_t header = static_cast<std::size_t>(bytes[0] & 0x0f) * 4;
        if (size < header) return false;
        bytes += header;
        size -= header;
    }
    if (size < kEchoBytes) return false;
    const unsigned char replyType = family == AF_INET6 ? ICMP6_ECHO_REPLY : ICMP_ECHOREPLY;
    if (bytes[0] != replyType) return false;
    // A datagram socket's identifier is the kernel's; a raw one sees everyone's.
    if (sock.raw && std::memcmp(bytes + 4, request.data() + 4, 2) != 0) return false;
    return std::memcmp(bytes + 6, request.data() + 6, 2 + kPayloadBytes) == 0;
}

// Sends one echo and waits up to timeoutMs for its reply.
bool Echo(const IcmpSocket &sock, const Target &target, uint16_t sequence, int timeoutMs) {
    const auto identifier = static_cast<uint16_t>(syscall(SYS_gettid) ^ getpid());
    const auto request = EchoRequest(target.family, identifier, sequence);
    if (sendto(sock.fd, request.data(), request.size(), 0, reinterpret_cast<const sockaddr *>(&target.address),
               target.length) < 0)
        return false;
    const double deadline = Now() + timeoutMs / 1000.0;
    for (double left = deadline - Now(); left > 0; left = deadline - Now()) {
        pollfd ready{sock.fd, POLLIN, 0};
        if (poll(&ready, 1, static_cast<int>(left * 1000) + 1) <= 0) continue;
        unsigned char reply[1500];
        const ssize_t got = recv(sock.fd, reply, sizeof reply, MSG_DONTWAIT);
        if (got > 0 && IsReply(sock, target.family, reply, static_cast<std::size_t>(got), request)) return true;
    }
    return false;
}

char *NameOf(const Target &target, int flags) {
    char name[NI_MAXHOST];
    if (getnameinfo(reinterpret_cast<const sockaddr *>(&target.address), target.length, name, sizeof name, nullptr,
                    0, flags) != 0)
        return nullptr;
    return strdup(name);
}

}  // namespace
}  // namespace kxutils

extern "C" {

int KXUtilsPing(const char *host, int count, int timeoutMs, int /*size*/, int /*ttl*/, int /*flags*/) {
    kxutils::Target target;
    if (host == nullptr || *host == '\0' || !kxutils::Resolve(host, 0, target)) return -1;
    const kxutils::IcmpSocket sock(target.family);
    if (sock.fd < 0) return -1;
    if (count < 1) count = 1;
    if (timeoutMs < 1) timeoutMs = 1000;
    for (int sequence = 1; sequence <= count; ++sequence)
        if (kxutils::Echo(sock, target, static_cast<uint16_t>(sequence), timeoutMs)) return 0;
    return 1;
}

char *_GetHostnameByNetAddress(const char *address) {
    kxutils::Target target;
    if (address == nullptr || !kxutils::Resolve(address, AI_NUMERICHOST, target)) return nullptr;
    return kxutils::NameOf(target, NI_NAMEREQD);
}

char *_GetNetAddressByHostname(const char *name) {
    kxutils::Target target;
    if (name == nullptr || *name == '\0' || !kxutils::Resolve(name, 0, target)) return nullptr;
    return kxutils::NameOf(target, NI_NUMERICHOST);
}

}  // extern "C"
