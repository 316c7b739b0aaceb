// The size of a file.
#include <sys/stat.h>

#include "companion/libKXUtils.h"

extern "C" long KXUtilsFileSize(const char *path) {
    struct stat info;
    if (path == nullptr || stat(path, &info) != 0) return -1;
    return static_cast<long>(info.st_size);
}
