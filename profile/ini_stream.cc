// WriteIniFile can hand its file on to the caller as an open stream. A plain
// FILE on the file itself would let a reader, or a crash, see a half-written
// file; this stream keeps the content in memory and replaces the file with
// all of it whenever stdio flushes.
#include "profile/ini_stream.h"

#include <sys/types.h>

#include <cstdio>
#include <string>
#include <new>
#include <utility>

#include "profile/profile_internal.h"

namespace kx::profile {
namespace {

struct ReplacingFile {
    std::string path;
    std::string content;
    std::unique_ptr<core::FileLock> lock;
};

ssize_t WriteBytes(void *cookie, const char *bytes, std::size_t size) {
    auto *file = static_cast<ReplacingFile *>(cookie);
    const std::size_t before = file->content.size();
    return Guard(static_cast<ssize_t>(-1), [&] {
        file->content.append(bytes, size);
        if (ReplaceFile(file->path, file->content) == 0) return static_cast<ssize_t>(size);
        file->content.resize(before);
        return static_cast<ssize_t>(-1);
    });
}

int CloseFile(void *cookie) {
    delete static_cast<ReplacingFile *>(cookie);
    return 0;
}

}  // namespace

std::FILE *OpenReplacingStream(std::string path, std::string content, std::unique_ptr<core::FileLock> lock) {
    auto *file = new (std::nothrow) ReplacingFile{std::move(path), std::move(content), std::move(lock)};
    const cookie_io_functions_t functions{nullptr, WriteBytes, nullptr, CloseFile};
    if (file == nullptr) return nullptr;
    std::FILE *stream = fopencookie(file, "w", functions);
    if (stream == nullptr) delete file;
    return stream;
}

}  // namespace kx::profile
