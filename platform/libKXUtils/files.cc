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

}  // extern "C"
