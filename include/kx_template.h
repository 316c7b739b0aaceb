/*
 * Page template engine: the template processor, conditions and comparisons,
 * value assignment, placeholder values and cycle blocks.
 *
 * Texts are NUL-terminated byte strings. "A heap text" is allocated with
 * malloc and belongs to the caller, who releases it with free().
 */
#ifndef KX_TEMPLATE_H
#define KX_TEMPLATE_H

#include "kx_input.h"

KX_EXTERN_C_BEGIN

/* --- template processor ------------------------------------------------- */

/* Copies a page template to the page stream, replacing placeholders and
 * evaluating the IF, /ELSE, /IF and DEFINE directives.
 *
 * File mode (result NULL): nameOrText is the template's path; the page goes
 * to _Utilsfpout (standard output while it is NULL). A template that cannot
 * be opened gives the text "<path> konnte nicht geoeffnet werden\n".
 * String mode (result given): nameOrText is the text to evaluate. On entry
 * *result holds the fixed cycle index as an integer ((char *)(intptr_t)n; a
 * negative one for none); on return it holds the heap text built, which the
 * caller frees, or NULL when nothing was produced.
 * startIndex/endIndex: indices of the entries holding the start and end
 * markers, -1 when not defined (the text then holds no placeholders).
 * pCount/pList: the caller's count and list variables; entries are added
 * through them (the list may move). Re-entrant: all state is kept per call.
 * A definition entry "EscapeHtml" whose default begins with "y" makes file
 * mode write every value HTML-escaped (& < > " '). Nested evaluations
 * (MatchIt, inline controls) may spend 128 plus one per two bytes of each
 * line; beyond that, and beyond 48 levels, a nested text is left as it
 * stands.
 * When memory runs out the page is written as far as it can be: a value that
 * cannot be encoded or decoded is written as nothing, an entry that cannot be
 * declared is left out, and in string mode *result is NULL when the built
 * text cannot be copied out. */

KX_API void ErsetzeUndGebeHtmlDateiAus(const char *nameOrText, char **result, int startIndex,
                                       int endIndex, int *pCount, EingabeElement **pList);

/* Removes a "$Copyright$" comment at the start of a template: line holds the
 * first line (size bytes of buffer); the lines of the comment are read past
 * and line then holds the first line after it. Returns the number of lines
 * read past (0: no such comment), -1 at end of file, -2 for a NULL stream or
 * line or a size below 1. Allocates nothing. */
KX_API int DeleteComment(FILE *stream, char *line, int size);

/* --- conditions and comparisons ----------------------------------------- */

/* A comparison: 1 when the relation holds between left and right, else 0.
 * The comparison functions allocate nothing. */
typedef int (*VergleichsFunktion)(const char *left, const char *right);

/* A row of the operator table: the operator and its length. */
typedef struct CompareOperator {
    const char *Operator;
    int Laenge;
} CompareOperator;

/* The operators "==" "!=" "<=" ">=" "<" ">"; a row's index is the operator
 * index of the comparison tables. */
KX_API extern const CompareOperator CompareTab[];
KX_API extern const int CompareTabLength;

/* One table per comparison type, one function per operator index:
 * "_string", "_stringi", "_stringn", "_stringni", "_numeric" and "_file",
 * "_strstr". */
KX_API extern const VergleichsFunktion TextCompareFunction[];
KX_API extern const VergleichsFunktion TextCompareFunctioni[];
KX_API extern const VergleichsFunktion TextCompareFunctionN[];
KX_API extern const VergleichsFunktion TextCompareFunctionNi[];
KX_API extern const VergleichsFunktion NumericCompareFunction[];
KX_API extern const VergleichsFunktion SubstringCompareFunction[];

/* Index of the first operator of exactly length characters that equals the
 * first length characters of text; -1 when there is none (or text is NULL).
 * Allocates nothing. */
KX_API int DetermineCompareIndex(const char *text, int length);

/* Compares the value of entry leftIndex with the alternatives of rightText
 * (placeholders evaluated, then split at "|"), using the table of type (case
 * ignored) at operator index op. Any alternative that holds makes 1. With no
 * cycle index and no value index every value of a list entry is tried, and
 * the entry is left on the value that matched (elementIndex, when another
 * valid entry, steps along). leftText is the left value for "_file" only.
 * An unknown type, an operator index outside the table or an invalid
 * leftIndex give 0. rightText is not changed. When memory runs out before
 * the alternatives are evaluated, the result is 0. */
KX_API int CompareFunction(const char *type, int op, const char *leftText, const char *rightText,
                           int cycleIndex, int leftIndex, int leftValueIndex, int elementIndex,
                           EingabeElement **pList, int *pCount);

/* The "_strstr" comparisons. Equal: 1 when left contains right (0 when either
 * is NULL); NotEqual: the opposite (1 when either is NULL). LowerEqual and
 * GreaterEqual are Equal; Lower and Greater are NotEqual. */
KX_API int SubstringCompareEqual(const char *left, const char *right);
KX_API int SubstringCompareNotEqual(const char *left, const char *right);
KX_API int SubstringCompareLowerEqual(const char *left, const char *right);
KX_API int SubstringCompareGreaterEqual(const char *left, const char *right);
KX_API int SubstringCompareLower(const char *left, const char *right);
KX_API int SubstringCompareGreater(const char *left, const char *right);

/* --- value assignment --------------------------------------------------- */

/* Applies count assignments "name=value" (NUL-terminated, laid end to end in
 * text; not changed) to the list reached through pCount and pList, which may
 * grow. Values are URL-decoded; a list entry (kind 'j') takes the value split
 * at divider (" " when NULL or empty); kinds 'm' and 'c' and indexed names
 * ("Server3=") add values; a button word (Save, Open, Delete, Reset, Submit)
 * sets its entry to "on". Elements that match no entry are dropped. On the
 * first call for a list (no entry "PLSet" yet) also carries out "MibPath",
 * "ParameterList" and "SetIniValue". "SetIniValue" writes only the names
 * listed (separated by "~") in the default of an entry "SetIniValueNames"
 * when the list has one, and only values whose definition line stays within
 * 4093 bytes; a save that does not happen is reported in the entry
 * "ErrorText" when the list has one. Returns the Name of the entry of the last
 * button pressed (owned by the list, not a copy), or NULL. When memory runs
 * out, an element whose values cannot be stored leaves its entry as it was,
 * and a value that cannot be decoded is stored as the empty text. */
KX_API char *WertzuweisungEingabe(int count, const char *text, int *pCount, EingabeElement **pList,
                                  const char *divider);

/* Replaces, in the file at path, what follows the first occurrence of key up
 * to the first byte of the first stopSetLength bytes of stopSet, by text
 * (nothing when NULL). The file is replaced as a whole (a new file renamed
 * over it), never left half-written, under a lock file ".<name>.lock" beside
 * it, so that concurrent changes are serialised. Returns 0 when it was
 * written, -1 when the file is missing or unreadable, key is absent, no stop
 * byte follows the key, the lock did not come within 5 seconds or the write
 * failed (read-only file included; the file is then unchanged); -1 as well
 * when memory runs out. */
KX_API int ChangeFileContent(const char *path, const char *key, const char *text,
                             const char *stopSet, int stopSetLength);

/* A new heap block of front, middle, back (a part whose length is 0 or less
 * is left out), without a terminating NUL; the caller frees it. NULL when
 * memory runs out. */
KX_API char *ErweitereBlock(const char *front, int frontLength, const char *back, int backLength,
                            const char *middle, int middleLength);

/* --- placeholder values ------------------------------------------------- */

/* Size of the message buffer that ReplaceValue, DetermineReplaceValue and
 * CreateValueFromControl write into; a longer message is cut to fit. */
#define KX_MESSAGE_SIZE 256

/* Which entry a placeholder prints. The caller zeroes it before each call and
 * frees Liste afterwards; Aktuell points into Liste (or is NULL). */
typedef struct ErsetzungsName {
    char *Liste;   /* heap text: candidate names, or the bare name */
    char *Aktuell; /* the name to look up */
} ErsetzungsName;

/* 1 while CreateValueFromControl runs (simple placeholders then yield their
 * bare name); 0 otherwise. */
KX_API extern int _InCreateValueFromControl;

/* While a control applies its conversions: the index of the entry the
 * control belongs to; -1 otherwise. */
KX_API extern int _ThisValueIndex;

/* Evaluates the placeholders of text in string mode against the current list
 * (_pEingabe/_pEingabeAnzahl), with the markers of iErsetzungsAnfang and
 * iErsetzungsEnde. encodeChars (or NULL): characters percent-encoded in the
 * result ("|" becomes "%7C"). Returns text itself when it holds no marker or
 * nothing was produced, otherwise a new heap text that the caller frees:
 * compare the pointers before freeing. When memory runs out, text itself (a
 * result that cannot be built) or NULL (one that cannot be encoded). */
KX_API char *MatchIt(const char *text, const char *marker, int cycleIndex,
                     const char *encodeChars);

/* Decides which entry a placeholder prints. start: its start marker (the
 * text is changed during the call and restored); end: its matching end
 * marker or NULL. Fills name (zeroed by the caller; the caller frees
 * name->Liste), writes a faulty placeholder's HTML comment into message
 * (KX_MESSAGE_SIZE bytes; "" otherwise), and the selection form's value index
 * (or -1) into *valueIndex. A selection form {Prefix[{Key[a|b]}]} adds the
 * entry Prefix_<candidate> holding the selected values. Returns the number of
 * values selected; 1 for a simple placeholder while _InCreateValueFromControl
 * is set; 0 otherwise, and 0 when memory runs out before the values are
 * selected (a value that cannot be encoded is stored empty). */
KX_API int ReplaceValue(char *start, char *end, int *pCount, EingabeElement **pList,
                        const char *divider, ErsetzungsName *name, char *message,
                        int *valueIndex, int cycleIndex);

/* Parses a selection form (see ReplaceValue). *indexList receives a heap
 * array of the selected value positions (the caller frees it) or NULL;
 * *bracket (when given) the first "[" of the placeholder or NULL. Returns
 * the number of positions; 1 for a simple placeholder in control mode; 0
 * (with NULL lists) when memory runs out. */
KX_API int DetermineReplaceValue(char *start, char *end, int *pCount, EingabeElement **pList,
                                 const char *divider, ErsetzungsName *name, char *message,
                                 int **indexList, char **bracket, int *valueIndex,
                                 int cycleIndex);

/* Evaluates an inline control {=[_type.]condition?then:else} at text (its
 * start marker; skip characters lead to the one after "="). elementIndex: the
 * entry the control follows (out of range for none), valueIndex its value
 * index or -1. *result receives a new heap text (the caller frees it) or NULL.
 * Returns the number of characters the control occupies, through its end
 * marker; 0 when text is no control. The text is restored before return.
 * When memory runs out *result may be NULL for a control that holds. */
KX_API int CreateValueFromControl(char *text, int elementIndex, int cycleIndex, int *pCount,
                                  EingabeElement **pList, char **result, int valueIndex,
                                  int skip, const char *endMarker, char *message);

/* --- cycle blocks ------------------------------------------------------- */

KX_EXTERN_C_END

#endif
