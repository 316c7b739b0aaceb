// Path and file-system helpers.
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <string_view>

#include "companion/libKXUtils.h"

extern "C" {

const char *KXUtilsBasename(const char *path, int /*flag*/) {
    if (path == nullptr) return nullptr;
    const char *base = path;
    for (const char *p = path; *p; ++p)
        if (*p == '/' || *p == '\\') base = p + 1;
    return base;
}

int KXUtilsFileExists(const char *path) {
    struct stat info;
    return (path != nullptr && stat(path, &info) == 0) ? 0 : -1;
}

int KXUtilsDeleteFile(const char *path) { return (path != nullptr && unlink(path) == 0) ? 0 : -1; }

int KXUtilsWriteMemoryToFile2(const char *path, const char *text, int /*flags*/) {
    if (path == nullptr || text == nullptr) return -1;
    std::FILE *file = std::fopen(path, "wb");
    if (file == nullptr) return -1;
    const std::string_view content(text);
    const bool written = std::fwrite(content.data(), 1, content.size(), file) == content.size();
    return (std::fclose(file) == 0 && written) ? 1 : -1;
}

}  // extern "C"
