#include "input/eingabe/declaration.h"

#include <malloc.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "core/alloc.h"
#include "core/entry.h"
#include "core/html_escape.h"
#include "core/messages.h"
#include "core/text.h"
#include "input/keywords.h"
#include "input/request_internal.h"

namespace kx::input {
namespace {

// Entries the list has room for at first: a definition declares a few dozen.
constexpr std::size_t kFirstRoom = 128;

bool IsLineEnd(char ch) { return ch == '\r' || ch == '\n'; }
bool IsBlankCharacter(char ch) { return ch == ' ' || ch == '\t' || IsLineEnd(ch); }

// The default ends at its first CR or LF; a file's line has one LF, at its end.
std::string_view CutAtLineEnd(std::string_view text) {
    if (const void *feed = std::memchr(text.data(), '\n', text.size()))
        text = text.substr(0, static_cast<std::size_t>(static_cast<const char *>(feed) - text.data()));
    if (const void *ret = std::memchr(text.data(), '\r', text.size()))
        text = text.substr(0, static_cast<std::size_t>(static_cast<const char *>(ret) - text.data()));
    return text;
}

// Most lines begin with their name: the test ends at the first byte.
bool IsBlank(std::string_view line) {
    for (const char ch : line)
        if (!IsBlankCharacter(ch)) return false;
    return true;
}

// An empty separator occurs nowhere: every line then lacks its name. The
// usual separator is one byte.
std::size_t Find(std::string_view line, std::string_view separator, std::size_t from) {
    if (separator.size() != 1) return separator.empty() ? line.npos : line.find(separator, from);
    const void *hit = std::memchr(line.data() + from, separator.front(), line.size() - from);
    return hit != nullptr ? static_cast<std::size_t>(static_cast<const char *>(hit) - line.data()) : line.npos;
}

void Report(const DeclarationTarget &target, int lineNumber, std::string_view separator,
            const char *missing) {
    // The name may come from the request: it is shown escaped.
    const std::string source = core::HtmlEscaped(target.sourceName);
    const std::string shownSeparator(separator);
    std::fprintf(request::PageStream(), core::MessageText(core::PageMessage::DefinitionLineLacks),
                 source.c_str(), lineNumber, shownSeparator.c_str(), missing);
}

// Index of the entry named name among the first before entries, or -1.
int FindEarlierEntry(const DeclarationTarget &target, std::string_view name) {
    const EingabeElement *list = *target.list;
    const int first = target.index != nullptr ? target.index->Find(list, *target.count, name)
                                              : core::FindEntry(list, target.before, name);
    return first < target.before ? first : -1;
}

// The list with room for one more entry. It grows by half its size at a
// time, from room for a definition's usual few dozen entries; its room is
// what the allocator reports for the block, so a list that a program
// allocated itself grows the same way.
EingabeElement *Room(const DeclarationTarget &target) {
    const auto needed = (static_cast<std::size_t>(*target.count) + 1) * sizeof(EingabeElement);
    if (*target.list != nullptr && malloc_usable_size(*target.list) >= needed) return *target.list;
    const std::size_t grown = std::max(needed + needed / 2, kFirstRoom * sizeof(EingabeElement));
    return static_cast<EingabeElement *>(kx::core::Reallocate(*target.list, grown));
}

// Adds an entry named name at the end of the list; -1 when memory runs out.
int AddEntry(const DeclarationTarget &target, std::string_view name) {
    core::HeapText copy(core::HeapCopy(name));
    auto *list = Room(target);
    if (list != nullptr) *target.list = list;
    if (!copy || list == nullptr) return -1;
    const int index = *target.count;
    list[index] =
        EingabeElement{copy.Release(), static_cast<uint32_t>(name.size()), nullptr, 0, 0, 'n', nullptr};
    *target.count = index + 1;
    request::RecordKeyword(name, index);
    return index;
}

// The entry named name among the earlier ones, or a new one at the end; -1
// when memory runs out.
int EntryFor(const DeclarationTarget &target, std::string_view name) {
    const int index = FindEarlierEntry(target, name);
    return index >= 0 ? index : AddEntry(target, name);
}

bool SetKindAndDefault(EingabeElement &entry, char kind, std::string_view defaultText) {
    char *copy = core::HeapCopy(defaultText);
    if (copy == nullptr) return false;
    entry.Art = kind;
    if (entry.Vorgabe != nullptr) std::free(entry.Vorgabe);
    entry.Vorgabe = copy;
    return true;
}

}  // namespace

Declared DeclareFromLine(const DeclarationTarget &target, std::string_view line, std::string_view separator) {
    if (IsBlank(line)) return Declared::Skipped;
    const std::size_t first = Find(line, separator, 0);
    if (first == line.npos) {
        Report(target, *target.count + 2, separator, "Name");
        return Declared::Skipped;
    }
    const int index = EntryFor(target, line.substr(0, first));
    if (index < 0) return Declared::NoMemory;
    const std::size_t second = Find(line, separator, first + 1);
    if (second == line.npos) {
        Report(target, index + 2, separator, "TextElementErmittlung");
        return Declared::Skipped;
    }
    const bool set =
        SetKindAndDefault((*target.list)[index], line[first + 1], CutAtLineEnd(line.substr(second + 1)));
    return set ? Declared::Entry : Declared::NoMemory;
}

Declared Declare(const DeclarationTarget &target, std::string_view name, char kind, std::string_view defaultText) {
    const int index = EntryFor(target, name);
    if (index < 0) return Declared::NoMemory;
    return SetKindAndDefault((*target.list)[index], kind, CutAtLineEnd(defaultText)) ? Declared::Entry
                                                                                      : Declared::NoMemory;
}

}  // namespace kx::input
