// Inner helpers of the profile and user-file operations: entry access, the
// "ErrorText" report, path confinement, the user tree and whole-file
// replacement. Nothing here leaves the library.
#ifndef KX_PROFILE_PROFILE_INTERNAL_H
#define KX_PROFILE_PROFILE_INTERNAL_H

#include <cstdio>
#include <new>
#include <string>
#include <string_view>
#include <unordered_map>

#include "kx_input.h"

namespace kx::profile {

// Runs work; when its working memory runs out the operation fails with
// fallback instead of ending the process.
template <typename Result, typename Work>
Result Guard(Result fallback, Work &&work) noexcept {
    try {
        return work();
    } catch (const std::bad_alloc &) {
        return fallback;
    }
}

// The entry of name, or null when the list does not declare it.
EingabeElement *Entry(int count, EingabeElement *list, const char *name);

// The current text of the entry of name (Wert + WertPosition, else Vorgabe);
// null when the entry is missing or has no text.
const char *CurrentText(int count, EingabeElement *list, const char *name);

// Index of each declared name (the first entry of each), for lookups in
// constant time while a whole file or name list is gone through.
std::unordered_map<std::string_view, int> IndexByName(int count, const EingabeElement *list);

// True when the entry of name holds a value that is not empty.
bool HasValue(const EingabeElement *entry);

// Replaces the entry's values by text split at divider (one byte).
void SetValueList(int count, EingabeElement *list, int index, const char *text, const char *divider);

// Steps an entry to its next value (length of the current one + 1).
void Advance(EingabeElement &entry);

// printf-style message into "ErrorText" (nothing when it is not declared).
void ReportError(int count, EingabeElement *list, const char *format, ...)
    __attribute__((format(printf, 3, 4)));

// True when text may stand as one name inside the user directory: not
// empty, no "/", "\\" or control byte, not "." or "..", and none of that
// either once percent escapes in it are decoded (repeatedly).
bool IsConfinedName(std::string_view text);

// The user tree. Paths use the directory separator of the input layer.
std::string Separator();
std::string CounterFilePath(int count, EingabeElement *list);
// The user's directory as found by the file search; empty when the user id
// is missing, not a confined name, or the directory is not there.
std::string UserDirectory(int count, EingabeElement *list, const char *userId);
// Creates path (0700); 0, or the errno of a failure other than EEXIST/EACCES.
int MakeDirectory(const std::string &path);
// True under the "SnmpTrap" rule (named files live in "Traps").
bool InTrapsFolder(int count, EingabeElement *list);

// The current profile file's path into path: 0; -1 without a usable
// profile or user directory; the errno value of a directory creation.
int ProfileFile(int count, EingabeElement *list, int create, std::string &path);

// Replaces the file at path by content through the companion writer
// (temporary sibling, fsync, rename); 0 or an errno value.
int ReplaceFile(const std::string &path, std::string_view content);

// The ini text of the named entries (WriteIniFile's lines): "name=" and the
// values joined by divider, one LF-ended line per entry with values. Each
// written entry's WertPosition ends at 0.
void AppendIniLines(std::string &out, int count, EingabeElement *list, std::string_view divider,
                    int nameCount, const char **names);

// Reads the whole file; false when it cannot be opened.
bool ReadWholeFile(const std::string &path, std::string &content);

}  // namespace kx::profile

#endif
