// Inside the MIB library: the TRAP-TYPE macros of one MIB file's text.
#ifndef KX_PLATFORM_LIBKXSNMP_TRAP_MIB_H
#define KX_PLATFORM_LIBKXSNMP_TRAP_MIB_H

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "companion/libKXsnmp_traps.h"

namespace kxsnmp {

// One TRAP-TYPE: its texts, and the record that points into them.
struct TrapEntry {
    std::string name;
    std::string enterprise;  // dotted OID, empty when it does not resolve
    std::int64_t number = -1;
    std::vector<std::string> variables;
    std::string description, type, summary, arguments, severity;  // empty: not given
    std::vector<char *> variablePointers;
    KXTrapDescription record{};

    // Points record at the texts; the entry must not move afterwards.
    void FillRecord();
};

// The traps of one MIB file, found by enterprise OID and trap number.
struct TrapMib {
    std::vector<std::unique_ptr<TrapEntry>> traps;
    std::map<std::pair<std::string, std::int64_t>, TrapEntry *> byKey;

    TrapEntry *Find(const std::string &enterprise, std::int64_t number) const;
};

// Reads the TRAP-TYPE macros of a MIB file's text. Never fails: what cannot
// be read (truncated, unbalanced, not a MIB) simply defines no trap.
std::unique_ptr<TrapMib> ParseTrapMib(std::string_view text);

}  // namespace kxsnmp

#endif
