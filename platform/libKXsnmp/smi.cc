// The SMI roots and the small text helpers of the MIB library.
#include <cstdlib>
#include <cstring>

#include "mib_internal.h"

namespace kxsnmp {

const std::vector<SmiRoot> &SmiRoots() {
    // The registration tree down to the points where MIB files attach;
    // RFC1155-SMI and SNMPv2-SMI name these nodes.
    static const std::vector<SmiRoot> roots = {
        {"ccitt", "", 0},
        {"iso", "", 1},
        {"joint-iso-ccitt", "", 2},
        {"org", "iso", 3},
        {"dod", "org", 6},
        {"internet", "dod", 1},
        {"directory", "internet", 1},
        {"mgmt", "internet", 2},
        {"mib-2", "mgmt", 1},
        {"transmission", "mib-2", 10},
        {"experimental", "internet", 3},
        {"private", "internet", 4},
        {"enterprises", "private", 1},
        {"security", "internet", 5},
        {"snmpV2", "internet", 6},
        {"snmpDomains", "snmpV2", 1},
        {"snmpProxys", "snmpV2", 2},
        {"snmpModules", "snmpV2", 3},
    };
    return roots;
}

std::optional<std::string> SmiRootOid(std::string_view name) {
    for (const SmiRoot &root : SmiRoots()) {
        if (root.name != name) continue;
        const std::string number = std::to_string(root.number);
        if (root.parent.empty()) return number;
        const std::optional<std::string> parent = SmiRootOid(root.parent);
        if (!parent) return std::nullopt;
        return *parent + "." + number;
    }
    return std::nullopt;
}

std::optional<std::vector<std::uint32_t>> ParseDottedOid(std::string_view text) {
    if (text.starts_with('.')) text.remove_prefix(1);
    if (text.empty()) return std::nullopt;
    std::vector<std::uint32_t> numbers;
    std::uint64_t value = 0;
    bool digits = false;
    for (const char c : text) {
        if (c == '.') {
            if (!digits) return std::nullopt;
            numbers.push_back(static_cast<std::uint32_t>(value));
            value = 0;
            digits = false;
        } else if (c >= '0' && c <= '9') {
            value = value * 10 + static_cast<std::uint64_t>(c - '0');
            if (value > UINT32_MAX) return std::nullopt;
            digits = true;
        } else {
            return std::nullopt;
        }
    }
    if (!digits) return std::nullopt;
    numbers.push_back(static_cast<std::uint32_t>(value));
    return numbers;
}

char *HeapCopy(std::string_view text) {
    char *copy = static_cast<char *>(std::malloc(text.size() + 1));
    if (copy == nullptr) return nullptr;
    if (!text.empty()) std::memcpy(copy, text.data(), text.size());
    copy[text.size()] = '\0';
    return copy;
}

bool EqualNoCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
        if (lower(a[i]) != lower(b[i])) return false;
    }
    return true;
}

}  // namespace kxsnmp
