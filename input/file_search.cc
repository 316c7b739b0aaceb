// The file search every application path depends on, and the paths built
// from directory pieces: SearchForFile, CreateDirectoryname,
// CreateApplicationFilePath.
#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

#include "companion/libKXUtils.h"
#include "companion/libparser.h"
#include "input/request_internal.h"

namespace kx::request {
namespace {

constexpr const char *kPeerScanDefinition = "PeerScan.ini";
constexpr const char *kConsoleDefinition = "Korvanetix.ini";
constexpr std::string_view kConsoleDirectory = "Korvanetix";
constexpr std::string_view kSettingAssign = "=";

// A settings text "CGIPath=..." has its value after the name and "=".
struct SettingName {
    std::string_view name;
    std::size_t ValueOffset() const { return name.size() + kSettingAssign.size(); }
};
constexpr SettingName kCGIPathSetting{"CGIPath"};
constexpr SettingName kCGIDirectorySetting{"CGIDirectory"};

struct SearchRequest {
    std::string_view name;
    const EingabeElement *list;
    int count;
    const char *settings;
    int settingsCount;
};

// The last path tried; SearchForFile returns its address.
char *SearchBuffer() {
    static std::array<char, KX_PATH_SIZE> buffer{};
    return buffer.data();
}

// Copies path into buffer (KX_PATH_SIZE bytes), cut to the longest path.
void CopyPath(char *buffer, std::string_view path) {
    path = path.substr(0, kMaxPathLength);
    std::memcpy(buffer, path.data(), path.size());
    buffer[path.size()] = '\0';
}

// The first settings text that begins with the setting's name gives the
// value; a text no longer than the name gives an empty one. Null when absent.
const char *SettingValue(const SearchRequest &search, const SettingName &setting) {
    const char *text = search.settings;
    for (int index = 0; text != nullptr && index < search.settingsCount; ++index) {
        const std::string_view entry(text);
        if (entry.starts_with(setting.name)) return text + std::min(setting.ValueOffset(), entry.size());
        text += entry.size() + 1;
    }
    return nullptr;
}

std::optional<std::string> InCurrentDirectory(const SearchRequest &search) {
    return std::string(search.name);
}

std::optional<std::string> InConsoleDirectory(const SearchRequest &search) {
    return std::string(kConsoleDirectory).append(Separator()).append(search.name);
}

std::optional<std::string> InApplicationDirectory(const SearchRequest &search) {
    if (!IsEntry(iRootPath, search.count)) return std::nullopt;
    return ApplicationDirectory(search.list, search.count).append(search.name);
}

std::optional<std::string> InCGIPath(const SearchRequest &search) {
    if (!IsEntry(iCGIPath, search.count)) return std::nullopt;
    std::string path(CurrentText(search.list, search.count, iCGIPath));
    path.append(Separator());
    if (IsEntry(iRootDirectory, search.count))
        path.append(CurrentText(search.list, search.count, iRootDirectory)).append(Separator());
    return path.append(search.name);
}

std::optional<std::string> InSettingsCGIPath(const SearchRequest &search) {
    if (search.settings == nullptr) return std::nullopt;
    const std::string name(search.name);
    char *joined = CreateDirectoryname(SettingValue(search, kCGIPathSetting),
                                       SettingValue(search, kCGIDirectorySetting), name.c_str());
    if (joined == nullptr) return std::nullopt;
    std::string path(joined);
    std::free(joined);
    UnifySeparators(path);
    return path;
}

using Candidate = std::optional<std::string> (*)(const SearchRequest &);
constexpr Candidate kSearchOrder[] = {
    InCurrentDirectory,
    InConsoleDirectory,
    InApplicationDirectory,
    InCGIPath,
    InSettingsCGIPath,
};

// Tries the places in order; true when the path now in the search buffer
// exists. A path longer than the buffer is not tried.
bool SearchOnce(const SearchRequest &search) {
    for (const Candidate candidate : kSearchOrder) {
        const std::optional<std::string> path = candidate(search);
        if (!path || path->size() > kMaxPathLength) continue;
        CopyPath(SearchBuffer(), *path);
        if (KXUtilsFileExists(SearchBuffer()) == 0) return true;
    }
    return false;
}

char *Search(const char *name, SearchRequest search, std::FILE **stream) {
    if (stream != nullptr) *stream = nullptr;
    if (name == nullptr) return nullptr;
    // The name may be an earlier result, which lives in the search buffer.
    const std::string searched(name);
    search.name = searched;
    bool found = SearchOnce(search);
    if (!found && stricmp(searched.c_str(), kPeerScanDefinition) == 0) {
        search.name = kConsoleDefinition;
        found = SearchOnce(search);
    }
    if (!found) return nullptr;
    if (stream != nullptr) *stream = std::fopen(SearchBuffer(), "r");
    return SearchBuffer();
}

std::string JoinedDirectoryName(const char *first, const char *second, const char *third) {
    const std::string firstPiece = Decoded(first);
    const std::string secondPiece = Decoded(second);
    std::string joined = firstPiece;
    if (!firstPiece.empty()) joined.append(Separator());
    joined.append(secondPiece);
    if (!secondPiece.empty()) joined.append(Separator());
    joined.append(Decoded(third));
    return joined.substr(0, kMaxPathLength);
}

void FillApplicationFilePath(const EingabeElement *list, int count, char *buffer,
                             const char *directory, const char *file) {
    const std::string decodedDirectory = directory != nullptr ? Decoded(directory) : std::string();
    const std::string relative = decodedDirectory + (file != nullptr ? file : "");
    CopyPath(buffer, relative);
    if (const char *found = SearchForFile(buffer, const_cast<EingabeElement *>(list), count, nullptr, 0, nullptr)) {
        CopyPath(buffer, found);
        return;
    }
    // Not there yet: the place in the application directory where it belongs.
    std::string place = ApplicationDirectory(list, count) + relative;
    UnifySeparators(place);
    CopyPath(buffer, place);
}

}  // namespace
}  // namespace kx::request

extern "C" {

char *SearchForFile(const char *name, EingabeElement *list, int count, const char *settings,
                    int settingsCount, FILE **stream) {
    return kx::request::Search(name, {{}, list, count, settings, settingsCount}, stream);
}

char *CreateDirectoryname(const char *first, const char *second, const char *third) {
    return kx::request::HeapCopy(kx::request::JoinedDirectoryName(first, second, third));
}

void CreateApplicationFilePath(EingabeElement *list, int count, char *buffer, const char *directory,
                               const char *file) {
    if (buffer != nullptr) kx::request::FillApplicationFilePath(list, count, buffer, directory, file);
}

}  // extern "C"
