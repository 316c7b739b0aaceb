/*
 * Page template engine: the template processor, conditions and comparisons,
 * value assignment, placeholder values and cycle blocks.
 *
 * Texts are NUL-terminated byte strings. "A heap text" is allocated with
 * malloc and belongs to the caller, who releases it with free().
 */
#ifndef KX_TEMPLATE_H
#define KX_TEMPLATE_H

#include "kx_input.h"

KX_EXTERN_C_BEGIN

/* --- template processor ------------------------------------------------- */

/* --- conditions and comparisons ----------------------------------------- */

/* --- value assignment --------------------------------------------------- */

/* --- placeholder values ------------------------------------------------- */

/* --- cycle blocks ------------------------------------------------------- */

KX_EXTERN_C_END

#endif
