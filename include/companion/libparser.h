/*
 * libparser: text scanning and comparison services of the console.
 * Positions are byte offsets into NUL-terminated texts; a set is the first
 * setLength bytes of set, so a setLength one past the visible characters
 * takes the terminating NUL into the set.
 */
#ifndef KX_COMPANION_LIBPARSER_H
#define KX_COMPANION_LIBPARSER_H

#include <stddef.h>

#include "kx_api.h"

KX_EXTERN_C_BEGIN

/* Index within set of the byte at text[*position], or -1 when it is none of
 * them. The position is not moved. */
KX_API int InhaltGleichZeichen(const char *text, const int *position, const char *set, int setLength);

/* Advances *position over bytes that belong to set, never past the end of
 * the text. Returns the number of bytes skipped. */
KX_API int UeberleseZeichen(const char *text, int *position, const char *set, int setLength);

/* Moves *position backwards over bytes that belong to set, never below
 * start: afterwards text[*position] is not in set, or *position == start.
 * Returns the number of bytes skipped. */
KX_API int UeberleseZeichenRueckwaerts(const char *text, int *position, const char *set,
                                       int setLength, int start);

/* Advances *position to the first byte that belongs to set. Returns that
 * byte's index in set, or -1 when the end of the text came first (the
 * position then stands on the terminating NUL). */
KX_API int PositioniereAufZeichen(const char *text, int *position, const char *set, int setLength);

/* Moves *position backwards to the nearest byte that belongs to set, never
 * below start. Returns its index in set, or -1 when none was found (the
 * position then equals start). */
KX_API int PositioniereAufZeichenRueckwaerts(const char *text, int *position, const char *set,
                                             int setLength, int start);

/* Matches the POSIX extended regular expression at the start of text.
 * Returns the length of the match, or a negative value when there is none
 * (an expression that does not compile matches nothing). */
KX_API int Wertuebereinstimmung(const char *text, const char *expression);

/* A heap text of length bytes of text plus a NUL; NULL when memory runs out. */
KX_API char *ErzeugeText(const char *text, int length);

/* Turn text to lower or upper case in place (ASCII letters); return text. */
KX_API char *KonvertiereZuKleinbuchstaben(char *text);
KX_API char *KonvertiereZuGrossbuchstaben(char *text);

/* Case-insensitive comparisons (ASCII letters), results as strcmp's. */
KX_API int stricmp(const char *a, const char *b);
KX_API int strnicmp(const char *a, const char *b, size_t n);
KX_API int memicmp(const void *a, const void *b, size_t n);

KX_EXTERN_C_END

#endif
