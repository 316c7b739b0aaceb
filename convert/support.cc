// Helpers the conversion handlers share.
#include <charconv>
#include <cstdio>

#include "convert/convert_internal.h"

namespace kx::convert {

std::string_view ValueText(const char *value) {
    return value == nullptr ? std::string_view{} : std::string_view{value};
}

char *PrintInt(int32_t number) {
    // Room for "-2147483648" and its NUL.
    char buffer[16];
    const auto printed = std::to_chars(buffer, buffer + sizeof buffer, number);
    return HeapCopy({buffer, static_cast<size_t>(printed.ptr - buffer)});
}

}  // namespace kx::convert
