/* Small helpers for the programs that call the library: releasing an input
 * list they own and telling a definition text from an application name.
 * Both are static inline here, so the library exports no name for them. */
#ifndef KX_LIST_H
#define KX_LIST_H

#include <stdlib.h>

#include "kx_input.h"

/* The first bytes that make the definition argument of ErmittleEingabe and
 * ErmittleEingabe2 a definition text in memory rather than an application
 * name. An application name taken from a request must not begin with one. */
#define KX_DEFINITION_MARKERS "~| &%$\xA7!\"^#"

/* Frees the Name, Wert and Vorgabe of each of the count entries and then the
 * array itself, as ErmittleEingabe, AppendToEingabe and WertzuweisungEingabe
 * allocated them. A NULL list with count 0 is fine. Returns nothing; the
 * list must not be used after. */
static inline void KXFreeEingabeList(EingabeElement *list, int count) {
    for (int i = 0; i < count; ++i) {
        free(list[i].Name);
        free(list[i].Wert);
        free(list[i].Vorgabe);
    }
    free(list);
}

#endif
