// Entry access, error reports, path confinement and the user tree shared by
// the profile and user-file operations.
#include <sys/stat.h>

#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "companion/libKXUtils.h"
#include "input/request_internal.h"
#include "kx_input.h"
#include "platform/file_text.h"
#include "profile/profile_internal.h"

namespace kx::profile {
namespace {

constexpr char kErrorEntry[] = "ErrorText";
constexpr char kUserIdEntry[] = "UserID";
constexpr char kApplicationEntry[] = "Application";
constexpr char kTrapApplication[] = "SnmpTrap";
constexpr std::size_t kMessageSize = 1024;
// A name decoded this often without change is in its final form.
constexpr int kDecodeRounds = 4;

int HexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// One round of "%XX" decoding; "+" stays, since it never names a separator.
std::string PercentDecoded(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const int high = i + 2 < text.size() && text[i] == '%' ? HexDigit(text[i + 1]) : -1;
        const int low = high >= 0 ? HexDigit(text[i + 2]) : -1;
        if (low < 0) {
            out += text[i];
            continue;
        }
        out += static_cast<char>(high * 16 + low);
        i += 2;
    }
    return out;
}

bool IsPlainName(std::string_view text) {
    if (text.empty() || text == "." || text == "..") return false;
    for (const char c : text)
        if (c == '/' || c == '\\' || static_cast<unsigned char>(c) < 0x20) return false;
    return true;
}

}  // namespace

EingabeElement *Entry(int count, EingabeElement *list, const char *name) {
    if (list == nullptr || name == nullptr) return nullptr;
    const int index = EingabewertIndex(name, list, count);
    return index >= 0 && index < count ? &list[index] : nullptr;
}

const char *CurrentText(int count, EingabeElement *list, const char *name) {
    const EingabeElement *entry = Entry(count, list, name);
    if (entry == nullptr) return nullptr;
    return entry->Wert != nullptr ? entry->Wert + entry->WertPosition : entry->Vorgabe;
}

std::unordered_map<std::string_view, int> IndexByName(int count, const EingabeElement *list) {
    std::unordered_map<std::string_view, int> index;
    index.reserve(count > 0 ? static_cast<std::size_t>(count) : 0);
    for (int i = 0; list != nullptr && i < count; ++i)
        if (list[i].Name != nullptr) index.emplace(list[i].Name, i);
    return index;
}

bool HasValue(const EingabeElement *entry) {
    return entry != nullptr && entry->Wert != nullptr && entry->Wert[0] != '\0';
}

void SetValueList(int count, EingabeElement *list, int index, const char *text, const char *divider) {
    if (index < 0 || index >= count) return;
    SetEingabeWertI(count, list, index, text);
    EingabeElement &entry = list[index];
    if (entry.Wert == nullptr) return;
    // A divider of several bytes leaves its tail between the values: close
    // the gaps, so that every value starts just after the previous NUL.
    const std::size_t gap = divider != nullptr && *divider != '\0' ? std::strlen(divider) - 1 : 0;
    int *lengths = nullptr;
    entry.WertGesetzt = ErmittleTextElemente(entry.Wert, divider, nullptr, gap > 0 ? &lengths : nullptr);
    entry.WertPosition = 0;
    const auto values = static_cast<std::size_t>(entry.WertGesetzt);
    for (std::size_t from = 0, to = 0, i = 0; gap > 0 && lengths != nullptr && i < values; ++i) {
        const std::size_t bytes = static_cast<std::size_t>(lengths[i]) + 1;
        std::memmove(entry.Wert + to, entry.Wert + from, bytes);
        to += bytes;
        from += bytes + gap;
    }
    std::free(lengths);
}

void Advance(EingabeElement &entry) {
    if (entry.Wert == nullptr) return;
    entry.WertPosition += static_cast<int>(std::strlen(entry.Wert + entry.WertPosition)) + 1;
}

void ReportError(int count, EingabeElement *list, const char *format, ...) {
    if (Entry(count, list, kErrorEntry) == nullptr) return;
    char message[kMessageSize];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(message, sizeof message, format, arguments);
    va_end(arguments);
    SetEingabeWert(count, list, kErrorEntry, message);
}

bool IsConfinedName(std::string_view text) {
    std::string form(text);
    for (int round = 0; round < kDecodeRounds; ++round) {
        if (!IsPlainName(form)) return false;
        std::string decoded = PercentDecoded(form);
        if (decoded == form) return true;
        form = std::move(decoded);
    }
    return IsPlainName(form) && PercentDecoded(form) == form;
}

std::string Separator() { return std::string(kx::request::Separator()); }

std::string CounterFilePath(int count, EingabeElement *list) {
    return kx::request::ApplicationDirectory(list, count) + "uids";
}

std::string UserDirectory(int count, EingabeElement *list, const char *userId) {
    const char *id = userId != nullptr ? userId : CurrentText(count, list, kUserIdEntry);
    if (id == nullptr || !IsConfinedName(id)) return {};
    const std::string name = "uid" + Separator() + id;
    const char *found = SearchForFile(name.c_str(), list, count, nullptr, 0, nullptr);
    return found != nullptr ? std::string(found) : std::string();
}

int MakeDirectory(const std::string &path) {
    if (mkdir(path.c_str(), 0700) == 0 || errno == EEXIST || errno == EACCES) return 0;
    return errno;
}

bool InTrapsFolder(int count, EingabeElement *list) {
    std::string application;
    if (iApplication != -1) {
        application = kx::request::CurrentText(list, count, iApplication);
    } else if (const char *text = CurrentText(count, list, kApplicationEntry)) {
        application = text;
    }
    return std::strcmp(KXUtilsBasename(application.c_str(), 0), kTrapApplication) == 0;
}

int ReplaceFile(const std::string &path, std::string_view content) {
    if (content.size() > static_cast<std::size_t>(INT_MAX - 1)) return EFBIG;
    const std::string text(content);
    int error = 0;
    const int length = static_cast<int>(text.size());
    if (KXUtilsWriteMemoryToFileErrorOutput(path.c_str(), text.c_str(), length, &error, nullptr) == 1) return 0;
    return error != 0 ? error : EIO;
}

bool ReadWholeFile(const std::string &path, std::string &content) {
    platform::FileText text;
    if (!text.Read(path.c_str())) return false;
    content.append(text.View());
    return true;
}

}  // namespace kx::profile
