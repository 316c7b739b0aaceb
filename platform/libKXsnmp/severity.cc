// Severity words of the "--#SEVERITY" annotation and their numbers.
#include <string_view>

#include "companion/libKXsnmp_names.h"
#include "mib_internal.h"

namespace kxsnmp {
namespace {

struct Severity {
    std::string_view text;
    int number;
};

// The lower the number, the graver the trap; 0 is "not known".
constexpr Severity kSeverities[] = {
    {"CRITICAL", 1},      {"FATAL", 1},   {"SEVERE", 1},
    {"MAJOR", 2},         {"ERROR", 2},
    {"MINOR", 3},         {"WARNING", 3},
    {"INFORMATIONAL", 4}, {"INFO", 4},    {"NORMAL", 4},   {"OK", 4},
    {"UNKNOWN", 0},
};

std::string_view TrimBlanks(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
    return text;
}

}  // namespace
}  // namespace kxsnmp

extern "C" int KXSeverityTextToNumber(const char *text) {
    if (text == nullptr) return 0;
    const std::string_view word = kxsnmp::TrimBlanks(text);
    for (const kxsnmp::Severity &row : kxsnmp::kSeverities)
        if (kxsnmp::EqualNoCase(row.text, word)) return row.number;
    return 0;
}
