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

/* Comparisons behind the condition types of inline controls. Each takes
 * (left, right), returns 1 when the relation named by its operator holds and
 * 0 when it does not; a NULL text counts as the empty text.
 * TextCompare*: byte for byte, bytes as unsigned (the order of strcmp).
 * TextCompare*i: the same, ASCII letters without regard to case.
 * TextCompare*N, *Ni: only the first strlen(right) bytes of left take part,
 *   so "Equal" means "left begins with right" and an empty right text equals
 *   every left text.
 * NumericCompare*: the texts are decimal numbers (sign, digits, fraction,
 *   exponent; blanks and tabs around them ignored), integers exact to 64 bits.
 *   A text that is no number (empty, "abc", "12abc", out of double range) has
 *   no order: only NotEqual holds for it. */
KX_API int TextCompareEqual(const char *left, const char *right);
KX_API int TextCompareNotEqual(const char *left, const char *right);
KX_API int TextCompareLowerEqual(const char *left, const char *right);
KX_API int TextCompareGreaterEqual(const char *left, const char *right);
KX_API int TextCompareLower(const char *left, const char *right);
KX_API int TextCompareGreater(const char *left, const char *right);
KX_API int TextCompareEquali(const char *left, const char *right);
KX_API int TextCompareNotEquali(const char *left, const char *right);
KX_API int TextCompareLowerEquali(const char *left, const char *right);
KX_API int TextCompareGreaterEquali(const char *left, const char *right);
KX_API int TextCompareLoweri(const char *left, const char *right);
KX_API int TextCompareGreateri(const char *left, const char *right);
KX_API int TextCompareEqualN(const char *left, const char *right);
KX_API int TextCompareNotEqualN(const char *left, const char *right);
KX_API int TextCompareLowerEqualN(const char *left, const char *right);
KX_API int TextCompareGreaterEqualN(const char *left, const char *right);
KX_API int TextCompareLowerN(const char *left, const char *right);
KX_API int TextCompareGreaterN(const char *left, const char *right);
KX_API int TextCompareEqualNi(const char *left, const char *right);
KX_API int TextCompareNotEqualNi(const char *left, const char *right);
KX_API int TextCompareLowerEqualNi(const char *left, const char *right);
KX_API int TextCompareGreaterEqualNi(const char *left, const char *right);
KX_API int TextCompareLowerNi(const char *left, const char *right);
KX_API int TextCompareGreaterNi(const char *left, const char *right);
KX_API int NumericCompareEqual(const char *left, const char *right);
KX_API int NumericCompareNotEqual(const char *left, const char *right);
KX_API int NumericCompareLowerEqual(const char *left, const char *right);
KX_API int NumericCompareGreaterEqual(const char *left, const char *right);
KX_API int NumericCompareLower(const char *left, const char *right);
KX_API int NumericCompareGreater(const char *left, const char *right);

KX_EXTERN_C_END

#endif
