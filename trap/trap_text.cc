// The display text of a trap: its MIB description's summary filled from the
// trap's variables (enumerations by name, MAC addresses, short host names),
// and the description of a trap that no MIB describes.
#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>

#include "companion/libKXsnmp_names.h"
#include "companion/libparser.h"
#include "core/number.h"
#include "kx_trap.h"
#include "trap/trap_format.h"

namespace kx::trap {
namespace {

constexpr int kMaxArguments = 10;
constexpr char kHostOid[] = "1.3.6.1.4.1.99999.2.10";
constexpr char kMacFormat[] = "%02X-%02X-%02X-%02X-%02X-%02X";
constexpr char kMissing[] = "(NULL)";

bool HasText(const char *text, int length) { return text != nullptr && length > 0 && *text != '\0'; }
bool IsTextConversion(char c) { return c == 's' || c == 'S'; }

// The summary of a description without one: the heading, then each variable as "name = %s".
std::string VariableSummary(std::string_view heading, const KXTrapDescription &d, std::string &arguments) {
    std::string summary(heading);
    summary.append("\\nParameters:\\n");
    for (int i = 0; i < std::min(d.VariableCount, kMaxArguments); ++i) {
        summary.append(d.Variables[i] != nullptr ? d.Variables[i] : "").append(" = %s\\n");
        arguments.push_back(static_cast<char>('0' + i));
    }
    return summary;
}

// The conversion after the next "%" from at ("%%" passed over); at moves onto it.
char NextConversion(std::string &format, std::size_t &at) {
    for (at = format.find('%', at); at != std::string::npos && at + 1 < format.size(); at = format.find('%', at)) {
        if (format[at + 1] != '%') return format[++at];
        at += 2;
    }
    at = format.size();
    return '\0';
}

std::string Mac(const KXSnmpVar *records, int index) {
    std::array<unsigned char, 6> bytes{};
    const std::size_t length = std::min<std::size_t>(6, KXSnmpFileValueLength(records, index));
    std::memcpy(bytes.data(), records[index].Value, length);
    char out[24];
    std::snprintf(out, sizeof out, kMacFormat, bytes[0], bytes[1], bytes[2], bytes[3], bytes[4], bytes[5]);
    return out;
}

// The name of value in the variable's enumeration; empty when it has none.
std::string EnumerationName(KXMib *mib, const KXSnmpVar &variable, int value) {
    KXMib *found = nullptr;
    char *mibName = mib == nullptr ? KXGetMibname(&found, variable.Oid) : nullptr;
    KXMib *used = mib != nullptr ? mib : found;
    char *object = nullptr, *objectOid = nullptr;
    KXMibValues *values = nullptr;
    if (used != nullptr && KXGetName(used, variable.Oid, &object, &objectOid, 0) == 0)
        KXGetValues(used, object, objectOid, KX_MIB_VALUES_ENUMERATION, &values);
    std::string name;
    if (values != nullptr && values->NameCount >= 1) {
        const bool inRange = value >= 0 && value < values->NameCount;
        const char *label = inRange ? values->Names[value] : "EnumOutOfRange";
        name = std::string(label != nullptr ? label : "null") + "(" + std::to_string(value) + ")";
    }
    KXFreeResources(values), KXFreeResources(object), KXFreeResources(objectOid);
    KXFreeResources(found), KXFreeResources(mibName);
    return name;
}

struct Trap {
    KXMib *mib;
    int recordCount;
    const KXSnmpVar *records;
    bool unknown;
};

// The slot of a numeric variable (INTEGER, GAUGE, COUNTER).
Slot NumericSlot(const Trap &trap, const KXSnmpVar &variable, char conversion) {
    const int value = core::ReadInt(variable.Value != nullptr ? variable.Value : "");
    if (std::strcmp(variable.Type, "INTEGER") == 0 && IsTextConversion(conversion)) {
        std::string named = EnumerationName(trap.mib, variable, value);
        if (!named.empty()) return Slot::Text(std::move(named));
    }
    return IsTextConversion(conversion) ? Slot::Text(std::to_string(value)) : Slot::Number(value);
}

bool IsNumericType(const char *type) {
    return type != nullptr && (std::strcmp(type, "INTEGER") == 0 || std::strcmp(type, "GAUGE") == 0 ||
                               std::strcmp(type, "COUNTER") == 0);
}

// A host name without its domain (not an IPv4 address).
std::string ShortHost(const char *value) {
    const char *dot = std::strchr(value, '.');
    if (dot == nullptr || GTValidateNetAddress(value) == 0) return value;
    return std::string(value, static_cast<std::size_t>(dot - value));
}

Slot SlotOf(const Trap &trap, int slot, int record, char &conversion) {
    const bool exists = trap.recordCount - 2 > slot && trap.recordCount > record && record >= 0;
    const KXSnmpVar *variable = exists ? &trap.records[record] : nullptr;
    if (exists && !trap.unknown && IsNumericType(variable->Type)) return NumericSlot(trap, *variable, conversion);
    if (conversion == 'm' || conversion == 'M') {
        conversion = 's';
        return Slot::Text(exists ? Mac(trap.records, record) : kMissing);
    }
    const char *value = exists && variable->Value != nullptr ? variable->Value : "";
    if (IsTextConversion(conversion)) {
        if (!exists) return Slot::Text(kMissing);
        const bool host = slot == 0 && record == 2 && variable->Oid != nullptr &&
                          std::strncmp(variable->Oid, kHostOid, sizeof kHostOid - 1) == 0;
        return Slot::Text(host ? ShortHost(value) : value);
    }
    return Slot::Number(exists ? core::ReadInt(value) : -1);
}

void Fill(char *text, const KXTrapDescription &d, const Trap &trap) {
    std::string format = HasText(d.Summary, d.SummaryLength) ? d.Summary : "";
    std::array<Slot, kMaxArguments> slots{};
    const std::size_t argumentLength = d.Arguments != nullptr ? std::strlen(d.Arguments) : 0;
    std::size_t at = 0;
    for (int n = 0; n < kMaxArguments && n < d.ArgumentCount; ++n) {
        char conversion = NextConversion(format, at);
        const std::size_t index = static_cast<std::size_t>(n);
        const int record = index < argumentLength ? d.Arguments[index] - 46 : -1;
        slots[index] = SlotOf(trap, n, record, conversion);
        if (at < format.size()) format[at] = conversion;
    }
    const std::string out = FormatSummary(format, slots);
    const std::size_t length = std::min<std::size_t>(out.size(), KX_TRAP_TEXT_SIZE - 1);
    std::memcpy(text, out.data(), length);
    text[length] = '\0';
}

}  // namespace
}  // namespace kx::trap

extern "C" {

int GTValidateNetAddress(const char *text) {
    if (text == nullptr) return 1;
    return Wertuebereinstimmung(text, "[0-9]+[.][0-9]+[.][0-9]+[.][0-9]+") < 0 ? 1 : 0;
}

int GTCreateTrapString(char *text, KXMib *mib, KXTrapDescription *description, int recordCount,
                       KXSnmpVar *records, KXTrapDescription *unknownDescription) {
    using namespace kx::trap;
    if (text == nullptr || description == nullptr) return -1;
    if (records == nullptr) recordCount = 0;
    KXTrapDescription used = *description;
    std::string summary, arguments;
    if (!HasText(used.Summary, used.SummaryLength) && HasText(used.Description, used.DescriptionLength)) {
        const std::size_t length = std::min<std::size_t>(std::strlen(used.Description), KX_TRAP_TEXT_SIZE - 1);
        std::memcpy(text, used.Description, length);
        text[length] = '\0';
        if (used.VariableCount <= 0 || used.Variables == nullptr) return 0;
        const std::string_view heading = *text != '\0' ? text : (used.Name != nullptr ? used.Name : "");
        summary = VariableSummary(heading, used, arguments);
        used.Summary = summary.data(), used.SummaryLength = static_cast<int>(summary.size());
        used.Arguments = arguments.data(), used.ArgumentCount = static_cast<int>(arguments.size());
    }
    Fill(text, used, Trap{mib, recordCount, records, description == unknownDescription});
    return 0;
}

}  // extern "C"
