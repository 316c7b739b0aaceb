// Inner pieces of the trap store shared by its sources.
#ifndef KX_TRAP_TRAP_INTERNAL_H
#define KX_TRAP_TRAP_INTERNAL_H

#include <string>
#include <string_view>

namespace kx::trap {

// The expression of every trap file listing: the mark, then the rest of a name.
inline std::string TrapFileExpression(const char *prefix) {
    return std::string(prefix != nullptr ? prefix : "[tT]") + "[0-9]+.*_[0-9]+_[0-9]+.*[.][0-9]+$";
}

// Leading decimal number of text after blanks, with an optional sign (0 when none).
long long LeadingNumber(const char *text);

// Applies the first two lines of a "./snmptrapd.ini" content to the directory buffers.
void ApplyDirectorySettings(std::string_view content);

// The directory of the trap functions: the caller's, else TrapsDirectory.
const char *DirectoryOrDefault(const char *directory);

// --- Lookups in the MIB index, the trap records and the server-list database.
// These belong to the MIB and database layers; until those are linked in,
// their stand-ins (trap_lookup_pending.cc) find nothing.

// The spelling of the "mib" extension of the MIB file named by the first
// length characters of name (all of it when length <= 0).
const char *MibSuffixFor(const char *name, int length);

// Number of variable records of the trap file at path (below 1: none); the
// OID text of record 1 goes to enterpriseOid when there are two or more.
int ReadTrapRecordOid(const char *path, std::string &enterpriseOid);

// The MIB file (a heap text) that describes the trap with that enterprise
// OID and numbers, or nullptr when no description is found: the MIB index
// built from "./TrapMibs", looked up with "OID2Mib.ini".
char *LookUpTrapMibFile(const char *oid, const char *specific, const char *generic);

// The value of the server-list database entry (a heap text), or nullptr.
char *DatabaseValue(const char *dbFile, const char *table, const char *condition);

}  // namespace kx::trap

#endif
