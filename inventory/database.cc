// Single values out of the server-list database.
#include <cstdlib>
#include <cstring>

#include "core/text.h"
#include "inventory/inventory_internal.h"
#include "companion/libForwarding.h"
#include "kx_trap.h"

namespace kx::inventory {

Database OpenDatabase(const char *file) {
    DBAsciiAccessDatabase *handle = nullptr;
    if (file == nullptr || DBAsciiAccessOpen(file, DBASCII_ACCESS_READ, &handle) < 0) return Database();
    return Database(handle);
}

void FindRows(DBAsciiAccessDatabase *handle, const char *table, const char *column, const char *value, int mode,
              Rows &out) {
    const int count = DBAsciiAccessGetAllEntriesByCondition(handle, table, column, &out.rows, 0, value,
                                                            DBASCII_COMPARE_EQUAL, mode, DBASCII_ORDER_AS_STORED, 0, 0);
    out.count = count > 0 ? count : 0;
}

char *ConditionValue(const char *file, const char *table, const char *condition) {
    if (table == nullptr || condition == nullptr) return nullptr;
    const Database database = OpenDatabase(file != nullptr ? file : DBDirectory);
    if (!database || DBAsciiAccessTableOpen(database.get(), table) != 0) return nullptr;
    char **entries = nullptr;
    const int count = DBAsciiAccessGetAllEntries(database.get(), table, condition, &entries, 1, 0);
    char *value = count > 0 ? core::HeapCopy(entries[0]) : nullptr;
    DBAsciiAccessFree(entries);
    return value;
}

}  // namespace kx::inventory

extern "C" {

char *KXGetDBValues(const char *dbFile, const char *table, const char *keyColumn, const char *keyValue, int mode,
                    const char *resultColumn) {
    if (table == nullptr || keyColumn == nullptr || keyValue == nullptr || resultColumn == nullptr) return nullptr;
    namespace inv = kx::inventory;
    const inv::Database database = inv::OpenDatabase(dbFile != nullptr ? dbFile : inv::kDefaultDatabase);
    if (!database || DBAsciiAccessTableOpen(database.get(), table) != 0) return nullptr;
    inv::Rows rows;
    inv::FindRows(database.get(), table, keyColumn, keyValue, mode, rows);
    if (rows.count == 0) return nullptr;
    const int column = DBAsciiAccessGetElementColumn(database.get(), table, resultColumn);
    return column >= 0 ? kx::core::HeapCopy(rows.rows[0][column]) : nullptr;
}

void KXSnmpTrapDllFreeResources(void *pointer) { std::free(pointer); }

}  // extern "C"

extern "C" int KXPopupMessage(const char *dbFile, const char *table, const char *condition, const char *expected,
                              const char *targetDbFile, const char *targetTable, const char *targetCondition,
                              const char *message) {
    namespace inv = kx::inventory;
    if (expected != nullptr) {
        const kx::core::HeapText value(inv::ConditionValue(dbFile, table, condition));
        if (!value || value.View() != expected) return 0;
    }
    kx::core::HeapText target;
    if (targetTable != nullptr && targetCondition != nullptr)
        target.Reset(inv::ConditionValue(targetDbFile, targetTable, targetCondition));
    AlarmFwdPopup(0, target.Get(), message, 0, 0);
    return 0;
}
