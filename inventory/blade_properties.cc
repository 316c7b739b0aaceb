// What the server list knows about one address: single server, chassis or
// blade, and for a blade the chassis that holds it.
#include <cstdlib>
#include <cstring>
#include <string>

#include "companion/libKXmbcs.h"
#include "core/alloc.h"
#include "inventory/inventory_internal.h"

extern "C" {
const char *const KXBladeTypeName[] = {
    "BladeServer",
    "Blade",
    "SwitchBlade",
};
const int32_t KXBladeTypeNameCount = sizeof KXBladeTypeName / sizeof KXBladeTypeName[0];
}

namespace kx::inventory {
namespace {

// The texts of the property list while they are found; nullptr: none.
struct Found {
    const char *type = nullptr, *serverName = nullptr, *chassisName = nullptr, *systemName = nullptr;
    int bladeMark = -1;
    std::string chassis;  // owns a chassis name cut out of a blade's name
};

// The open table and the columns the blade questions use (-1: absent).
struct Table {
    DBAsciiAccessDatabase *handle;
    int type, serverName, systemName, rsb;
};

int Column(DBAsciiAccessDatabase *handle, const char *name) {
    return DBAsciiAccessGetElementColumn(handle, kServerTable, name);
}

const char *Field(const DBAsciiAccessRow row, int column) { return column >= 0 ? row[column] : nullptr; }

bool HasBackslash(const char *text) { return text != nullptr && _mbschr(text, '\\') != nullptr; }

// The management address of a blade: A's "RsbIpAddress", else B's; empty and
// "0.0.0.0" count as none.
const char *ManagementAddress(const Table &t, const DBAsciiAccessRow a, const DBAsciiAccessRow b) {
    for (const DBAsciiAccessRow row : {a, b}) {
        const char *address = row != nullptr ? Field(row, t.rsb) : nullptr;
        if (address != nullptr && *address != '\0' && _mbscmp(address, "0.0.0.0") != 0) return address;
    }
    return nullptr;
}

// The chassis of a blade: the row of its management address, else the part
// of A's name before its first "\".
void FindChassis(const Table &t, const DBAsciiAccessRow a, const DBAsciiAccessRow b, Found &found) {
    if (const char *address = ManagementAddress(t, a, b)) {
        Rows chassis;
        FindRows(t.handle, kServerTable, "NetAddress", address, 0, chassis);
        if (chassis.count > 0) {
            found.chassis = chassis.rows[0][t.serverName];
            found.chassisName = found.chassis.c_str();
            return;
        }
    }
    if (a == nullptr) return;
    const char *name = a[t.serverName];
    found.chassis.assign(name, static_cast<std::size_t>(_mbschr(name, '\\') - name));
    found.chassisName = found.chassis.c_str();
}

void DescribeBlade(const Table &t, const Rows &rows, Found &found) {
    DBAsciiAccessRow a = nullptr, b = nullptr;
    for (int i = 0; i < rows.count; ++i) {
        DBAsciiAccessRow &slot = HasBackslash(rows.rows[i][t.serverName]) ? a : b;
        if (slot == nullptr) slot = rows.rows[i];
    }
    found.bladeMark = b != nullptr ? 0 : 1;
    found.type = (a != nullptr ? a : b)[t.type];
    found.serverName = (b != nullptr ? b : a)[t.serverName];
    found.systemName = b != nullptr ? b[t.serverName] : Field(a, t.systemName);
    FindChassis(t, a, b, found);
}

// Steps after the rows were found: the result and the texts.
int Describe(const Table &t, const Rows &rows, Found &found) {
    if (t.type < 0) return KX_BLADE_NO_TYPE;
    if (t.serverName < 0) return KX_BLADE_NO_SERVERNAME;
    bool blade = false;
    for (int i = 0; i < rows.count; ++i) blade = blade || _mbsstr(rows.rows[i][t.type], "lade") != nullptr;
    if (!blade) {
        found.serverName = rows.rows[0][t.serverName];
        return 0;
    }
    if (rows.count == 1 && _mbscmp(rows.rows[0][t.type], KXBladeTypeName[0]) == 0) {
        found.type = KXBladeTypeName[0];
        found.serverName = rows.rows[0][t.serverName];
        return 1;
    }
    DescribeBlade(t, rows, found);
    return rows.count;
}

std::size_t TextSize(const char *text) { return text != nullptr ? std::strlen(text) + 1 : 0; }

char *Place(char *&at, const char *text) {
    if (text == nullptr) return nullptr;
    const std::size_t size = std::strlen(text) + 1;
    std::memcpy(at, text, size);
    char *placed = at;
    at += size;
    return placed;
}

// One block: the record, then type, server, chassis and system name.
KXBladeProperties *PropertyList(const Found &f) {
    const std::size_t size = sizeof(KXBladeProperties) + TextSize(f.type) + TextSize(f.serverName) +
                             TextSize(f.chassisName) + TextSize(f.systemName);
    auto *list = static_cast<KXBladeProperties *>(core::Allocate(size));
    if (list == nullptr) return nullptr;
    char *at = reinterpret_cast<char *>(list + 1);
    list->Type = Place(at, f.type);
    list->ServerName = Place(at, f.serverName);
    list->ChassisName = Place(at, f.chassisName);
    list->SystemName = Place(at, f.systemName);
    list->BladeMark = f.bladeMark;
    return list;
}

int Determine(DBAsciiAccessDatabase *handle, const char *netAddress, KXBladeProperties **properties) {
    if (DBAsciiAccessTableOpen(handle, kServerTable) != 0) return KX_BLADE_NO_DATABASE;
    int columns = 0;
    DBAsciiAccessGetScheme(handle, kServerTable, &columns, nullptr);
    Rows rows;
    FindRows(handle, kServerTable, "NetAddress", netAddress, 0, rows);
    if (rows.count == 0) return 0;
    const Table t{handle, Column(handle, "Type"), Column(handle, "ServerName"), Column(handle, "SystemName"),
                  Column(handle, "RsbIpAddress")};
    Found found;
    const int result = Describe(t, rows, found);
    if (result >= 0 && properties != nullptr) *properties = PropertyList(found);
    return result;
}

}  // namespace
}  // namespace kx::inventory

extern "C" int KXDetermineBladeProperties(const char *dbFile, const char *netAddress, DBAsciiAccessDatabase **dbHandle,
                                          KXBladeProperties **properties) {
    namespace inv = kx::inventory;
    if (properties != nullptr) *properties = nullptr;
    if (netAddress == nullptr) return KX_BLADE_NO_ADDRESS;
    if (dbHandle == nullptr && dbFile == nullptr) return KX_BLADE_NO_HANDLE;
    if (dbHandle != nullptr && *dbHandle != nullptr) return inv::Determine(*dbHandle, netAddress, properties);
    inv::Database database = inv::OpenDatabase(dbFile);
    if (!database) return KX_BLADE_NO_DATABASE;
    const int result = inv::Determine(database.get(), netAddress, properties);
    // Opened into the caller's variable: left open for the next question.
    if (dbHandle != nullptr) *dbHandle = database.release();
    return result;
}
