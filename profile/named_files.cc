// Named user files and the listings of the user tree: WriteNamedUIDFile,
// ReadNamedUIDFile, DeleteNamedUIDFile, CreateUIDFileList,
// CreateProfileFileList, CreateArchiveDataFileDirectory,
// CreateArchiveDataFileList.
//
// Every name part that a request can supply (user id, profile, file name)
// must stay one plain name inside the user directory; a part that would
// leave it refuses the operation before anything is read, made or deleted.
#include <algorithm>
#include <cstring>
#include <memory>
#include <string>

#include "companion/libKXUtils.h"
#include "core/file_lock.h"
#include "core/text.h"
#include "input/request_internal.h"
#include "kx_profile.h"
#include "profile/profile_internal.h"

namespace kx::profile {
namespace {

constexpr char kTrapsFolder[] = "Traps";
constexpr char kArchiveFolder[] = "ArchiveData";
constexpr char kRefused[] = "UIDFile: a name leaves the user directory";

// The folder of named files: the user directory [+ "/Traps"]; empty when
// there is no user directory.
std::string NamedFolder(int count, EingabeElement *list) {
    std::string folder = UserDirectory(count, list, nullptr);
    if (!folder.empty() && InTrapsFolder(count, list)) folder += Separator() + kTrapsFolder;
    return folder;
}

// The named file's path (name + profile from its first non-blank byte, or
// the bare name); false when a part would leave the folder.
bool NamedFilePath(int count, EingabeElement *list, const char *name, bool withProfile, std::string &path) {
    const std::string folder = NamedFolder(count, list);
    if (folder.empty() || name == nullptr) return false;
    std::string file = name;
    char *profile = nullptr;
    const int blanks = ValidateProfile(count, list, &profile);
    if (withProfile && profile != nullptr) {
        const std::string part = profile + blanks;
        if (!part.empty() && !IsConfinedName(part)) return false;
        file += part;
    }
    if (!IsConfinedName(name) || !IsConfinedName(file)) return false;
    path = folder + Separator() + file;
    return true;
}

int CreateFolders(int count, EingabeElement *list) {
    const std::string directory = UserDirectory(count, list, nullptr);
    if (const int error = MakeDirectory(directory)) return error;
    if (InTrapsFolder(count, list)) return MakeDirectory(directory + Separator() + kTrapsFolder);
    return 0;
}

// The divider line, the line of name and the lines of names, as one file.
int WriteNamed(int count, EingabeElement *list, const char *name, const char *divider, int nameCount,
               const char **names, const std::string &path) {
    const core::FileLock lock(path.c_str());
    if (!lock.Held() || divider == nullptr) {
        ReportError(count, list, "WriteIniFile: OpenUIDFile %s %s fails!", path.c_str(), "w");
        return -1;
    }
    const std::string_view glue = std::string_view(divider).substr(0, 15);
    std::string content = std::string(glue) + "\n";
    const char *own[] = {name};
    AppendIniLines(content, count, list, glue, 1, own);
    AppendIniLines(content, count, list, glue, nameCount, names);
    if (ReplaceFile(path, content) != 0) {
        ReportError(count, list, "WriteIniFile: OpenUIDFile %s %s fails!", path.c_str(), "w");
        return -1;
    }
    return 0;
}

// The user id given, or the current "UserID"; null when none or not plain.
const char *ListedUser(int count, EingabeElement *list, const char *userId) {
    const char *id = userId != nullptr ? userId : CurrentText(count, list, "UserID");
    return id != nullptr && IsConfinedName(id) ? id : nullptr;
}

std::string UserFolder(int count, EingabeElement *list, const char *id) {
    return kx::request::ApplicationDirectory(list, count) + "uid" + Separator() + id;
}

int ListFolder(const std::string &folder, char ***files) {
    char *directories[] = {const_cast<char *>(folder.c_str())};
    const int found = CreateFileList(files, directories, 1, ".*", 0, 0);
    return found > 0 ? found : 0;
}

void FillBuffer(char *buffer, const std::string &text) {
    const std::size_t size = std::min(text.size(), static_cast<std::size_t>(KX_PATH_SIZE - 1));
    std::memcpy(buffer, text.data(), size);
    buffer[size] = '\0';
}

}  // namespace
}  // namespace kx::profile

extern "C" {

int WriteNamedUIDFile(int count, EingabeElement *list, const char *name, const char *divider, int nameCount,
                      const char **names, char **pathOut) {
    return kx::profile::Guard(-1, [&] {
        using namespace kx::profile;
        if (pathOut != nullptr) *pathOut = nullptr;
        if (!HasValue(Entry(count, list, name))) return 0;
        if (const int error = CreateFolders(count, list)) return error;
        std::string path;
        if (!NamedFilePath(count, list, name, true, path)) {
            ReportError(count, list, kRefused);
            return -1;
        }
        if (pathOut != nullptr) *pathOut = kx::core::HeapCopy(path);
        return WriteNamed(count, list, name, divider, nameCount, names, path);
    });
}

int ReadNamedUIDFile(int count, EingabeElement *list, const char *name) {
    return kx::profile::Guard(-1, [&] {
        using namespace kx::profile;
        if (Entry(count, list, name) == nullptr) return 0;
        // Without a user directory the file is not there: nothing outside
        // it is read in its place.
        if (NamedFolder(count, list).empty()) {
            ReportError(count, list, "Open: OpenUIDFile %s fails!", name);
            return -1;
        }
        std::string path;
        if (!NamedFilePath(count, list, name, true, path)) {
            ReportError(count, list, kRefused);
            return -1;
        }
        if (KXUtilsFileExists(path.c_str()) != 0) NamedFilePath(count, list, name, false, path);
        return ReadIniFile(count, list, path.c_str());
    });
}

int DeleteNamedUIDFile(int count, EingabeElement *list, const char *name) {
    return kx::profile::Guard(-1, [&] {
        using namespace kx::profile;
        std::string path;
        if (NamedFolder(count, list).empty()) return -1;
        if (!NamedFilePath(count, list, name, true, path)) {
            ReportError(count, list, kRefused);
            return -1;
        }
        const kx::core::FileLock lock(path.c_str());
        return KXUtilsDeleteFile(path.c_str());
    });
}

int CreateUIDFileList(int count, EingabeElement *list, char ***files) {
    return kx::profile::Guard(0, [&]() -> int {
        if (files != nullptr) *files = nullptr;
        return kx::profile::ListFolder(kx::request::ApplicationDirectory(list, count) + "uid", files);
    });
}

int CreateProfileFileList(int count, EingabeElement *list, char ***files, const char *userId) {
    return kx::profile::Guard(0, [&]() -> int {
        using namespace kx::profile;
        if (files != nullptr) *files = nullptr;
        const char *id = ListedUser(count, list, userId);
        return id != nullptr ? ListFolder(UserFolder(count, list, id), files) : 0;
    });
}

void CreateArchiveDataFileDirectory(int count, EingabeElement *list, char *buffer, const char *userId) {
    if (buffer != nullptr) *buffer = '\0';
    kx::profile::Guard(0, [&]() -> int {
        using namespace kx::profile;
        if (buffer == nullptr) return 0;
        const char *id = ListedUser(count, list, userId);
        FillBuffer(buffer, id != nullptr ? UserFolder(count, list, id) + Separator() + kArchiveFolder : std::string());
        return 0;
    });
}

int CreateArchiveDataFileList(int count, EingabeElement *list, char ***files, const char *userId) {
    return kx::profile::Guard(0, [&]() -> int {
        using namespace kx::profile;
        if (files != nullptr) *files = nullptr;
        const char *id = ListedUser(count, list, userId);
        return id != nullptr ? ListFolder(UserFolder(count, list, id) + Separator() + kArchiveFolder, files) : 0;
    });
}

}  // extern "C"
