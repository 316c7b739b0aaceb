// The trap MIB indexes' shared pieces: the MIB directory, its MIB files
// that define traps, and name lists read from a list file.
#ifndef KX_TRAP_MIB_INDEX_H
#define KX_TRAP_MIB_INDEX_H

#include <cstdint>
#include <string>
#include <string_view>

namespace kx::trap {

// The directory of the MIB files: the content of "MibPath" up to its first
// line end, "mibs" when the file is missing or that is empty.
std::string MibDirectory();

// One index: its names (malloc'd array), their lengths (when kept), their
// number and the list file's copy that listed names point into.
struct MibIndex {
    char **&names;
    int32_t **lengths;  // nullptr: the page engine's index keeps none
    int32_t &count;
    char *&listCopy;
};

// Replaces the index by the names of a list file's contents (contents is
// ended at its first line end in place); earlier names are released.
void TakeListedNames(MibIndex index, char *contents);

// Appends the MIB files of directory that define traps and are not in the
// index yet, by base name, in listing order; paths join with separator.
void AddTrapDefiningMibs(MibIndex index, const std::string &directory, std::string_view separator);

// The index of name (cut at its first ".", any case) among count names;
// -1 when count is 0 or below, -2 when not found.
int FindMibName(const char *name, char *const *names, int count);

}  // namespace kx::trap

#endif
