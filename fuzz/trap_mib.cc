// TRAP-TYPE reader: any text as a MIB file; every trap it reports is found
// again by its enterprise and number, and its record's lengths fit its texts.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "companion/libKXsnmp_traps.h"

namespace {

void CheckText(const char *text, int length) {
    if (length < 0 || (text == nullptr) != (length == 0)) std::abort();
    if (text != nullptr && std::strlen(text) != static_cast<size_t>(length)) std::abort();
}

void Check(const KXTrapDescription *d) {
    if (d == nullptr) return;
    CheckText(d->Name, d->NameLength);
    CheckText(d->Description, d->DescriptionLength);
    CheckText(d->Type, d->TypeLength);
    CheckText(d->Summary, d->SummaryLength);
    CheckText(d->Arguments, d->ArgumentCount);
    CheckText(d->Severity, d->SeverityLength);
    for (int i = 0; i < d->VariableCount; ++i)
        if (d->Variables[i] == nullptr) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const char *text = reinterpret_cast<const char *>(data);
    const int traps = KXSetTrapMibText("fuzz.mib", text, size);
    if (traps < 0) std::abort();
    // Look-ups under the SMI roots and numbers a fuzzed MIB is likely to use.
    for (const char *oid : {"1.3.6.1.4.1", "1.3.6.1.4.1.99999", ".1.3.6.1.2.1", "1.3"})
        for (const char *specific : {"0", "1", "5", "12"}) {
            Check(GetTrapPointer("fuzz.mib", oid, specific, "6"));
            Check(GetTrapPointer("fuzz.mib", oid, specific, "0"));
        }
    return 0;
}
