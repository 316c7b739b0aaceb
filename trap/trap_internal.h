// Inner pieces of the trap store shared by its sources.
#ifndef KX_TRAP_TRAP_INTERNAL_H
#define KX_TRAP_TRAP_INTERNAL_H

#include <string>
#include <string_view>

namespace kx::trap {

// The expression of every trap file listing: the mark, then the rest of a name.
inline std::string TrapFileExpression(const char *prefix) {
    return std::string(prefix != nullptr ? prefix : "[tT]") + "[0-9]+.*_[0-9]+_[0-9]+.*[.][0-9]+$";
}

// Leading decimal number of text after blanks, with an optional sign (0 when none).
long long LeadingNumber(const char *text);

// Applies the first two lines of a "./snmptrapd.ini" content to the directory buffers.
void ApplyDirectorySettings(std::string_view content);

// The directory of the trap functions: the caller's, else TrapsDirectory.
const char *DirectoryOrDefault(const char *directory);

}  // namespace kx::trap

#endif
