// Directory listings and the removal of files.
#include <dirent.h>
#include <regex.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "companion/libKXUtils.h"

namespace {

// Names in directory matching expression; hidden names (".", "..", lock
// files such as ".name.lock") are not listed.
void AddMatches(const char *directory, const regex_t &expression, bool withPath, std::vector<std::string> &out) {
    DIR *folder = opendir(*directory != '\0' ? directory : ".");
    if (folder == nullptr) return;
    std::vector<std::string> names;
    while (const dirent *entry = readdir(folder))
        if (entry->d_name[0] != '.' && regexec(&expression, entry->d_name, 0, nullptr, 0) == 0)
            names.emplace_back(entry->d_name);
    closedir(folder);
    std::sort(names.begin(), names.end());
    const std::string prefix = withPath && *directory != '\0' ? std::string(directory) + "/" : std::string();
    for (const std::string &name : names) out.push_back(prefix + name);
}

// One malloc block: n + 1 pointers (the last NULL), then the texts.
char **PackList(const std::vector<std::string> &names) {
    size_t bytes = (names.size() + 1) * sizeof(char *);
    for (const std::string &name : names) bytes += name.size() + 1;
    char **block = static_cast<char **>(std::malloc(bytes));
    if (block == nullptr) return nullptr;
    char *text = reinterpret_cast<char *>(block + names.size() + 1);
    for (size_t i = 0; i < names.size(); ++i) {
        block[i] = text;
        std::memcpy(text, names[i].c_str(), names[i].size() + 1);
        text += names[i].size() + 1;
    }
    block[names.size()] = nullptr;
    return block;
}

}  // namespace

extern "C" {

int CreateFileList(char ***list, char *const *directories, int directoryCount, const char *expression,
                   int withPath, int /*reserved*/) {
    if (list != nullptr) *list = nullptr;
    regex_t compiled;
    if (directories == nullptr || expression == nullptr ||
        regcomp(&compiled, expression, REG_EXTENDED | REG_NOSUB) != 0)
        return 0;
    std::vector<std::string> names;
    for (int i = 0; i < directoryCount; ++i)
        if (directories[i] != nullptr) AddMatches(directories[i], compiled, withPath != 0, names);
    regfree(&compiled);
    if (names.empty() || list == nullptr) return static_cast<int>(names.size());
    *list = PackList(names);
    return *list != nullptr ? static_cast<int>(names.size()) : 0;
}

int KXUtilsDeleteFile(const char *path) {
    return path != nullptr && unlink(path) == 0 ? 0 : -1;
}

}  // extern "C"
