/* The exported headers are C headers: this file is compiled as C. */
#include <stddef.h>
#include "kx_input.h"
#include "kx_template.h"
#include "kx_list.h"
#include "kx_convert.h"
#include "kx_trap.h"
#include "kx_profile.h"
#include "kx_inventory.h"
#include "companion/libForwarding.h"
#include "companion/libKXUtils.h"
#include "companion/libparser.h"
#include "companion/libKXsnmp.h"
#include "companion/libKXsnmp_names.h"
#include "companion/libKXsnmp_traps.h"
#include "companion/libSnmpFile.h"
#include "companion/libDBAsciiAccess.h"
#include "companion/libKXmbcs.h"

/* A C caller sees the records as plain structs. */
int kx_c_entry_size(void) { return (int)sizeof(EingabeElement); }
int kx_c_trap_pair_size(void) { return (int)sizeof(TrapTimePair) + (int)sizeof(FwdValRow); }

/* The trap description is 23 words on a 32-bit target; here its pointer
 * words are wider, so only its member order is checked. */
int kx_c_trap_description_severity_word(void) {
    return (int)(offsetof(KXTrapDescription, Reserved17) > offsetof(KXTrapDescription, Severity));
}

/* TrapCache is an array of plain (OID, MIB file) pairs. */
int kx_c_trap_cache_entry_size(void) { return (int)sizeof(TrapCacheEntry); }
