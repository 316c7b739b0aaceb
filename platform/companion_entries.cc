// The entry points of the companions that only some requests call: the MIB
// library, the trap file library, the database library, the alarm
// forwarding library and the multibyte string library. The library calls each by its own name; the name
// lands here, which loads the companion on the first call of the process
// (platform/companion_loader.h) and passes the call on unchanged. The
// companions stay separate shared libraries, but a request that reads no
// MIB, no trap file and no database loads none of them. The multibyte
// string functions are only needed where the locale's characters can be
// longer than a byte.
//
// Every operation of these five companions has its entry here, so that a
// later call of any of them from the library needs no change in this file;
// the release build links the library with -z defs, which turns a missing
// entry into a link error.
#include "companion/libDBAsciiAccess.h"
#include "companion/libForwarding.h"
#include "companion/libKXmbcs.h"
#include "companion/libKXsnmp.h"
#include "companion/libKXsnmp_names.h"
#include "companion/libKXsnmp_traps.h"
#include "companion/libSnmpFile.h"
#include "platform/companion_loader.h"

// The names the companions are installed under; the build passes the names
// it gives them.
#ifndef KX_SONAME_KXSNMP
#define KX_SONAME_KXSNMP "libKXsnmp.so.1"
#endif
#ifndef KX_SONAME_SNMPFILE
#define KX_SONAME_SNMPFILE "libSnmpFile.so.1"
#endif
#ifndef KX_SONAME_DBASCIIACCESS
#define KX_SONAME_DBASCIIACCESS "libDBAsciiAccess.so.1"
#endif
#ifndef KX_SONAME_FORWARDING
#define KX_SONAME_FORWARDING "libForwarding.so.1"
#endif
#ifndef KX_SONAME_KXMBCS
#define KX_SONAME_KXMBCS "libKXmbcs.so.1"
#endif

namespace {

// The names the companions are opened by, and each companion, opened on its
// first use (one handle per name for the whole process).
constexpr char kMibLibrary[] = KX_SONAME_KXSNMP;
constexpr char kTrapFileLibrary[] = KX_SONAME_SNMPFILE;
constexpr char kDatabaseLibrary[] = KX_SONAME_DBASCIIACCESS;
constexpr char kForwardingLibrary[] = KX_SONAME_FORWARDING;
constexpr char kMultibyteLibrary[] = KX_SONAME_KXMBCS;

template <const char *soname>
void *Companion() {
    static void *const library = kx::platform::OpenCompanion(soname);
    return library;
}

}  // namespace

// The companion's own entry point for name, found once per process.
#define KX_COMPANION_ENTRY(soname, name) \
    static const auto entry = kx::platform::CompanionEntry<decltype(&::name)>(Companion<soname>(), #name)

extern "C" {

// libKXsnmp
int KXSetMibPath(const char *path) {
    KX_COMPANION_ENTRY(kMibLibrary, KXSetMibPath);
    return entry(path);
}
const char *KXGetMibPath(void) {
    KX_COMPANION_ENTRY(kMibLibrary, KXGetMibPath);
    return entry();
}
char *KXGetMibname(KXMib **mib, const char *oid) {
    KX_COMPANION_ENTRY(kMibLibrary, KXGetMibname);
    return entry(mib, oid);
}
int KXGetName(KXMib *mib, const char *oid, char **object, char **objectOid, int flags) {
    KX_COMPANION_ENTRY(kMibLibrary, KXGetName);
    return entry(mib, oid, object, objectOid, flags);
}
int KXGetOID(const char *mibFile, const char *tableEntry, const char *column, char **oid) {
    KX_COMPANION_ENTRY(kMibLibrary, KXGetOID);
    return entry(mibFile, tableEntry, column, oid);
}
int KXGetSyntax(KXMib *mib, const char *object, const char *objectOid, char **syntax) {
    KX_COMPANION_ENTRY(kMibLibrary, KXGetSyntax);
    return entry(mib, object, objectOid, syntax);
}
int KXGetValues(KXMib *mib, const char *object, const char *objectOid, int request, KXMibValues **values) {
    KX_COMPANION_ENTRY(kMibLibrary, KXGetValues);
    return entry(mib, object, objectOid, request, values);
}
int KXSeverityTextToNumber(const char *text) {
    KX_COMPANION_ENTRY(kMibLibrary, KXSeverityTextToNumber);
    return entry(text);
}
void KXFreeResources(void *resource) {
    KX_COMPANION_ENTRY(kMibLibrary, KXFreeResources);
    entry(resource);
}
KXTrapDescription *GetTrapPointer(const char *mibFile, const char *oid, const char *specific,
                                  const char *generic) {
    KX_COMPANION_ENTRY(kMibLibrary, GetTrapPointer);
    return entry(mibFile, oid, specific, generic);
}
int KXSetTrapMibText(const char *mibFile, const char *text, size_t length) {
    KX_COMPANION_ENTRY(kMibLibrary, KXSetTrapMibText);
    return entry(mibFile, text, length);
}

// libSnmpFile
int KXSnmpFileRead(int fd, const char *path, KXSnmpVar **records, int flags) {
    KX_COMPANION_ENTRY(kTrapFileLibrary, KXSnmpFileRead);
    return entry(fd, path, records, flags);
}
int KXSnmpFileReadText(const char *text, size_t length, KXSnmpVar **records) {
    KX_COMPANION_ENTRY(kTrapFileLibrary, KXSnmpFileReadText);
    return entry(text, length, records);
}
size_t KXSnmpFileValueLength(const KXSnmpVar *records, int index) {
    KX_COMPANION_ENTRY(kTrapFileLibrary, KXSnmpFileValueLength);
    return entry(records, index);
}
char *KXSnmpFileFormatText(const KXSnmpVar *records, const size_t *valueLengths, int count, size_t *length) {
    KX_COMPANION_ENTRY(kTrapFileLibrary, KXSnmpFileFormatText);
    return entry(records, valueLengths, count, length);
}
int KXSnmpFileWrite(const char *path, const KXSnmpVar *records, const size_t *valueLengths, int count) {
    KX_COMPANION_ENTRY(kTrapFileLibrary, KXSnmpFileWrite);
    return entry(path, records, valueLengths, count);
}
int KXSnmpFileGetValue(KXSnmpVar **records, const char *address, const char *oid, const char *operation,
                       const char *community, int port, int maxRecords, int version, int timeoutMs, int retries,
                       int flags) {
    KX_COMPANION_ENTRY(kTrapFileLibrary, KXSnmpFileGetValue);
    return entry(records, address, oid, operation, community, port, maxRecords, version, timeoutMs, retries,
                 flags);
}
void KXSnmpFileFreeResources(KXSnmpVar *records) {
    KX_COMPANION_ENTRY(kTrapFileLibrary, KXSnmpFileFreeResources);
    entry(records);
}

// libDBAsciiAccess
int DBAsciiAccessOpen(const char *file, int access, DBAsciiAccessDatabase **handle) {
    KX_COMPANION_ENTRY(kDatabaseLibrary, DBAsciiAccessOpen);
    return entry(file, access, handle);
}
int DBAsciiAccessOpenText(const char *text, size_t length, DBAsciiAccessDatabase **handle) {
    KX_COMPANION_ENTRY(kDatabaseLibrary, DBAsciiAccessOpenText);
    return entry(text, length, handle);
}
int DBAsciiAccessTableOpen(DBAsciiAccessDatabase *handle, const char *table) {
    KX_COMPANION_ENTRY(kDatabaseLibrary, DBAsciiAccessTableOpen);
    return entry(handle, table);
}
int DBAsciiAccessGetAllEntries(DBAsciiAccessDatabase *handle, const char *table, const char *condition,
                               char ***entries, int maxEntries, int reserved) {
    KX_COMPANION_ENTRY(kDatabaseLibrary, DBAsciiAccessGetAllEntries);
    return entry(handle, table, condition, entries, maxEntries, reserved);
}
int DBAsciiAccessGetAllEntriesByCondition(DBAsciiAccessDatabase *handle, const char *table, const char *column,
                                          DBAsciiAccessRow **rows, int maxRows, const char *value, int comparison,
                                          int mode, int order, int reserved1, int reserved2) {
    KX_COMPANION_ENTRY(kDatabaseLibrary, DBAsciiAccessGetAllEntriesByCondition);
    return entry(handle, table, column, rows, maxRows, value, comparison, mode, order, reserved1, reserved2);
}
int DBAsciiAccessGetElementColumn(DBAsciiAccessDatabase *handle, const char *table, const char *column) {
    KX_COMPANION_ENTRY(kDatabaseLibrary, DBAsciiAccessGetElementColumn);
    return entry(handle, table, column);
}
int DBAsciiAccessGetScheme(DBAsciiAccessDatabase *handle, const char *table, int *columnCount,
                           char ***columnNames) {
    KX_COMPANION_ENTRY(kDatabaseLibrary, DBAsciiAccessGetScheme);
    return entry(handle, table, columnCount, columnNames);
}
void DBAsciiAccessFree(void *entries) {
    KX_COMPANION_ENTRY(kDatabaseLibrary, DBAsciiAccessFree);
    entry(entries);
}
int DBAsciiAccessCloseKeepStaticDllInfo(DBAsciiAccessDatabase *handle) {
    KX_COMPANION_ENTRY(kDatabaseLibrary, DBAsciiAccessCloseKeepStaticDllInfo);
    return entry(handle);
}

// libForwarding
int AlarmFwdPopup(int kind, const char *target, const char *message, int flags, int reserved) {
    KX_COMPANION_ENTRY(kForwardingLibrary, AlarmFwdPopup);
    return entry(kind, target, message, flags, reserved);
}

// libKXmbcs
char *_mbschr(const char *text, unsigned int character) {
    KX_COMPANION_ENTRY(kMultibyteLibrary, _mbschr);
    return entry(text, character);
}
char *_mbsrchr(const char *text, unsigned int character) {
    KX_COMPANION_ENTRY(kMultibyteLibrary, _mbsrchr);
    return entry(text, character);
}
char *_mbsstr(const char *text, const char *needle) {
    KX_COMPANION_ENTRY(kMultibyteLibrary, _mbsstr);
    return entry(text, needle);
}
int _mbscmp(const char *a, const char *b) {
    KX_COMPANION_ENTRY(kMultibyteLibrary, _mbscmp);
    return entry(a, b);
}
int _mbsicmp(const char *a, const char *b) {
    KX_COMPANION_ENTRY(kMultibyteLibrary, _mbsicmp);
    return entry(a, b);
}
int _mbsnbcmp(const char *a, const char *b, size_t count) {
    KX_COMPANION_ENTRY(kMultibyteLibrary, _mbsnbcmp);
    return entry(a, b, count);
}

}  // extern "C"
