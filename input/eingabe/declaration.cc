#include "input/eingabe/declaration.h"

#include <malloc.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "core/alloc.h"
#include "core/html_escape.h"
#include "core/messages.h"
#include "core/text.h"
#include "input/keywords.h"
#include "input/request_internal.h"

namespace kx::input {
namespace {

constexpr std::string_view kLineEnd = "\r\n";
constexpr std::string_view kBlankCharacters = " \t\r\n";

std::string_view CutAtLineEnd(std::string_view text) { return text.substr(0, text.find_first_of(kLineEnd)); }

bool IsBlank(std::string_view line) { return line.find_first_not_of(kBlankCharacters) == line.npos; }

// An empty separator occurs nowhere: every line then lacks its name.
std::size_t Find(std::string_view line, std::string_view separator, std::size_t from) {
    return separator.empty() ? line.npos : line.find(separator, from);
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
    const int before = target.before;
    if (target.index != nullptr) {
        const int first = target.index->Find(list, *target.count, name);
        return first < before ? first : -1;
    }
    for (int index = 0; index < before; ++index) {
        const EingabeElement &entry = list[index];
        if (entry.NameLaenge == name.size() && std::memcmp(entry.Name, name.data(), name.size()) == 0)
            return index;
    }
    return -1;
}

// The list with room for one more entry. It grows by half its size at a
// time; its room is what the allocator reports for the block, so a list that
// a program allocated itself grows the same way.
EingabeElement *Room(const DeclarationTarget &target) {
    const auto needed = (static_cast<std::size_t>(*target.count) + 1) * sizeof(EingabeElement);
    if (*target.list != nullptr && malloc_usable_size(*target.list) >= needed) return *target.list;
    const std::size_t grown = needed + needed / 2;
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

bool SetKindAndDefault(EingabeElement &entry, char kind, std::string_view defaultText) {
    char *copy = core::HeapCopy(defaultText);
    if (copy == nullptr) return false;
    entry.Art = kind;
    std::free(entry.Vorgabe);
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
    const std::string_view name = line.substr(0, first);
    int index = FindEarlierEntry(target, name);
    if (index < 0 && (index = AddEntry(target, name)) < 0) return Declared::NoMemory;
    const std::size_t second = Find(line, separator, first + 1);
    if (second == line.npos) {
        Report(target, index + 2, separator, "TextElementErmittlung");
        return Declared::Skipped;
    }
    const bool set =
        SetKindAndDefault((*target.list)[index], line[first + 1], CutAtLineEnd(line.substr(second + 1)));
    return set ? Declared::Entry : Declared::NoMemory;
}

}  // namespace kx::input
