/*
 * libKXsnmp: MIB look-ups and SNMP access of the console.
 * Texts it returns are released with KXFreeResources unless stated otherwise.
 */
#ifndef KX_COMPANION_LIBKXSNMP_H
#define KX_COMPANION_LIBKXSNMP_H

#include "kx_api.h"

KX_EXTERN_C_BEGIN

/* Makes path the directory of the MIB files for later look-ups (a copy is
 * kept; an empty path clears it). Returns 0, or -1 for a NULL path. */
KX_API int KXSetMibPath(const char *path);

/* The configured MIB directory, or NULL when none is set. The text belongs to
 * the library and stays valid until the next KXSetMibPath. */
KX_API const char *KXGetMibPath(void);

KX_EXTERN_C_END

#endif
