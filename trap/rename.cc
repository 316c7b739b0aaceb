// Finding a trap again by its unique identifier, and changing one state
// character of its name under the lock file name + ".loc".
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>

#include "companion/libKXUtils.h"
#include "companion/libKXmbcs.h"
#include "core/text.h"
#include "kx_trap.h"
#include "trap/trap_internal.h"

namespace kx::trap {
namespace {

using core::HeapCopy;

// The search pattern buffer: ".+[.]" and the unique identifier behind it,
// cut to what the 128 bytes hold.
char searchPattern[128] = ".+[.]";
constexpr std::size_t kPatternLead = 5;

const char *SearchPatternFor(const char *uniqueId) {
    const std::size_t room = sizeof searchPattern - kPatternLead - 1;
    const std::size_t length = std::min(std::strlen(uniqueId), room);
    std::memcpy(searchPattern + kPatternLead, uniqueId, length);
    searchPattern[kPatternLead + length] = '\0';
    return searchPattern;
}

// The first file of directory whose whole name matches expression, as a heap text.
char *FirstMatch(const std::string &directory, const char *expression) {
    int count = 0;
    char **list = nullptr;
    ListDirectory(directory.c_str(), 0, 0, 1, 1, &expression, &count, &list);
    char *found = count > 0 ? HeapCopy(list[0]) : nullptr;
    KXUtilsFreeResources(list);
    return found;
}

// A character that would change how the name is read cannot become a state.
bool FitsIntoName(char character) { return character != '\0' && std::strchr("/\\._", character) == nullptr; }

// A heap copy of the path of the trap with that identifier, from the held list or the directory.
char *FindTrap(const char *uniqueId) {
    if (TrapfilesCount > 0 && TrapfilesOutput != nullptr) {
        for (int i = 0; i < TrapfilesCount; ++i) {
            const char *dot = GTGetUniqueIdentifier(KXUtilsBasename(TrapfilesOutput[i], 0));
            if (dot != nullptr && _mbscmp(dot + 1, uniqueId) == 0) return HeapCopy(TrapfilesOutput[i]);
        }
        return nullptr;
    }
    const std::string expression = std::string("[tT].*[.]") + uniqueId + "$";
    return FirstMatch(DirectoryOrDefault(nullptr), expression.c_str());
}

const FwdValRow *StateNamed(const char *name) {
    for (int row = 0; name != nullptr && row < FwdCount; ++row)
        if (_mbsicmp(FwdVal[row].Name, name) == 0) return &FwdVal[row];
    return nullptr;
}

void SetState(char *&path, int position, char character) {
    char *newPath = nullptr;
    GTRenameTrapFile(&path, FwdCount, position, character, &newPath);
    std::free(newPath);
}

constexpr int kLogPosition = 7, kAlarmAckPosition = 8;

// Takes the lock: 0, or -2 when another process holds it, -3 when it cannot be made.
int TakeLock(const std::string &lock) {
    if (FileIsLocked(lock.c_str(), -1, -1) < 0) return -2;
    return CreateLockFile(lock.c_str()) == 0 ? 0 : -3;
}

}  // namespace
}  // namespace kx::trap

extern "C" {

char *GTDetermineTrapFile(char *path, int *status) {
    int ignored = 0;
    int &result = status != nullptr ? *status : ignored;
    result = 0;
    if (path != nullptr && KXUtilsFileExists(path) == 0) return path;
    const char *dot = path != nullptr ? _mbsrchr(path, '.') : nullptr;
    result = -2;
    if (dot == nullptr) return path;
    const char *base = KXUtilsBasename(path, 0);
    const std::string directory(path, base > path ? static_cast<std::size_t>(base - 1 - path) : 0);
    char *found = kx::trap::FirstMatch(directory, kx::trap::SearchPatternFor(dot + 1));
    result = found != nullptr ? 1 : -1;
    if (found == nullptr) return path;
    std::free(path);
    return found;
}

int GTRenameTrapFile(char **path, int count, int position, char character, char **newPath) {
    char *ignored = nullptr;
    char *&renamed = newPath != nullptr ? *newPath : ignored;
    renamed = nullptr;
    if (path == nullptr || *path == nullptr) return -1;
    int found = 0;
    *path = GTDetermineTrapFile(*path, &found);
    // A trap not found now has no state to compare: its old name proves nothing.
    if (found < 0) return -1;
    const char *base = KXUtilsBasename(*path, 0);
    const char *dot = GTGetUniqueIdentifier(base);
    if (dot == nullptr || position < 0 || position >= count || dot - base < count - position) return -1;
    const std::size_t at = static_cast<std::size_t>(dot - *path) - static_cast<std::size_t>(count - position);
    if ((*path)[at] == character) return 0;
    if (!kx::trap::FitsIntoName(character) || (renamed = kx::core::HeapCopy(*path)) == nullptr) return -1;
    renamed[at] = character;
    const std::string lock = std::string(*path) + ".loc";
    if (const int refused = kx::trap::TakeLock(lock); refused != 0) {
        std::free(renamed);
        renamed = nullptr;
        return refused;
    }
    const int result = std::rename(*path, renamed) == 0 ? 0 : -1;
    ReleaseLockFile(lock.c_str());
    if (newPath == nullptr) std::free(renamed);
    return result;
}

int KXListTrapfiles(const char *directory, const char *uniqueIdPattern) {
    if (TrapfilesCount != 0 || TrapfilesOutput != nullptr) return 0;
    const std::string expression =
        std::string("[tT].*[.]") + (uniqueIdPattern != nullptr ? uniqueIdPattern : ".*") + "$";
    const char *expressions[] = {expression.c_str()};
    ListDirectory(kx::trap::DirectoryOrDefault(directory), 0, 0, 1, 1, expressions, &TrapfilesCount,
                  &TrapfilesOutput);
    return 0;
}

int KXFreeListTrapfiles(void) {
    if (TrapfilesCount < 1 || TrapfilesOutput == nullptr) return 0;
    KXUtilsFreeResources(TrapfilesOutput);
    TrapfilesOutput = nullptr;
    TrapfilesCount = 0;
    return 0;
}

int KXTrapRenameTrapfile(const char *stateName, const char *oldValue, const char *newValue, const char *uniqueId,
                         int relist) {
    if (newValue == nullptr || (oldValue != nullptr && _mbscmp(oldValue, newValue) == 0)) return 0;
    const FwdValRow *row = kx::trap::StateNamed(stateName);
    if (row == nullptr || uniqueId == nullptr) return 0;
    if (relist != 0) KXListTrapfiles(nullptr, nullptr);
    char *path = kx::trap::FindTrap(uniqueId);
    if (path == nullptr) return 0;
    kx::trap::SetState(path, row->Position, newValue[0]);
    // Switching the log state off also clears the acknowledgement.
    if (row->Position == kx::trap::kLogPosition && newValue[0] == '0')
        kx::trap::SetState(path, kx::trap::kAlarmAckPosition, '0');
    std::free(path);
    return 0;
}

}  // extern "C"
