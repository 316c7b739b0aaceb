// Helpers the conversion handlers share.
#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "convert/convert_internal.h"
#include "kx_input.h"

// The placeholder evaluation of the page engine.
extern "C" char *MatchIt(const char *text, const char *marker, int cycleIndex,
                        const char *encodeChars);

namespace kx::convert {

std::string_view ValueText(const char *value) {
    return value == nullptr ? std::string_view{} : std::string_view{value};
}

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
    number = std::clamp<int64_t>(number, std::numeric_limits<int32_t>::min(),
                                 std::numeric_limits<int32_t>::max());
    return static_cast<int32_t>(number);
}

char *CopyOut(std::string_view text) {
    auto *copy = static_cast<char *>(std::malloc(text.size() + 1));
    if (copy == nullptr) return nullptr;
    if (!text.empty()) std::memcpy(copy, text.data(), text.size());
    copy[text.size()] = '\0';
    return copy;
}

char *PrintInt(int32_t number) {
    char buffer[16];
    std::snprintf(buffer, sizeof buffer, "%d", number);
    return CopyOut(buffer);
}

std::string Evaluate(std::string_view text, int cycleIndex, const char *encode) {
    std::string work{text};
    char *result = MatchIt(work.data(), "{", cycleIndex, encode);
    if (result == nullptr || result == work.data()) return work;
    std::string evaluated{result};
    std::free(result);
    return evaluated;
}

std::string Decode(std::string_view text) {
    std::string work{text};
    char *decoded = ServerDecoding(work.c_str());
    if (decoded == nullptr) return work;
    std::string result{decoded};
    std::free(decoded);
    return result;
}

std::vector<std::string_view> Split(std::string_view text, char separator) {
    std::vector<std::string_view> pieces;
    for (;;) {
        std::size_t at = text.find(separator);
        pieces.push_back(text.substr(0, at));
        if (at == std::string_view::npos) return pieces;
        text.remove_prefix(at + 1);
    }
}

Cut CutAt(std::string_view text, char separator) {
    std::size_t at = text.find(separator);
    if (at == std::string_view::npos) return {text, {}, false};
    return {text.substr(0, at), text.substr(at + 1), true};
}

}  // namespace kx::convert
