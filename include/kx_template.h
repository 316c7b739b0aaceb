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

/* --- conditions and comparisons ----------------------------------------- */

/* A comparison: 1 when the relation holds between left and right, else 0. */
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
 * first length characters of text; -1 when there is none (or text is NULL). */
KX_API int DetermineCompareIndex(const char *text, int length);

/* Compares the value of entry leftIndex with the alternatives of rightText
 * (placeholders evaluated, then split at "|"), using the table of type (case
 * ignored) at operator index op. Any alternative that holds makes 1. With no
 * cycle index and no value index every value of a list entry is tried, and
 * the entry is left on the value that matched (elementIndex, when another
 * valid entry, steps along). leftText is the left value for "_file" only.
 * An unknown type, an operator index outside the table or an invalid
 * leftIndex give 0. rightText is not changed. */
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
 * "ParameterList" and "SetIniValue". Returns the Name of the entry of the last
 * button pressed (owned by the list, not a copy), or NULL. */
KX_API char *WertzuweisungEingabe(int count, const char *text, int *pCount, EingabeElement **pList,
                                  const char *divider);

/* Replaces, in the file at path, what follows the first occurrence of key up
 * to the first byte of the first stopSetLength bytes of stopSet, by text
 * (nothing when NULL). The file is replaced as a whole (a new file renamed
 * over it), never left half-written. Returns 0 when it was written, -1 when
 * the file is missing or unreadable, key is absent, no stop byte follows the
 * key or the write failed (the file is then unchanged). */
KX_API int ChangeFileContent(const char *path, const char *key, const char *text,
                             const char *stopSet, int stopSetLength);

/* A new heap block of front, middle, back (a part whose length is 0 or less
 * is left out), without a terminating NUL; the caller frees it. NULL when
 * memory runs out. */
KX_API char *ErweitereBlock(const char *front, int frontLength, const char *back, int backLength,
                            const char *middle, int middleLength);

/* --- placeholder values ------------------------------------------------- */

/* Evaluates the placeholders of text (marker is "{") with the template
 * processor in string mode; cycleIndex is the page's cycle index (negative
 * for none). The characters of encodeChars (or NULL) are percent-encoded in
 * the result. Returns text itself when there was nothing to evaluate,
 * otherwise a new heap text: compare the pointers before freeing. */
KX_API char *MatchIt(const char *text, const char *marker, int cycleIndex, const char *encodeChars);

/* --- cycle blocks ------------------------------------------------------- */

KX_EXTERN_C_END

#endif
