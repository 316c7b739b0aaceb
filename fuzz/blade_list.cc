// Blade list from walked records: any text as records, one per line, OID
// and value separated by a tab. Every blade must come from a run of records
// and carry an address without blanks.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "inventory/inventory_internal.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const std::string text(reinterpret_cast<const char *>(data), size);
    std::vector<std::string> oids, values;
    for (std::size_t start = 0; start <= text.size();) {
        std::size_t end = text.find('\n', start);
        if (end == std::string::npos) end = text.size();
        const std::string line = text.substr(start, end - start);
        const std::size_t tab = line.find('\t');
        oids.push_back(line.substr(0, tab));
        values.push_back(tab == std::string::npos ? std::string() : line.substr(tab + 1));
        start = end + 1;
    }
    std::vector<KXSnmpVar> records;
    for (std::size_t i = 0; i < oids.size(); ++i)
        records.push_back({oids[i].data(), const_cast<char *>("IPADDRESS"), values[i].data()});
    std::vector<kx::inventory::Blade> blades;
    kx::inventory::GroupBlades(records.data(), static_cast<int>(records.size()), KXBladeTypeName[2], blades);
    if (blades.empty() || blades.size() > records.size()) std::abort();
    KXBladeEntry *list = kx::inventory::BladeList(blades);
    for (std::size_t i = 0; i < blades.size(); ++i)
        if (std::string(list[i].Address).find(' ') != std::string::npos || list[i].Type != KXBladeTypeName[2])
            std::abort();
    KXBladesStrFreeResources(static_cast<int>(blades.size()), &list);
    return 0;
}
