// Lock files: the lock is the file's existence; its content is the id of
// the process that made it, so that a lock left by a killed CGI process can
// be recognised and cleared.
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <ctime>
#include <string>

#include "companion/libKXUtils.h"

namespace kxutils {
namespace {

constexpr int kDefaultStaleSeconds = 10;  // a lock that names no process, once this old
constexpr int kPollMilliseconds = 5;

struct LockInfo {
    bool exists = false;
    pid_t owner = 0;  // 0: the file names no process (yet)
    ino_t inode = 0;
    time_t modified = 0;
};

LockInfo Inspect(const char *path) {
    LockInfo info;
    const int fd = open(path, O_RDONLY | O_CLOEXEC);
    if (fd < 0) return info;
    char text[32];
    const ssize_t got = read(fd, text, sizeof text);
    struct stat status;
    if (fstat(fd, &status) == 0) info = {true, 0, status.st_ino, status.st_mtime};
    close(fd);
    if (info.exists && got > 0) std::from_chars(text, text + got, info.owner);
    return info;
}

bool Alive(pid_t pid) { return kill(pid, 0) == 0 || errno == EPERM; }

bool LeftBehind(const LockInfo &info, int staleSeconds) {
    if (info.owner > 0) return !Alive(info.owner);
    return std::time(nullptr) - info.modified > (staleSeconds < 0 ? kDefaultStaleSeconds : staleSeconds);
}

// Moves the dead lock aside before removing it: if another process cleared it
// and made a fresh one meanwhile, the fresh one is what moved, and it goes back.
bool ClearLeftBehind(const char *path, const LockInfo &dead) {
    // The name aside ends in letters, so no listing of trap files or identifiers matches it.
    const std::string aside = std::string(path) + "." + std::to_string(getpid()) + ".dead";
    if (rename(path, aside.c_str()) != 0) return errno == ENOENT;  // gone already: fine
    struct stat status;
    if (stat(aside.c_str(), &status) == 0 && status.st_ino != dead.inode) (void)link(aside.c_str(), path);
    unlink(aside.c_str());
    return true;
}

}  // namespace
}  // namespace kxutils

extern "C" {

int CreateLockFile(const char *lockPath) {
    if (lockPath == nullptr) return -1;
    const int fd = open(lockPath, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd < 0) return -1;
    const std::string owner = std::to_string(getpid()) + "\n";
    const bool written = write(fd, owner.data(), owner.size()) == static_cast<ssize_t>(owner.size());
    close(fd);
    if (!written) unlink(lockPath);
    return written ? 0 : -1;
}

int FileIsLocked(const char *lockPath, int waitMilliseconds, int staleSeconds) {
    if (lockPath == nullptr) return 0;
    for (int waited = 0;; waited += kxutils::kPollMilliseconds) {
        const kxutils::LockInfo info = kxutils::Inspect(lockPath);
        if (!info.exists) return 0;
        if (info.owner == getpid()) return 1;
        if (kxutils::LeftBehind(info, staleSeconds)) {
            if (kxutils::ClearLeftBehind(lockPath, info)) continue;
            return -1;  // it cannot be cleared: it stays in the way
        }
        if (waited >= waitMilliseconds) return -1;
        usleep(kxutils::kPollMilliseconds * 1000);
    }
}

int ReleaseLockFile(const char *lockPath) { return (lockPath != nullptr && unlink(lockPath) == 0) ? 0 : -1; }

}  // extern "C"
