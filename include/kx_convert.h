/*
 * Conversion functions: the table of named conversions that placeholders
 * apply to values, and their handlers.
 *
 * Texts are NUL-terminated byte strings. "A heap text" is allocated with
 * malloc and belongs to the caller, who releases it with free().
 */
#ifndef KX_CONVERT_H
#define KX_CONVERT_H

#include "kx_input.h"

KX_EXTERN_C_BEGIN

/* --- dispatch and table ------------------------------------------------- */

/* --- arithmetic and number formatting ----------------------------------- */

/* --- string conversions ------------------------------------------------- */

/* --- time conversions --------------------------------------------------- */

KX_EXTERN_C_END

#endif
