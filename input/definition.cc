// ErmittleEingabe and ErmittleEingabe2: finding an application's definition
// (a file "<name>.ini" or a text in memory) and reading it into the input
// list; the record of the definition files ErmittleEingabe2 read.
#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "companion/libKXUtils.h"
#include "core/markers.h"
#include "core/messages.h"
#include "input/definition_reader.h"
#include "input/eingabe/declaration.h"
#include "input/request_internal.h"
#include "kx_trap.h"
#include "platform/file_text.h"

extern "C" {

char *_IniFilename[2] = {nullptr, nullptr};
char _IniFilenameDivideSign[2] = {'\0', '\0'};

}  // extern "C"

namespace kx::request {
namespace {

constexpr std::string_view kDefinitionEnding = ".ini";

// One call of ErmittleEingabe or ErmittleEingabe2.
struct Request {
    const char *application;
    EingabeElement **list;
    int *count;
    const char *settings;
    int settingsCount;
    const char *programPath;  // ErmittleEingabe2 only: the fallback place
    bool second;              // ErmittleEingabe2: fixed buffer, file record
};

bool IsInMemory(const char *application) {
    return core::IsDefinitionMarker(application[0]);
}

// "<directory of programPath><application>.ini". The application keeps its
// URL form but only its base name counts, so it cannot leave that directory.
bool ReadBesideProgram(const Request &call, std::string &opened, platform::FileText &content) {
    if (call.programPath == nullptr) return false;
    const char *base = KXUtilsBasename(call.programPath, 0);
    if (base == nullptr || base == call.programPath) return false;
    std::string path(call.programPath, static_cast<std::size_t>(base - call.programPath));
    path.append(KXUtilsBasename(call.application, 0)).append(kDefinitionEnding);
    UnifySeparators(path);
    if (path.size() > kMaxPathLength) return false;
    opened = path;
    return content.Read(path.c_str());
}

// The content of the definition file of an application name, searched by
// its decoded base name; opened is the name messages and records show.
bool ReadDefinitionFile(const Request &call, std::string &opened, platform::FileText &content) {
    const std::string decoded = Decoded(call.application);
    opened = std::string(KXUtilsBasename(decoded.c_str(), 0)).append(kDefinitionEnding);
    const char *found = SearchForFile(opened.c_str(), *call.list, *call.count, call.settings, call.settingsCount, nullptr);
    if (found != nullptr && content.Read(found)) return true;
    return call.second && ReadBesideProgram(call, opened, content);
}

// The first two definition files get a record; a third does not.
void RecordFile(const std::string &opened, char divideSign) {
    for (std::size_t slot = 0; slot < std::size(_IniFilename); ++slot) {
        if (_IniFilename[slot] != nullptr) continue;
        _IniFilename[slot] = HeapCopy(opened);
        _IniFilenameDivideSign[slot] = divideSign;
        return;
    }
}

int ReadFromFile(const Request &call) {
    std::string opened;
    platform::FileText content;
    if (!ReadDefinitionFile(call, opened, content)) return 1;
    FileLines lines(content.View());
    const auto firstLine = lines.Next();
    if (!firstLine) return 1;
    if (call.second) RecordFile(opened, firstLine->empty() ? '\0' : firstLine->front());
    const std::string separator = SeparatorOf(*firstLine);
    ReadDefinitionLines(lines, separator, DefinitionTarget{call.list, call.count, opened});
    return 0;
}

int ReadFromMemory(const Request &call) {
    // ErmittleEingabe2 keeps a fixed line buffer: its lines come in pieces.
    BlockLines lines(call.application, call.second ? kLineLimit : std::string_view::npos);
    const std::string separator = SeparatorOf(*lines.Next());
    ReadDefinitionLines(lines, separator, DefinitionTarget{call.list, call.count, ""});
    return 0;
}

// A successful read also builds the page engine's trap MIB index (once per process).
int Read(const Request &call) {
    if (call.list == nullptr || call.count == nullptr) return 1;
    input::RememberList(call.list, call.count);
    if (call.application == nullptr) {
        std::fputs(core::MessageText(core::PageMessage::NoApplication), PageStream());
        return 1;
    }
    const int read = IsInMemory(call.application) ? ReadFromMemory(call) : ReadFromFile(call);
    if (read == 0) CreateTrapMibs(*call.list, *call.count);
    return read;
}

}  // namespace
}  // namespace kx::request

extern "C" {

int ErmittleEingabe(const char *application, EingabeElement **list, int *count,
                    const char *settings, int settingsCount) {
    return kx::request::Read({application, list, count, settings, settingsCount, nullptr, false});
}

int ErmittleEingabe2(const char *application, EingabeElement **list, int *count,
                     const char *settings, const char *programPath, int settingsCount) {
    return kx::request::Read({application, list, count, settings, settingsCount, programPath, true});
}

}  // extern "C"
