#include "core/number.h"

#include <algorithm>
#include <cctype>
#include <limits>

namespace kx::core {

int32_t ReadInt(std::string_view text) {
    std::size_t i = 0;
    while (i < text.size() && std::isspace(static_cast<unsigned char>(text[i]))) ++i;
    bool negative = false;
    if (i < text.size() && (text[i] == '+' || text[i] == '-')) negative = text[i++] == '-';
    constexpr int64_t kLimit = int64_t{std::numeric_limits<int32_t>::max()} + 1;
    int64_t magnitude = 0;
    for (; i < text.size() && std::isdigit(static_cast<unsigned char>(text[i])); ++i)
        magnitude = std::min(magnitude * 10 + (text[i] - '0'), kLimit);
    int64_t number = negative ? -magnitude : magnitude;
    number =
        std::clamp<int64_t>(number, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max());
    return static_cast<int32_t>(number);
}

}  // namespace kx::core
