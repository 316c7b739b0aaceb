// The requests a page makes through reserved entries: "PLSet", "MibPath",
// "ParameterList" and "SetIniValue".
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "companion/libKXsnmp.h"
#include "core/entry.h"
#include "core/markers.h"
#include "core/text.h"
#include "input/assignment_actions.h"
#include "input/definition_reader.h"
#include "kx_input.h"
#include "kx_template.h"

namespace kx::input {
using namespace kx::core;
namespace {

constexpr char kPLSet[] = "PLSet";
constexpr char kPLSetDefault[] = "yes";
constexpr char kMibPath[] = "MibPath";
constexpr char kParameterList[] = "ParameterList";
constexpr char kSetIniValue[] = "SetIniValue";
constexpr char kSetIniValueNames[] = "SetIniValueNames";
constexpr char kWritableDivider[] = "~";
constexpr char kErrorText[] = "ErrorText";
constexpr std::string_view kPairSeparator = ",,";
constexpr std::string_view kNameValueSeparator = "--";
constexpr char kListSeparator[] = "|";
constexpr char kFallbackSeparator = '|';
// Room for "./" and a definition file name, terminating NUL included.
constexpr size_t kIniPathSize = 400;
constexpr int kDefinitionFiles = 2;
constexpr char kLineEnds[] = "\n\r";

// The separator of a one-line definition: the divider's first byte when it
// can start an in-memory definition, otherwise "|".
std::string DefinitionSeparator(std::string_view divider) {
    const bool usable = !divider.empty() && IsDefinitionMarker(divider[0]);
    return std::string(1, usable ? divider[0] : kFallbackSeparator);
}

bool HasText(const char *text) { return text != nullptr && *text != '\0'; }

// Declares name with value as its default, then sets it; a value with "|"
// becomes a list. Names that a definition line cannot carry are skipped.
void DeclareAndSet(int *pCount, EingabeElement **pList, const std::string &separator, const std::string &name,
                   const std::string &value) {
    if (name.empty() || name.find_first_of(separator + kLineEnds) != std::string::npos) return;
    const bool list = value.find(kListSeparator) != std::string::npos;
    if (AppendToEingabe(pCount, pList, separator.c_str(), name.c_str(), list ? 2 : 1, value.c_str()) != 0) return;
    const int index = SetEingabeWert(*pCount, *pList, name.c_str(), value.c_str());
    if (!list || index >= *pCount) return;
    EingabeElement &entry = (*pList)[index];
    entry.WertGesetzt = ErmittleTextElemente(entry.Wert, kListSeparator, nullptr, nullptr);
}

}  // namespace

bool DeclarePLSet(int *pCount, EingabeElement **pList, std::string_view divider) {
    if (EingabewertIndex(kPLSet, *pList, *pCount) < *pCount) return false;
    AppendToEingabe(pCount, pList, DefinitionSeparator(divider).c_str(), kPLSet, 1, kPLSetDefault);
    return true;
}

void ApplyMibPath(EingabeElement *list, int count) {
    const int index = EingabewertIndex(kMibPath, list, count);
    if (index >= count) return;
    const char *setting = SettingText(list[index]);
    if (HasText(setting)) KXSetMibPath(setting);
}

void ApplyParameterList(int *pCount, EingabeElement **pList, std::string_view divider) {
    const int index = EingabewertIndex(kParameterList, *pList, *pCount);
    if (index >= *pCount) return;
    const char *current = CurrentText((*pList)[index]);
    if (!HasText(current)) return;
    // A pair may redeclare any entry, this one too: work on a copy.
    const std::string pairs(current);
    const std::string separator = DefinitionSeparator(divider);
    std::string_view rest = pairs;
    for (bool more = true; more;) {
        const size_t end = rest.find(kPairSeparator);
        more = end != std::string_view::npos;
        const std::string_view pair = rest.substr(0, end);
        if (more) rest.remove_prefix(end + kPairSeparator.size());
        const size_t split = pair.find(kNameValueSeparator);
        if (split == std::string_view::npos) continue;
        DeclareAndSet(pCount, pList, separator, Decoded(pair.substr(0, split)),
                      Decoded(pair.substr(split + kNameValueSeparator.size())));
    }
    // Memory running out leaves the entry's text as it was.
    const HeapText encoded(ServerEncoding(pairs.c_str(), nullptr, 0, 0));
    if (encoded) SetEingabeWertI(*pCount, *pList, index, encoded.Get());
}

bool WritableNames::Allows(std::string_view name) const {
    if (!restricted) return true;
    return !name.empty() && name.find(kWritableDivider) == std::string_view::npos &&
           names.find(std::string(kWritableDivider) + std::string(name) + kWritableDivider) != std::string::npos;
}

// Only the definition's default counts: a request sets values, never defaults.
WritableNames WritableNamesOf(const EingabeElement *list, int count) {
    const int index = EingabewertIndex(kSetIniValueNames, const_cast<EingabeElement *>(list), count);
    if (index >= count) return {};
    const char *names = list[index].Vorgabe != nullptr ? list[index].Vorgabe : "";
    return {true, std::string(kWritableDivider) + names + kWritableDivider};
}

namespace {

// Why a save did not happen, in the words "ErrorText" shows.
struct SaveFailure {
    int error;
    const char *text;
};
constexpr SaveFailure kSaveFailures[] = {
    {EPERM, "the entry may not be written"},
    {EFBIG, "the value is too long"},
    {ENOENT, "the definition file is not in the working directory"},
    {EACCES, "the definition file is read-only"},
    {EWOULDBLOCK, "another save holds the definition file"},
    {ESRCH, "the entry has no line of its own in the definition file"},
};

void ReportFailedSave(EingabeElement *list, int count, const char *name, int error) {
    const char *reason = std::strerror(error);
    for (const SaveFailure &failure : kSaveFailures)
        if (failure.error == error) reason = failure.text;
    const std::string text = std::string(kSetIniValue) + ": " + name + " was not saved (" + reason + ")";
    SetEingabeWert(count, list, kErrorText, text.c_str());
}

// Writes value as the default of target into the recorded definition files,
// the first that takes it; 0 or the reason of the last failure.
int SaveDefault(const EingabeElement &target, const std::string &value) {
    // A line longer than the reader reads at once would fall apart into
    // lines of its own: such a value is refused, not cut.
    if (target.NameLaenge + 3 + value.size() > kx::request::kLongestWrittenLine) return EFBIG;
    int error = ENOENT;
    for (int file = 0; file < kDefinitionFiles; ++file) {
        if (_IniFilename[file] == nullptr) continue;
        const std::string path = std::string("./") + _IniFilename[file];
        if (path.size() >= kIniPathSize) continue;
        const char sign = _IniFilenameDivideSign[file];
        // The key starts a line, so an entry whose name ends like the target's is left alone.
        const std::string key = std::string("\n") + target.Name + sign + target.Art + sign;
        error = ChangeFileContentBecause(path.c_str(), key.c_str(), value.c_str(), kLineEnds, 2);
        if (error == 0) return 0;
    }
    return error;
}

}  // namespace

void ApplySetIniValue(EingabeElement *list, int count, const WritableNames &writable) {
    const int index = EingabewertIndex(kSetIniValue, list, count);
    if (index >= count || list[index].Wert == nullptr) return;
    const char *targetName = CurrentText(list[index]);
    if (!HasText(targetName)) return;
    const int target = EingabewertIndex(targetName, list, count);
    if (target >= count) return;
    const char *current = CurrentText(list[target]);
    if (!HasText(current)) return;
    // A default ends at the line end: a line break in the value would start
    // a definition line of its own.
    const std::string value(current, std::strcspn(current, kLineEnds));
    const std::string name(list[target].Name);
    const int error = writable.Allows(name) ? SaveDefault(list[target], value) : EPERM;
    if (error != 0) ReportFailedSave(list, count, name.c_str(), error);
}

}  // namespace kx::input
