#include "core/file_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <string_view>

namespace kx::core {
namespace {

constexpr char kLockPrefix[] = ".";
constexpr char kLockSuffix[] = ".lock";
constexpr long kPollNanoseconds = 2'000'000;

// "dir/name" -> "dir/.name.lock"; "name" -> ".name.lock".
std::string LockPath(std::string_view path) {
    const size_t slash = path.rfind('/');
    const size_t base = slash == std::string_view::npos ? 0 : slash + 1;
    std::string lock(path.substr(0, base));
    lock += kLockPrefix;
    lock += path.substr(base);
    lock += kLockSuffix;
    return lock;
}

// Tries the lock until it comes or the wait is over.
bool LockWithin(int fd, int milliseconds) {
    const timespec pause{0, kPollNanoseconds};
    for (long waited = 0;; waited += kPollNanoseconds) {
        if (flock(fd, LOCK_EX | LOCK_NB) == 0) return true;
        if (errno != EWOULDBLOCK && errno != EINTR) return false;
        if (waited >= static_cast<long>(milliseconds) * 1'000'000) return false;
        nanosleep(&pause, nullptr);
    }
}

}  // namespace

FileLock::FileLock(const char *path) {
    if (path == nullptr || *path == '\0') return;
    const int fd = open(LockPath(path).c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (fd < 0) return;
    if (LockWithin(fd, kWaitMilliseconds))
        fd_ = fd;
    else
        close(fd);
}

FileLock::~FileLock() {
    if (fd_ >= 0) close(fd_);  // closing the last descriptor releases the lock
}

}  // namespace kx::core
