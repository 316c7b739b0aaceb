// The trap functions' MIB index, the extension spellings of MIB files and
// the index's shared pieces (the page engine's index is in page_mibs.cc).
#include "trap/mib_index.h"

#include <sys/stat.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <unordered_set>
#include <vector>

#include "companion/libKXUtils.h"
#include "companion/libKXsnmp.h"
#include "companion/libKXmbcs.h"
#include "core/alloc.h"
#include "core/text.h"
#include "kx_input.h"
#include "kx_trap.h"
#include "platform/file_text.h"
#include "trap/trap_internal.h"

extern "C" {
char *GTEingabeTrapMIBs = nullptr;
char *_GTTrapMIBs = nullptr;
char **GTTrapMIBs = nullptr;
int32_t *GTTrapMIBsLength = nullptr;
int32_t GTTrapMIBsCount = 0;
const char *const _GTMibSuffixes[8] = {"mib", "MIB", "Mib", "MIb", "MiB", "mIb", "miB", "mIB"};
int32_t _GTMibSuffixesCount = 8;
}

namespace kx::trap {
namespace {

constexpr char kListFile[] = "./TrapMibs";
constexpr char kMibPathFile[] = "MibPath";
constexpr char kMibExpression[] = ".*[.][Mm][Ii][Bb]$";

// Drops the names found by earlier scans (a list file is read at most once,
// so until then every name is a text of its own).
void ReleaseScanned(MibIndex index) {
    for (int i = 0; i < index.count; ++i) std::free(index.names[i]);
    std::free(index.names);
    if (index.lengths != nullptr) std::free(*index.lengths), *index.lengths = nullptr;
    index.names = nullptr, index.count = 0;
}

// Grows the index by the names given; false when memory runs out.
bool Append(MibIndex index, const std::vector<std::string> &added) {
    const std::size_t total = static_cast<std::size_t>(index.count) + added.size();
    auto *names = static_cast<char **>(std::realloc(index.names, std::max<std::size_t>(total, 1) * sizeof(char *)));
    if (names == nullptr) return false;
    index.names = names;
    if (index.lengths != nullptr) {
        auto *lengths = static_cast<int32_t *>(std::realloc(*index.lengths, std::max<std::size_t>(total, 1) * sizeof(int32_t)));
        if (lengths == nullptr) return false;
        *index.lengths = lengths;
    }
    for (const std::string &name : added) {
        char *copy = strndup(name.data(), name.size());
        if (copy == nullptr) return false;
        index.names[index.count] = copy;
        if (index.lengths != nullptr) (*index.lengths)[index.count] = static_cast<int32_t>(name.size());
        ++index.count;
    }
    return true;
}

// The next occurrence of separator (not empty) in text, character by
// character of the locale. In a locale of single-byte characters every byte
// is a character, and the plain search finds what the multibyte one finds.
char *NextSeparator(char *text, const char *separator, bool singleBytes) {
    return singleBytes ? std::strstr(text, separator) : _mbsstr(text, separator);
}

std::string Lowered(std::string_view name) {
    std::string lowered(name);
    for (char &c : lowered) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return lowered;
}

}  // namespace

// A file that cannot be read whole counts as missing.
std::string MibDirectory() {
    platform::FileText file;
    std::string_view directory;
    if (file.Read(kMibPathFile) && file.Complete()) directory = platform::UpToNul(file.View());
    directory = directory.substr(0, directory.find_first_of("\r\n"));
    return directory.empty() ? "mibs" : std::string(directory);
}

void TakeListedNames(MibIndex index, char *contents) {
    if (index.listCopy != nullptr) return;
    ReleaseScanned(index);
    // The list ends at its first line end.
    char *end = contents;
    while (*end != '\0' && *end != '\r' && *end != '\n') ++end;
    *end = '\0';
    index.listCopy = core::HeapCopy({contents, static_cast<std::size_t>(end - contents)});
    if (index.listCopy == nullptr) return;
    int *lengths = nullptr;
    const int count = GTErmittleTextElemente(index.listCopy, " ", nullptr, &lengths);
    index.names = static_cast<char **>(std::malloc(static_cast<std::size_t>(count) * sizeof(char *)));
    if (index.names == nullptr || lengths == nullptr) {
        std::free(lengths), std::free(index.names), std::free(index.listCopy);
        index.names = nullptr, index.listCopy = nullptr;
        return;
    }
    char *element = index.listCopy;
    for (int i = 0; i < count; element += lengths[i] + 1, ++i) index.names[i] = element;
    index.count = count;
    if (index.lengths != nullptr) *index.lengths = lengths;
    else std::free(lengths);
}

void AddTrapDefiningMibs(MibIndex index, const std::string &directory, std::string_view separator) {
    const char *expression = kMibExpression;
    int listed = 0;
    char **files = nullptr;
    ListDirectory(directory.c_str(), 0, 0, 0, 1, &expression, &listed, &files);
    // Names in the index or met in the folder, in lower case: one hash set,
    // so that a folder of many files is taken in linear time.
    std::unordered_set<std::string> done;
    done.reserve(static_cast<std::size_t>(index.count) + static_cast<std::size_t>(listed));
    for (int i = 0; i < index.count; ++i) done.insert(Lowered(index.names[i]));
    std::vector<std::string> added;
    std::string path;
    for (int i = 0; i < listed; ++i) {
        const std::string_view file(files[i]);
        const std::string_view name = file.substr(0, std::min(file.size(), file.find('.')));
        if (!done.insert(Lowered(name)).second) continue;
        path.assign(directory).append(separator).append(file);
        if (KXUtilsSearchInFile(path.c_str(), 9, "TRAP-TYPE", 0, "--", 0, 0) >= 0) added.emplace_back(name);
    }
    KXUtilsFreeResources(files);
    Append(index, added);
}

int FindMibName(const char *name, char *const *names, int count) {
    if (count <= 0 || names == nullptr) return -1;
    if (name == nullptr) return -2;
    const std::string_view wanted(name, std::strcspn(name, "."));
    for (int i = 0; i < count; ++i) {
        if (names[i] != nullptr && std::strlen(names[i]) == wanted.size() &&
            strncasecmp(names[i], wanted.data(), wanted.size()) == 0)
            return i;
    }
    return -2;
}

}  // namespace kx::trap

extern "C" {

int GTCreateTrapMibs(const char *listFile) {
    if (GTEingabeTrapMIBs != nullptr) return 0;
    const char *path = listFile != nullptr ? listFile : kx::trap::kListFile;
    char *contents = nullptr;
    if (KXUtilsReadFileToMemory(path, &contents) <= 0 && std::strcmp(path, kx::trap::kListFile) != 0) {
        KXUtilsFreeResources(contents);
        contents = nullptr;
        KXUtilsReadFileToMemory(kx::trap::kListFile, &contents);
    }
    const kx::trap::MibIndex index{GTTrapMIBs, &GTTrapMIBsLength, GTTrapMIBsCount, _GTTrapMIBs};
    if (contents != nullptr) {
        GTEingabeTrapMIBs = contents;  // kept for the life of the process
        kx::trap::TakeListedNames(index, contents);
    }
    kx::trap::AddTrapDefiningMibs(index, kx::trap::MibDirectory(), "/");
    return 0;
}

int GTItIsATrapMIB(const char *name) { return kx::trap::FindMibName(name, GTTrapMIBs, GTTrapMIBsCount); }

const char *GTDetermineMIBSuffix(const char *name, int length) {
    if (name == nullptr) return _GTMibSuffixes[0];
    const char *configured = KXGetMibPath();
    const std::string stem = std::string(configured != nullptr && *configured != '\0' ? configured : "mibs") +
                             "/" + std::string(name, length > 0 ? strnlen(name, static_cast<std::size_t>(length)) : std::strlen(name)) + ".";
    struct stat status {};
    for (const char *suffix : _GTMibSuffixes)
        if (stat((stem + suffix).c_str(), &status) == 0) return suffix;
    return _GTMibSuffixes[0];
}

int GTErmittleTextElemente(char *text, const char *separator, int *longest, int **lengths) {
    if (lengths != nullptr) *lengths = nullptr;
    if (text == nullptr) return 0;
    std::vector<int> sizes;
    char *start = text;
    const std::size_t step = separator != nullptr ? std::strlen(separator) : 0;
    const bool singleBytes = MB_CUR_MAX == 1;
    for (char *hit = step > 0 ? kx::trap::NextSeparator(start, separator, singleBytes) : nullptr; hit != nullptr;
         hit = kx::trap::NextSeparator(start, separator, singleBytes)) {
        *hit = '\0';
        sizes.push_back(static_cast<int>(hit - start));
        start = hit + step;
    }
    sizes.push_back(static_cast<int>(std::strlen(start)));
    if (longest != nullptr) *longest = *std::max_element(sizes.begin(), sizes.end());
    if (lengths != nullptr) {
        *lengths = static_cast<int *>(std::malloc(sizes.size() * sizeof(int)));
        if (*lengths != nullptr) std::copy(sizes.begin(), sizes.end(), *lengths);
    }
    return static_cast<int>(sizes.size());
}

}  // extern "C"
