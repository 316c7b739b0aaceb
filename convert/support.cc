// Helpers the conversion handlers share.
#include <cstdio>

#include "convert/convert_internal.h"

namespace kx::convert {

std::string_view ValueText(const char *value) {
    return value == nullptr ? std::string_view{} : std::string_view{value};
}

char *PrintInt(int32_t number) {
    // Room for "-2147483648" and its NUL.
    char buffer[16];
    std::snprintf(buffer, sizeof buffer, "%d", number);
    return HeapCopy(buffer);
}

}  // namespace kx::convert
