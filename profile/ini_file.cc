// Ini files whose keys are input entries: ReadIniFile, WriteIniFile,
// UtilsReadFile.
//
// Line 1 of such a file is the divider, every further "name=values" line
// sets one entry. A write builds the whole new file in memory (for "a" the
// old content first) and replaces the file in one rename while it holds the
// file's lock, so readers and a killed writer leave the old or the new file
// whole, never a part of one.
#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

#include "companion/libKXUtils.h"
#include "core/file_lock.h"
#include "core/text.h"
#include "input/request_internal.h"
#include "kx_profile.h"
#include "profile/ini_stream.h"
#include "platform/file_text.h"
#include "profile/profile_internal.h"

namespace kx::profile {
namespace {

// The divider's storage: at most 15 bytes; a longer first line is cut.
constexpr std::size_t kDividerLimit = 15;
// How much of an existing file's first line is read for its divider.
constexpr std::size_t kDividerLineLimit = 511;
constexpr std::size_t kReadFileLineLimit = 4095;

// text up to its first CR, LF or NUL.
std::string_view CutAtLineEnd(std::string_view text) {
    return text.substr(0, text.find_first_of(std::string_view("\r\n\0", 3)));
}

std::string_view DividerOf(std::string_view firstLine) {
    return CutAtLineEnd(firstLine).substr(0, kDividerLimit);
}

// Sets the entry named in one "name=values" line, which ends in a NUL;
// undeclared names are left.
void ApplyLine(int count, EingabeElement *list, const std::unordered_map<std::string_view, int> &index,
               std::string_view line, const std::string &divider) {
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos) return;
    const auto found = index.find(line.substr(0, equals));
    if (found == index.end()) return;
    SetValueList(count, list, found->second, line.data() + equals + 1, divider.c_str());
}

// Goes through the file's lines, ending each with a NUL in place.
void ApplyContent(int count, EingabeElement *list, std::string &content) {
    const auto index = IndexByName(count, list);
    std::string divider;
    std::size_t start = 0;
    for (bool first = true; start < content.size(); first = false) {
        const std::size_t end = std::min(content.find('\n', start), content.size());
        const std::string_view line = CutAtLineEnd(std::string_view(content).substr(start, end - start));
        content[start + line.size()] = '\0';  // at the CR, LF or NUL, or the string's own end
        if (first)
            divider = DividerOf(line);
        else
            ApplyLine(count, list, index, line, divider);
        start = end + 1;
    }
}

int ReadIni(int count, EingabeElement *list, const char *path) {
    std::string file;
    if (path != nullptr) {
        file = path;
    } else {
        char *profile = nullptr;
        const int result = CreateUIDFIle(count, list, 0, &profile);
        if (result != 0 || profile == nullptr) {
            std::free(profile);
            return 0;
        }
        file = profile;
        std::free(profile);
    }
    std::string content;
    if (!ReadWholeFile(file, content)) {
        ReportError(count, list, "Open: OpenUIDFile %s fails!", file.c_str());
        return -1;
    }
    ApplyContent(count, list, content);
    return 0;
}

enum class Mode { Write, Append, Other };

Mode ModeOf(const char *mode) {
    if (mode == nullptr) return Mode::Other;
    if (*mode == 'w' || *mode == 'W') return Mode::Write;
    if (*mode == 'a' || *mode == 'A') return Mode::Append;
    return Mode::Other;
}

// What a write starts from: the file's old content for "a", its divider
// and whether the divider line is still to be written.
struct WritePlan {
    std::string path;
    const char *mode;
    std::string content;
    std::string divider;
    bool header = true;
};

// Fills plan.content and plan.divider; false after reporting a failure.
bool PrepareContent(int count, EingabeElement *list, const char *divider, WritePlan &plan) {
    const Mode mode = ModeOf(plan.mode);
    const char *file = plan.path.c_str();
    if (mode == Mode::Other) {
        ReportError(count, list, "WriteIniFile: OpenUIDFile %s %s fails!", file, plan.mode ? plan.mode : "");
        return false;
    }
    const bool exists = mode == Mode::Append && ReadWholeFile(plan.path, plan.content);
    if (divider == nullptr && mode == Mode::Append) {
        if (!exists) {
            ReportError(count, list, "WriteIniFile: OpenUIDFile %s %s fails!", file, "r");
            return false;
        }
        const std::string_view line = std::string_view(plan.content).substr(0, kDividerLineLimit);
        if (line.empty()) {
            ReportError(count, list, "WriteIniFile: Unable to read Divider from %s", file);
            return false;
        }
        plan.divider = DividerOf(line);
        plan.header = false;
        return true;
    }
    if (divider == nullptr) {
        ReportError(count, list, "WriteIniFile: no Divider for %s", file);
        return false;
    }
    plan.divider = std::string_view(divider).substr(0, kDividerLimit);
    plan.header = !exists;
    return true;
}

// The profile path (created) for a null path; false after reporting.
bool ProfilePath(int count, EingabeElement *list, const char *path, std::string &out) {
    if (path != nullptr) {
        out = path;
        return true;
    }
    char *profile = nullptr;
    const int result = CreateUIDFIle(count, list, 1, &profile);
    if (result != 0) {
        ReportError(count, list, "WriteIniFile: CreateUIDFile %s fails with %d", profile ? profile : "", result);
        std::free(profile);
        return false;
    }
    if (profile == nullptr) {
        ReportError(count, list, "WriteIniFile: UIDFile == NULL");
        return false;
    }
    out = profile;
    std::free(profile);
    return true;
}

struct WriteRequest {
    const char *divider;
    const char *mode;
    int nameCount;
    const char **names;
    std::FILE **stream;
};

int WriteIni(int count, EingabeElement *list, const WriteRequest &request, WritePlan &plan) {
    auto lock = std::make_unique<core::FileLock>(plan.path.c_str());
    if (!lock->Held() || !PrepareContent(count, list, request.divider, plan)) {
        if (!lock->Held())
            ReportError(count, list, "WriteIniFile: OpenUIDFile %s %s fails!", plan.path.c_str(), request.mode);
        return -1;
    }
    if (plan.header) plan.content.append(plan.divider).append("\n");
    AppendIniLines(plan.content, count, list, plan.divider, request.nameCount, request.names);
    if (ReplaceFile(plan.path, plan.content) != 0) {
        ReportError(count, list, "WriteIniFile: OpenUIDFile %s %s fails!", plan.path.c_str(), request.mode);
        return -1;
    }
    if (request.stream != nullptr)
        *request.stream = OpenReplacingStream(plan.path, std::move(plan.content), std::move(lock));
    return 0;
}

// The next piece fgets would read into a buffer of kReadFileLineLimit + 1
// bytes, as far as a C text holds it.
std::string_view NextPiece(std::string_view &rest) {
    return platform::UpToNul(platform::NextLinePiece(rest, kReadFileLineLimit));
}

// Appends one fgets-sized piece of a line (as far as a C text holds it)
// unless an exclusion occurs in it.
void KeepPiece(std::string &kept, std::string_view text, const char **exclusions, int exclusionCount) {
    for (int i = 0; exclusions != nullptr && i < exclusionCount; ++i)
        if (exclusions[i] != nullptr && *exclusions[i] != '\0' && text.find(exclusions[i]) != std::string_view::npos)
            return;
    const std::string_view line = CutAtLineEnd(text);
    kept.append(line);
    if (line.size() < text.size()) kept += '\n';
}

}  // namespace

void AppendIniLines(std::string &out, int count, EingabeElement *list, std::string_view divider,
                    int nameCount, const char **names) {
    const auto index = IndexByName(count, list);
    for (int n = 0; names != nullptr && n < nameCount; ++n) {
        const auto found = names[n] != nullptr ? index.find(names[n]) : index.end();
        if (found == index.end()) continue;
        EingabeElement &entry = list[found->second];
        if (entry.WertGesetzt <= 0 || entry.Wert == nullptr) continue;
        out.append(entry.Name).append("=");
        entry.WertPosition = 0;
        for (int v = 0; v < entry.WertGesetzt; ++v) {
            if (v > 0) out.append(divider);
            out.append(entry.Wert + entry.WertPosition);
            if (v + 1 < entry.WertGesetzt) Advance(entry);
        }
        out.append("\n");
        entry.WertPosition = 0;
    }
}

}  // namespace kx::profile

extern "C" {

int ReadIniFile(int count, EingabeElement *list, const char *path) {
    return kx::profile::Guard(-1, [&] {
        return kx::profile::ReadIni(count, list, path);
    });
}

int WriteIniFile(int count, EingabeElement *list, const char *divider, const char *mode, int nameCount,
                 const char **names, const char *path, FILE **stream, char **pathOut) {
    return kx::profile::Guard(-1, [&] {
        if (pathOut != nullptr) *pathOut = nullptr;
        if (stream != nullptr) *stream = nullptr;
        kx::profile::WritePlan plan{{}, mode, {}, {}, true};
        if (!kx::profile::ProfilePath(count, list, path, plan.path)) return -1;
        if (pathOut != nullptr) *pathOut = kx::core::HeapCopy(plan.path);
        return kx::profile::WriteIni(count, list, {divider, mode ? mode : "", nameCount, names, stream}, plan);
    });
}

char *UtilsReadFile(const char *path, int *length, const char **exclusions, int exclusionCount) {
    return kx::profile::Guard(static_cast<char *>(nullptr), [&]() -> char * {
        if (length != nullptr) *length = 0;
        const long size = path != nullptr ? KXUtilsFileSize(path) : -1;
        if (size <= 0) return nullptr;
        kx::platform::FileText file;
        if (!file.Read(path)) return nullptr;
        std::string kept;
        for (std::string_view rest = file.View(); !rest.empty();)
            kx::profile::KeepPiece(kept, kx::profile::NextPiece(rest), exclusions, exclusionCount);
        // A file that grew since its size was taken is kept to that size.
        if (kept.size() > static_cast<std::size_t>(size)) kept.resize(static_cast<std::size_t>(size));
        char *text = kx::core::HeapCopy(kept);
        if (text != nullptr && length != nullptr) *length = static_cast<int>(kept.size());
        return text;
    });
}

}  // extern "C"
