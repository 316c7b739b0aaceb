/*
 * libKXmbcs: string functions that step over whole characters of the
 * multibyte encoding of the current locale (LC_CTYPE; in the "C" locale
 * every byte is a character). A byte that starts no valid character counts
 * as a character of its own. Results point into the caller's text.
 */
#ifndef KX_COMPANION_LIBKXMBCS_H
#define KX_COMPANION_LIBKXMBCS_H

#include <stddef.h>

#include "kx_api.h"

KX_EXTERN_C_BEGIN

/* First (_mbschr) or last (_mbsrchr) character of text equal to the byte
 * character; NULL when there is none or text is NULL. A character of 0
 * finds the terminating NUL. */
KX_API char *_mbschr(const char *text, unsigned int character);
KX_API char *_mbsrchr(const char *text, unsigned int character);

/* Start of the first occurrence of needle in text that begins on a
 * character boundary; text for an empty needle; NULL when there is none or
 * an argument is NULL. */
KX_API char *_mbsstr(const char *text, const char *needle);

/* Comparisons with the results of strcmp: byte for byte (_mbscmp), ASCII
 * letters of single-byte characters without regard to case (_mbsicmp), at
 * most count bytes (_mbsnbcmp). A NULL text sorts before every text. */
KX_API int _mbscmp(const char *a, const char *b);
KX_API int _mbsicmp(const char *a, const char *b);
KX_API int _mbsnbcmp(const char *a, const char *b, size_t count);

KX_EXTERN_C_END

#endif
