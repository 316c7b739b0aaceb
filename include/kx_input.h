/*
 * Request input and text utilities: the input list of name/value entries, the
 * text helpers every subsystem uses, URL encoding and decoding, and reading the
 * application definition and the request.
 *
 * Texts are NUL-terminated byte strings. "A heap text" is allocated with
 * malloc and belongs to the caller, who releases it with free().
 */
#ifndef KX_INPUT_H
#define KX_INPUT_H

#include <stdint.h>
#include <stdio.h>

#include "kx_api.h"

KX_EXTERN_C_BEGIN

/* ------------------------------------------------------------------------
 * The input list
 * ------------------------------------------------------------------------ */

/* One entry of the input list. The entry owns its three texts. */
typedef struct EingabeElement {
    char *Name;           /* set once when the entry is created */
    uint32_t NameLaenge;  /* strlen(Name); lookups compare it first */
    char *Wert;           /* the value(s), or NULL until something sets it */
    int32_t WertGesetzt;  /* number of values in Wert: 0 when Wert is NULL */
    int32_t WertPosition; /* byte offset of the current value in Wert */
    char Art;             /* kind letter: 'n' one value, 'j' a list, others by definition */
    char *Vorgabe;        /* default text from the definition, or NULL */
} EingabeElement;

/* The current text of an entry is Wert + WertPosition when Wert is set, else
 * Vorgabe (which may be NULL). A list entry holds WertGesetzt texts in Wert,
 * each ending in a NUL, one after the other. */

/* Addresses of the caller's list and count variables, stored by the first
 * ErmittleEingabe/ErmittleEingabe2 call; NULL until then. */
KX_API extern EingabeElement **_pEingabe;
KX_API extern int *_pEingabeAnzahl;

/* Its address, passed where a default text may be given, means "no default". */
KX_API extern char _UtilsMyDefaultBlank[];

/* Index of the first entry named exactly name (case-sensitive); count when
 * there is none. Allocates nothing. */
KX_API int EingabewertIndex(const char *name, EingabeElement *list, int count);

/* Sets entry index to a heap copy of text (NULL text clears it: Wert NULL,
 * WertGesetzt 0). The old Wert is freed. Returns index; nothing changes when
 * index >= count, or when memory runs out (the entry keeps its value). */
KX_API int SetEingabeWertI(int count, EingabeElement *list, int index, const char *text);

/* SetEingabeWertI at the entry named name; returns its index or count. */
KX_API int SetEingabeWert(int count, EingabeElement *list, const char *name, const char *text);

/* Appends text (not NULL) to the entry's Wert, which becomes a new heap text
 * holding one value. Returns the index, or count when name is unknown. When
 * memory runs out the entry keeps its value (the index is still returned). */
KX_API int AppendEingabeWert(int count, EingabeElement *list, const char *name, const char *text);

/* Sets *value to NULL, then to the entry's own Wert (not a copy, from its
 * start) when that is set and not empty. Returns the index or count.
 * Allocates nothing. */
KX_API int GetInputValue(int count, EingabeElement *list, const char *name, char **value);

/* Declares one more entry exactly as a definition line would: kind < 2 gives
 * 'n', otherwise 'j'. An existing name only gets the new kind and default.
 * A NULL separator means "|", a NULL default "". Returns 0 (also for a NULL
 * list or count, which declare nothing); -1 for a NULL name, and when memory
 * runs out, in which case no entry was added or changed. The list may be
 * reallocated. */
KX_API int AppendToEingabe(int *count, EingabeElement **list, const char *separator,
                           const char *name, int kind, const char *defaultText);

/* ------------------------------------------------------------------------
 * Text utilities
 * ------------------------------------------------------------------------ */

/* A heap text of length bytes of source plus a NUL; NULL when memory runs out. */
KX_API char *UtilsErzeugeText(const char *source, int length);

/* A new heap text: text + separator + the first pieceLength bytes of piece.
 * NULL text, separator or piece count as empty. Inputs are not freed.
 * NULL when memory runs out. */
KX_API char *EweitereText(const char *text, const char *piece, int pieceLength,
                          const char *separator);

/* Appends separator + piece to the heap text (or NULL) text, freeing the old
 * text; returns the new heap text. A NULL piece returns text unchanged, and
 * so does memory running out (text is then not freed). */
KX_API char *AddElement(char *text, const char *separator, const char *piece);

/* AddElement(text, separator (only when text is set), piece), then appends the
 * heap text tail, which this call frees. Returns the new heap text; a join
 * that memory does not suffice for is left out, as in AddElement. */
KX_API char *AddElementToInput(char *text, const char *separator, const char *piece, char *tail);

/* Cuts text at its first CR or LF; returns the remaining length. Allocates
 * nothing. */
KX_API int MacheLetztesElementZumText(char *text);

/* Splits text in place at each separator (NULs are written over its first
 * character) and returns the number of elements; 0 for a NULL text.
 * *longest (when given) gets the longest element's length; *lengths (when
 * given) a heap array of the element lengths, which the caller frees (NULL
 * when memory runs out; the text is split all the same). */
KX_API int ErmittleTextElemente(char *text, const char *separator, int *longest, int **lengths);

/* A key of digits picks that element (from 0) of text split at separator;
 * any other key finds "key" in text and gives what follows it, after blanks
 * and tabs, up to the line end. Returns a heap text, or NULL (also when
 * memory runs out). */
KX_API char *GetIndexedValue(const char *text, const char *key, const char *separator);

/* Overwrites every character of text that is one of the first setLength
 * characters of set with replacement. Allocates nothing. */
KX_API void UtilsErsetzeZeichen(char *text, const char *set, int setLength, char replacement);

/* A new heap text with every occurrence of old (not empty) replaced by
 * replacement; a copy of text when old does not occur. NULL for a NULL text
 * and when memory runs out. */
KX_API char *StringReplace(const char *text, const char *old, const char *replacement);

/* StringReplace with lengths: oldLength bytes are stepped over at each
 * occurrence of old and replacementLength bytes of replacement go in. NULL
 * for a NULL text and when memory runs out. */
KX_API char *StringNReplace(const char *text, int oldLength, const char *old,
                            int replacementLength, const char *replacement);

/* Replaces each character of text in the first setLength characters of set by
 * the whole replacement (shorter than 4096 bytes). Returns text itself when
 * no such character occurs (length is then not written): compare the pointers
 * before freeing. Otherwise a new heap text, its length stored in *length;
 * NULL when memory runs out. */
KX_API char *ChangeSubText(const char *text, const char *set, int setLength,
                           const char *replacement, int *length);

/* The closing marker that pairs with the first opening marker of text (which
 * begins with it), nested pairs balanced; a closing marker right after the
 * word "javascript" does not count. text itself when there is none.
 * Allocates nothing. */
KX_API const char *PairIt(const char *text, const char *open, const char *close);

/* ------------------------------------------------------------------------
 * URL encoding and decoding
 * ------------------------------------------------------------------------ */

/* Non-zero makes u2dbcs trace to standard output. */
KX_API extern int _mylog;

/* Percent-encodes blank " / : + & = % ~ # ' ` > | as "%XX" ("%%XX" with
 * doublePercent 1); a blank becomes "+" unless encodeBlank is non-zero.
 * Returns a heap text (an empty one for a NULL text); its length goes to
 * *length when given. NULL when memory runs out (length not written). */
KX_API char *ServerEncoding(const char *text, int *length, int encodeBlank, int doublePercent);

/* Decodes "%XX", "+" and "%uXXXX" (into the multibyte form of the locale
 * "Japanese"); bad escapes stay as they are. Returns a heap text, an empty
 * one for a NULL text; NULL when memory runs out. The first "%u" escape sets
 * the process locale. */
KX_API char *ServerDecoding(const char *text);

/* The byte two hexadecimal characters denote (not checked). The character
 * helpers below allocate nothing. */
KX_API char x2c(const char *hex);

/* The value of one hexadecimal digit; any other character comes back as is. */
KX_API char atox(char ch);

/* Converts four hexadecimal characters (a UCS-2 code) into the current
 * locale's multibyte form in out (MB_CUR_MAX bytes); returns wctomb's count
 * or -1. */
KX_API int u2dbcs(const char *hex, char *out);

/* ------------------------------------------------------------------------
 * Request acquisition and application setup
 * ------------------------------------------------------------------------ */

/* A row of the keyword table: a well-known entry name and its index global. */
typedef struct Schluesselwort {
    const char *Wort;
    int *Index;
} Schluesselwort;

KX_API extern Schluesselwort Schluesselworte[];
KX_API extern const int SchluesselworteAnzahl;

/* Index of the entry of each keyword in the current list, or -1. */
KX_API extern int iServer;
KX_API extern int iCGIDirectory;
KX_API extern int iRootDirectory;
KX_API extern int iApplication;
KX_API extern int iErsetzungsAnfang;
KX_API extern int iErsetzungsEnde;
KX_API extern int iImagePath;
KX_API extern int iRootPath;
KX_API extern int iCGIPath;
KX_API extern int iAppSuffix;

/* "/": the directory separator of every path the library builds. */
KX_API extern const char *Verzeichnistrenner;

/* The stream pages and messages go to; standard output while NULL. */
KX_API extern FILE *_Utilsfpout;

/* The first two definition files ErmittleEingabe2 read (heap texts owned by
 * the library) and the first character of each one's separator line. */
KX_API extern char *_IniFilename[2];
KX_API extern char _IniFilenameDivideSign[2];

/* Free for the calling programs' own use; the library never touches them. */
KX_API extern int _UtilsFirst;
KX_API extern int _UtilsWhat;

/* Longest path the library builds, terminating NUL included. */
#define KX_PATH_SIZE 4096

/* Longest application name KXIsApplicationName accepts. */
#define KX_APPLICATION_NAME_MAX 128

/* 1 when name may be handed to ErmittleEingabe/ErmittleEingabe2 as an
 * application name, 0 otherwise (NULL included). Check every name that comes
 * from a request or a command line with it, after URL-decoding: an accepted
 * name has 1 to KX_APPLICATION_NAME_MAX bytes, begins with an ASCII letter or
 * digit and holds only letters, digits, ".", "_" and "-", so it is never read
 * as a definition in memory (a text that begins with a marker byte is read as
 * such a block up to its empty line, past the end of a plain text) and never
 * names a path. Allocates nothing. */
static inline int KXIsApplicationName(const char *name) {
    int length = 0;
    if (name == NULL) return 0;
    for (; name[length] != '\0'; ++length) {
        const char c = name[length];
        const int alnum = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
        if (length >= KX_APPLICATION_NAME_MAX || (!alnum && (length == 0 || (c != '.' && c != '_' && c != '-'))))
            return 0;
    }
    return length > 0;
}

/* Reads an application definition into the list: application is either a
 * definition text in memory (its first character one of ~ | blank & % $ \xA7
 * ! " ^ #; NUL-terminated lines, an empty one ends it) or an application name,
 * decoded and reduced to its base name, whose file "<name>.ini" is searched
 * with SearchForFile. A name from a request or a command line must pass
 * KXIsApplicationName first. settings is a block of settingsCount
 * "name=value" texts laid end to end, or NULL. Adds or updates entries (the
 * list may be reallocated; its texts belong to the list) and sets the keyword
 * index globals. Of a file line longer than 4095 bytes only the first 4095
 * count (the rest is passed over). Faulty lines are reported into the page
 * as "<! ...>" comments, so a CGI program sends its header before calling
 * it. Returns 0, or 1 when nothing could be read (the list is then
 * unchanged). When memory runs out the lines that could not be stored are
 * left out and the list holds the entries read until then; the result is
 * still 0. */
KX_API int ErmittleEingabe(const char *application, EingabeElement **list, int *count,
                           const char *settings, int settingsCount);

/* ErmittleEingabe that also tries "<directory of programPath><application>.ini"
 * and records the first two files read in _IniFilename (a record that memory
 * does not suffice for stays NULL). Results as ErmittleEingabe. */
KX_API int ErmittleEingabe2(const char *application, EingabeElement **list, int *count,
                            const char *settings, const char *programPath, int settingsCount);

/* Looks for name in the current directory, "Korvanetix", the application
 * directory and the CGI paths; "PeerScan.ini" falls back to "Korvanetix.ini".
 * Returns the path found in a library buffer (valid until the next call; do
 * not free), or NULL. When stream is given, *stream is the file found, opened
 * for reading (the caller closes it), or NULL. Allocates no result. */
KX_API char *SearchForFile(const char *name, EingabeElement *list, int count,
                           const char *settings, int settingsCount, FILE **stream);

/* A heap text: the three pieces decoded and joined with "/" after each of the
 * first two that is not empty. NULL pieces count as empty. NULL when memory
 * runs out. */
KX_API char *CreateDirectoryname(const char *first, const char *second, const char *third);

/* Fills buffer (KX_PATH_SIZE bytes) with the path of an application file
 * (directory decoded, then file): where SearchForFile found it, or else its
 * place in the application directory, where it is to be created. Allocates
 * no result. */
KX_API void CreateApplicationFilePath(EingabeElement *list, int count, char *buffer,
                                      const char *directory, const char *file);

/* Pointer into query to the value of "&key=" or of "key=" at its start (not
 * cut at the next "&"); NULL when absent or when key and assign together
 * reach 255 bytes. key defaults to "Application", assign to "=". Allocates
 * nothing. */
KX_API char *PositioniereAufSchluesselwortWert(const char *query, const char *key,
                                               const char *assign);

/* Reads all of stream (standard input when NULL) once standard input is
 * readable within 5 seconds. Returns a heap text and its length in *length,
 * or NULL: after the wait ran out (length not written), for empty input
 * (length 0), or when memory runs out (length not written). */
KX_API char *UtilsGetPostedInformation(int initialSize, FILE *stream, int *length);

/* Elements first .. first + number - 1 (from 1; number <= 0: to the end) of
 * the heap text text, split at separator: a new heap text, and text is
 * freed; or text itself, unchanged, when the range is not there or memory
 * runs out. */
KX_API char *UtilsCreateOuput(char *text, const char *separator, int first, int number);

/* Pointer into path just after its last "/" or "\\"; path when it has none.
 * This and ErmittleProgrammname allocate nothing. */
KX_API const char *HTMLBasename(const char *path);

/* Pointer into path to its base name. */
KX_API const char *ErmittleProgrammname(const char *path);

KX_EXTERN_C_END

#endif
