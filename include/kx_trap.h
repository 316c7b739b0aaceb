/*
 * The trap store: the directory of received traps, trap file names and
 * their parser, acknowledging and forwarding states changed by renaming
 * under a lock file, MIB tags put into names, and pruning by age and number.
 *
 * A trap file's base name (see docs/formats.md):
 *   T<enterprise>[l<L>n<MIB name of L characters>]_<generic>_<specific>_
 *   <a>_<b>_<c>_<d>_<server>_<9 state characters>.<unique identifier>
 * The unique identifier is the arrival time in seconds since 1970 and stays
 * the same through every rename.
 *
 * "A heap text" is allocated with malloc and released by the caller with
 * free(). Functions that return int return 0 on success unless said
 * otherwise.
 */
#ifndef KX_TRAP_H
#define KX_TRAP_H

#include <stdint.h>

#include "companion/libKXsnmp_names.h"
#include "companion/libKXsnmp_traps.h"
#include "companion/libSnmpFile.h"
#include "kx_api.h"
#include "kx_input.h"

KX_EXTERN_C_BEGIN

/* ------------------------------------------------------------------------
 * Process-wide state
 * ------------------------------------------------------------------------ */

/* Directory of the trap files and path of the server-list database file;
 * empty until KXDetermineDirectories fills them. */
KX_API extern char TrapsDirectory[1024];
KX_API extern char DBDirectory[1024];

/* The list made by KXListTrapfiles: TrapfilesCount full paths, one block
 * released by KXFreeListTrapfiles. 0 and NULL while no list is held. */
KX_API extern int32_t TrapfilesCount;
KX_API extern char **TrapfilesOutput;

/* One forwarding state: its name and the index of its character in the
 * state field of a trap file name. */
typedef struct FwdValRow {
    const char *Name;
    int Position;
} FwdValRow;

/* The nine forwarding states, "eventlogstate" (0) to "alarmack" (8), and
 * their number (9). */
KX_API extern const FwdValRow FwdVal[];
KX_API extern int32_t FwdCount;

/* A trap file's index in a listing and its arrival time, as pruning by
 * number sorts them. */
typedef struct TrapTimePair {
    int Index;
    unsigned int Time;
} TrapTimePair;

/* ------------------------------------------------------------------------
 * Directories and listings
 * ------------------------------------------------------------------------ */

/* Fills TrapsDirectory and DBDirectory from the first two lines of
 * "./snmptrapd.ini" (keys "TrapsDirectory" and "DBDirectory"), or with the
 * defaults when the file sets neither. Does nothing when either is set
 * already. A value longer than 1023 bytes is cut there. Returns 0. */
KX_API int KXDetermineDirectories(void);

/* Lists into TrapfilesCount/TrapfilesOutput the full paths of the files of
 * directory (NULL: TrapsDirectory) named "[tT].*[.]" + uniqueIdPattern
 * (NULL: ".*"), a POSIX extended expression for the whole name. Does nothing
 * while a list is held. Returns 0; with nothing found (or out of memory)
 * the count stays 0 and the array NULL. */
KX_API int KXListTrapfiles(const char *directory, const char *uniqueIdPattern);

/* Releases the list of KXListTrapfiles and sets count and array to 0.
 * Returns 0. */
KX_API int KXFreeListTrapfiles(void);

/* Sets the state character named stateName (a FwdVal name, any case) of the
 * trap with the unique identifier uniqueId to newValue[0], by renaming its
 * file under its lock. Nothing happens when newValue is NULL, equals
 * oldValue, the name is unknown or the trap is not found. With relist
 * non-zero the process-wide list is made first; a held list is searched,
 * else TrapsDirectory. Setting "log" to "0" also sets "alarmack" to 0.
 * Always returns 0. */
KX_API int KXTrapRenameTrapfile(const char *stateName, const char *oldValue, const char *newValue,
                                const char *uniqueId, int relist);

/* Pruning. The number is read from the server-list database with
 * KXGetDBValue(dbFile, table, conditionOrValue) when table is given, else
 * conditionOrValue is the number's text (leading decimal digits). directory
 * NULL means TrapsDirectory; prefix is the expression of the trap mark
 * (NULL: "[tT]"). No number: nothing is deleted. Failed deletions are passed
 * over. Both always return 0.
 * KXProcessTrapAgeDelete deletes the traps that arrived more than number
 * days ago; KXProcessTrapMaxNumDelete keeps the newest number traps and
 * deletes the older ones (a negative number keeps none). */
KX_API int KXProcessTrapAgeDelete(const char *dbFile, const char *table, const char *conditionOrValue,
                                  const char *directory, const char *prefix);
KX_API int KXProcessTrapMaxNumDelete(const char *dbFile, const char *table, const char *conditionOrValue,
                                     const char *directory, const char *prefix);

/* 0 when a == b, 1 when a > b, -1 when a < b (an ascending order). */
KX_API int SortNumericDescending(unsigned int a, unsigned int b);

/* qsort comparison of two TrapTimePair records by their Time. */
KX_API int KXProcessTrapMaxNumSortNumericAscending(const void *pa, const void *pb);

/* Puts the MIB name into the names of the trap files of directory (NULL:
 * TrapsDirectory) that carry none or "_Unknown.mib", when the trap's MIB is
 * known now; writes "Standard" to directory + "/StandardRefresh" (mode
 * 0777) when at least one was renamed. Returns the number of files renamed,
 * 0 when there are no trap files, -1 when the directory does not exist. */
KX_API int KXAdaptTrapFileName(const char *directory);

/* ------------------------------------------------------------------------
 * Trap file names
 * ------------------------------------------------------------------------ */

/* Pointer to the last "." of name (the unique identifier follows it); NULL
 * when name is NULL or has none. */
KX_API char *GTGetUniqueIdentifier(const char *name);

/* Index of the last "_" before the last "." of name (0 when there is none),
 * which is the length of the part before the states. *uniqueId (when
 * uniqueId is given) receives the pointer to the last ".", or NULL. Returns
 * -1 when name is NULL or has no ".". */
KX_API int GTSplitTrapFileName(const char *name, char **uniqueId);

/* 0 when name1 and name2 are two different arrivals of the same trap from
 * the same server: equal, ignoring case, from their second character up to
 * the states, with different unique identifiers. Otherwise non-zero: 1 when
 * a unique identifier is missing, both are equal, the parts before the
 * states differ in length or are 18 characters or shorter. uniqueId1 NULL:
 * name1 is split here; else uniqueId1 is name1's identifier and length1 its
 * prefix length (strlen(name1) when 17 or less). *uniqueId2, when given,
 * receives name2's identifier pointer. */
KX_API int GTIsSameTrapAndServer(int length1, const char *uniqueId1, const char *name1, const char *name2,
                                 char **uniqueId2);

/* The path under which the trap of path exists now. path is a heap text.
 * Returns path itself when it exists (*status 0), when it has no "."
 * (*status -2) or when no file of its directory ends in "." and its unique
 * identifier (*status -1). Otherwise path is freed and a new heap text with
 * the path found is returned (*status 1); when memory runs out then, path
 * is returned with *status -1. status may be NULL. */
KX_API char *GTDetermineTrapFile(char *path, int *status);

/* Sets the state character at position (0 .. count-1) of the trap file
 * *path (a heap text; it is replaced by GTDetermineTrapFile's result) to
 * character: takes the lock *path + ".loc", renames, releases the lock.
 * *newPath receives the new name (a heap text for the caller) when a rename
 * was tried, else NULL. Returns 0 when the character had that value already
 * (nothing renamed) or the rename succeeded; -1 when the name has no unique
 * identifier, the trap is found under no name, the position lies outside the
 * name, memory runs out or the rename failed; -2 when another process holds the lock; -3 when the lock
 * file could not be created. On -2 and -3 *newPath is NULL. */
KX_API int GTRenameTrapFile(char **path, int count, int position, char character, char **newPath);

/* Renames the trap file path to carry the MIB tag of mibFileName (its
 * extension is cut off: the caller's text is changed there). Returns the
 * rename's result (0 on success, -1 on failure or when memory runs out);
 * -1 when an argument is NULL, -2 when path does not exist. */
KX_API int GTAdaptTrapFileName(const char *path, char *mibFileName);

/* Lists the trap files of directoryCount directories whose names start with
 * prefix (an expression; NULL: "[tT]"). *list receives a new array of
 * heap texts with the full paths (release with GTFreeRessources), NULL when
 * none. Returns their number, 0 when none or when memory runs out. */
KX_API int GTGetTrapFiles(int directoryCount, char **directories, char ***list, const char *prefix);

/* Frees each non-NULL text of list and the array; nothing when count < 1
 * or list is NULL. */
KX_API void GTFreeRessources(int count, char **list);

/* Cuts a heap copy of the base name of path into the pieces of a trap file
 * name and returns it (the caller frees it); NULL when path is NULL or
 * memory runs out. Each output may be NULL and is then skipped.
 * enterprise, generic, specific and rest point into the returned copy (a
 * piece missing from the name is the empty text at its end). mibFile
 * receives a heap text "<MIB name>.<mib suffix>" or NULL without a MIB tag.
 * states (when the name has a "." with a "_" before it), agentAddress (the
 * four numbers joined by ".") and server (not written for the unknown server
 * "0000") receive heap texts; outputs the name does not carry are left as
 * they were; an output whose copy cannot be made (memory ran out) is NULL.
 * A MIB tag length beyond the name's end takes what is left. */
KX_API char *GTDetermineActTrapInformation(const char *path, char **mibFile, char **enterprise,
                                           char **generic, char **specific, char **rest,
                                           char **agentAddress, char **server, char **states);

/* ------------------------------------------------------------------------
 * Trap MIB index
 *
 * The MIB files that define traps (a TRAP-TYPE outside "--" comments), by
 * base name without extension: the names of the list file "TrapMibs"
 * (separated by blanks) first, then those found in the MIB directory (the
 * content of the file "MibPath", "mibs" without one). Built at most once per
 * process and never released. A MIB name compared here has at most 63
 * characters; longer names are cut there.
 * ------------------------------------------------------------------------ */

/* One answer of a search over all trap MIBs: the OID searched for and the
 * MIB file ("<name>.mib") that describes its traps. */
typedef struct TrapCacheEntry {
    char *Oid;
    char *MibFile;
} TrapCacheEntry;

/* The trap functions' index: the list file's contents as read (non-NULL
 * once a list file was read), its copy cut into the names, the names, their
 * lengths and their number. */
KX_API extern char *GTEingabeTrapMIBs;
KX_API extern char *_GTTrapMIBs;
KX_API extern char **GTTrapMIBs;
KX_API extern int32_t *GTTrapMIBsLength;
KX_API extern int32_t GTTrapMIBsCount;

/* The spellings of the MIB file extension tried on disk, in this order:
 * "mib", "MIB", "Mib", "MIb", "MiB", "mIb", "miB", "mIB"; and their number. */
KX_API extern const char *const _GTMibSuffixes[8];
KX_API extern int32_t _GTMibSuffixesCount;

/* The answers of searches over all trap MIBs, one per OID, for the life of
 * the process. */
KX_API extern TrapCacheEntry *TrapCache;
KX_API extern int32_t TrapCacheCount;

/* The page engine's index: 1 once built; the list file's copy cut into the
 * names; the names; their number. */
KX_API extern int32_t EingabeTrapMIBs;
KX_API extern char *_TrapMIBs;
KX_API extern char **TrapMIBs;
KX_API extern int32_t TrapMIBsCount;

/* Builds the trap functions' index from listFile (NULL: "./TrapMibs"; when
 * it cannot be read, "./TrapMibs") and the MIB directory. Does nothing once
 * a list file was read. Returns 0; memory running out leaves names out. */
KX_API int GTCreateTrapMibs(const char *listFile);

/* The index in GTTrapMIBs of name (taken up to its first ".", any case);
 * -1 when the index is empty, -2 when name is not in it or is NULL. */
KX_API int GTItIsATrapMIB(const char *name);

/* The spelling of the extension of the MIB file named by the first length
 * characters of name (all of name when length <= 0) in the MIB directory
 * (KXGetMibPath, "mibs" when none is set): the first of _GTMibSuffixes for
 * which the file exists, else "mib". Returns a text of _GTMibSuffixes
 * (never freed); "mib" for a NULL name. */
KX_API const char *GTDetermineMIBSuffix(const char *name, int length);

/* Splits text in place: a NUL is written on the first byte of every
 * occurrence of separator, and the search goes on behind it. Returns the
 * number of elements (occurrences + 1, empty ones counted; 0 for a NULL
 * text; 1 for a NULL or empty separator). *longest (when given) receives the
 * longest element's length; *lengths (when given) a malloc'd array of the
 * lengths that the caller frees (NULL when memory runs out). */
KX_API int GTErmittleTextElemente(char *text, const char *separator, int *longest, int **lengths);

/* The description of the trap with the OIDs oid and enterpriseOid (may be
 * NULL) and the numbers specific and generic (decimal texts), or NULL. It
 * belongs to the MIB library (never freed). The MIB is, in turn: *mibFile
 * when it is given non-NULL on entry, else the one iniFile (NULL:
 * "OID2Mib.ini"; "" skips this step) names for the OID; the one TrapCache
 * names; every MIB of GTTrapMIBs. *mibFile (when mibFile is given) receives
 * a malloc'd copy of the MIB file name that answered, its extension spelt as
 * on disk, or is left as it was. *searchedAllMibs (when given) is set to 1
 * when the answer came from, or the failure followed, a search over all trap
 * MIBs, else 0. Memory running out gives NULL. */
KX_API KXTrapDescription *GTGetTrapPointer(const char *oid, const char *enterpriseOid, const char *specific,
                                           const char *generic, const char *iniFile, char **mibFile,
                                           int *searchedAllMibs);

/* Builds the page engine's index once per process: the list file
 * "TrapMibs" in the application's directory (found with the input list),
 * else "./TrapMibs", and the MIB directory. Returns -2 when inputList is
 * NULL, else 0. */
KX_API int CreateTrapMibs(EingabeElement *inputList, int inputCount);

/* As GTItIsATrapMIB, on TrapMIBs. */
KX_API int ItIsATrapMIB(const char *name);

/* Reads the name list fileName in the application's directory: *contents
 * receives the file's contents, *copy its copy cut at blanks, *names a
 * malloc'd array of pointers into *copy and *count their number (all three
 * blocks released by the caller with free; outputs may be NULL). Returns 0,
 * or -1 when the file cannot be read or memory runs out (outputs untouched). */
KX_API int CreateSpecialMibs(EingabeElement *inputList, int inputCount, const char *fileName,
                             char **contents, char **copy, int *count, char ***names);

/* The index of name (cut at its first ".", any case) in the count names;
 * -1 when count is 0 or below, -2 when not found or name is NULL. */
KX_API int ItIsASpecialMIB(const char *name, int count, char **names);

/* ------------------------------------------------------------------------
 * Trap text
 *
 * A trap file's records (KXSnmpVar, read with KXSnmpFileRead): records 0
 * and 1 are the header (record 1: the enterprise OID and the agent's
 * address), the trap's variables follow from record 2.
 * ------------------------------------------------------------------------ */

/* The size of the text buffer GTCreateTrapString writes into: longer texts
 * are cut to KX_TRAP_TEXT_SIZE - 1 bytes. */
#define KX_TRAP_TEXT_SIZE 4096

/* Builds the list lines of the traps at positions (decimal positions in the
 * last shown list "TrapLastSortInfo", separated by "|") and appends them to
 * *result (set to NULL first; a malloc'd text the caller frees), each after
 * separator except the first. Sixteen fields, each followed by ",,". A
 * position outside the list or whose trap is gone or unreadable gives no
 * line. Returns 0; -1 when an argument is NULL (result untouched). Memory
 * running out leaves lines out. */
KX_API int KXCreateUserValue(const char *positions, const char *separator, char **result);

/* Writes the display text of a trap into text (KX_TRAP_TEXT_SIZE bytes;
 * empty on entry, or holding the trap's heading): the summary of description
 * filled from the recordCount records, enumerations named through mib (NULL:
 * the MIB of each variable), "%m" as a MAC address; without a summary, the
 * description text and the variables. unknownDescription is the caller's
 * unknown-trap description, whose values are never named. Returns 0; -1
 * when text or description is NULL. Allocates nothing for the caller. */
KX_API int GTCreateTrapString(char *text, KXMib *mib, KXTrapDescription *description, int recordCount,
                              KXSnmpVar *records, KXTrapDescription *unknownDescription);

/* Fills description for a trap no MIB describes ("unknownTrap", type
 * "UNKNOWN TRAP", severity "UNKNOWN") with a summary of enterprise,
 * specific, generic (NULL texts print as "(null)") and the first ten of the
 * variableCount variables. The summary and arguments lie in one process-wide
 * buffer valid until the next call. Returns 0; -1 for a NULL description. */
KX_API int GTCreateUnknownTrap(KXTrapDescription *description, int variableCount, const char *enterprise,
                               const char *specific, const char *generic);

/* Gives each of the count records a type of its own when any record lacks
 * one: records 0 and 1 "OCTETSTRING" when they have none, variables their
 * MIB syntax (through mib, NULL: the MIB of each OID), "UNKNOWN" when none is
 * found. Returns 1 when the types were replaced by malloc'd copies (the
 * caller frees each, then the records), 0 when every record had a type
 * (nothing changed). A copy that memory does not suffice for is NULL. */
KX_API int GTDetermineTypes(KXSnmpVar *records, int recordCount, KXMib *mib);

/* The first entry of table in the server-list database dbFile (NULL: the
 * DBDirectory of KXDetermineDirectories) that condition selects, as a
 * malloc'd text the caller frees; NULL when table or condition is NULL, the
 * database or table cannot be opened, nothing matches or memory runs out. */
KX_API char *KXGetDBValue(const char *dbFile, const char *table, const char *condition);

/* 0 when text is a dotted IPv4 address (four groups of digits), 1 when it
 * is not or is NULL. */
KX_API int GTValidateNetAddress(const char *text);

KX_EXTERN_C_END

#endif
