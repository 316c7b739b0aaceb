/*
 * libKXsnmp: trap descriptions read from the SMIv1 TRAP-TYPE macros of the
 * MIB files in the MIB directory (KXGetMibPath, "mibs" when none is set).
 */
#ifndef KX_COMPANION_LIBKXSNMP_TRAPS_H
#define KX_COMPANION_LIBKXSNMP_TRAPS_H

#include <stddef.h>

#include "kx_api.h"

KX_EXTERN_C_BEGIN

/* The description of one trap: 23 words. A text that the MIB does not give,
 * or gives empty, is NULL with length 0; every other text is followed by a
 * NUL. Arguments holds one character '0' + n per number n of
 * "--#ARGUMENTS {..}" (so {0,1} gives "01"). */
typedef struct KXTrapDescription {
    int NameLength;          /* 1 */
    char *Name;              /* 2: the TRAP-TYPE's name */
    int Reserved3;           /* 3, 4: zero */
    int Reserved4;
    int VariableCount;       /* 5 */
    char **Variables;        /* 6: names of its VARIABLES */
    int DescriptionLength;   /* 7 */
    char *Description;       /* 8: its DESCRIPTION, as written between the quotes */
    int TypeLength;          /* 9 */
    char *Type;              /* 10: "--#TYPE" */
    int SummaryLength;       /* 11 */
    char *Summary;           /* 12: "--#SUMMARY" (several are joined by a blank) */
    int ArgumentCount;       /* 13 */
    char *Arguments;         /* 14: "--#ARGUMENTS" */
    int SeverityLength;      /* 15 */
    char *Severity;          /* 16: "--#SEVERITY" */
    int Reserved17[7];       /* 17-23: zero */
} KXTrapDescription;

/* The description of the trap that the MIB file mibFile (a name in the MIB
 * directory; its extension may be spelt in any case on disk) defines with a TRAP-TYPE whose ENTERPRISE is oid (dotted, a
 * leading "." ignored) and whose number is specific when generic is "6", or
 * generic when generic is 0 to 5 (numbers given as decimal texts). Each file
 * is parsed once per process and kept, a missing or unreadable file too (as
 * one defining no traps); texts given with KXSetTrapMibText come first.
 * The record belongs to the library and stays valid for the life of the
 * process: callers neither change nor free it. The same trap gives the same
 * record every time. NULL when no trap matches, an argument is NULL or not a
 * number, or memory runs out. */
KX_API KXTrapDescription *GetTrapPointer(const char *mibFile, const char *oid, const char *specific,
                                         const char *generic);

/* Parses the length bytes of text as the contents of the MIB file mibFile
 * and keeps them under that name in place of the file: GetTrapPointer with
 * the same name answers from them without reading the disk. A name given
 * again replaces the earlier text; the descriptions of the earlier text are
 * then released. Returns the number of TRAP-TYPE macros read, or -1 when
 * mibFile is NULL, text is NULL with a length above 0, or memory runs out. */
KX_API int KXSetTrapMibText(const char *mibFile, const char *text, size_t length);

KX_EXTERN_C_END

#endif
