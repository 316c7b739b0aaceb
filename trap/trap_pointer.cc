// Finding a trap's description and the MIB file that holds it: the
// OID-to-MIB file first, then the answers of earlier searches (TrapCache),
// then every trap MIB of the index.
#include <cstdlib>
#include <cstring>
#include <string>

#include "companion/libKXUtils.h"
#include "companion/libKXmbcs.h"
#include "core/alloc.h"
#include "core/text.h"
#include "kx_trap.h"

extern "C" {
TrapCacheEntry *TrapCache = nullptr;
int32_t TrapCacheCount = 0;
}

namespace kx::trap {
namespace {

constexpr char kOidToMibFile[] = "OID2Mib.ini";

struct Lookup {
    const char *oid;
    const char *enterpriseOid;
    const char *specific;
    const char *generic;
};

// A copy of the MIB file name with its extension spelt as on disk.
char *WithDiskSuffix(const char *mibFile) {
    char *copy = core::HeapCopy(mibFile);
    char *dot = copy != nullptr ? _mbschr(copy, '.') : nullptr;
    if (dot == nullptr) return copy;
    const char *suffix = GTDetermineMIBSuffix(copy, static_cast<int>(dot - copy));
    if (std::strcmp(dot + 1, suffix) != 0) std::strncpy(dot + 1, suffix, strnlen(dot + 1, 3));
    return copy;
}

// The OID-to-MIB file's key: the first OID for a standard generic trap.
const char *OidToMibKey(const Lookup &trap) {
    const bool standard = trap.specific != nullptr && trap.specific[0] == '0' &&
                          (trap.generic == nullptr || trap.generic[0] != '6');
    const char *key = trap.enterpriseOid == nullptr || standard ? trap.oid : trap.enterpriseOid;
    return key != nullptr && key[0] == '.' ? key + 1 : key;
}

KXTrapDescription *InMib(const char *mib, const Lookup &trap) {
    KXTrapDescription *found = GetTrapPointer(mib, trap.oid, trap.specific, trap.generic);
    if (found == nullptr && trap.enterpriseOid != nullptr)
        found = GetTrapPointer(mib, trap.enterpriseOid, trap.specific, trap.generic);
    return found;
}

// Step one: the caller's MIB or the one the OID-to-MIB file names.
KXTrapDescription *ByNamedMib(const Lookup &trap, const char *iniFile, char **mibFile) {
    const bool given = mibFile != nullptr && *mibFile != nullptr;
    const char *key = OidToMibKey(trap);
    char *looked = given || key == nullptr ? nullptr : KXUtilsGetValueFromName(iniFile, key, 0);
    const char *mib = given ? *mibFile : looked;
    KXTrapDescription *found = mib != nullptr ? InMib(mib, trap) : nullptr;
    if (found != nullptr && looked != nullptr && mibFile != nullptr) *mibFile = WithDiskSuffix(looked);
    KXUtilsFreeResources(looked);
    return found;
}

const TrapCacheEntry *Cached(const char *key) {
    for (int i = 0; i < TrapCacheCount; ++i)
        if (std::strcmp(TrapCache[i].Oid, key) == 0) return &TrapCache[i];
    return nullptr;
}

void Remember(const char *key, const std::string &mibFile) {
    if (Cached(key) != nullptr) return;
    char *oid = core::HeapCopy(key), *mib = core::HeapCopy(mibFile);
    auto *grown = static_cast<TrapCacheEntry *>(
        core::Reallocate(TrapCache, static_cast<std::size_t>(TrapCacheCount + 1) * sizeof(TrapCacheEntry)));
    if (oid == nullptr || mib == nullptr || grown == nullptr) {
        std::free(oid), std::free(mib);
        if (grown != nullptr) TrapCache = grown;
        return;
    }
    TrapCache = grown;
    TrapCache[TrapCacheCount++] = TrapCacheEntry{oid, mib};
}

// Steps two and three: an earlier answer, else every trap MIB.
KXTrapDescription *BySearch(const Lookup &trap, char **mibFile, int *searchedAllMibs) {
    const char *key = trap.enterpriseOid != nullptr ? trap.enterpriseOid : trap.oid;
    if (key == nullptr) return nullptr;
    if (const TrapCacheEntry *entry = Cached(key)) {
        if (KXTrapDescription *found = GetTrapPointer(entry->MibFile, key, trap.specific, trap.generic)) {
            if (mibFile != nullptr) *mibFile = core::HeapCopy(entry->MibFile);
            return found;
        }
    }
    if (searchedAllMibs != nullptr) *searchedAllMibs = 1;
    std::string mib;
    for (int i = 0; i < GTTrapMIBsCount; ++i) {
        mib.assign(GTTrapMIBs[i]).append(".mib");
        KXTrapDescription *found = GetTrapPointer(mib.c_str(), key, trap.specific, trap.generic);
        if (found == nullptr) continue;
        if (mibFile != nullptr) *mibFile = WithDiskSuffix(mib.c_str());
        Remember(key, mib);
        return found;
    }
    return nullptr;
}

}  // namespace
}  // namespace kx::trap

extern "C" {

KXTrapDescription *GTGetTrapPointer(const char *oid, const char *enterpriseOid, const char *specific,
                                    const char *generic, const char *iniFile, char **mibFile,
                                    int *searchedAllMibs) {
    const kx::trap::Lookup trap{oid, enterpriseOid, specific, generic};
    if (searchedAllMibs != nullptr) *searchedAllMibs = 0;
    if (iniFile == nullptr) iniFile = kx::trap::kOidToMibFile;
    if (*iniFile != '\0') {
        if (KXTrapDescription *found = kx::trap::ByNamedMib(trap, iniFile, mibFile)) return found;
    }
    return kx::trap::BySearch(trap, mibFile, searchedAllMibs);
}

}  // extern "C"
