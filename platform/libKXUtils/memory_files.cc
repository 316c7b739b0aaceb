// Whole-file reads and writes through memory. A write replaces the file as a
// whole: the new content goes into a temporary file in the same directory,
// which is then renamed over the old one, so readers and other writers see
// either the old file or the new one, never a part of it.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <string>

#include "companion/libKXUtils.h"

namespace kxutils {
namespace {

// The largest file that fits the int length of these operations.
constexpr size_t kMaxFileBytes = INT_MAX - 1;
constexpr char kTemporarySuffix[] = ".XXXXXX";

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

// Writes a temporary sibling of path and renames it over path; 0 or an errno.
int ReplaceFile(const char *path, const char *text, size_t length) {
    std::string temporary = std::string(path) + kTemporarySuffix;
    const int fd = mkstemp(temporary.data());
    if (fd < 0) return errno;
    int error = 0;
    if (fchmod(fd, TargetMode(path)) != 0 || !WriteAll(fd, text, length) || fsync(fd) != 0) error = errno ? errno : EIO;
    if (close(fd) != 0 && error == 0) error = errno;
    if (error == 0 && rename(temporary.c_str(), path) != 0) error = errno;
    if (error != 0) unlink(temporary.c_str());
    return error;
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
    const int error = kxutils::ReplaceFile(path, text ? text : "", bytes);
    if (error != 0) return kxutils::Fail(error, errorCode, errorText);
    if (errorCode != nullptr) *errorCode = 0;
    return 1;
}

}  // extern "C"
