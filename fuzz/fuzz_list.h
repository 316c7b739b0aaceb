// Releasing the input lists the fuzz targets build, so that nothing one
// input declares reaches the next and nothing leaks.
#ifndef KX_FUZZ_FUZZ_LIST_H
#define KX_FUZZ_FUZZ_LIST_H

#include <cstdlib>

#include "kx_input.h"
#include "kx_list.h"

namespace kx::fuzz {

// Frees every entry's texts and the array, and empties the list.
inline void FreeList(EingabeElement *&list, int &count) {
    KXFreeEingabeList(list, count);
    list = nullptr;
    count = 0;
}

// Forgets the keyword indices that pointed into a released list.
inline void ForgetKeywords() {
    for (int row = 0; row < SchluesselworteAnzahl; ++row) *Schluesselworte[row].Index = -1;
}

}  // namespace kx::fuzz

#endif
