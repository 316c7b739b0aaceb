/*
 * Server inventory: what the server-list database knows about a server, the
 * blades of a chassis read over SNMP, single database values, MIB values of
 * a managed server and the popup alarm.
 *
 * The server-list database is the text database of docs/formats.md, table
 * "SERVER_LIST" (columns "ServerName", "NetAddress", "Type", "SystemName",
 * "RsbIpAddress", "Community", "TimeOut"). SNMP reads go to the address of
 * the server's row ("NetAddress", which may end in ":port"), SNMP v2c.
 */
#ifndef KX_INVENTORY_H
#define KX_INVENTORY_H

#include <stdint.h>

#include "kx_api.h"
#include "companion/libDBAsciiAccess.h"
#include "companion/libSnmpFile.h"

KX_EXTERN_C_BEGIN

/* What the server list knows about one address: one heap block released
 * with one free(): this record followed by the texts it points to. */
typedef struct KXBladeProperties {
    char *Type;        /* "Type" of the server's row, or NULL */
    char *ServerName;  /* "ServerName", or NULL */
    char *ChassisName; /* name of the chassis holding a blade, or NULL */
    char *SystemName;  /* system name, or NULL */
    int BladeMark;     /* 1: every row of the address is named chassis\blade; 0: one is not;
                          -1: not asked (single servers and chassis) */
} KXBladeProperties;

/* One blade of a chassis in the list of KXDetermineBlades. */
typedef struct KXBladeEntry {
    char *Address;     /* heap text: first address other than "0.0.0.0", blanks removed; else "0.0.0.0" */
    int32_t Number;    /* last component of the blade's table index; -1 when there is none */
    const char *Type;  /* KXBladeTypeName[1] ("Blade") or [2] ("SwitchBlade"); not owned */
} KXBladeEntry;

/* The kinds of blade systems: "BladeServer" (a chassis), "Blade", "SwitchBlade". */
KX_API extern const char *const KXBladeTypeName[];
KX_API extern const int32_t KXBladeTypeNameCount;

/* Results of KXDetermineBladeProperties below 0. */
#define KX_BLADE_NO_DATABASE (-1)     /* the database or its table "SERVER_LIST" cannot be opened */
#define KX_BLADE_NO_ADDRESS (-11)     /* netAddress NULL */
#define KX_BLADE_NO_HANDLE (-12)      /* neither dbHandle nor dbFile given */
#define KX_BLADE_NO_TYPE (-13)        /* rows found, but the table has no "Type" column */
#define KX_BLADE_NO_SERVERNAME (-14)  /* rows found, but no "ServerName" column */

/* What the server list at dbFile knows about netAddress. Returns 0 when no
 * row has that "NetAddress" or its rows are a single server (no "Type"
 * contains "lade"); the number of its rows when it is a blade system (1 for
 * a chassis, "BladeServer"); or a KX_BLADE_ code. dbHandle NULL: the
 * database is opened and closed here; *dbHandle NULL: it is opened into
 * *dbHandle and left open for the caller (DBAsciiAccessCloseKeepStaticDllInfo);
 * else *dbHandle is used. properties may be NULL; else *properties is set to
 * NULL and, when rows were found, to the property list (released with
 * free()); it stays NULL when memory runs out. */
KX_API int KXDetermineBladeProperties(const char *dbFile, const char *netAddress, DBAsciiAccessDatabase **dbHandle,
                                      KXBladeProperties **properties);

/* The server blades, then the switch blades, of the chassis server (an
 * address or a name of the server list, as KXGetMibValues takes it), read by
 * walking "q47SvrNicIpAddress" and "q47SwitchBladeIpAddress" of "Q47.MIB"
 * with community (NULL: "norbel") and a time-out of 5 seconds. Returns the
 * number of entries and the list in *blades (released with
 * KXBladesStrFreeResources; NULL when the number is 0); -1 with *blades NULL
 * when server and second are both NULL, the server blade table cannot be
 * read or is empty, or memory runs out. second only takes part in that test.
 * A chassis whose switch blade table cannot be read gives its server blades. */
KX_API int KXDetermineBlades(const char *server, const char *second, const char *community, KXBladeEntry **blades);

/* Releases the address of each of the count entries and the list, and sets
 * *blades to NULL; nothing happens when blades or *blades is NULL. */
KX_API void KXBladesStrFreeResources(int count, KXBladeEntry **blades);

/* 0 when text begins with a dotted IPv4 address ("10.0.0.1", also
 * "10.0.0.1:1161"), 1 when it does not or is NULL. */
KX_API int KXValidateNetAddress(const char *text);

/* The resultColumn text of the first row of table whose keyColumn equals
 * keyValue (mode 0: exactly, 1: ignoring ASCII case) in the database dbFile
 * (NULL: "../htdocs/PeerScan/uid/1/hwinv.dba"): a heap text released with
 * KXSnmpTrapDllFreeResources or free(). NULL when table, keyColumn or
 * keyValue is NULL, the database or table cannot be opened, no row matches,
 * the column does not exist or memory runs out. */
KX_API char *KXGetDBValues(const char *dbFile, const char *table, const char *keyColumn, const char *keyValue,
                           int mode, const char *resultColumn);

/* Reads the MIB object tableEntry/column of mibFile from server (a dotted
 * IPv4 address, or a "ServerName" of the server list dbFile, NULL: the
 * default of KXGetDBValues). When indexEntry and indexColumn are given, the
 * first value walked under that object (of indexMib, NULL: mibFile) is
 * appended to the OID as its instance, unless it begins with "errorS".
 * operation: "get", "getnext" or "walk" (NULL). timeout in seconds (0 or
 * less: the row's "TimeOut", else 5); community NULL: the row's
 * "Community"; an empty one means "norbel". Returns the number of records
 * (KXSnmpFileGetValue's result) with *records released by
 * KXSnmpFileFreeResources, or a negative code with *records NULL: -1 when
 * server, mibFile, tableEntry, column or records is NULL or the object is
 * unknown; the read's own codes (KX_SNMPFILE_TIMEOUT -5, KX_SNMPFILE_SNMP_ERROR
 * -7, ...), which also end the call when the index walk gives them. */
KX_API int KXGetMibValues(const char *server, const char *mibFile, const char *tableEntry, const char *column,
                          const char *indexMib, const char *indexEntry, const char *indexColumn,
                          const char *operation, int timeout, const char *community, const char *dbFile,
                          KXSnmpVar **records);

/* Raises the popup alarm message (AlarmFwdPopup, see docs/formats.md); when
 * expected is given, only if the database value of condition in table of
 * dbFile (NULL: DBDirectory) exists and equals it. Its target is the value of
 * targetCondition in targetTable of targetDbFile when both are given, else
 * none. Returns 0. */
KX_API int KXPopupMessage(const char *dbFile, const char *table, const char *condition, const char *expected,
                          const char *targetDbFile, const char *targetTable, const char *targetCondition,
                          const char *message);

/* Releases a text that this library returned; NULL is ignored. */
KX_API void KXSnmpTrapDllFreeResources(void *pointer);

KX_EXTERN_C_END

#endif
