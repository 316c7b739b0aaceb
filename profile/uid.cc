// User ids, the user directory and the current profile file: CreateUID,
// ValidateProfile, CreateUIDFIleDirectoryname, CreateUIDFIle.
//
// Ids come from the counter file "uids" of the application directory. Its
// read, increment and replacement happen under the file's lock, so CGI
// processes that allocate at the same moment get different ids and the
// counter never loses a step.
#include <cerrno>
#include <climits>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "core/file_lock.h"
#include "core/text.h"
#include "input/request_internal.h"
#include "kx_profile.h"
#include "profile/profile_internal.h"

namespace kx::profile {
namespace {

constexpr char kUserIdEntry[] = "UserID";
constexpr char kProfileEntry[] = "Profile";
constexpr char kNewProfileEntry[] = "NewProfile";
constexpr std::size_t kCounterLineLimit = 62;

// The number a text starts with, as atoi reads it; 0 for none and for a
// number beyond the int range.
int LeadingNumber(const char *text) {
    if (text == nullptr) return 0;
    char *end = nullptr;
    errno = 0;
    const long value = std::strtol(text, &end, 10);
    if (errno == ERANGE || value > INT_MAX || value < INT_MIN) return 0;
    return static_cast<int>(value);
}

// The next id after the counter file's number; -1 when none is left.
int NextId(const std::string &counter) {
    std::string content;
    if (!ReadWholeFile(counter, content)) return 1;
    content.resize(std::min(content.size(), kCounterLineLimit));
    const int last = LeadingNumber(content.c_str());
    if (last == INT_MAX) return -1;
    return last < 0 ? 1 : last + 1;
}

// Allocates under the counter's lock; -1 when the counter cannot be written.
int AllocateId(int count, EingabeElement *list) {
    // The application directory holds the counter and its lock: made when
    // missing, as are the "uid" folder and the new user's directory below.
    const std::string application = kx::request::ApplicationDirectory(list, count);
    if (!application.empty()) MakeDirectory(application);
    const std::string counter = CounterFilePath(count, list);
    const core::FileLock lock(counter.c_str());
    if (!lock.Held()) return -1;
    const int id = NextId(counter);
    if (id < 0 || ReplaceFile(counter, std::to_string(id)) != 0) return -1;
    const std::string users = application + "uid";
    MakeDirectory(users);
    MakeDirectory(users + Separator() + std::to_string(id));
    return id;
}

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\xA0'; }

}  // namespace

// The profile file path, or -1 / an errno value as CreateUIDFIle returns.
int ProfileFile(int count, EingabeElement *list, int create, std::string &path) {
    const std::string directory = UserDirectory(count, list, nullptr);
    if (create != 0) {
        if (const int error = MakeDirectory(directory)) return error;
        if (InTrapsFolder(count, list))
            if (const int error = MakeDirectory(directory + Separator() + "Traps")) return error;
    }
    char *profile = nullptr;
    const int blanks = ValidateProfile(count, list, &profile);
    if (profile == nullptr || profile[blanks] == '\0' || directory.empty() || !IsConfinedName(profile)) return -1;
    path = directory + Separator() + profile;
    return 0;
}

}  // namespace kx::profile

extern "C" {

int CreateUID(int count, EingabeElement *list) {
    return kx::profile::Guard(-1, [&] {
        EingabeElement *entry = kx::profile::Entry(count, list, kx::profile::kUserIdEntry);
        if (entry == nullptr) return -1;
        const char *current = kx::profile::CurrentText(count, list, kx::profile::kUserIdEntry);
        const int existing = kx::profile::LeadingNumber(current);
        if (existing >= 1) return existing;
        const int id = kx::profile::AllocateId(count, list);
        SetEingabeWertI(count, list, static_cast<int>(entry - list), std::to_string(id).c_str());
        return id;
    });
}

int ValidateProfile(int count, EingabeElement *list, char **profile) {
    char *chosen = nullptr;
    for (const char *name : {kx::profile::kProfileEntry, kx::profile::kNewProfileEntry}) {
        const char *text = kx::profile::CurrentText(count, list, name);
        if (text != nullptr && *text != '\0') chosen = const_cast<char *>(text);
    }
    if (profile != nullptr) *profile = chosen;
    int blanks = 0;
    while (chosen != nullptr && kx::profile::IsBlank(chosen[blanks])) ++blanks;
    return blanks;
}

void CreateUIDFIleDirectoryname(int count, EingabeElement *list, char *buffer) {
    if (buffer != nullptr) *buffer = '\0';
    kx::profile::Guard(0, [&]() -> int {
        if (buffer == nullptr) return 0;
        const std::string directory = kx::profile::UserDirectory(count, list, nullptr);
        const std::size_t size = std::min(directory.size(), static_cast<std::size_t>(KX_PATH_SIZE - 1));
        std::memcpy(buffer, directory.data(), size);
        buffer[size] = '\0';
        return 0;
    });
}

int CreateUIDFIle(int count, EingabeElement *list, int create, char **path) {
    return kx::profile::Guard(-1, [&] {
        if (path != nullptr) *path = nullptr;
        std::string file;
        const int result = kx::profile::ProfileFile(count, list, create, file);
        if (result != 0 || path == nullptr) return result;
        *path = kx::core::HeapCopy(file);
        return *path != nullptr ? 0 : -1;
    });
}

}  // extern "C"
