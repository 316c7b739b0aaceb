// Inside the MIB library: the MIB directory, the SMI roots and small helpers
// shared by the net-snmp look-ups and the TRAP-TYPE reader.
#ifndef KX_PLATFORM_LIBKXSNMP_MIB_INTERNAL_H
#define KX_PLATFORM_LIBKXSNMP_MIB_INTERNAL_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kxsnmp {

// The directory the MIB files are read from: the configured one, or "mibs".
std::string MibDirectory();

// One node of the SMI's registration tree, known without any MIB file.
struct SmiRoot {
    std::string_view name;
    std::string_view parent;  // empty for the three top nodes
    unsigned number;
};

// The SMI roots in parent-before-child order.
const std::vector<SmiRoot> &SmiRoots();

// The dotted OID of an SMI root, or nothing when name is none.
std::optional<std::string> SmiRootOid(std::string_view name);

// The numbers of a dotted OID ("1.3.6", ".1.3.6"); nothing when it is not one.
std::optional<std::vector<std::uint32_t>> ParseDottedOid(std::string_view text);

// A malloc'd copy of text (NUL-terminated); nullptr when memory runs out.
// (Private helper of this library; the project's shared copy lives elsewhere.)
char *HeapCopy(std::string_view text);

// ASCII case-insensitive equality.
bool EqualNoCase(std::string_view a, std::string_view b);

}  // namespace kxsnmp

#endif
