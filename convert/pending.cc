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

namespace kx::convert::pending {
namespace {

std::vector<std::string> Names(const std::string &directory, const char *expression, bool withPath) {
    std::vector<std::string> names;
    regex_t compiled;
    if (regcomp(&compiled, expression ? expression : ".*", REG_EXTENDED | REG_NOSUB) != 0) return names;
    DIR *folder = opendir(directory.empty() ? "." : directory.c_str());
    while (folder != nullptr) {
        const dirent *entry = readdir(folder);
        if (entry == nullptr) break;
        const std::string name = entry->d_name;
        if (name == "." || name == "..") continue;
        if (regexec(&compiled, name.c_str(), 0, nullptr, 0) == 0)
            names.push_back(withPath ? directory + "/" + name : name);
    }
    if (folder != nullptr) closedir(folder);
    regfree(&compiled);
    std::sort(names.begin(), names.end());
    return names;
}

// One block: the NULL-terminated pointer array, then the texts it points
// to, so that one KXUtilsFreeResources releases the whole list.
char **HeapList(const std::vector<std::string> &names) {
    std::size_t bytes = (names.size() + 1) * sizeof(char *);
    for (const std::string &name : names) bytes += name.size() + 1;
    auto **list = static_cast<char **>(std::malloc(bytes));
    if (list == nullptr) return nullptr;
    char *text = reinterpret_cast<char *>(list + names.size() + 1);
    for (std::size_t i = 0; i < names.size(); ++i) {
        list[i] = text;
        std::memcpy(text, names[i].c_str(), names[i].size() + 1);
        text += names[i].size() + 1;
    }
    list[names.size()] = nullptr;
    return list;
}

}  // namespace
}  // namespace kx::convert::pending

extern "C" {

int FileIsLocked(const char *lockPath, int, int) {
    struct stat info;
    return lockPath != nullptr && stat(lockPath, &info) == 0 ? -1 : 0;
}

int CreateLockFile(const char *lockPath) {
    const int fd = lockPath ? open(lockPath, O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0600) : -1;
    if (fd < 0) return -1;
    close(fd);
    return 0;
}

int ReleaseLockFile(const char *lockPath) { return lockPath != nullptr && unlink(lockPath) == 0 ? 0 : -1; }

int ListDirectory(const char *directory, int, int, int withPath, int, char **expression, int *count, char ***list) {
    const auto names = kx::convert::pending::Names(directory ? directory : "", expression ? *expression : nullptr,
                                                   withPath != 0);
    *list = kx::convert::pending::HeapList(names);
    *count = *list != nullptr ? static_cast<int>(names.size()) : 0;
    return *list != nullptr ? 0 : -1;
}

int CreateFileList(char ***list, char **directories, int directoryCount, const char *expression, int withPath, int) {
    std::vector<std::string> names;
    for (int i = 0; i < directoryCount; ++i) {
        const auto found = kx::convert::pending::Names(directories[i], expression, withPath != 0);
        names.insert(names.end(), found.begin(), found.end());
    }
    *list = kx::convert::pending::HeapList(names);
    return *list != nullptr ? static_cast<int>(names.size()) : 0;
}

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
