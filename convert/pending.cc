// REPLACED AT MERGE: minimal working bodies of the operations declared in
// convert/pending.h, until the real ones arrive from the utility library and
// the profile files. Delete this file at the merge.
#include "convert/pending.h"

#include <dirent.h>
#include <fcntl.h>
#include <regex.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "companion/libKXUtils.h"


extern "C" {

char *UtilsReadFile(const char *path, int *length, char **, int) {
    *length = 0;
    char *buffer = nullptr;
    const int read = KXUtilsReadFileToMemory(path, &buffer);
    if (read <= 0) {
        KXUtilsFreeResources(buffer);
        return nullptr;
    }
    *length = read;
    return buffer;
}

}  // extern "C"
