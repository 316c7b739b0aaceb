/*
 * libKXsnmp: MIB look-ups of the console's SNMP library (names, OIDs, syntax
 * and enumerations of MIB objects). The MIB files are those of the MIB
 * directory (KXGetMibPath, "mibs" when none is set), read with net-snmp's MIB
 * parser on the first look-up and again after the directory changes. The SMI
 * roots (iso, org, dod, internet, mgmt, mib-2, private, enterprises, snmpV2,
 * ...) and the textual conventions DisplayString, PhysAddress, MacAddress and
 * TruthValue are known without any MIB file; they belong to no MIB.
 * Everything these operations return is released with KXFreeResources.
 */
#ifndef KX_COMPANION_LIBKXSNMP_NAMES_H
#define KX_COMPANION_LIBKXSNMP_NAMES_H

#include "kx_api.h"

KX_EXTERN_C_BEGIN

/* A MIB loaded by the MIB library. */
typedef struct KXMib KXMib;

/* The request of KXGetValues for the named values of an enumeration. */
#define KX_MIB_VALUES_ENUMERATION 33

/* Named values of a MIB object: one heap block (released with one
 * KXFreeResources), eight words. */
typedef struct KXMibValues {
    int Request;       /* 1: the request answered (KX_MIB_VALUES_ENUMERATION) */
    char *Object;      /* 2: the object's name */
    int Reserved3;     /* 3-6: zero */
    int Reserved4;
    int Reserved5;
    int Reserved6;
    int NameCount;     /* 7: number of entries of Names (highest value + 1) */
    char **Names;      /* 8: name of each value 0 .. NameCount-1, NULL for a gap */
} KXMibValues;

/* Finds the MIB file that defines oid (dotted, a leading "." allowed): the
 * MIB of the deepest known object on the OID's path. Returns the file's name
 * in the MIB directory (such as "Q47.mib") and stores a handle in *mib (both
 * released with KXFreeResources); NULL, with *mib NULL, when no MIB file
 * defines it (the SMI roots belong to none), oid is NULL or memory runs out. */
KX_API char *KXGetMibname(KXMib **mib, const char *oid);

/* The deepest known object on the path of oid: *object receives its name and
 * *objectOid its dotted OID (released with KXFreeResources); the instance is
 * what follows that OID in oid. mib may be NULL (any MIB); flags is reserved
 * (0). Returns 0, or -1 when no object is known or memory runs out (both
 * then NULL). */
KX_API int KXGetName(KXMib *mib, const char *oid, char **object, char **objectOid, int flags);

/* The dotted OID of column, an object of the MIB file mibFile (its name in
 * the MIB directory, extension spelt in any case), which must lie directly
 * below tableEntry when tableEntry is given; with column NULL, the OID of
 * tableEntry. Returns 0 and a heap text in *oid (released with
 * KXFreeResources), or -1 with *oid NULL when the MIB or object is unknown,
 * an argument is NULL or memory runs out. */
KX_API int KXGetOID(const char *mibFile, const char *tableEntry, const char *column, char **oid);

/* The syntax of the MIB object named object (its OID objectOid, as KXGetName
 * gave it, decides when given) as one upper-case word: "INTEGER", "GAUGE",
 * "COUNTER", "OCTETSTRING", "OBJECTID", "IPADDRESS", "TIMETICKS", ... (the
 * list is in docs/formats.md). Returns 0 and a heap text in *syntax (released
 * with KXFreeResources), or -1 with *syntax NULL when the object is unknown,
 * has no simple syntax or memory runs out. mib may be NULL. */
KX_API int KXGetSyntax(KXMib *mib, const char *object, const char *objectOid, char **syntax);

/* The named values of the object (found as by KXGetSyntax) for request
 * KX_MIB_VALUES_ENUMERATION: *values receives a KXMibValues block (released
 * with one KXFreeResources). Values below 0 or above 4095 are left out.
 * Returns the record's NameCount (at least 1); 0 with *values NULL when the
 * object has no enumeration; -1 with *values NULL for another request, an
 * unknown object, NULL arguments or when memory runs out. */
KX_API int KXGetValues(KXMib *mib, const char *object, const char *objectOid, int request,
                       KXMibValues **values);

/* The number of a trap severity text, compared ignoring case and blanks
 * around it: "CRITICAL" 1, "MAJOR" 2, "MINOR" 3, "INFORMATIONAL" 4 (the
 * synonyms are listed in docs/formats.md); 0 for "UNKNOWN", an empty or
 * unrecognised text and NULL. */
KX_API int KXSeverityTextToNumber(const char *text);

/* Releases a text, handle or record that the MIB library returned; NULL is
 * ignored. */
KX_API void KXFreeResources(void *resource);

KX_EXTERN_C_END

#endif
