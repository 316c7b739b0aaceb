// REPLACED AT MERGE: operations that other parts of the system provide (the
// lock files and directory listings of the utility library, UtilsReadFile of
// the profile files). Declared here with their signatures so that the file
// and program conversions can call them; the lead deletes this header and
// convert/pending.cc when the real ones arrive.
#ifndef KX_CONVERT_PENDING_H
#define KX_CONVERT_PENDING_H

extern "C" {

// Negative when the lock file at lockPath is held by someone else.
int FileIsLocked(const char *lockPath, int seconds, int retries);
// 0 when the lock file was created.
int CreateLockFile(const char *lockPath);
// Removes the lock file.
int ReleaseLockFile(const char *lockPath);
// The names in directory ("" for the current one) that match expression, in
// *list as one block (one KXUtilsFreeResources releases it), their number in
// *count. Returns 0, -1 on failure.
int ListDirectory(const char *directory, int reserved1, int reserved2, int withPath, int reserved3,
                  char **expression, int *count, char ***list);
// The same for several directories; returns the number of entries.
int CreateFileList(char ***list, char **directories, int directoryCount, const char *expression,
                   int withPath, int sorted);
// The file's lines without those holding one of the exclusions; a heap text
// (NULL for an empty or unreadable file), its length in *length.
char *UtilsReadFile(const char *path, int *length, char **exclusions, int exclusionCount);

}  // extern "C"

#endif
