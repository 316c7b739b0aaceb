// Reading ini files: "name=value" lines, grouped by "[section]" lines.
//
// The name ends at the first "=" and the value runs to the line end, nothing
// trimmed, so a page text keeps its blanks, semicolons and colons, and a line
// of any length is read whole. Lines without "=" (the divider line that opens
// the console's ini files, comments) are passed over.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "companion/libKXUtils.h"
#include "platform/text_block.h"

namespace {

struct IniPair {
    std::string section;
    std::string name;
    std::string value;
};

bool ReadWhole(const char *path, std::string &out) {
    FILE *file = std::fopen(path, "rb");
    if (file == nullptr) return false;
    char chunk[8192];
    size_t got;
    while ((got = std::fread(chunk, 1, sizeof chunk, file)) > 0) out.append(chunk, got);
    std::fclose(file);
    return true;
}

// A "[name]" line (blanks allowed before "[") names the section that follows.
bool SectionLine(std::string_view line, std::string &section) {
    const size_t open = line.find_first_not_of(" \t");
    if (open == std::string_view::npos || line[open] != '[') return false;
    const size_t close = line.find(']', open);
    if (close == std::string_view::npos) return false;
    section.assign(line.substr(open + 1, close - open - 1));
    return true;
}

std::vector<IniPair> ParseIni(std::string_view text) {
    std::vector<IniPair> pairs;
    std::string section;
    while (!text.empty()) {
        const size_t end = text.find_first_of("\r\n");
        const std::string_view line = text.substr(0, end);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        if (SectionLine(line, section)) continue;
        const size_t equals = line.find('=');
        if (equals == std::string_view::npos) continue;
        pairs.push_back({section, std::string(line.substr(0, equals)),
                         std::string(line.substr(equals + 1))});
    }
    return pairs;
}

std::string ReportedName(const IniPair &pair, const char *section, char separator) {
    if (section != nullptr || separator == '\0' || pair.section.empty()) return pair.name;
    return pair.section + separator + pair.name;
}

}  // namespace

extern "C" int KXUtilsReadIniFile(const char *path, const char *section, int /*flags*/,
                                  char separator, const char *key, char ***pairs,
                                  int /*reserved*/) {
    if (pairs != nullptr) *pairs = nullptr;
    std::string content;
    if (path == nullptr || !ReadWhole(path, content)) return -1;
    std::vector<std::pair<std::string, std::string>> chosen;
    for (const IniPair &pair : ParseIni(content)) {
        if (section != nullptr && pair.section != section) continue;
        std::string name = ReportedName(pair, section, separator);
        if (key != nullptr && name != key) continue;
        chosen.emplace_back(std::move(name), pair.value);
        if (key != nullptr) break;
    }
    if (chosen.empty() || pairs == nullptr) return static_cast<int>(chosen.size());
    std::vector<std::string_view> texts;  // name, value, name, value, ...
    for (const auto &[name, value] : chosen) texts.insert(texts.end(), {name, value});
    *pairs = kx::platform::PackTexts(texts);
    return *pairs != nullptr ? static_cast<int>(chosen.size()) : -1;
}
