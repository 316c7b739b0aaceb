/*
 * libDBAsciiAccess: the console's server-list database, a text file of named
 * tables with named columns that an operator can read and edit by hand (the
 * format and the condition syntax are described in docs/formats.md). The
 * database is read whole when it is opened; access is read-only.
 */
#ifndef KX_COMPANION_LIBDBASCIIACCESS_H
#define KX_COMPANION_LIBDBASCIIACCESS_H

#include <stddef.h>

#include "kx_api.h"

KX_EXTERN_C_BEGIN

/* An open database. */
typedef struct DBAsciiAccessDatabase DBAsciiAccessDatabase;

/* One row: its column texts in the order of the table's columns. */
typedef char **DBAsciiAccessRow;

#define DBASCII_ACCESS_READ 110    /* access code of DBAsciiAccessOpen: read */
#define DBASCII_COMPARE_EQUAL 114  /* comparison of the condition search: equal */
#define DBASCII_ORDER_AS_STORED 110 /* order of the condition search: as in the file */
#define DBASCII_MODE_EXACT 0        /* mode of the condition search: bytes compared exactly */
#define DBASCII_MODE_NOCASE 1       /* mode of the condition search: ASCII case ignored */

/* Results below 0. */
#define DBASCII_BAD_ARGUMENT (-1)  /* NULL argument, unknown table or column */
#define DBASCII_UNREADABLE (-2)    /* the file cannot be read */
#define DBASCII_BAD_CONDITION (-3) /* condition, comparison or order not understood */
#define DBASCII_NO_MEMORY (-4)

/* Opens the database file for reading (access DBASCII_ACCESS_READ; other
 * codes read it too). Returns 0 and stores the handle in *handle (closed with
 * DBAsciiAccessCloseKeepStaticDllInfo); a negative DBASCII_ code with
 * *handle NULL on failure. */
KX_API int DBAsciiAccessOpen(const char *file, int access, DBAsciiAccessDatabase **handle);

/* The same for a database file's contents in memory: length bytes of text. */
KX_API int DBAsciiAccessOpenText(const char *text, size_t length, DBAsciiAccessDatabase **handle);

/* 0 when the database has the table, else DBASCII_BAD_ARGUMENT. */
KX_API int DBAsciiAccessTableOpen(DBAsciiAccessDatabase *handle, const char *table);

/* The texts selected by condition ("Column" or "Column?Key=value&Key!=value",
 * see docs/formats.md): the Column text of each matching row, in file order,
 * at most maxEntries of them when that is above 0. reserved is 0. Returns
 * their number and stores them in *entries as one block released with
 * DBAsciiAccessFree (NULL when the number is 0); a negative DBASCII_ code
 * with *entries NULL on failure. */
KX_API int DBAsciiAccessGetAllEntries(DBAsciiAccessDatabase *handle, const char *table, const char *condition,
                                      char ***entries, int maxEntries, int reserved);

/* The rows of table whose column equals value (comparison
 * DBASCII_COMPARE_EQUAL; mode DBASCII_MODE_EXACT or DBASCII_MODE_NOCASE;
 * order DBASCII_ORDER_AS_STORED or 0), at most maxRows when that is above 0;
 * reserved1 and reserved2 are 0. Returns their number and stores them in
 * *rows as one block released with DBAsciiAccessFree (NULL when the number is
 * 0); each row has one text per column of the table (DBAsciiAccessGetScheme),
 * empty where the file leaves a field out. A negative DBASCII_ code with
 * *rows NULL on failure (an unknown column among them). */
KX_API int DBAsciiAccessGetAllEntriesByCondition(DBAsciiAccessDatabase *handle, const char *table,
                                                 const char *column, DBAsciiAccessRow **rows, int maxRows,
                                                 const char *value, int comparison, int mode, int order,
                                                 int reserved1, int reserved2);

/* The index of column among the columns of table, or DBASCII_BAD_ARGUMENT
 * when the table has no such column. */
KX_API int DBAsciiAccessGetElementColumn(DBAsciiAccessDatabase *handle, const char *table, const char *column);

/* The columns of table: their number in *columnCount and their names in
 * *columnNames (either may be NULL); the names belong to the handle and stay
 * valid until it is closed. Returns 0, or DBASCII_BAD_ARGUMENT (outputs 0 and
 * NULL) for an unknown table. */
KX_API int DBAsciiAccessGetScheme(DBAsciiAccessDatabase *handle, const char *table, int *columnCount,
                                  char ***columnNames);

/* Releases entries or rows that this library returned; NULL is ignored. */
KX_API void DBAsciiAccessFree(void *entries);

/* Closes the database and releases the handle (what the library keeps for
 * the whole process stays); NULL is ignored. Returns 0. */
KX_API int DBAsciiAccessCloseKeepStaticDllInfo(DBAsciiAccessDatabase *handle);

KX_EXTERN_C_END

#endif
