// Conversions over lists: the position of a value among the values of an
// entry, and page numbers of a list.
#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "convert/convert_internal.h"
#include "core/selection_form.h"
#include "kx_convert.h"

namespace kx::convert {
namespace {

// The names and the key value of "{Prefix[{Key[k]}]},default".
struct SelectionArgument {
    std::string prefix;
    std::string key;
    std::string_view wanted;
    std::string_view fallback;
};

bool ReadSelection(std::string_view argument, SelectionArgument &parsed) {
    parsed.fallback = CutAt(argument, ',').rest;
    core::SelectionParts parts;
    if (core::ReadSelectionForm(argument, "{", core::SelectionSource::kArgument, parts) != core::SelectionFault::kNone)
        return false;
    // An argument that begins with "[{" has always named the whole text after
    // its first character as Prefix.
    parsed.prefix = argument.starts_with("[{") ? argument.substr(1) : parts.prefix;
    parsed.key = parts.key;
    parsed.wanted = parts.elements;
    return true;
}

// The values of the current list's entry name, from its first value on;
// empty when the entry is missing or its value is empty.
std::vector<std::string_view> EntryValues(const std::string &name) {
    if (_pEingabe == nullptr || _pEingabeAnzahl == nullptr || *_pEingabe == nullptr) return {};
    const int count = *_pEingabeAnzahl;
    const int index = EingabewertIndex(name.c_str(), *_pEingabe, count);
    if (index >= count) return {};
    const EingabeElement &entry = (*_pEingabe)[index];
    if (entry.Wert == nullptr || entry.Wert[0] == '\0') return {};
    std::vector<std::string_view> values;
    const char *at = entry.Wert;
    for (int32_t i = 0; i < entry.WertGesetzt; ++i) {
        values.emplace_back(at);
        at += values.back().size() + 1;
    }
    return values;
}

std::optional<int> PositionInRun(const SelectionArgument &parsed, std::string_view value) {
    const std::vector<std::string_view> keys = EntryValues(parsed.key);
    std::size_t first = 0;
    while (first < keys.size() && keys[first] != parsed.wanted) ++first;
    if (first == keys.size()) return std::nullopt;
    std::size_t end = first;
    while (end < keys.size() && keys[end] == parsed.wanted) ++end;
    const std::vector<std::string_view> prefixes = EntryValues(parsed.prefix);
    if (prefixes.size() <= first) return std::nullopt;
    for (std::size_t p = first; p < end && p < prefixes.size(); ++p)
        if (prefixes[p] == value) return static_cast<int>(p - first);
    return std::nullopt;
}

char *ValueIndex(std::string_view argument, std::string_view value) {
    SelectionArgument parsed;
    if (!ReadSelection(argument, parsed)) return HeapCopy(parsed.fallback);
    std::optional<int> position = PositionInRun(parsed, value);
    return position ? PrintInt(*position) : HeapCopy(parsed.fallback);
}

char *DivideList(std::string_view argument, std::string_view value, int cycleIndex) {
    const Cut parts = CutAt(argument, ',');
    const std::string_view divider = parts.hasRest ? parts.head : std::string_view{"~"};
    const std::string rest = Evaluated(parts.hasRest ? parts.rest : argument, cycleIndex);
    const std::vector<std::string_view> fields = Split(rest, ",");
    int64_t step = ReadInt(fields[0]);
    // Behind the size come a count that is not used and the minimum step.
    if (fields.size() >= 3) step = std::max<int64_t>(step, ReadInt(fields[2]));
    const int64_t total = ReadInt(value);
    std::string pages = "1";
    for (int64_t page = 2; step >= 1 && total - (page - 1) * step >= 1; ++page) {
        const std::string next = std::string{divider} + std::to_string(page);
        if (pages.size() + next.size() > kLongResultLimit) break;
        pages += next;
    }
    return HeapCopy(pages);
}

}  // namespace
}  // namespace kx::convert

extern "C" {

char *ConvertToValueIndex(char *argument, char *value, int /*cycleIndex*/) {
    return kx::convert::ValueIndex(kx::convert::ValueText(argument), kx::convert::ValueText(value));
}

char *ConvertDivideList(char *argument, char *value, int cycleIndex) {
    return kx::convert::DivideList(kx::convert::ValueText(argument), kx::convert::ValueText(value),
                                   cycleIndex);
}

}  // extern "C"
