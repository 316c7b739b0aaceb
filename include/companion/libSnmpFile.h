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

/* Releases a record block that this library returned; NULL is ignored. */
KX_API void KXSnmpFileFreeResources(KXSnmpVar *records);

KX_EXTERN_C_END

#endif
