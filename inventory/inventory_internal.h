// Inside the server inventory: the open server-list database, single values
// out of it, and the blade list made from walked records.
#ifndef KX_INVENTORY_INTERNAL_H
#define KX_INVENTORY_INTERNAL_H

#include <memory>
#include <string>
#include <vector>

#include "kx_inventory.h"

namespace kx::inventory {

inline constexpr const char *kServerTable = "SERVER_LIST";
inline constexpr const char *kDefaultDatabase = "../htdocs/PeerScan/uid/1/hwinv.dba";
inline constexpr const char *kDefaultCommunity = "norbel";

struct DatabaseCloser {
    void operator()(DBAsciiAccessDatabase *handle) const { DBAsciiAccessCloseKeepStaticDllInfo(handle); }
};
using Database = std::unique_ptr<DBAsciiAccessDatabase, DatabaseCloser>;

// The database file opened for reading; empty when it cannot be.
Database OpenDatabase(const char *file);

// Rows of a condition search, released with DBAsciiAccessFree.
struct Rows {
    DBAsciiAccessRow *rows = nullptr;
    int count = 0;
    Rows() = default;
    Rows(const Rows &) = delete;
    Rows &operator=(const Rows &) = delete;
    ~Rows() { DBAsciiAccessFree(rows); }
};

// The rows of table whose column equals value (none on any failure).
void FindRows(DBAsciiAccessDatabase *handle, const char *table, const char *column, const char *value, int mode,
              Rows &out);

// The value of condition ("Column?Key=value") in table of the database file
// (nullptr: the one of DBDirectory): a heap text, nullptr when nothing matches.
char *ConditionValue(const char *file, const char *table, const char *condition);

// One blade while the list is built.
struct Blade {
    std::string address;
    int number;
    const char *type;
};

// Appends one blade per run of records whose OIDs, cut at their last ".",
// are equal (walk order), typed type.
void GroupBlades(const KXSnmpVar *records, int count, const char *type, std::vector<Blade> &out);

// The caller's list: a malloc'd array of the blades with malloc'd addresses;
// nullptr when blades is empty or memory runs out.
KXBladeEntry *BladeList(const std::vector<Blade> &blades);

}  // namespace kx::inventory

#endif
