// Replaced at merge: the blade discovery's KXDetermineBladeProperties, which
// the trap list calls to name the chassis of a blade. Until then a stub that
// reports "not a blade" (trap/blade_pending.cc).
#ifndef KX_TRAP_BLADE_PENDING_H
#define KX_TRAP_BLADE_PENDING_H

#include "companion/libDBAsciiAccess.h"
#include "kx_api.h"

KX_EXTERN_C_BEGIN

/* Replaced at merge. The blade property list: one malloc'd block of five
 * words followed by the texts they point to, released with one free. */
typedef struct KXBladeProperties {
    char *Type;
    char *ServerName;
    char *ChassisName;
    char *SystemName;
    int BladeMark; /* 1: a blade of a chassis; 0: not all entries are; -1: not asked */
} KXBladeProperties;

/* Replaced at merge. 0 when netAddress belongs to no blade system, the
 * number of its entries when it does; negative codes for bad arguments and
 * database failures. *properties (when given) is set to NULL first. */
int KXDetermineBladeProperties(const char *dbFile, const char *netAddress, DBAsciiAccessDatabase **dbHandle,
                               KXBladeProperties **properties);

KX_EXTERN_C_END

#endif
