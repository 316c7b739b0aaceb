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

/* The byte offset of the first occurrence of the first length bytes of word
 * in the file at path outside comments: a comment begins with the text
 * comment (NULL or "": none) and ends at the next comment mark or line end,
 * as in ASN.1. -1 when there is none; -2 when the file cannot be read or
 * path or word is NULL or length is below 1. flags, reserved1 and
 * reserved2 are 0. */
KX_API int KXUtilsSearchInFile(const char *path, int length, const char *word, int flags, const char *comment,
                               int reserved1, int reserved2);

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
 * temporary file "." + file name + ".XXXXXX.tmp" in the same directory is
 * written and renamed over it, and keeps the old file's permissions; such
 * temporary files left by a writer that died are removed by the next write.
 * A symbolic link is written through: its target is replaced, in the
 * target's directory. A file without write permission (for this process, or
 * with no write bit at all) is not replaced: -1 with EACCES. Returns 1 on
 * success; -1 on failure, with the file untouched and *errorCode /
 * *errorText as for KXUtilsReadFileToMemoryErrorOutput. The write takes no
 * lock: callers that read, change and write serialise that themselves. */
KX_API int KXUtilsWriteMemoryToFileErrorOutput(const char *path, const char *text, int length,
                                               int *errorCode, char **errorText);

/* The value of the first "name=value" pair of the name/value file at path
 * (inih rules: names and values trimmed of blanks, ";" and "#" lines are
 * comments, ":" also assigns, lines of up to 200 bytes), as a heap text
 * released with KXUtilsFreeResources; NULL when the file cannot be read, has
 * no such name, or memory runs out. reserved must be 0. */
KX_API char *KXUtilsGetValueFromName(const char *path, const char *name, int reserved);

/* Releases what the operations of this library returned; NULL is ignored. */
KX_API void KXUtilsFreeResources(void *resource);

/* Pointer into text to the last occurrence of needle (an empty needle: the
 * text's terminating NUL); NULL when there is none or an argument is NULL. */
KX_API char *KXUtils_strrstr(const char *text, const char *needle);

/* --- files, temporary names, programs and the network ------------------ */

/* Removes the file at path. 0 on success; -1 for a NULL or empty path, else
 * the negated errno value. */
KX_API int KXUtilsDeleteFile(const char *path);

/* Creates the directory path (one level). 0 when it was created or is there
 * already; -1 for a NULL or empty path, else the negated errno value. */
KX_API int KXUtilsCreateDirectory(const char *path);

/* KXUtilsReadFileToMemoryErrorOutput without the error outputs: the number of
 * bytes read, or the negated errno value with *buffer NULL. */
KX_API int KXUtilsReadFileToMemory(const char *path, char **buffer);

/* KXUtilsWriteMemoryToFileErrorOutput without the error outputs: the number
 * of bytes written (1 for an empty text), or the negated errno value with the
 * file untouched. */
KX_API int KXUtilsWriteMemoryToFile2(const char *path, const char *text, int length);

/* The temporary directory: a copy of directory when one is given (not
 * empty), else "/tmp". Release it with KXUtilsFreeResources; NULL when
 * memory runs out. */
KX_API char *KXUtilsTempDirectory(const char *directory);

/* A new file name in directory ("/tmp" for NULL or empty) that no file had:
 * the file is created empty (mode 0600) so that nobody else can take the
 * name. Release the text with KXUtilsFreeResources; NULL when no file can be
 * created there. */
KX_API char *KXUtilsTempFileName(const char *directory);

/* Runs argv[0] (searched in PATH when it holds no "/") with the first argc
 * texts of argv as its argument vector, never through a shell, and waits
 * for it. Its standard input is /dev/null; it shares standard output. mode must be "synchron". seconds limits the run (0: 30 seconds);
 * a program still running then is killed with everything it started. The
 * child is always reaped. Returns its exit status; -1 when it cannot be
 * started, dies of a signal or is killed at the limit, or for another mode. */
KX_API int KXUtilsStartProgram(const char *mode, int argc, char **argv, int seconds);

/* Sends up to count ICMP echo requests to host (a name or an IPv4 or IPv6
 * address), each waiting timeoutMs (0 or less: 1000) for its reply. size,
 * ttl and flags are reserved (-1, -1, 0). Returns 0 when the host answered,
 * 1 when it did not, -1 when the host does not resolve or no ICMP socket
 * can be opened. Safe to call from several threads at once. */
KX_API int KXUtilsPing(const char *host, int count, int timeoutMs, int size, int ttl, int flags);

/* The name of a numeric IPv4 or IPv6 address (reverse look-up), or NULL when
 * it has none or the text is no address. Release it with
 * KXUtilsFreeResources. Safe to call from several threads at once. */
KX_API char *_GetHostnameByNetAddress(const char *address);

/* The numeric address of a host name (its IPv4 address when it has one,
 * else its IPv6 address), or NULL when it does not resolve. Release it with
 * KXUtilsFreeResources. */
KX_API char *_GetNetAddressByHostname(const char *name);

/* ------------------------------------------------------------------------
 * Directory listings, file removal and lock files
 * ------------------------------------------------------------------------ */

/* A list of texts handed out by the listing operations is ONE block: count
 * text pointers, a NULL pointer, then the texts themselves. A single
 * KXUtilsFreeResources(list) releases it all. */

/* Lists the entries of directory ("" or NULL: the current directory) whose
 * whole name matches at least one of the expressionCount POSIX extended
 * regular expressions (the expression describes the whole name, as if it
 * stood between "^(" and ")$"; an expression that does not compile matches
 * nothing). Directories are listed only when withDirectories is non-zero;
 * hidden names (beginning with ".") never. The names of each directory come
 * in byte order. withPath non-zero gives directory + "/" + name, else
 * the name alone. reserved must be 0. *count receives the number of entries
 * and *list the block described above, or NULL when nothing matched.
 * Returns 0; -1 when the directory cannot be read or memory runs out (then
 * *count is 0 and *list NULL). */
KX_API int ListDirectory(const char *directory, int reserved, int withDirectories, int withPath,
                         int expressionCount, const char *const *expressions, int *count,
                         char ***list);

/* ListDirectory over directoryCount directories and one expression, the
 * entries of one directory after those of the one before. filesOnly non-zero
 * lists files only (the trap listings); 0 lists directories as well (a
 * user's directory lists its user ids, a page folder its subfolders).
 * withPath as for ListDirectory. *list receives the block described above
 * (NULL when nothing matched). Returns the number of entries; 0 when nothing
 * matched, a directory cannot be read (it is passed over) or memory runs
 * out. */
KX_API int CreateFileList(char ***list, const char *const *directories, int directoryCount,
                          const char *expression, int withPath, int filesOnly);

/* Lock files: a lock is a file that exists. CreateLockFile makes it with
 * O_CREAT|O_EXCL, so of several processes exactly one succeeds, and writes
 * the creating process's id into it.
 * Returns 0 when this call created the lock; -1 when it exists already or
 * cannot be created. */
KX_API int CreateLockFile(const char *lockPath);

/* Whether the lock at lockPath is held. Returns 0 when there is no lock,
 * 1 when this process holds it, -1 when another living process holds it.
 * A lock left behind by a process that died is removed and reported as no
 * lock (0): its recorded process no longer exists, or it records none and
 * is older than staleSeconds (negative: 10 seconds). waitMilliseconds > 0
 * waits up to that long for a foreign lock to go; otherwise there is no
 * wait. */
KX_API int FileIsLocked(const char *lockPath, int waitMilliseconds, int staleSeconds);

/* Removes the lock file. 0 on success, -1 when there was none. */
KX_API int ReleaseLockFile(const char *lockPath);

KX_EXTERN_C_END

#endif
