// Reading the values of input-list entries without ever stepping outside
// them. One bounds rule for the whole library: the current text of an entry
// is Wert + WertPosition while that position lies inside its values, the
// empty text when it lies outside, and Vorgabe when Wert is not set.
#ifndef KX_CORE_ENTRY_H
#define KX_CORE_ENTRY_H

#include <cstddef>
#include <string_view>

#include "kx_input.h"

namespace kx::core {

// The entry named like a list entry followed by this holds the group sizes of
// a nested list, one decimal number per value of the list.
inline constexpr std::string_view Text_Internalcount = "Internalcount";

// Bytes the entry's values occupy in Wert, terminating NULs included.
size_t ValuesSpan(const EingabeElement &entry);

// The current text: Wert + WertPosition when Wert is set (or "" when the
// position lies outside the values), else Vorgabe (which may be NULL).
const char *CurrentText(const EingabeElement &entry);

// The setting an entry carries: Wert when it is set and not empty, else
// Vorgabe (which may be NULL). Settings such as "DeleteCopyright" and
// "MibPath" read this way, so an emptied value falls back to the default.
const char *SettingText(const EingabeElement &entry);

// Value number index (from 0) of Wert; NULL when Wert is NULL or the entry
// holds no such value.
const char *ValueAt(const EingabeElement &entry, int index);

// Offset in Wert of value number index; -1 when there is none.
int ValueOffset(const EingabeElement &entry, int index);

// Index of the first entry whose name is exactly name; count when none or
// when list is null. A walk over the list, for short lists and single
// lookups; NameIndex answers the same for long ones.
int FindEntry(const EingabeElement *list, int count, std::string_view name);

// The entry at index when it is one of the list's, else NULL.
EingabeElement *EntryAt(int *pCount, EingabeElement **pList, int index);

// The current text of entry index, or NULL when it is not in the list.
const char *CurrentTextAt(int *pCount, EingabeElement **pList, int index);

}  // namespace kx::core

#endif
