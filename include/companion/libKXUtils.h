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

/* Pointer into text to the last occurrence of needle (an empty needle: the
 * text's terminating NUL); NULL when there is none or an argument is NULL. */
KX_API char *KXUtils_strrstr(const char *text, const char *needle);

KX_EXTERN_C_END

#endif
