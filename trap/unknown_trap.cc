// Traps without a MIB description, and the types of a trap's variables.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "companion/libKXsnmp_names.h"
#include "core/text.h"
#include "kx_trap.h"

namespace kx::trap {
namespace {

constexpr int kMaxArguments = 10;
constexpr std::size_t kUnknownBufferSize = 2048;
constexpr int kUnknownReserved[7] = {-1, 0, 0, -1, 0, 0, -1};

// The unknown-trap description's arguments (at the start) and summary
// (behind them); valid until the next GTCreateUnknownTrap.
char unknownBuffer[kUnknownBufferSize];

std::string UnknownSummary(int variableCount, const char *enterprise, const char *specific, const char *generic) {
    auto shown = [](const char *text) { return text != nullptr ? text : "(null)"; };
    std::string summary = "Unknown trap: Enterprise = " + std::string(shown(enterprise)) +
                          ", Specific Trap Number = " + shown(specific) + ", Generic Trap Number = " +
                          shown(generic) + ", " + std::to_string(variableCount) + " Parameters: ";
    for (int i = 0; i < std::min(variableCount, kMaxArguments); ++i) summary += "%s, ";
    if (variableCount > kMaxArguments) summary += "...";
    else summary.resize(summary.size() - 2);
    return summary;
}

bool HasType(const KXSnmpVar &record) { return record.Type != nullptr && *record.Type != '\0'; }

// The type a variable record gets: its own, else its MIB syntax, else "UNKNOWN".
char *VariableType(const KXSnmpVar &record, KXMib *mib) {
    if (HasType(record)) return core::HeapCopy(record.Type);
    KXMib *found = nullptr;
    char *mibName = mib == nullptr ? KXGetMibname(&found, record.Oid) : nullptr;
    KXMib *used = mib != nullptr ? mib : found;
    char *object = nullptr, *objectOid = nullptr, *syntax = nullptr;
    if (used != nullptr && KXGetName(used, record.Oid, &object, &objectOid, 0) == 0)
        KXGetSyntax(used, object, objectOid, &syntax);
    char *type = core::HeapCopy(syntax != nullptr ? syntax : "UNKNOWN");
    KXFreeResources(syntax), KXFreeResources(object), KXFreeResources(objectOid);
    KXFreeResources(found), KXFreeResources(mibName);
    return type;
}

}  // namespace
}  // namespace kx::trap

extern "C" {

int GTCreateUnknownTrap(KXTrapDescription *description, int variableCount, const char *enterprise,
                        const char *specific, const char *generic) {
    using namespace kx::trap;
    if (description == nullptr) return -1;
    const int arguments = std::clamp(variableCount, 0, kMaxArguments);
    const std::string summary = UnknownSummary(variableCount, enterprise, specific, generic);
    for (int i = 0; i < arguments; ++i) unknownBuffer[i] = static_cast<char>('0' + i);
    unknownBuffer[arguments] = '\0';
    char *format = unknownBuffer + kMaxArguments + 1;
    const std::size_t length = std::min(summary.size(), kUnknownBufferSize - kMaxArguments - 2);
    std::memcpy(format, summary.data(), length);
    format[length] = '\0';
    *description = KXTrapDescription{};
    description->NameLength = 11, description->Name = const_cast<char *>("unknownTrap");
    description->TypeLength = 12, description->Type = const_cast<char *>("UNKNOWN TRAP");
    description->SeverityLength = 7, description->Severity = const_cast<char *>("UNKNOWN");
    // Only tested for being non-zero.
    description->SummaryLength = static_cast<int>(length) - 2, description->Summary = format;
    description->ArgumentCount = variableCount, description->Arguments = unknownBuffer;
    std::copy(std::begin(kUnknownReserved), std::end(kUnknownReserved), description->Reserved17);
    return 0;
}

int GTDetermineTypes(KXSnmpVar *records, int recordCount, KXMib *mib) {
    if (records == nullptr || recordCount <= 0) return 0;
    if (std::all_of(records, records + recordCount, kx::trap::HasType))
        return 0;
    for (int i = 0; i < recordCount; ++i) {
        KXSnmpVar &record = records[i];
        if (i < 2) record.Type = kx::core::HeapCopy(kx::trap::HasType(record) ? record.Type : "OCTETSTRING");
        else record.Type = kx::trap::VariableType(record, mib);
    }
    return 1;
}

}  // extern "C"
