// MIB values of a managed server over SNMP, with its address, community and
// time-out from the server list.
#include <string>

#include "companion/libKXmbcs.h"
#include "companion/libKXsnmp_names.h"
#include "companion/libparser.h"
#include "core/number.h"
#include "core/text.h"
#include "inventory/inventory_internal.h"

namespace kx::inventory {
namespace {

constexpr int kDefaultSeconds = 5;
constexpr int kSnmpV2c = 1;

struct MibText {
    void operator()(char *text) const { KXFreeResources(text); }
};
using Oid = std::unique_ptr<char, MibText>;

Oid ObjectOid(const char *mib, const char *entry, const char *column) {
    char *oid = nullptr;
    KXGetOID(mib, entry, column, &oid);
    return Oid(oid);
}

// Where and how to read: from the caller, else from the server's row.
struct Target {
    std::string address, community;
    int milliseconds;
};

Target TargetOf(const char *server, int timeout, const char *community, const char *dbFile) {
    const bool byName = KXValidateNetAddress(server) != 0;
    const char *key = byName ? "ServerName" : "NetAddress";
    const auto row = [&](const char *column) {
        return core::HeapText(KXGetDBValues(dbFile, kServerTable, key, server, 0, column));
    };
    int seconds = timeout;
    if (seconds <= 0) seconds = core::ReadInt(row("TimeOut").View());
    if (seconds < 1) seconds = kDefaultSeconds;
    std::string name = community != nullptr ? community : std::string(row("Community").View());
    if (name.empty()) name = kDefaultCommunity;
    std::string address = byName ? std::string(row("NetAddress").View()) : std::string();
    if (address.empty()) address = server;
    return {std::move(address), std::move(name), seconds * 1000};
}

int Read(const Target &t, const std::string &oid, const char *operation, KXSnmpVar **records) {
    return KXSnmpFileGetValue(records, t.address.c_str(), oid.c_str(), operation, t.community.c_str(), 0, 0, kSnmpV2c,
                              t.milliseconds, 0, KX_SNMPFILE_WALK_SUBTREE);
}

// The instance suffix from the first value walked under the index object;
// a time-out or SNMP error ends the whole read (negative result).
int IndexSuffix(const Target &t, const char *indexOid, std::string &suffix) {
    KXSnmpVar *records = nullptr;
    const int count = Read(t, indexOid, "walk", &records);
    if (count == KX_SNMPFILE_TIMEOUT || count == KX_SNMPFILE_SNMP_ERROR) return count;
    if (count > 0 && _mbsnbcmp(records[0].Value, "errorS", 6) != 0) suffix = records[0].Value;
    KXSnmpFileFreeResources(records);
    return 0;
}

}  // namespace
}  // namespace kx::inventory

extern "C" {

int KXValidateNetAddress(const char *text) {
    if (text == nullptr) return 1;
    return Wertuebereinstimmung(text, "[0-9]+[.][0-9]+[.][0-9]+[.][0-9]+") < 0 ? 1 : 0;
}

int KXGetMibValues(const char *server, const char *mibFile, const char *tableEntry, const char *column,
                   const char *indexMib, const char *indexEntry, const char *indexColumn, const char *operation,
                   int timeout, const char *community, const char *dbFile, KXSnmpVar **records) {
    namespace inv = kx::inventory;
    if (records == nullptr) return -1;
    *records = nullptr;
    if (server == nullptr || mibFile == nullptr || tableEntry == nullptr || column == nullptr) return -1;
    try {
        const inv::Oid object = inv::ObjectOid(mibFile, tableEntry, column);
        if (!object) return -1;
        const inv::Target target = inv::TargetOf(server, timeout, community, dbFile);
        std::string suffix;
        if (indexEntry != nullptr && indexColumn != nullptr) {
            const inv::Oid index = inv::ObjectOid(indexMib != nullptr ? indexMib : mibFile, indexEntry, indexColumn);
            const int status = index ? inv::IndexSuffix(target, index.get(), suffix) : 0;
            if (status < 0) return status;
        }
        const std::string oid = std::string(object.get()) + (suffix.empty() ? "" : ".") + suffix;
        return inv::Read(target, oid, operation != nullptr ? operation : "walk", records);
    } catch (const std::bad_alloc &) {
        return KX_SNMPFILE_NO_MEMORY;
    }
}

}  // extern "C"
