// Whole-file reads and writes through memory. A write replaces the file as a
// whole: the new content goes into a temporary file in the same directory,
// which is then renamed over the old one, so readers and other writers see
// either the old file or the new one, never a part of it. A write respects
// the file's permissions and goes through a symbolic link to its target.
#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "companion/libKXUtils.h"

namespace kxutils {
namespace {

// The largest file that fits the int length of these operations.
constexpr size_t kMaxFileBytes = INT_MAX - 1;
constexpr char kTemporaryRandom[] = "XXXXXX";
constexpr char kTemporaryEnding[] = ".tmp";

// Reports a failure through the optional out words; returns -1.
int Fail(int error, int *errorCode, char **errorText) {
    if (errorCode != nullptr) *errorCode = error;
    if (errorText != nullptr) *errorText = strdup(std::strerror(error));
    return -1;
}

// Reads all of fd into a new heap buffer with a NUL after the bytes.
int ReadAll(int fd, char **buffer) {
    size_t capacity = 4096, used = 0;
    char *data = static_cast<char *>(std::malloc(capacity + 1));
    while (data != nullptr) {
        const ssize_t got = read(fd, data + used, capacity - used);
        if (got == 0) break;
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) { std::free(data); return -errno; }
        used += static_cast<size_t>(got);
        if (used > kMaxFileBytes) { std::free(data); return -EFBIG; }
        if (used == capacity) {
            capacity *= 2;
            char *grown = static_cast<char *>(std::realloc(data, capacity + 1));
            if (grown == nullptr) std::free(data);
            data = grown;
        }
    }
    if (data == nullptr) return -ENOMEM;
    data[used] = '\0';
    *buffer = data;
    return static_cast<int>(used);
}

bool WriteAll(int fd, const char *text, size_t length) {
    while (length > 0) {
        const ssize_t put = write(fd, text, length);
        if (put < 0 && errno == EINTR) continue;
        if (put <= 0) return false;
        text += put;
        length -= static_cast<size_t>(put);
    }
    return true;
}

// The mode the new file gets: that of the file it replaces, or what a newly
// created file would get under the process's umask.
mode_t TargetMode(const char *path) {
    struct stat info;
    if (stat(path, &info) == 0) return info.st_mode & 07777;
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

// The file a write replaces: a symbolic link is written through to its
// target, so that the link stays a link. Empty when the link leads nowhere.
std::string WriteTarget(const char *path) {
    struct stat info;
    if (lstat(path, &info) != 0 || !S_ISLNK(info.st_mode)) return path;
    char *real = realpath(path, nullptr);
    std::string target = real != nullptr ? real : "";
    std::free(real);
    return target;
}

// 0 when the file may be replaced: it is missing, or a regular file that has
// a write permission and that this process may write (root ignores the
// permission bits, so a file with none of them counts as read-only too).
int Writable(const std::string &path) {
    struct stat info;
    if (stat(path.c_str(), &info) != 0) return errno == ENOENT ? 0 : errno;
    if (!S_ISREG(info.st_mode)) return EISDIR;
    if ((info.st_mode & 0222) == 0 || access(path.c_str(), W_OK) != 0) return EACCES;
    return 0;
}

// Temporary files are named "." + file name + ".XXXXXX.tmp": hidden, and
// with an ending that the web server refuses to serve.
struct TemporaryName {
    std::string directory;  // with its "/", or empty for the current one
    std::string prefix;     // "." + file name + "."
    std::string Pattern() const { return directory + prefix + kTemporaryRandom + kTemporaryEnding; }
    bool Matches(std::string_view name) const {
        return name.size() == prefix.size() + std::strlen(kTemporaryRandom) + std::strlen(kTemporaryEnding) &&
               name.starts_with(prefix) && name.ends_with(kTemporaryEnding);
    }
};

TemporaryName TemporaryFor(const std::string &target) {
    const size_t slash = target.rfind('/');
    const size_t base = slash == std::string::npos ? 0 : slash + 1;
    return {target.substr(0, base), "." + target.substr(base) + "."};
}

// A writer holds a lock on its temporary file until the file is renamed, so
// a temporary file whose lock can be taken was left by a writer that died.
void RemoveIfAbandoned(const std::string &path) {
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
    if (fd < 0) return;
    struct stat opened, named;
    if (flock(fd, LOCK_EX | LOCK_NB) == 0 && fstat(fd, &opened) == 0 && lstat(path.c_str(), &named) == 0 &&
        opened.st_ino == named.st_ino && opened.st_dev == named.st_dev)
        unlink(path.c_str());
    close(fd);
}

void RemoveAbandoned(const TemporaryName &name) {
    DIR *directory = opendir(name.directory.empty() ? "." : name.directory.c_str());
    if (directory == nullptr) return;
    while (const dirent *entry = readdir(directory))
        if (name.Matches(entry->d_name)) RemoveIfAbandoned(name.directory + entry->d_name);
    closedir(directory);
}

// Writes a temporary sibling of target and renames it over target; 0 or an
// errno. The temporary file is renamed before it is closed, so its lock
// lasts as long as its name.
int ReplaceFile(const std::string &target, const char *text, size_t length) {
    const TemporaryName name = TemporaryFor(target);
    RemoveAbandoned(name);
    std::string temporary = name.Pattern();
    const int fd = mkostemps(temporary.data(), static_cast<int>(std::strlen(kTemporaryEnding)), O_CLOEXEC);
    if (fd < 0) return errno;
    int error = 0;
    if (flock(fd, LOCK_EX) != 0 || fchmod(fd, TargetMode(target.c_str())) != 0 || !WriteAll(fd, text, length) ||
        fsync(fd) != 0)
        error = errno ? errno : EIO;
    if (error == 0 && rename(temporary.c_str(), target.c_str()) != 0) error = errno;
    if (error != 0) unlink(temporary.c_str());
    if (close(fd) != 0 && error == 0) error = errno;
    return error;
}

int Replace(const char *path, const char *text, size_t length) {
    const std::string target = WriteTarget(path);
    if (target.empty()) return ENOENT;
    if (const int error = Writable(target)) return error;
    return ReplaceFile(target, text, length);
}

}  // namespace
}  // namespace kxutils

extern "C" {

int KXUtilsReadFileToMemoryErrorOutput(const char *path, char **buffer, int *errorCode, char **errorText) {
    if (errorText != nullptr) *errorText = nullptr;
    if (buffer == nullptr) return kxutils::Fail(EINVAL, errorCode, errorText);
    *buffer = nullptr;
    if (path == nullptr) return kxutils::Fail(EINVAL, errorCode, errorText);
    const int fd = open(path, O_RDONLY | O_CLOEXEC);
    if (fd < 0) return kxutils::Fail(errno, errorCode, errorText);
    const int result = kxutils::ReadAll(fd, buffer);
    close(fd);
    if (result < 0) return kxutils::Fail(-result, errorCode, errorText);
    if (errorCode != nullptr) *errorCode = 0;
    return result;
}

char *KXUtilsAppendText(const char *front, int frontLength, const char *back, int backLength, const char *middle,
                        int middleLength) {
    const size_t f = (front != nullptr && frontLength > 0) ? static_cast<size_t>(frontLength) : 0;
    const size_t m = (middle != nullptr && middleLength > 0) ? static_cast<size_t>(middleLength) : 0;
    const size_t b = (back != nullptr && backLength > 0) ? static_cast<size_t>(backLength) : 0;
    char *text = static_cast<char *>(std::malloc(f + m + b + 1));
    if (text == nullptr) return nullptr;
    if (f > 0) std::memcpy(text, front, f);
    if (m > 0) std::memcpy(text + f, middle, m);
    if (b > 0) std::memcpy(text + f + m, back, b);
    text[f + m + b] = '\0';
    return text;
}

int KXUtilsWriteMemoryToFileErrorOutput(const char *path, const char *text, int length, int *errorCode,
                                        char **errorText) {
    if (errorText != nullptr) *errorText = nullptr;
    if (path == nullptr || *path == '\0' || length < 0) return kxutils::Fail(EINVAL, errorCode, errorText);
    const size_t bytes = length > 0 ? static_cast<size_t>(length) : (text ? std::strlen(text) : 0);
    if (text == nullptr && bytes > 0) return kxutils::Fail(EINVAL, errorCode, errorText);
    const int error = kxutils::Replace(path, text ? text : "", bytes);
    if (error != 0) return kxutils::Fail(error, errorCode, errorText);
    if (errorCode != nullptr) *errorCode = 0;
    return 1;
}

}  // extern "C"
