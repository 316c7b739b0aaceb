// Single-file operations: delete, create a directory, whole-file read and
// write, and temporary file names.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>

#include "companion/libKXUtils.h"

namespace kxutils {
namespace {

// Where temporary files go when no directory is named.
constexpr char kSystemTemporaryDirectory[] = "/tmp";
// The pattern of the names KXUtilsTempFileName hands out, after the folder.
constexpr char kTemporaryNamePattern[] = "/kx.XXXXXX";

char *HeapCopy(const std::string &text) {
    return strdup(text.c_str());
}

}  // namespace
}  // namespace kxutils

extern "C" {

int KXUtilsDeleteFile(const char *path) {
    if (path == nullptr || *path == '\0') return -1;
    return unlink(path) == 0 ? 0 : -errno;
}

int KXUtilsCreateDirectory(const char *path) {
    if (path == nullptr || *path == '\0') return -1;
    if (mkdir(path, 0777) == 0) return 0;
    struct stat info;
    if (errno == EEXIST && stat(path, &info) == 0 && S_ISDIR(info.st_mode)) return 0;
    return -errno;
}

int KXUtilsReadFileToMemory(const char *path, char **buffer) {
    int error = 0;
    const int read = KXUtilsReadFileToMemoryErrorOutput(path, buffer, &error, nullptr);
    return read >= 0 ? read : -(error != 0 ? error : EIO);
}

int KXUtilsWriteMemoryToFile2(const char *path, const char *text, int length) {
    int error = 0;
    const int written = KXUtilsWriteMemoryToFileErrorOutput(path, text, length, &error, nullptr);
    if (written < 0) return -(error != 0 ? error : EIO);
    const size_t bytes = length > 0 ? static_cast<size_t>(length) : (text ? std::strlen(text) : 0);
    return bytes > 0 ? static_cast<int>(bytes) : 1;
}

char *KXUtilsTempDirectory(const char *directory) {
    if (directory != nullptr && *directory != '\0') return kxutils::HeapCopy(directory);
    return kxutils::HeapCopy(kxutils::kSystemTemporaryDirectory);
}

char *KXUtilsTempFileName(const char *directory) {
    if (directory == nullptr || *directory == '\0') directory = kxutils::kSystemTemporaryDirectory;
    std::string name = std::string(directory) + kxutils::kTemporaryNamePattern;
    const int fd = mkostemp(name.data(), O_CLOEXEC);
    if (fd < 0) return nullptr;
    close(fd);
    return kxutils::HeapCopy(name);
}

}  // extern "C"
