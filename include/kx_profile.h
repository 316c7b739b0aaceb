/*
 * Profiles, user files and ini persistence: ini-style files whose keys are
 * input entries, user ids and the user file tree below the application
 * directory, reworking value lists, and sort tables.
 *
 * Texts are NUL-terminated byte strings. "A heap text" is allocated with
 * malloc and belongs to the caller, who releases it with free(). Failures
 * are also written into the input entry "ErrorText" where it is declared.
 * Every file these operations write is replaced whole (a temporary file in
 * the same directory, flushed, renamed), under a lock beside it.
 *
 * Memory: an operation that returns a heap text returns NULL when that text
 * cannot be allocated; a list or file operation whose working memory runs
 * out fails as it would on an unreadable or unwritable file (-1, nothing
 * written). */
#ifndef KX_PROFILE_H
#define KX_PROFILE_H

#include <stdio.h>

#include "kx_api.h"
#include "kx_input.h"

KX_EXTERN_C_BEGIN

/* ------------------------------------------------------------------------
 * Ini files
 * ------------------------------------------------------------------------ */

/* Loads the ini file at path (NULL: the current user's profile file, see
 * CreateUIDFIle) into the list: line 1 is the divider, each "name=values"
 * line sets the declared entry name to its values split at the divider.
 * Returns 0 (also when there is no profile to read), -1 when the file cannot
 * be opened ("ErrorText": "Open: OpenUIDFile <path> fails!"). Entries set
 * before a failure stay set. Nothing is allocated for the caller. */
KX_API int ReadIniFile(int count, EingabeElement *list, const char *path);

/* Writes the entries named in names (nameCount of them, in that order; those
 * undeclared or without values are skipped) into the file at path (NULL: the
 * current user's profile file, its directory created). mode "w" writes a new
 * file beginning with the divider line; "a" appends, taking the divider from
 * the file's first line when divider is NULL. When stream is given it
 * receives a stream on the file for the caller to go on writing and to
 * fclose (the file is replaced again with all that was written at each
 * flush and at fclose; the lock is held until fclose); otherwise NULL. When
 * pathOut is given it receives a heap copy of the path written (NULL on the
 * early failures). Returns 0, or -1 with the message in "ErrorText"; the
 * file is then unchanged. */
KX_API int WriteIniFile(int count, EingabeElement *list, const char *divider, const char *mode,
                        int nameCount, const char **names, const char *path, FILE **stream,
                        char **pathOut);

/* A heap text holding the lines of the file at path that contain none of
 * the exclusionCount texts of exclusions (NULL and empty texts are passed
 * over), each line ended by one LF (CR LF becomes LF). *length (when given)
 * receives its byte count. NULL for a missing or empty file or when memory
 * runs out (*length is then 0). */
KX_API char *UtilsReadFile(const char *path, int *length, const char **exclusions,
                           int exclusionCount);

/* ------------------------------------------------------------------------
 * User ids, user directories and profiles
 * ------------------------------------------------------------------------ */

/* The user id: the number in the entry "UserID" when it is 1 or more;
 * otherwise a new id taken from the counter file "uids" of the application
 * directory (under a lock, so concurrent processes never get the same id),
 * stored into "UserID", its user directory created. -1 when the counter
 * cannot be written ("UserID" then holds "-1") or "UserID" is not declared
 * (nothing is touched then). */
KX_API int CreateUID(int count, EingabeElement *list);

/* *profile receives the entry's own text (not a copy) of "NewProfile" when
 * not empty, else of "Profile" when not empty, else NULL. Returns the number
 * of blank, tab and 0xA0 bytes at its start (0 for NULL). */
KX_API int ValidateProfile(int count, EingabeElement *list, char **profile);

/* Fills buffer (KX_PATH_SIZE bytes) with the path of the current user's
 * directory as found by SearchForFile, or the empty text when it is not
 * found or the user id is not a plain name. */
KX_API void CreateUIDFIleDirectoryname(int count, EingabeElement *list, char *buffer);

/* *path receives a heap copy of the current profile file's path (user
 * directory + "/" + profile) and the result is 0. With create non-zero the
 * user directory (and "Traps" for the application "SnmpTrap") is created
 * first; a creation failure returns its errno value. -1 (and *path NULL)
 * when there is no profile, a blank one, one that is not a plain name, or no
 * user directory. */
KX_API int CreateUIDFIle(int count, EingabeElement *list, int create, char **path);

/* Writes the user file for the entry name (its file: user directory
 * [+ "/Traps"] + "/" + name + profile): the divider line, the line of name,
 * then the lines of the nameCount entries of names, replaced as one file.
 * *pathOut (when given) receives a heap copy of its path. Returns 0 when
 * name is undeclared or empty (nothing written), the result of the write
 * (0 or -1), or the errno value of a directory creation. */
KX_API int WriteNamedUIDFile(int count, EingabeElement *list, const char *name,
                             const char *divider, int nameCount, const char **names,
                             char **pathOut);

/* Reads the user file of name (falling back to the file without the profile
 * part) with ReadIniFile and returns its result; 0 when name is not
 * declared; -1 when a name part would leave the user directory. */
KX_API int ReadNamedUIDFile(int count, EingabeElement *list, const char *name);

/* Deletes the user file of name: 0, or -1 when it cannot be deleted or a
 * name part would leave the user directory. */
KX_API int DeleteNamedUIDFile(int count, EingabeElement *list, const char *name);

/* Lists with CreateFileList (release *files with KXUtilsFreeResources; NULL
 * when nothing is listed): the entries of the application directory's
 * "uid" folder, of one user's directory, or of its "ArchiveData" folder.
 * userId NULL means the current "UserID". Return the number of names; 0
 * without a user id or for one that is not a plain name. */
KX_API int CreateUIDFileList(int count, EingabeElement *list, char ***files);
KX_API int CreateProfileFileList(int count, EingabeElement *list, char ***files,
                                 const char *userId);
KX_API int CreateArchiveDataFileList(int count, EingabeElement *list, char ***files,
                                     const char *userId);

/* Fills buffer (KX_PATH_SIZE bytes) with the user's archive directory, or
 * the empty text without a (plain) user id. */
KX_API void CreateArchiveDataFileDirectory(int count, EingabeElement *list, char *buffer,
                                           const char *userId);

/* ------------------------------------------------------------------------
 * Check-in and value lists
 * ------------------------------------------------------------------------ */

/* Translates the numbers among name's values into key texts from the user
 * file fileName (key entry 0: numbers; entries 1 .. keyCount-1: their texts,
 * joined by "_"). Returns the index of name (count when not declared). */
KX_API int CheckInHandling(int count, EingabeElement *list, const char *name,
                           const char *fileName, const char *divider, const char **keyNames,
                           int keyCount);

/* A heap text: all of name's values joined by divider; NULL when name is
 * not declared, has no value, or memory runs out. */
KX_API char *ConvertToStream(int count, EingabeElement *list, const char *name,
                             const char *divider);

/* A heap text: the valueCount NUL-terminated texts of values joined again by
 * divider, with the column groups between start and end reshaped (columns
 * at removePositions dropped or kept with ",", fillers where markers skip).
 * NULL when values is NULL, valueCount < 1 or memory runs out. */
KX_API char *ConvertToStream2(const char *values, int valueCount, const char *divider,
                              int removeCount, const int *removePositions, int start, int end,
                              int step, int groupSize, const char *markers, int keep);

/* Merges the joined list newValues (split at divider) into name's values:
 * "Mibname" as a case-insensitive ordered merge with "sc.mib" first, other
 * entries by appending the values not yet there. Returns name's index
 * (count when not declared). */
KX_API int MergeElementValue(int count, EingabeElement *list, const char *name,
                             const char *newValues, const char *divider);

/* Appends errorText (when given) to "ErrorText" and sets "ListeningCheck",
 * "ListeningAction", "Listening" and "ProcessID" (NULL clears). Returns 0,
 * or minus the sum of the weights 1, 2, 4, 8, 16 of the missing entries. */
KX_API int SetListeningEingabeWerte(int count, EingabeElement *list, const char *errorText,
                                    const char *check, const char *action,
                                    const char *listening, const char *processId);

/* Cut text in place at marker and point *after (and *second) into it: 0
 * when cut, 1 when the marker (or a second one) is missing. */
KX_API int AnalyzeLeafIDCheck(char *text, const char *marker, char **after, char **second);
KX_API int AnalyzeTrapNameCheck(char *text, const char *marker, char **after);

/* ------------------------------------------------------------------------
 * Sort tables
 * ------------------------------------------------------------------------ */

/* One item of a sort table. */
typedef struct SortTableEntry {
    int First;         /* caller's value, stored unchanged */
    int ListCount;     /* number of lists */
    char **Values;     /* the item's value in each list */
    int Position;      /* position before sorting */
    int Second;        /* caller's value, stored unchanged */
} SortTableEntry;

/* Builds one item per value of the n joined lists (split at separator) into
 * *table (an array of item pointers). Returns the number of items; 0 with
 * *table NULL when lists or separator is NULL or memory runs out. Release
 * with FreeSortTable. */
KX_API int CreateSortTable(const char **lists, int n, const char *separator,
                           SortTableEntry ***table, int first, int second);

/* Frees the table and everything it owns; returns 0. */
KX_API int FreeSortTable(int count, SortTableEntry **table);

/* Takes over the heap text list (freed here) and returns a new heap text
 * with its values in table order; NULL when list is NULL or memory runs out. */
KX_API char *SortText(char *list, const char *separator, SortTableEntry **table, int count);

KX_EXTERN_C_END

#endif
