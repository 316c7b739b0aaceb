// Inner helpers of the request set-up: the page stream, the directory
// separator, heap texts, the current text of an entry and the application
// directory. Shared by the definition reader, the file search and the request
// services; nothing here leaves the library.
#ifndef KX_INPUT_REQUEST_INTERNAL_H
#define KX_INPUT_REQUEST_INTERNAL_H

#include <cstdio>
#include <string>
#include <string_view>

#include "core/text.h"
#include "kx_input.h"

namespace kx::request {

using core::Decoded;
using core::HeapCopy;

// Longest path the library builds, without its terminating NUL.
inline constexpr std::size_t kMaxPathLength = KX_PATH_SIZE - 1;

// Where pages and messages go: _Utilsfpout, or standard output while it is null.
std::FILE *PageStream();

// The directory separator text (Verzeichnistrenner; "/" when unset or empty)
// and its first character.
std::string_view Separator();
char SeparatorCharacter();

// Every "/" and backslash of path becomes the separator character.
void UnifySeparators(std::string &path);

// True when index names an entry of a list of count entries.
bool IsEntry(int index, int count);

// The current text of entry index (the one bounds rule of core/entry.h); empty
// when the index is not an entry or the entry has no text.
std::string_view CurrentText(const EingabeElement *list, int count, int index);

// RootPath, RootDirectory and Application, each followed by the separator;
// a piece whose index global does not name an entry is left out. The
// Application piece counts by its base name only.
std::string ApplicationDirectory(const EingabeElement *list, int count);

}  // namespace kx::request

#endif
