// Conversions that cut, search and replace text.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "companion/libKXUtils.h"
#include "companion/libparser.h"
#include "convert/convert_internal.h"
#include "kx_convert.h"

namespace kx::convert {
namespace {

const char *ValueOrEmpty(const char *value) { return value == nullptr ? "" : value; }

// The first limit characters of text, as a new heap text.
char *CopyOutCut(std::string_view text, std::size_t limit) { return HeapCopy(text.substr(0, limit)); }

char *Substring(std::string_view argument, std::string_view text) {
    const Cut bounds = CutAt(argument, ',');
    int64_t start = ReadInt(bounds.head);
    const int64_t end = bounds.hasRest ? ReadInt(bounds.rest) : static_cast<int64_t>(text.size());
    if (start < 0) start = 0;
    if (end < start) return HeapCopy("");
    const auto field = static_cast<std::size_t>(end - start);
    const std::string_view piece =
        static_cast<std::size_t>(start) < text.size() ? text.substr(static_cast<std::size_t>(start), field) : std::string_view{};
    // The piece is right-aligned in its field; only the first characters fit.
    const std::size_t blanks = std::min(field - piece.size(), kShortResultLimit);
    std::string result(blanks, ' ');
    result.append(piece.substr(0, kShortResultLimit - blanks));
    return HeapCopy(result);
}

// The needles, results and default of "_strstr,".
struct NeedleArgument {
    std::string needles;
    std::optional<std::string> results;
    std::string fallback;
};

NeedleArgument ReadNeedleArgument(std::string_view argument, int cycleIndex) {
    const Cut first = CutAt(argument, ',');
    NeedleArgument parsed{Evaluated(first.head, cycleIndex), std::nullopt, {}};
    if (!first.hasRest) return parsed;
    if (!first.rest.empty() && first.rest[0] == ',') {
        parsed.fallback = first.rest.substr(1);
        return parsed;
    }
    const Cut second = CutAt(first.rest, ',');
    parsed.results = Evaluated(second.head, cycleIndex);
    if (second.hasRest) parsed.fallback = Evaluated(second.rest, cycleIndex);
    return parsed;
}

char *StringString(std::string_view argument, std::string_view text, int cycleIndex) {
    const NeedleArgument parsed = ReadNeedleArgument(argument, cycleIndex);
    const std::vector<std::string_view> needles = Split(parsed.needles, "|");
    for (std::size_t i = 0; i < needles.size(); ++i) {
        const std::size_t at = text.find(Decoded(needles[i]));
        if (at == std::string_view::npos) continue;
        if (!parsed.results) return HeapCopy(text.substr(at));
        const std::vector<std::string_view> results = Split(*parsed.results, "|");
        return HeapCopy(Decoded(results[std::min(i, results.size() - 1)]));
    }
    return HeapCopy(Decoded(parsed.fallback));
}

enum class Search { kAfter, kBefore, kLastBefore };

std::optional<std::string> Find(Search search, const std::string &marker, const char *value) {
    const std::string_view text{value};
    if (search == Search::kAfter && text.find('|') != std::string_view::npos) {
        char *indexed = GetIndexedValue(value, marker.c_str(), "|");
        if (indexed == nullptr) return std::nullopt;
        std::string found{indexed};
        std::free(indexed);
        return found;
    }
    if (search == Search::kLastBefore) {
        const char *last = KXUtils_strrstr(value, marker.c_str());
        if (last == nullptr) return std::nullopt;
        return std::string{text.substr(0, static_cast<std::size_t>(last - value))};
    }
    const std::size_t at = text.find(marker);
    if (at == std::string_view::npos) return std::nullopt;
    if (search == Search::kBefore) return std::string{text.substr(0, at)};
    return std::string{text.substr(at + marker.size())};
}

char *Around(Search search, std::string_view argument, const char *value, int cycleIndex) {
    const Cut parts = CutAt(argument, ',');
    const std::string marker = Decoded(Evaluated(parts.head, cycleIndex));
    if (std::optional<std::string> found = Find(search, marker, ValueOrEmpty(value)))
        return HeapCopy(*found);
    if (parts.hasRest) return HeapCopy(Decoded(Evaluated(parts.rest, cycleIndex)));
    return HeapCopy(ValueText(value));
}

// The new text for old text number index: the only one, that number, or
// the first when the list is shorter.
std::string_view NewTextFor(const std::vector<std::string_view> &newTexts, std::size_t index) {
    return index < newTexts.size() ? newTexts[index] : newTexts.front();
}

// The decoded (old, new) pairs of an "olds,news" argument: the old texts are
// evaluated, a "|" from a placeholder's value kept inside its element; the
// new texts are taken as written. None without a ",".
std::optional<std::vector<std::pair<std::string, std::string>>> Replacements(std::string_view argument,
                                                                             int cycleIndex) {
    const Cut parts = CutAt(argument, ',');
    if (!parts.hasRest) return std::nullopt;
    const std::vector<std::string_view> newTexts = Split(parts.rest, "|");
    const std::string olds = Evaluated(parts.head, cycleIndex, "|");
    std::vector<std::pair<std::string, std::string>> pairs;
    const std::vector<std::string_view> oldTexts = Split(olds, "|");
    for (std::size_t i = 0; i < oldTexts.size(); ++i)
        pairs.emplace_back(Decoded(oldTexts[i]), Decoded(NewTextFor(newTexts, i)));
    return pairs;
}

char *ChangeOnce(std::string_view argument, std::string_view text, int cycleIndex) {
    const auto pairs = Replacements(argument, cycleIndex);
    if (!pairs) return HeapCopy(text);
    for (const auto &[old, replacement] : *pairs) {
        const std::size_t at = text.find(old);
        if (at == std::string_view::npos) continue;
        std::string result{text.substr(0, at)};
        result.append(replacement).append(text.substr(at + old.size()));
        return CopyOutCut(result, kLongResultLimit);
    }
    return HeapCopy(text);
}

char *ReplaceAll(std::string_view argument, std::string_view text, int cycleIndex) {
    const auto pairs = Replacements(argument, cycleIndex);
    if (!pairs) return HeapCopy(text);
    // Each step works on the last one's result, so a new text that holds its
    // old text could double the value at every step: the text never grows
    // past the limit, or past the value itself when that is longer.
    const std::size_t limit = std::max(text.size(), kLongResultLimit);
    std::string current{text};
    for (const auto &[old, replacement] : *pairs) {
        if (old.empty()) continue;
        char *replaced = StringReplace(current.c_str(), old.c_str(), replacement.c_str());
        if (replaced == nullptr) continue;
        current = replaced;
        std::free(replaced);
        if (current.size() > limit) current.resize(limit);
    }
    return HeapCopy(current);
}

}  // namespace
}  // namespace kx::convert

using kx::convert::Search;
using kx::convert::ValueText;

extern "C" {

char *ConvertToSubstring(char *argument, char *value, int /*cycleIndex*/) {
    return kx::convert::Substring(ValueText(argument), ValueText(value));
}

char *ConvertToStringString(char *argument, char *value, int cycleIndex) {
    return kx::convert::StringString(ValueText(argument), ValueText(value), cycleIndex);
}

char *ConvertToStringAfter(char *argument, char *value, int cycleIndex) {
    return kx::convert::Around(Search::kAfter, ValueText(argument), value, cycleIndex);
}

char *ConvertToStringBefore(char *argument, char *value, int cycleIndex) {
    return kx::convert::Around(Search::kBefore, ValueText(argument), value, cycleIndex);
}

char *ConvertToStringRBefore(char *argument, char *value, int cycleIndex) {
    return kx::convert::Around(Search::kLastBefore, ValueText(argument), value, cycleIndex);
}

char *ConvertToStringChange(char *argument, char *value, int cycleIndex) {
    return kx::convert::ChangeOnce(ValueText(argument), ValueText(value), cycleIndex);
}

char *ConvertToStringReplace(char *argument, char *value, int cycleIndex) {
    return kx::convert::ReplaceAll(ValueText(argument), ValueText(value), cycleIndex);
}

char *ConvertToLower(char * /*argument*/, char *value, int /*cycleIndex*/) {
    char *copy = kx::convert::HeapCopy(ValueText(value));
    return copy == nullptr ? nullptr : KonvertiereZuKleinbuchstaben(copy);
}

char *ConvertToUpper(char * /*argument*/, char *value, int /*cycleIndex*/) {
    char *copy = kx::convert::HeapCopy(ValueText(value));
    return copy == nullptr ? nullptr : KonvertiereZuGrossbuchstaben(copy);
}

}  // extern "C"
