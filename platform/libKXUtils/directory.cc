// Directory listings filtered by POSIX extended regular expressions (a plain
// suffix such as ".*[.][Mm][Ii][Bb]$" is matched without compiling one). A list
// is handed out as one block (pointers, NULL, texts), so that one
// KXUtilsFreeResources releases it. Hidden names (".", "..", lock files such
// as ".name.lock", temporary files of writers) are never listed, and the
// names of each directory come in byte order, so that a page shows the same
// listing on every file system.
#include <dirent.h>
#include <regex.h>
#include <sys/stat.h>

#include <algorithm>
#include <bitset>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "companion/libKXUtils.h"
#include "platform/text_block.h"

namespace kxutils {
namespace {

// The bytes one position of a suffix pattern admits.
using ByteSet = std::bitset<256>;

// The positions of an expression of the form ".*" followed by plain
// characters and bracket lists of plain characters, optionally ending in
// "$" (".*[.][Mm][Ii][Bb]$", ".*\.txt" has a backslash and is not one):
// such an expression matches a whole name exactly when the name ends in
// bytes each position admits. Compiling and running the expression cost
// about 100,000 instructions for a listing of one MIB file. Only in a locale
// of single-byte characters, where "." admits every byte of a name; in a
// multibyte locale a name that is not a valid text does not match ".*".
// False when the expression is not of that form. ".*" alone, the listing of
// every file, has no positions.
bool SuffixPositions(const char *source, std::vector<ByteSet> &positions) {
    constexpr std::string_view kOperators = ".[]()*+?{}|^$\\";
    if (MB_CUR_MAX != 1 || source[0] != '.' || source[1] != '*') return false;
    positions.reserve(std::strlen(source));
    for (const char *at = source + 2; *at != '\0';) {
        if (at[0] == '$' && at[1] == '\0') break;
        ByteSet admitted;
        if (*at == '[') {
            // No negation, ranges, classes or a leading "]": plain members only.
            for (++at; *at != ']'; ++at) {
                if (*at == '\0' || *at == '^' || *at == '-' || *at == '[' || *at == '\\') return false;
                admitted.set(static_cast<unsigned char>(*at));
            }
            if (admitted.none()) return false;
        } else {
            if (kOperators.find(*at) != std::string_view::npos) return false;
            admitted.set(static_cast<unsigned char>(*at));
        }
        ++at;
        positions.push_back(admitted);
    }
    return true;
}

// A compiled expression that must match a whole name.
class WholeNameExpression {
public:
    explicit WholeNameExpression(const char *source) : plain_(SuffixPositions(source, suffix_)) {
        if (!plain_)
            ok_ = regcomp(&regex_, ("^(" + std::string(source) + ")$").c_str(), REG_EXTENDED | REG_NOSUB) == 0;
    }
    ~WholeNameExpression() {
        if (ok_) regfree(&regex_);
    }
    WholeNameExpression(const WholeNameExpression &) = delete;
    WholeNameExpression &operator=(const WholeNameExpression &) = delete;
    bool Matches(const char *name) const {
        if (!plain_) return ok_ && regexec(&regex_, name, 0, nullptr, 0) == 0;
        const std::size_t length = std::strlen(name);
        if (length < suffix_.size()) return false;
        const char *end = name + length - suffix_.size();
        for (std::size_t i = 0; i < suffix_.size(); ++i)
            if (!suffix_[i].test(static_cast<unsigned char>(end[i]))) return false;
        return true;
    }

private:
    std::vector<ByteSet> suffix_;
    bool plain_;
    regex_t regex_{};
    bool ok_ = false;
};

struct DirCloser {
    void operator()(DIR *dir) const { closedir(dir); }
};

bool IsDirectory(const std::string &folder, const dirent &entry) {
    if (entry.d_type != DT_UNKNOWN) return entry.d_type == DT_DIR;
    struct stat info;
    return stat((folder + "/" + entry.d_name).c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

struct Filter {
    std::vector<std::unique_ptr<WholeNameExpression>> expressions;
    bool withDirectories;
    bool withPath;
};

// Appends the matching entries of directory to names; false when it cannot be read.
bool Collect(const char *directory, const Filter &filter, std::vector<std::string> &names) {
    const std::string folder = (directory == nullptr || *directory == '\0') ? "." : directory;
    const std::unique_ptr<DIR, DirCloser> dir(opendir(folder.c_str()));
    if (!dir) return false;
    const std::string prefix = (directory == nullptr || *directory == '\0') ? ""
                               : folder.back() == '/'                      ? folder
                                                                           : folder + "/";
    const size_t first = names.size();
    while (const dirent *entry = readdir(dir.get())) {
        const char *name = entry->d_name;
        if (name[0] == '.') continue;
        bool match = false;
        for (const auto &expression : filter.expressions) match = match || expression->Matches(name);
        if (!match || (!filter.withDirectories && IsDirectory(folder, *entry))) continue;
        names.push_back(filter.withPath ? prefix + name : std::string(name));
    }
    std::sort(names.begin() + static_cast<std::ptrdiff_t>(first), names.end());
    return true;
}

}  // namespace
}  // namespace kxutils

extern "C" {

int ListDirectory(const char *directory, int /*reserved*/, int withDirectories, int withPath,
                  int expressionCount, const char *const *expressions, int *count, char ***list) {
    if (count == nullptr || list == nullptr) return -1;
    *count = 0;
    *list = nullptr;
    kxutils::Filter filter{{}, withDirectories != 0, withPath != 0};
    for (int i = 0; expressions != nullptr && i < expressionCount; ++i)
        if (expressions[i] != nullptr)
            filter.expressions.push_back(std::make_unique<kxutils::WholeNameExpression>(expressions[i]));
    std::vector<std::string> names;
    if (!kxutils::Collect(directory, filter, names)) return -1;
    *list = kx::platform::PackTexts({names.begin(), names.end()}, true);
    if (*list == nullptr && !names.empty()) return -1;
    *count = static_cast<int>(names.size());
    return 0;
}

int CreateFileList(char ***list, const char *const *directories, int directoryCount, const char *expression,
                   int withPath, int filesOnly) {
    if (list == nullptr) return 0;
    *list = nullptr;
    if (directories == nullptr || expression == nullptr) return 0;
    kxutils::Filter filter{{}, filesOnly == 0, withPath != 0};
    filter.expressions.push_back(std::make_unique<kxutils::WholeNameExpression>(expression));
    std::vector<std::string> names;
    for (int i = 0; i < directoryCount; ++i) kxutils::Collect(directories[i], filter, names);
    *list = kx::platform::PackTexts({names.begin(), names.end()}, true);
    return *list == nullptr ? 0 : static_cast<int>(names.size());
}

}  // extern "C"
