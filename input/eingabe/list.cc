// The input list: finding entries by name and setting their values.
#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "core/entry.h"
#include "core/text.h"
#include "input/eingabe/declaration.h"
#include "kx_input.h"

EingabeElement **_pEingabe = nullptr;
int *_pEingabeAnzahl = nullptr;
char _UtilsMyDefaultBlank[1] = {'\0'};

namespace kx::input {
namespace {

bool ValidIndex(int index, int count) { return index >= 0 && index < count; }

// Replaces the entry's value by an owned text (or none), making it current.
void StoreValue(EingabeElement &entry, char *value) {
    std::free(entry.Wert);
    entry.Wert = value;
    entry.WertPosition = 0;
    entry.WertGesetzt = value != nullptr ? 1 : 0;
}

// Declarations into a shorter list walk it: a walk reads a few bytes of each
// entry, while indexing reads and hashes every name, which pays only over
// many lookups.
constexpr int kIndexedDeclarations = 128;
// Longest line built on the stack.
constexpr std::size_t kShortLine = 256;

// The names of the list AppendToEingabe declared into last, per thread: a
// program that declares entries one at a time into a long list gets each
// answer without a walk over its list; the index follows the list as
// NameIndex describes.
core::NameIndex &AppendIndex() {
    thread_local core::NameIndex index;
    return index;
}

// A line whose parts are cut exactly where they were joined: a one-byte
// separator that is no line end, found neither in the name nor as the kind.
bool PartsStayApart(std::string_view separator, std::string_view name, char kind) {
    if (separator.size() != 1) return false;
    const char sign = separator.front();
    return sign != '\r' && sign != '\n' && sign != kind && name.find(sign) == std::string_view::npos;
}

// An entry is declared as the one-line definition "<separator>" then
// "<name><separator><kind><separator><default>" would declare it: the
// separator is cut at its line end for the parsing, as a separator line is.
// A line that would fall apart into its parts again is not built.
Declared DeclareOne(int *count, EingabeElement **list, std::string_view separator, std::string_view name, char kind,
                    std::string_view defaultText) {
    const DeclarationTarget target{list, count, *count, {}, *count >= kIndexedDeclarations ? &AppendIndex() : nullptr};
    if (PartsStayApart(separator, name, kind)) return Declare(target, name, kind, defaultText);
    const std::string_view pieces[] = {name, separator, {&kind, 1}, separator, defaultText};
    std::size_t size = 0;
    for (const std::string_view piece : pieces) size += piece.size();
    std::array<char, kShortLine> shortLine;
    std::string longLine(size > shortLine.size() ? size : 0, '\0');
    char *at = size > shortLine.size() ? longLine.data() : shortLine.data();
    const std::string_view line(at, size);
    for (const std::string_view piece : pieces) at = std::copy(piece.begin(), piece.end(), at);
    return DeclareFromLine(target, line, separator.substr(0, separator.find_first_of("\r\n")));
}

}  // namespace

void RememberList(EingabeElement **list, int *count) {
    if (_pEingabe == nullptr) {
        _pEingabe = list;
        _pEingabeAnzahl = count;
    }
    if (*count == 0) *list = nullptr;
}

}  // namespace kx::input

extern "C" {

int EingabewertIndex(const char *name, EingabeElement *list, int count) {
    if (name == nullptr || list == nullptr) return count;
    const size_t length = std::strlen(name);
    if (length > 0) return kx::core::FindEntry(list, count, {name, length});
    // The empty name is also found on an entry whose Name is NULL.
    for (int i = 0; i < count; ++i)
        if (list[i].NameLaenge == 0) return i;
    return count;
}

int SetEingabeWertI(int count, EingabeElement *list, int index, const char *text) {
    if (list == nullptr || !kx::input::ValidIndex(index, count)) return index;
    char *copy = text != nullptr ? kx::core::HeapCopy(text) : nullptr;
    // Memory running out leaves the value as it was.
    if (text != nullptr && copy == nullptr) return index;
    kx::input::StoreValue(list[index], copy);
    return index;
}

int SetEingabeWert(int count, EingabeElement *list, const char *name, const char *text) {
    return SetEingabeWertI(count, list, EingabewertIndex(name, list, count), text);
}

int AppendEingabeWert(int count, EingabeElement *list, const char *name, const char *text) {
    const int index = EingabewertIndex(name, list, count);
    if (!kx::input::ValidIndex(index, count)) return index;
    EingabeElement &entry = list[index];
    const char *tail = text ? text : "";
    char *joined = EweitereText(entry.Wert, tail, static_cast<int>(std::strlen(tail)), nullptr);
    if (joined != nullptr) kx::input::StoreValue(entry, joined);
    return index;
}

int GetInputValue(int count, EingabeElement *list, const char *name, char **value) {
    if (value != nullptr) *value = nullptr;
    const int index = EingabewertIndex(name, list, count);
    if (value != nullptr && kx::input::ValidIndex(index, count) && list[index].Wert != nullptr &&
        list[index].Wert[0] != '\0')
        *value = list[index].Wert;
    return index;
}

int AppendToEingabe(int *count, EingabeElement **list, const char *separator, const char *name,
                    int kind, const char *defaultText) {
    if (name == nullptr) return -1;
    if (list == nullptr || count == nullptr) return 0;
    kx::input::RememberList(list, count);
    const kx::input::Declared declared = kx::input::DeclareOne(
        count, list, separator ? separator : "|", name, kind < 2 ? 'n' : 'j', defaultText ? defaultText : "");
    return declared == kx::input::Declared::NoMemory ? -1 : 0;
}

}  // extern "C"
