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

/* Reads the whole file at path into a new heap buffer, NUL-terminated after
 * the bytes read (*buffer; release it with KXUtilsFreeResources). Returns the
 * number of bytes read. On failure returns -1 with *buffer NULL; then
 * *errorCode (when given) holds the errno value and *errorText (when given) a
 * heap message to release with KXUtilsFreeResources. On success *errorCode is
 * 0 and *errorText NULL. */
KX_API int KXUtilsReadFileToMemoryErrorOutput(const char *path, char **buffer, int *errorCode,
                                              char **errorText);

/* A new heap text: frontLength bytes of front, middleLength bytes of middle,
 * backLength bytes of back, then a NUL. A NULL part or a length of 0 or less
 * (-1 for a NULL middle) leaves that part out. NULL when memory runs out.
 * Release it with KXUtilsFreeResources. */
KX_API char *KXUtilsAppendText(const char *front, int frontLength, const char *back, int backLength,
                               const char *middle, int middleLength);

/* Makes the first length bytes of text (all of it up to its NUL when length is
 * 0) the new content of the file at path. The file is replaced as a whole: a
 * temporary file in the same directory is written and renamed over it, and
 * keeps the old file's permissions. Returns 1 on success; -1 on failure, with
 * the file untouched and *errorCode / *errorText as for
 * KXUtilsReadFileToMemoryErrorOutput. */
KX_API int KXUtilsWriteMemoryToFileErrorOutput(const char *path, const char *text, int length,
                                               int *errorCode, char **errorText);

/* Lists the entries of the directoryCount directories (an empty path: the
 * current directory) whose names match the POSIX extended regular expression
 * (anywhere in the name; anchor with "^" and "$" for the whole name). Names
 * beginning with "." are left out. Each directory's names come sorted; with
 * withPath non-zero each carries its directory and "/". *list receives one
 * block of the name pointers followed by a NULL pointer, released with one
 * KXUtilsFreeResources; NULL when nothing matched. Returns the number of
 * names; 0 also for an expression that does not compile. reserved must be 0. */
KX_API int CreateFileList(char ***list, char *const *directories, int directoryCount,
                          const char *expression, int withPath, int reserved);

/* The value of the first "name=value" pair of the name/value file at path
 * (inih rules: names and values trimmed of blanks, ";" and "#" lines are
 * comments, ":" also assigns, lines of up to 200 bytes), as a heap text
 * released with KXUtilsFreeResources; NULL when the file cannot be read, has
 * no such name, or memory runs out. reserved must be 0. */
KX_API char *KXUtilsGetValueFromName(const char *path, const char *name, int reserved);

/* Deletes the file at path: 0, or -1 when it cannot be deleted. */
KX_API int KXUtilsDeleteFile(const char *path);

/* Releases what the operations of this library returned; NULL is ignored. */
KX_API void KXUtilsFreeResources(void *resource);

/* Pointer into text to the last occurrence of needle (an empty needle: the
 * text's terminating NUL); NULL when there is none or an argument is NULL. */
KX_API char *KXUtils_strrstr(const char *text, const char *needle);

KX_EXTERN_C_END

#endif
