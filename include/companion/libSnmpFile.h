/*
 * libSnmpFile: stored trap files as arrays of variable records. The file
 * format is described in docs/formats.md; values may hold any bytes.
 */
#ifndef KX_COMPANION_LIBSNMPFILE_H
#define KX_COMPANION_LIBSNMPFILE_H

#include <stddef.h>

#include "kx_api.h"

KX_EXTERN_C_BEGIN

/* One variable of a trap: OID (dotted), type word ("OCTETSTRING",
 * "INTEGER", ...) and value. Each text is NUL-terminated; a value may hold
 * NUL bytes of its own, its full length comes from KXSnmpFileValueLength. */
typedef struct KXSnmpVar {
    char *Oid;
    char *Type;
    char *Value;
} KXSnmpVar;

/* Results of the readers below 1. */
#define KX_SNMPFILE_EMPTY 0          /* a trap file without records */
#define KX_SNMPFILE_BAD_ARGUMENT (-1)
#define KX_SNMPFILE_UNREADABLE (-2)  /* cannot be opened or read */
#define KX_SNMPFILE_NOT_A_TRAP (-3)  /* not a trap file: wrong header, truncated, bad line */
#define KX_SNMPFILE_NO_MEMORY (-4)
#define KX_SNMPFILE_TIMEOUT (-5)     /* SNMP read: the server did not answer in time */
#define KX_SNMPFILE_NO_SESSION (-6)  /* SNMP read: the address cannot be reached (unknown host, no socket) */
#define KX_SNMPFILE_SNMP_ERROR (-7)  /* SNMP read: the answer carries an error status (noSuchName, genErr, ...) */

/* flags of KXSnmpFileGetValue */
#define KX_SNMPFILE_WALK_SUBTREE 1   /* a walk ends at the first OID outside the OID asked for */

/* Reads a trap file: from the open descriptor fd when fd is 0 or more (read
 * to its end, not closed), else from the file at path. flags is reserved (0).
 * Returns the number of records and stores them in *records as one block
 * released with KXSnmpFileFreeResources; 0 with *records NULL for a file
 * without records; a negative KX_SNMPFILE_ code with *records NULL on failure
 * (records NULL: KX_SNMPFILE_BAD_ARGUMENT). */
KX_API int KXSnmpFileRead(int fd, const char *path, KXSnmpVar **records, int flags);

/* The same for a trap file's contents in memory: length bytes of text. */
KX_API int KXSnmpFileReadText(const char *text, size_t length, KXSnmpVar **records);

/* The length in bytes of the value of record index of a block that a reader
 * of this library returned (the value's NUL terminator not counted); 0 for a
 * NULL block or an index outside it. */
KX_API size_t KXSnmpFileValueLength(const KXSnmpVar *records, int index);

/* The trap file text of count records: a new heap text (released with free)
 * with its length in *length (may be NULL). valueLengths gives each value's
 * length (NULL: each value's text length); NULL texts are written empty.
 * NULL when records is NULL while count is above 0, count is negative or
 * memory runs out. */
KX_API char *KXSnmpFileFormatText(const KXSnmpVar *records, const size_t *valueLengths, int count,
                                  size_t *length);

/* Writes count records as the trap file path, so that no reader ever sees a
 * part of it: the text goes to a hidden temporary file beside it (".name.XXXXXX")
 * that is then renamed to path. Returns 0, KX_SNMPFILE_BAD_ARGUMENT (path NULL
 * or records as for KXSnmpFileFormatText), KX_SNMPFILE_NO_MEMORY, or
 * KX_SNMPFILE_UNREADABLE when the file cannot be written (nothing is left
 * behind then). */
KX_API int KXSnmpFileWrite(const char *path, const KXSnmpVar *records, const size_t *valueLengths, int count);

/* Reads from the SNMP agent at address (IPv4 or host name, ":port" may
 * follow; else port when above 0, else 161) with net-snmp: operation "get",
 * "getnext" or "walk" (NULL: "walk") of oid (dotted numbers), SNMP version
 * 0 (v1) or 1 (v2c), community (NULL: "public"). timeoutMs (0 or less: 5000)
 * is the whole wait for each answer, shared by the 1 + retries tries. A walk
 * asks getnext after getnext; with flags KX_SNMPFILE_WALK_SUBTREE it ends at
 * the first OID outside oid, else at the end of the agent's MIB; maxRecords
 * above 0 ends it after that many. Returns the number of records, stored in
 * *records as one block released with KXSnmpFileFreeResources (0 and NULL
 * for a walk that found nothing). Values are text: numbers in decimal,
 * addresses and OIDs dotted, octet strings byte for byte
 * (KXSnmpFileValueLength). A get or getnext that the agent answers with an
 * exception (noSuchObject, noSuchInstance, endOfMibView) gives one record of
 * type "ERROR" whose value is "errorStatus=" and the exception's name. On
 * failure *records is NULL and the result is KX_SNMPFILE_BAD_ARGUMENT (NULL
 * records, address or oid, an oid that is not dotted numbers, an unknown
 * operation or version), KX_SNMPFILE_TIMEOUT, KX_SNMPFILE_NO_SESSION,
 * KX_SNMPFILE_SNMP_ERROR or KX_SNMPFILE_NO_MEMORY. */
KX_API int KXSnmpFileGetValue(KXSnmpVar **records, const char *address, const char *oid, const char *operation,
                              const char *community, int port, int maxRecords, int version, int timeoutMs,
                              int retries, int flags);

/* Releases a record block that this library returned; NULL is ignored. */
KX_API void KXSnmpFileFreeResources(KXSnmpVar *records);

KX_EXTERN_C_END

#endif
