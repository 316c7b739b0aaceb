// The pairs of an ini text ("name=value" lines grouped by "[section]"
// lines), for KXUtilsReadIniFile and for the page engine's text table, which
// reads the same files without a call into the companion. Header-only: each
// companion is a shared library of its own.
//
// The name ends at the first "=" and the value runs to the line end, nothing
// trimmed, so a page text keeps its blanks, semicolons and colons, and a line
// of any length is read whole. Lines without "=" (the divider line that opens
// the console's ini files, comments) are passed over. Each CR and each LF
// ends a line.
#ifndef KX_PLATFORM_INI_PAIRS_H
#define KX_PLATFORM_INI_PAIRS_H

#include <cstddef>
#include <cstring>
#include <list>
#include <string>
#include <string_view>
#include <vector>

namespace kx::platform {

struct IniPair {
    std::string_view section;
    std::string_view name;
    std::string_view value;
};

namespace ini {

inline std::size_t LineEnd(std::string_view text) {
    const auto *end = static_cast<const char *>(std::memchr(text.data(), '\n', text.size()));
    const std::size_t feed = end != nullptr ? static_cast<std::size_t>(end - text.data()) : text.size();
    const auto *ret = static_cast<const char *>(std::memchr(text.data(), '\r', feed));
    return ret != nullptr ? static_cast<std::size_t>(ret - text.data()) : feed;
}

// A "[name]" line (blanks allowed before "[") names the section that follows.
inline bool SectionLine(std::string_view line, std::string_view &section) {
    std::size_t open = 0;
    while (open < line.size() && (line[open] == ' ' || line[open] == '\t')) ++open;
    if (open == line.size() || line[open] != '[') return false;
    const std::size_t close = line.find(']', open);
    if (close == std::string_view::npos) return false;
    section = line.substr(open + 1, close - open - 1);
    return true;
}

}  // namespace ini

// Calls take(pair) for each pair of text, in text order, until it returns false.
template <typename Take>
void ForEachIniPair(std::string_view text, Take take) {
    std::string_view section;
    while (!text.empty()) {
        const std::size_t end = ini::LineEnd(text);
        const std::string_view line = text.substr(0, end);
        text.remove_prefix(end == text.size() ? end : end + 1);
        if (ini::SectionLine(line, section)) continue;
        const std::size_t equals = line.find('=');
        if (equals == std::string_view::npos) continue;
        if (!take(IniPair{section, line.substr(0, equals), line.substr(equals + 1)})) return;
    }
}

// The texts of the pairs asked for, name then value, views into text: only
// those of section when it is given (their names as written), otherwise
// all, a name in a section then reported as "<section><separator><name>"
// unless separator is NUL; with a key, only the first pair of that name.
// Qualified names are kept in joined, whose texts never move.
inline std::vector<std::string_view> IniTexts(std::string_view text, const char *section, char separator,
                                              const char *key, std::list<std::string> &joined) {
    // A page's text file holds a few dozen pairs: room for them at once.
    constexpr std::size_t kTextsExpected = 32;
    std::vector<std::string_view> texts;
    texts.reserve(kTextsExpected);
    ForEachIniPair(text, [&](const IniPair &pair) {
        if (section != nullptr && pair.section != section) return true;
        std::string_view name = pair.name;
        if (section == nullptr && separator != '\0' && !pair.section.empty())
            name = joined.emplace_back(std::string(pair.section).append(1, separator).append(pair.name));
        if (key != nullptr && name != key) return true;
        texts.insert(texts.end(), {name, pair.value});
        return key == nullptr;
    });
    return texts;
}

}  // namespace kx::platform

#endif
