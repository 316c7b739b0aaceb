// File conversions: test, create, remove, rename, copy, write and list
// files, temporary names, and keys of ini files. Every path is confined to
// the application's tree (convert/paths.h); a refused path is a failure.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <strings.h>
#include <optional>
#include <string>

#include "companion/libKXUtils.h"
#include "convert/convert_internal.h"
#include "convert/paths.h"
#include "kx_convert.h"
#include "kx_input.h"

namespace kx::convert {
namespace {

constexpr int32_t kFailed = -1;
constexpr int32_t kLocked = -2;
constexpr int32_t kLockNotCreated = -3;
// Longest result of "_fexists,".
constexpr std::size_t kMatchListLimit = 2047;
constexpr char kLockSuffix[] = ".loc";

using PathOperation = int (*)(const char *);

char *StatusOf(const char *value, PathOperation operation) {
    const std::optional<std::string> path = ConfinedValue(value);
    return PrintInt(path ? operation(path->c_str()) : kFailed);
}

// An empty file takes the place of whatever was there, instead of the old
// file being emptied in place: a hard link into the tree can then never
// carry the emptying to a file outside it.
int CreateOrEmpty(const char *path) { return KXUtilsWriteMemoryToFile2(path, "", 0) > 0 ? 0 : kFailed; }

// Names joined by one blank, as long as they fit limit characters.
std::string Joined(char **names, int count, std::size_t limit) {
    std::string joined;
    for (int i = 0; i < count && names[i] != nullptr; ++i) {
        const std::size_t extra = std::strlen(names[i]) + (joined.empty() ? 0 : 1);
        if (joined.size() + extra > limit) break;
        if (!joined.empty()) joined += ' ';
        joined += names[i];
    }
    return joined;
}

// The old and new paths of a two-path conversion, both confined.
struct PathPair {
    std::string from, to;
    bool equal = false;
};

std::optional<PathPair> TwoPaths(const char *argument, const char *value, int cycleIndex) {
    const std::optional<std::string> from = DecodedValue(value);
    if (!from || argument == nullptr || *argument == '\0') return std::nullopt;
    const std::optional<std::string> to = EvaluatedOrDecoded(argument, cycleIndex);
    if (!to) return std::nullopt;
    if (*from == *to) return PathPair{*from, *to, true};
    const std::optional<std::string> confinedFrom = Confined(*from), confinedTo = Confined(*to);
    if (!confinedFrom || !confinedTo) return std::nullopt;
    return PathPair{*confinedFrom, *confinedTo, false};
}

// Renames under the lock file; only a lock this call created is released,
// never one that another process holds.
int32_t RenameLocked(const PathPair &paths) {
    const std::string lock = paths.from + kLockSuffix;
    if (FileIsLocked(lock.c_str(), -1, -1) < 0) return kLocked;
    if (CreateLockFile(lock.c_str()) != 0) return kLockNotCreated;
    const int32_t status = std::rename(paths.from.c_str(), paths.to.c_str());
    ReleaseLockFile(lock.c_str());
    return status;
}

int32_t Copy(const PathPair &paths) {
    char *buffer = nullptr;
    const int read = KXUtilsReadFileToMemory(paths.from.c_str(), &buffer);
    if (read < 0) return read;
    // The byte count, so that a file with NUL bytes is copied whole.
    const int written = KXUtilsWriteMemoryToFile2(paths.to.c_str(), buffer, read);
    KXUtilsFreeResources(buffer);
    return written > 0 ? 0 : written;
}

int32_t Write(const std::string &path, std::string content, std::string_view mode) {
    if (!mode.empty() && (mode.front() == 'a' || mode.front() == 'A')) {
        char *old = nullptr;
        if (KXUtilsReadFileToMemory(path.c_str(), &old) > 0) content.insert(0, old);
        KXUtilsFreeResources(old);
    }
    int errorCode = 0;
    if (KXUtilsWriteMemoryToFileErrorOutput(path.c_str(), content.c_str(), 0, &errorCode, nullptr) < 0)
        return errorCode;
    return 0;
}

// The settings of "_iniread,": its argument's file, default and divider.
struct IniRead {
    std::optional<std::string> file;
    std::string fallback;
    std::string divider = "|";
};

bool StartsWithNoCase(std::string_view text, std::string_view prefix) {
    return text.size() >= prefix.size() && strncasecmp(text.data(), prefix.data(), prefix.size()) == 0;
}

// "DefaultValue=none" gives "none": the text after the setting's name and
// the one character behind it; nullopt for an element of another name.
std::optional<std::string> Setting(const std::string &element, std::string_view name) {
    if (element.size() <= name.size() + 1 || !StartsWithNoCase(element, name)) return std::nullopt;
    return element.substr(name.size() + 1);
}

IniRead ReadSettings(std::string_view argument, int cycleIndex) {
    IniRead settings;
    for (std::string_view element : Split(argument, ",")) {
        const std::string text = EvaluatedOrDecoded(element, cycleIndex, "|").value_or("");
        if (auto fallback = Setting(text, "DefaultValue"))
            settings.fallback = *fallback;
        else if (auto divider = Setting(text, "OutputDivider"))
            settings.divider = *divider;
        else
            settings.file = text;
    }
    return settings;
}

// The value of one "[section,]key" in the file, or the default.
std::string IniValue(const std::string &file, std::string_view key, const IniRead &settings, int cycleIndex) {
    const Cut parts = CutAt(key, ',');
    const std::string first = EvaluatedOrDecoded(parts.head, cycleIndex, "|").value_or("");
    const std::string second = parts.hasRest ? EvaluatedOrDecoded(parts.rest, cycleIndex, "|").value_or("") : "";
    const char *section = parts.hasRest ? first.c_str() : nullptr;
    const std::string &name = parts.hasRest ? second : first;
    char **entry = nullptr;
    std::string value = settings.fallback;
    if (KXUtilsReadIniFile(file.c_str(), section, 0, '.', name.c_str(), &entry, 0) >= 1 && entry != nullptr) {
        value = entry[1] ? entry[1] : "";
        if (!settings.divider.empty() && value.find(settings.divider) != std::string::npos) {
            char *encoded = ServerEncoding(settings.divider.c_str(), nullptr, 0, 0);
            char *replaced = encoded ? StringReplace(value.c_str(), settings.divider.c_str(), encoded) : nullptr;
            if (replaced != nullptr) value = replaced;
            std::free(replaced);
            std::free(encoded);
        }
    }
    KXUtilsFreeResources(entry);
    return value;
}

}  // namespace
}  // namespace kx::convert

using namespace kx::convert;

extern "C" {

char *ConvertFileExists(char *, char *value, int) { return StatusOf(value, KXUtilsFileExists); }

char *ConvertFileRemove(char *, char *value, int) { return StatusOf(value, KXUtilsDeleteFile); }

char *ConvertCreateDir(char *, char *value, int) { return StatusOf(value, KXUtilsCreateDirectory); }

char *ConvertCreateFile(char *, char *value, int) { return StatusOf(value, CreateOrEmpty); }

char *ConvertCreateTemplateFile(char *, char *value, int) {
    std::optional<std::string> folder;
    if (value != nullptr && *value != '\0') {
        folder = Confined(value);
        if (!folder) return HeapCopy("");
    }
    char *directory = KXUtilsTempDirectory(folder ? folder->c_str() : nullptr);
    char *name = directory ? KXUtilsTempFileName(directory) : nullptr;
    char *result = HeapCopy(name ? name : "");
    KXUtilsFreeResources(name);
    KXUtilsFreeResources(directory);
    return result;
}

char *ConvertListDir(char *, char *value, int) {
    const std::optional<std::string> folder = ConfinedValue(value);
    if (!folder) return HeapCopy("");
    char *directory = const_cast<char *>(folder->c_str());
    char **names = nullptr;
    const int count = CreateFileList(&names, &directory, 1, ".*", 0, 0);
    char *result = HeapCopy(count > 0 && names ? Joined(names, count, std::string::npos - 1) : "");
    KXUtilsFreeResources(names);
    return result;
}

char *ConvertFileRegexpExists(char *argument, char *value, int cycleIndex) {
    if (value == nullptr) return HeapCopy("");
    const std::optional<std::string> folder = ConfinedValue(value);
    std::string pattern = Evaluated(ValueText(argument), cycleIndex);
    if (!folder) return HeapCopy(value);
    char *expression = pattern.data();
    char **names = nullptr;
    int count = 0;
    ListDirectory(folder->c_str(), 0, 0, 0, 1, &expression, &count, &names);
    char *result = count > 0 && names ? HeapCopy(Joined(names, count, kMatchListLimit)) : HeapCopy(value);
    KXUtilsFreeResources(names);
    return result;
}

char *ConvertRenameFile(char *argument, char *value, int cycleIndex) {
    const std::optional<PathPair> paths = TwoPaths(argument, value, cycleIndex);
    if (!paths) return PrintInt(kFailed);
    return PrintInt(paths->equal ? 0 : RenameLocked(*paths));
}

char *ConvertFileCopy(char *argument, char *value, int cycleIndex) {
    const std::optional<PathPair> paths = TwoPaths(argument, value, cycleIndex);
    if (!paths) return PrintInt(kFailed);
    return PrintInt(paths->equal ? 0 : Copy(*paths));
}

char *ConvertWriteFile(char *argument, char *value, int cycleIndex) {
    const std::optional<std::string> path = ConfinedValue(value);
    if (!path || argument == nullptr) return PrintInt(kFailed);
    const Cut parts = CutAt(argument, ',');
    const std::optional<std::string> content = DecodedValue(Evaluated(parts.head, cycleIndex).c_str());
    if (!content) return PrintInt(kFailed);
    return PrintInt(Write(*path, *content, Evaluated(parts.rest, cycleIndex)));
}

char *ConvertToIniRead(char *argument, char *value, int cycleIndex) {
    if (value == nullptr || *value == '\0' || argument == nullptr || *argument == '\0') return HeapCopy("");
    const IniRead settings = ReadSettings(argument, cycleIndex);
    if (!settings.file) return HeapCopy("");
    // A refused file reads like one that does not exist: every key gets the default.
    const std::string file = Confined(*settings.file).value_or("");
    std::string result;
    bool first = true;
    for (std::string_view key : Split(value, "|")) {
        if (!first) result += settings.divider;
        first = false;
        result += IniValue(file, key, settings, cycleIndex);
    }
    return HeapCopy(result);
}

}  // extern "C"
