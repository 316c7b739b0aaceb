/* The console's trap page: see traps.c. */
#ifndef KX_EXAMPLES_CONSOLE_TRAPS_H
#define KX_EXAMPLES_CONSOLE_TRAPS_H

#include "kx_input.h"

/* Carries out the request's trap action and fills the trap page's entries
 * of the list. */
void TrapPage(EingabeElement *list, int count);

#endif
