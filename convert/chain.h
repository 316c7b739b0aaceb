// A conversion chain found once and applied later. An inline control's
// branch asks where its chain starts (DetermineConversion), computes the value
// to convert, and converts it along the chain (ConvertIt), which would find
// the chain's first link in the same text again.
#ifndef KX_CONVERT_CHAIN_H
#define KX_CONVERT_CHAIN_H

#include "kx_convert.h"

namespace kx::convert {

// One conversion of a chain: its row, its argument and the "." ending it.
struct Link {
    const KonvertierungsEintrag *row = nullptr;
    char *argument = nullptr;
    char *dot = nullptr;
};

// What DetermineConversion answers for a text, with the first link it found.
struct FoundChain {
    char *name = nullptr;   // the name after the chain, or the text itself
    char *start = nullptr;  // the "_" that starts the chain (or "_this"), or NULL
    Link first;             // the chain's first link; no row when it has none
};

// DetermineConversion(text, &start), keeping the first link.
FoundChain FindChain(char *text);

// ConvertIt(text, KX_CONVERT_UNBOUNDED, value, 1, cycleIndex) for the text
// FindChain was given, which must be unchanged since.
char *ConvertFound(const FoundChain &found, char *value, int cycleIndex);

}  // namespace kx::convert

#endif
