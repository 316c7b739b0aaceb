/*
 * Conversion functions: the table of named conversions that placeholders
 * apply to values, and their handlers.
 *
 * Texts are NUL-terminated byte strings. "A heap text" is allocated with
 * malloc and belongs to the caller, who releases it with free().
 */
#ifndef KX_CONVERT_H
#define KX_CONVERT_H

#include <stdint.h>

#include "kx_input.h"

KX_EXTERN_C_BEGIN

/* --- dispatch and table ------------------------------------------------- */

/* The handler of a conversion: (argument text, value, cycle index) -> text.
 * argument: the characters between the conversion's name and the next ".",
 *   writable and NUL-terminated during the call ("" for names without ",").
 * value: what the chain produced so far, or the entry's value; may be NULL.
 *   The handler neither frees nor changes it.
 * cycleIndex: the page's current cycle index, passed on to MatchIt when the
 *   handler evaluates placeholders in its argument.
 * Returns value itself, or a new heap text that the caller owns, or NULL.
 * Every handler declared below keeps this contract and returns NULL when
 * memory runs out for its result. */
typedef char *(*KonvertierungsFunktion)(char *argument, char *value, int cycleIndex);

/* One row of the conversion table. A name that takes an argument ends in ",". */
typedef struct KonvertierungsEintrag {
    const char *name;                /* as written, beginning with "_" */
    int length;                      /* strlen(name) */
    KonvertierungsFunktion handler;
} KonvertierungsEintrag;

/* The conversions in their fixed order: the first row whose name matches
 * (over its length, case ignored) wins, so "_hextime" stands before "_hex". */
KX_API extern const KonvertierungsEintrag ConvertTable[];
KX_API extern const int ConvertTableCount; /* 51 */

/* Passed as end to ConvertIt: the chain is not bounded. */
#ifdef __cplusplus
#define KX_CONVERT_UNBOUNDED (reinterpret_cast<const char *>(UINTPTR_MAX))
#else
#define KX_CONVERT_UNBOUNDED ((const char *)UINTPTR_MAX)
#endif

/* Finds the conversion chain at the first "_" of text. Returns a pointer into
 * text to the name behind the chain (after the last "."), or text itself when
 * it holds no conversion. *conversionStart (when conversionStart is given)
 * receives the "_" where the chain starts; with no conversion it is NULL, or
 * the first "_" when the text from there begins with "_this". Allocates
 * nothing. */
KX_API char *DetermineConversion(char *text, char **conversionStart);

/* Applies the chain that begins at start and ends before end (which may be
 * KX_CONVERT_UNBOUNDED) to value, the conversion nearest the name first.
 * start must be writable; it is the same text again on return.
 * Returns value itself when there is nothing to apply (value is then never
 * freed), otherwise a heap text that the caller frees, or NULL when the last
 * conversion produced nothing (also when memory ran out for it). With
 * freeValue non-zero, value (a heap text) is freed when the result differs
 * from it. */
KX_API char *ConvertIt(char *start, const char *end, char *value, int freeValue, int cycleIndex);

/* --- arithmetic and number formatting ----------------------------------- */

/* Numbers are 32-bit and read like atoi ("12abc" is 12, "abc" and a NULL
 * value are 0); sums and products wrap. Operands are evaluated with MatchIt.
 * Each returns a new heap text printed with "%d" unless said otherwise. */
KX_API char *ConvertByPlus(char *argument, char *value, int cycleIndex);          /* v + a */
KX_API char *ConvertByMinus(char *argument, char *value, int cycleIndex);         /* v - a */
KX_API char *ConvertByMinusReversed(char *argument, char *value, int cycleIndex); /* a - v */
KX_API char *ConvertByMultiply(char *argument, char *value, int cycleIndex);      /* v * a */
/* v mod a, with the sign of v; "n.a." when a is 0. */
KX_API char *ConvertByModulo(char *argument, char *value, int cycleIndex);

/* argument "divisor[,option]": v / divisor printed unsigned, followed by "."
 * and the remainder zero-padded to (length of the divisor text - 1) digits,
 * unless the option starts with "i" or "I" (quotient alone). "n.a." when the
 * divisor is 0. */
KX_API char *ConvertByDivide(char *argument, char *value, int cycleIndex);

/* argument: a printf format with exactly one conversion (d i u o x X c with
 * h, hh, l or ll, or s), flags, and width and precision of at most 127, and
 * at most 127 characters long; a string format may carry a "[suffix]".
 * Integer conversions print the value's number, "s" the value's text (a
 * number before the "s" is a maximum length: a longer value is cut and gets
 * the suffix). Returns a new heap text of at most 127 characters, or "n.a."
 * for any other format (such as "%n", "%s%s", "%*d" or plain text). */
KX_API char *ConvertByFormat(char *argument, char *value, int cycleIndex);

/* v in lower-case hexadecimal ("%x" of the 32-bit pattern). */
KX_API char *ConvertToHex(char *argument, char *value, int cycleIndex);
/* v / 1048576, truncated toward zero. */
KX_API char *ConvertToMB(char *argument, char *value, int cycleIndex);
/* Returns value itself (no new text). */
KX_API char *ConvertToCount(char *argument, char *value, int cycleIndex);
/* argument "bit-name,bit-name,...": the decoded names of the bits (numbers
 * taken modulo 32) set in v, joined with ","; NULL when none is set; value
 * itself when argument is NULL. The argument is left as it was. */
KX_API char *ConvertBitFieldToText(char *argument, char *value, int cycleIndex);

/* --- string conversions ------------------------------------------------- */

/* Each returns a new heap text and never changes the value; a NULL value
 * reads as the empty text. List elements are decoded with ServerDecoding. */

/* argument "start[,end]": characters start..end-1 of the value right-aligned
 * in a field of end-start characters (blanks fill what the value lacks, also
 * when start lies beyond its end; a negative start counts as 0). "" when end
 * is before start. At most 127 characters. */
KX_API char *ConvertToSubstring(char *argument, char *value, int cycleIndex);
/* argument "needles[,results[,default]]" or "needles,,default": result i of
 * the first needle i found (the last result when there are fewer), the
 * value from the needle on when there are no results, else the default. */
KX_API char *ConvertToStringString(char *argument, char *value, int cycleIndex);
/* argument "marker[,default]": the text after the first marker (for a value
 * holding "|", GetIndexedValue(value, marker, "|")), before the first, or
 * before the last marker. Not found: the default, or a copy of the value. */
KX_API char *ConvertToStringAfter(char *argument, char *value, int cycleIndex);
KX_API char *ConvertToStringBefore(char *argument, char *value, int cycleIndex);
KX_API char *ConvertToStringRBefore(char *argument, char *value, int cycleIndex);
/* argument "olds,news" ("|"-separated lists): the first old text found is
 * replaced once by its new text (the only one, number i, or the first when
 * the list is shorter). At most 1023 characters. */
KX_API char *ConvertToStringChange(char *argument, char *value, int cycleIndex);
/* argument "olds,news": every occurrence of each old text in turn is
 * replaced by its new text (the only one, number i, or the first when the
 * list is shorter); empty old texts are skipped. */
KX_API char *ConvertToStringReplace(char *argument, char *value, int cycleIndex);
/* argument "{Prefix[{Key[k]}]},default": the position, within the run of
 * values of Key equal to k, of the value among the matching values of
 * Prefix ("%d"); the default ("" when none) otherwise. */
KX_API char *ConvertToValueIndex(char *argument, char *value, int cycleIndex);
/* argument "divider,size[,n[,minimum]]": page numbers "1", divider, "2", ...
 * for a list of value entries; "~" without a divider. At most 1023
 * characters; a page size below 1 gives "1". */
KX_API char *ConvertDivideList(char *argument, char *value, int cycleIndex);
/* argument ",start[,end]" (components from 1, or "i" and a character offset;
 * end counts components from start) or ",,[end]" (start after the object the
 * MIB knows): that part of the OID value; "n.a." when it is empty. */
KX_API char *ConvertToSubOID(char *argument, char *value, int cycleIndex);
/* Lower- and upper-case copies of the value (ASCII letters). */
KX_API char *ConvertToLower(char *argument, char *value, int cycleIndex);
KX_API char *ConvertToUpper(char *argument, char *value, int cycleIndex);

/* --- time conversions --------------------------------------------------- */

/* Each returns a new heap text; a NULL value reads as the empty text (0).
 * Epoch seconds are 32-bit. Hexadecimal dates are year, month, day, hour,
 * minute, second, one byte each (digits and upper-case letters); only the
 * first six bytes count and missing bytes are 0. */

/* Writes one byte high * 16 + low per pair of characters of hex to out (no
 * terminator; a lone last character is ignored). out holds at least
 * strlen(hex) / 2 bytes. Returns the number of bytes written. Allocates
 * nothing. */
KX_API int HexToOctetString(unsigned char *out, const char *hex);

/* ctime text without its line end; a copy of the value when it is not a
 * positive number. */
KX_API char *ConvertToCtime(char *argument, char *value, int cycleIndex);
/* "%02d/%02d/%02d %02d:%02d:%02d": month, day, two-digit year, time; in
 * local time and in UTC. */
KX_API char *ConvertToLocaltime(char *argument, char *value, int cycleIndex);
KX_API char *ConvertToGmtime(char *argument, char *value, int cycleIndex);
/* Seconds between now and the value, "%lu" (never negative). */
KX_API char *ConvertCreateTime(char *argument, char *value, int cycleIndex);
/* Hundredths of a second as "%d day%s, %02d:%02d:%02d". */
KX_API char *ConvertUpTime(char *argument, char *value, int cycleIndex);
/* n as "%02d:%02d" of n / 60 and n mod 60. */
KX_API char *ConvertCPUTime(char *argument, char *value, int cycleIndex);
/* A hexadecimal date as "%d/%02d/%02d   %02d:%02d:%02d". */
KX_API char *ConvertHexTime(char *argument, char *value, int cycleIndex);
/* argument: a reference date in hexadecimal. The value's time of day (from
 * its seconds, UTC) when its local day, month and year all differ from the
 * reference's, else its local date in the locale's "%x" form (at most 15
 * characters). */
KX_API char *ConvertProcessTime(char *argument, char *value, int cycleIndex);

/* --- file conversions --------------------------------------------------- */
/* Each returns a new heap text (NULL only when memory runs out). Paths that
 * arrive as the value are decoded (ServerDecoding); paths in the argument are
 * evaluated (MatchIt), or decoded when they hold no placeholder. Every path
 * must lead inside the working directory of the program (its application
 * tree): a path with a ".." component, an encoded NUL ("%00"), or one that
 * resolves (symbolic links followed) outside the tree is refused and treated
 * as a failure. Status results are "%d": 0 success, negative failure. */

/* "%d" of KXUtilsFileExists (0: it exists); "-1" for NULL or refused. */
KX_API char *ConvertFileExists(char *argument, char *value, int cycleIndex);
/* argument: a regular expression (POSIX extended). The names in the value's
 * directory that match it, joined by blanks (at most 2047 characters; names
 * that no longer fit are left out); a copy of the value when none matches.
 * NULL value: "". */
KX_API char *ConvertFileRegexpExists(char *argument, char *value, int cycleIndex);
/* "%d" of KXUtilsDeleteFile; "-1" for NULL or refused. */
KX_API char *ConvertFileRemove(char *argument, char *value, int cycleIndex);
/* "%d" of KXUtilsCreateDirectory; "-1" for NULL or refused. */
KX_API char *ConvertCreateDir(char *argument, char *value, int cycleIndex);
/* Creates or empties the file: "0", or "-1" when it cannot be opened. */
KX_API char *ConvertCreateFile(char *argument, char *value, int cycleIndex);
/* A new temporary file name in the value's directory (the system's
 * temporary directory for an empty or NULL value); the file is created
 * empty to hold the name. "" when none can be made or the directory is
 * refused. */
KX_API char *ConvertCreateTemplateFile(char *argument, char *value, int cycleIndex);
/* The names in the value's directory, separated by blanks; "" for none, a
 * NULL value or a refused directory. */
KX_API char *ConvertListDir(char *argument, char *value, int cycleIndex);
/* argument: the new path. Renames under the lock file value + ".loc":
 * "0" done or equal paths, "-1" missing path, refused path or failed
 * rename, "-2" locked by another, "-3" lock file not created. */
KX_API char *ConvertRenameFile(char *argument, char *value, int cycleIndex);
/* argument: the target path. Copies the file's bytes: "0", "-1" for a
 * missing or refused path, else the negated errno of the read or write. */
KX_API char *ConvertFileCopy(char *argument, char *value, int cycleIndex);
/* argument "text[,mode]": writes the text (evaluated and decoded) as the
 * file's content, after its old content with a mode beginning with "a" or
 * "A". "0", "-1" for a missing or refused path, else the errno value of the
 * failed write. */
KX_API char *ConvertWriteFile(char *argument, char *value, int cycleIndex);
/* value "[section,]key|...", argument "file[,DefaultValue=d][,OutputDivider=s]":
 * the keys' values in the ini file joined by the divider ("|"), the default
 * ("") for a key not found; a divider inside a value is URL-encoded. "" when
 * the value, the argument or the file name is missing. */
KX_API char *ConvertToIniRead(char *argument, char *value, int cycleIndex);

/* --- program call and network conversions ------------------------------- */

/* A CGI application of the console that "_call," hands the request's
 * settings to through a query file: the first length characters of name
 * are compared with the program's name. */
typedef struct KnownFunction {
    int length;                    /* strlen(name) */
    const char *name;
    const int *parameterCount;     /* number of parameter names */
    const char *const *parameters; /* entries whose values form the query */
    const char *extra;             /* fixed query text after the parameters */
} KnownFunction;

KX_API extern const KnownFunction KnownFunctions[];
KX_API extern const int KnownFunctionsCount; /* 9 */
KX_API extern const char *const DBAsciiAccessParameters[];
KX_API extern const int DBAsciiAccessParametersCount; /* 10 */

/* value: the program; argument "arguments[,default]". A known application
 * (by base name for "_call,", by the whole value for "_callp,") is started
 * with a query file and an output file: its output, or the default (a copy
 * of the value without one) when it fails. Any other program is started
 * with the ","-separated argument texts (evaluated and decoded; at most 9,
 * resp. 19) and gives its exit status "%d" ("-1" when it cannot start).
 * Programs start without a shell and must lie inside the application tree
 * (refused: "-1", resp. the default). Heap text; NULL when memory runs out. */
KX_API char *ConvertByCall(char *argument, char *value, int cycleIndex);
KX_API char *ConvertByCallBasic(char *argument, char *value, int cycleIndex);

/* One look-up slot per host, alive only during a call. */
typedef struct PingThreadSlot {
    char *Host;  /* decoded host */
    int Status;  /* KXUtilsPing's result; -1 until it is known */
} PingThreadSlot;
typedef struct HostnameThreadSlot {
    char *Address; /* decoded address; NULL when no look-up is made */
    char *Name;    /* the name found (KXUtilsFreeResources), or NULL */
} HostnameThreadSlot;

KX_API extern PingThreadSlot *PingThreadInfo;         /* NULL between calls */
KX_API extern HostnameThreadSlot *HostnameThreadInfo; /* NULL between calls */
KX_API extern int PingRepeat;     /* look-ups started and not finished */
KX_API extern int HostnameRepeat;

/* Thread entries: index is the slot number (an intptr_t). Each fills its
 * slot and decrements its counter; returns NULL. */
KX_API void *PingThread(void *index);
KX_API void *HostnameThread(void *index);

/* value "host|host|...": "1" per host that answers an ICMP echo, "0" per
 * other, separated by the argument after its first character ("|" when the
 * argument is empty). "0" for a NULL value. One thread per host, at most
 * 64 at a time, all joined before it returns. */
KX_API char *ConvertPing(char *argument, char *value, int cycleIndex);
/* value "address|...", argument "<any character>separator[,y|n|...]" (evaluated):
 * the name of each address ("Unknown" when none; "" when its flag does not
 * begin with "y"), separated by the separator ("|" when empty). Addresses
 * beyond the flag list are looked up. "Unknown" for a NULL value. */
KX_API char *ConvertToHostname(char *argument, char *value, int cycleIndex);
/* value "name|...": the address of each name, "Unknown" when it does not
 * resolve, joined by "|". "Unknown" for a NULL value. */
KX_API char *ConvertToIPAddress(char *argument, char *value, int cycleIndex);

KX_EXTERN_C_END

#endif
