/*
 * libKXUtils: file, directory and process utilities of the console.
 * Texts it returns are released with KXUtilsFreeResources.
 */
#ifndef KX_COMPANION_LIBKXUTILS_H
#define KX_COMPANION_LIBKXUTILS_H

#include "kx_api.h"

KX_EXTERN_C_BEGIN

/* Pointer into path to its base name (after the last "/" or "\\"); path
 * itself when it has no directory part. flag is reserved (0). */
KX_API const char *KXUtilsBasename(const char *path, int flag);

/* 0 when path names an existing file or directory, -1 otherwise. */
KX_API int KXUtilsFileExists(const char *path);

/* Size of the file at path in bytes; -1 when it cannot be determined. */
KX_API long KXUtilsFileSize(const char *path);

/* Reads the ini file at path: lines "name=value" (the name ends at the
 * first "=", the value runs to the line end, nothing is trimmed), "[name]"
 * lines opening sections; other lines are ignored. A name inside a section
 * is qualified as section + separator + name (separator 0: not qualified).
 * section NULL: the whole file, names qualified; section given: only the
 * pairs of that section, names plain. key NULL: every pair; key given: the
 * first pair of that (qualified, resp. plain) name.
 * *pairs receives one block holding 2n text pointers, name and value by
 * turns (pairs[2i], pairs[2i + 1]), released with KXUtilsFreeResources;
 * NULL when nothing was found. Returns n, or -1 when the file cannot be read.
 * flags and reserved must be 0. */
KX_API int KXUtilsReadIniFile(const char *path, const char *section, int flags, char separator,
                              const char *key, char ***pairs, int reserved);

/* A new text with every occurrence of from (not empty) in text replaced by
 * to, released with KXUtilsFreeResources; NULL for a NULL text or from or
 * when memory runs out. */
KX_API char *KXUtilsStringReplace(const char *text, const char *from, const char *to);

/* Releases a text or block that a KXUtils operation returned; NULL is fine. */
KX_API void KXUtilsFreeResources(void *resource);

/* Pointer into text to the last occurrence of needle (an empty needle: the
 * text's terminating NUL); NULL when there is none or an argument is NULL. */
KX_API char *KXUtils_strrstr(const char *text, const char *needle);

KX_EXTERN_C_END

#endif
