// The blades of a chassis: its server blade and switch blade address tables
// walked over SNMP, one list entry per blade.
#include <cstdlib>
#include <cstring>
#include <new>
#include <string_view>

#include "core/alloc.h"
#include "core/number.h"
#include "core/text.h"
#include "inventory/inventory_internal.h"

namespace kx::inventory {
namespace {

constexpr std::string_view kNoAddress = "0.0.0.0";
constexpr int kWalkSeconds = 5;

// The OID without its last component: the blade's part of the table index.
std::string_view BladeOid(const char *oid) {
    const std::string_view text = oid != nullptr ? oid : "";
    const std::size_t dot = text.rfind('.');
    return dot == std::string_view::npos ? text : text.substr(0, dot);
}

int BladeNumber(std::string_view bladeOid) {
    const std::size_t dot = bladeOid.rfind('.');
    return dot == std::string_view::npos ? -1 : core::ReadInt(bladeOid.substr(dot + 1));
}

std::string WithoutBlanks(std::string_view text) {
    std::string out;
    for (const char c : text)
        if (c != ' ') out += c;
    return out;
}

// The first address of a run that is not "0.0.0.0" (7 bytes compared).
std::string BladeAddress(const KXSnmpVar *first, const KXSnmpVar *end) {
    for (const KXSnmpVar *record = first; record != end; ++record) {
        const std::string_view value = record->Value != nullptr ? record->Value : "";
        if (value.substr(0, kNoAddress.size()) != kNoAddress) return WithoutBlanks(value);
    }
    return std::string(kNoAddress);
}

// Walks one address column of "Q47.MIB" and appends its blades; false when
// it cannot be read or is empty.
bool WalkBlades(const char *server, const char *entry, const char *column, const char *community, const char *type,
                std::vector<Blade> &out) {
    KXSnmpVar *records = nullptr;
    const int count = KXGetMibValues(server, "Q47.MIB", entry, column, nullptr, nullptr, nullptr, nullptr,
                                     kWalkSeconds, community, nullptr, &records);
    if (count > 0) GroupBlades(records, count, type, out);
    KXSnmpFileFreeResources(records);
    return count > 0;
}

}  // namespace

void GroupBlades(const KXSnmpVar *records, int count, const char *type, std::vector<Blade> &out) {
    const KXSnmpVar *end = records + count;
    for (const KXSnmpVar *run = records; run != end;) {
        const std::string_view blade = BladeOid(run->Oid);
        const KXSnmpVar *next = run + 1;
        while (next != end && BladeOid(next->Oid) == blade) ++next;
        out.push_back({BladeAddress(run, next), BladeNumber(blade), type});
        run = next;
    }
}

KXBladeEntry *BladeList(const std::vector<Blade> &blades) {
    if (blades.empty()) return nullptr;
    auto *list = static_cast<KXBladeEntry *>(core::Allocate(blades.size() * sizeof(KXBladeEntry)));
    if (list == nullptr) return nullptr;
    for (std::size_t i = 0; i < blades.size(); ++i) {
        list[i] = {core::HeapCopy(blades[i].address), blades[i].number, blades[i].type};
        if (list[i].Address != nullptr) continue;
        int made = static_cast<int>(i);
        KXBladesStrFreeResources(made, &list);
        return nullptr;
    }
    return list;
}

}  // namespace kx::inventory

extern "C" {

int KXDetermineBlades(const char *server, const char *second, const char *community, KXBladeEntry **blades) {
    namespace inv = kx::inventory;
    if (blades != nullptr) *blades = nullptr;
    if ((server == nullptr && second == nullptr) || blades == nullptr) return -1;
    const char *use = community != nullptr ? community : inv::kDefaultCommunity;
    try {
        std::vector<inv::Blade> found;
        if (!inv::WalkBlades(server, "q47SvrNicInfoEntry", "q47SvrNicIpAddress", use, KXBladeTypeName[1], found))
            return -1;
        // A chassis without switch blades still has its server blades.
        inv::WalkBlades(server, "q47SwitchBladeEntry", "q47SwitchBladeIpAddress", use, KXBladeTypeName[2], found);
        *blades = inv::BladeList(found);
        return *blades != nullptr ? static_cast<int>(found.size()) : -1;
    } catch (const std::bad_alloc &) {
        return -1;
    }
}

void KXBladesStrFreeResources(int count, KXBladeEntry **blades) {
    if (blades == nullptr || *blades == nullptr) return;
    for (int i = 0; i < count; ++i) std::free((*blades)[i].Address);
    std::free(*blades);
    *blades = nullptr;
}

}  // extern "C"
