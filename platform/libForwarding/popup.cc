// The popup alarm: one escaped line per popup, appended to the queue file.
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <new>
#include <string>
#include <string_view>

#include "companion/libForwarding.h"

namespace forwarding {
namespace {

constexpr char kHex[] = "0123456789ABCDEF";

// Bytes that would break the line or its fields are written as %XX.
void AppendEscaped(std::string &out, std::string_view text) {
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte != 0x7F && byte != '%') {
            out += c;
            continue;
        }
        out += '%';
        out += kHex[byte >> 4];
        out += kHex[byte & 0xF];
    }
}

// "<seconds since 1970>.<process id>\t<target or *>\t<message>\n"
std::string PopupLine(const char *target, const char *message) {
    std::string line = std::to_string(static_cast<long long>(std::time(nullptr))) + "." + std::to_string(getpid());
    line += '\t';
    if (target == nullptr || *target == '\0')
        line += '*';
    else
        AppendEscaped(line, target);
    line += '\t';
    AppendEscaped(line, message);
    line += '\n';
    return line;
}

bool Append(const std::string &line) {
    const int fd = open(ALARM_POPUP_QUEUE, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
    if (fd < 0) return false;
    // The lock keeps readers that acknowledge popups (and rewrite the queue)
    // from losing a line appended meanwhile.
    bool written = flock(fd, LOCK_EX) == 0;
    std::string_view rest = line;
    while (written && !rest.empty()) {
        const ssize_t n = write(fd, rest.data(), rest.size());
        if (n < 0 && errno == EINTR) continue;
        written = n > 0;
        if (written) rest.remove_prefix(static_cast<std::size_t>(n));
    }
    return close(fd) == 0 && written;
}

}  // namespace
}  // namespace forwarding

extern "C" int AlarmFwdPopup(int /*kind*/, const char *target, const char *message, int /*flags*/, int /*reserved*/) {
    if (message == nullptr) return ALARM_FWD_BAD_ARGUMENT;
    try {
        return forwarding::Append(forwarding::PopupLine(target, message)) ? 0 : ALARM_FWD_UNWRITABLE;
    } catch (const std::bad_alloc &) {
        return ALARM_FWD_UNWRITABLE;
    }
}
