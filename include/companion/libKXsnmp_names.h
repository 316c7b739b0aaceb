/*
 * libKXsnmp: MIB look-ups of the console's SNMP library (names of OIDs).
 * Everything these operations return is released with KXFreeResources.
 */
#ifndef KX_COMPANION_LIBKXSNMP_NAMES_H
#define KX_COMPANION_LIBKXSNMP_NAMES_H

#include "kx_api.h"

KX_EXTERN_C_BEGIN

/* A MIB loaded by the MIB library. */
typedef struct KXMib KXMib;

/* Finds the MIB that defines oid. Returns the MIB's name and stores its
 * handle in *mib (both released with KXFreeResources); NULL, with *mib NULL,
 * when no MIB defines it. */
KX_API char *KXGetMibname(KXMib **mib, const char *oid);

/* The known object of mib that oid lies under: *object receives its name and
 * *objectOid its dotted OID (released with KXFreeResources). flags is
 * reserved (0). Returns 0, or -1 when there is none (both then NULL). */
KX_API int KXGetName(KXMib *mib, const char *oid, char **object, char **objectOid, int flags);

/* Releases a text or handle that the MIB library returned; NULL is ignored. */
KX_API void KXFreeResources(void *resource);

KX_EXTERN_C_END

#endif
