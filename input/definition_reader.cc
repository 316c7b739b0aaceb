// Definition lines into input entries.
#include "input/definition_reader.h"

#include <cstdlib>
#include <cstring>

#include "input/eingabe/html_escape.h"
#include "input/keywords.h"
#include "input/request_internal.h"

namespace kx::request {
namespace {

constexpr std::string_view kLineEnd = "\r\n";
constexpr std::string_view kBlankCharacters = " \t\r\n";

std::string_view CutAtLineEnd(std::string_view text) {
    return text.substr(0, text.find_first_of(kLineEnd));
}

bool IsBlank(std::string_view line) { return line.find_first_not_of(kBlankCharacters) == line.npos; }

// An empty separator occurs nowhere: every line then lacks its name.
std::size_t Find(std::string_view line, std::string_view separator, std::size_t from) {
    return separator.empty() ? line.npos : line.find(separator, from);
}

void Report(const DefinitionTarget &target, int lineNumber, std::string_view separator,
            const char *missing) {
    // The name may come from the request: it is shown escaped.
    const std::string source = input::HtmlEscaped(target.sourceName);
    const std::string shownSeparator(separator);
    std::fprintf(PageStream(),
                 "<! ErmittleEingabe: Fehler in '%s' Zeile '%d': Kein '%s' hinter '%s'gefunden>\n",
                 source.c_str(), lineNumber, shownSeparator.c_str(), missing);
}

// Index of the entry named name among the first before entries, or -1.
int FindEarlierEntry(const EingabeElement *list, int before, std::string_view name) {
    for (int index = 0; index < before; ++index) {
        const EingabeElement &entry = list[index];
        if (entry.NameLaenge == name.size() && std::memcmp(entry.Name, name.data(), name.size()) == 0)
            return index;
    }
    return -1;
}

// Adds an entry named name at the end of the list; -1 when memory runs out.
int AddEntry(const DefinitionTarget &target, std::string_view name) {
    char *copy = HeapCopy(name);
    const auto grown = static_cast<std::size_t>(*target.count) + 1;
    auto *list = static_cast<EingabeElement *>(std::realloc(*target.list, grown * sizeof(EingabeElement)));
    if (copy == nullptr || list == nullptr) {
        std::free(copy);
        if (list != nullptr) *target.list = list;
        return -1;
    }
    const int index = *target.count;
    list[index] = EingabeElement{copy, static_cast<uint32_t>(name.size()), nullptr, 0, 0, 'n', nullptr};
    *target.list = list;
    *target.count = index + 1;
    RecordKeyword(name, index);
    return index;
}

void SetKindAndDefault(EingabeElement &entry, char kind, std::string_view defaultText) {
    char *copy = HeapCopy(defaultText);
    if (copy == nullptr) return;
    entry.Art = kind;
    std::free(entry.Vorgabe);
    entry.Vorgabe = copy;
}

}  // namespace

std::optional<std::string_view> FileLines::Next() {
    if (std::fgets(buffer_.data(), static_cast<int>(buffer_.size()), file_) == nullptr) return std::nullopt;
    const std::size_t length = std::strlen(buffer_.data());
    // A full buffer without the line end: pass over the rest of the line.
    if (length == kLineLimit && buffer_[length - 1] != '\n') {
        int ch;
        do ch = std::fgetc(file_);
        while (ch != '\n' && ch != EOF);
    }
    return std::string_view(buffer_.data(), length);
}

std::optional<std::string_view> BlockLines::Next() {
    const std::string_view text(next_);
    if (text.empty()) return std::nullopt;
    next_ += text.size() + 1;
    return text.substr(0, pieceLimit_);
}

std::string SeparatorOf(std::string_view firstLine) { return std::string(CutAtLineEnd(firstLine)); }

void ReadDefinitionLines(LineSource &lines, std::string_view separator,
                         const DefinitionTarget &target) {
    const int before = *target.count;
    while (const auto next = lines.Next()) {
        const std::string_view line = *next;
        if (IsBlank(line)) continue;
        const std::size_t first = Find(line, separator, 0);
        if (first == line.npos) {
            Report(target, *target.count + 2, separator, "Name");
            continue;
        }
        const std::string_view name = line.substr(0, first);
        int index = FindEarlierEntry(*target.list, before, name);
        if (index < 0 && (index = AddEntry(target, name)) < 0) continue;
        const std::size_t second = Find(line, separator, first + 1);
        if (second == line.npos) {
            Report(target, index + 2, separator, "TextElementErmittlung");
            continue;
        }
        SetKindAndDefault((*target.list)[index], line[first + 1], CutAtLineEnd(line.substr(second + 1)));
    }
}

}  // namespace kx::request
