// UtilsCreateOuput: two bytes give first and number (-8 .. 119), then the
// separator up to the first NUL byte, then the text.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "kx_input.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size < 2) return 0;
    const int first = data[0] % 128 - 8;
    const int number = data[1] % 128 - 8;
    const std::string rest(reinterpret_cast<const char *>(data + 2), size - 2);
    const std::string separator(rest.c_str());
    const std::string text = separator.size() < rest.size() ? rest.substr(separator.size() + 1) : "";
    char *heap = static_cast<char *>(std::malloc(text.size() + 1));
    std::memcpy(heap, text.c_str(), text.size() + 1);
    char *result = UtilsCreateOuput(heap, separator.c_str(), first, number);
    // The result is part of the text.
    if (std::string_view(text.c_str()).find(result) == std::string_view::npos) std::abort();
    std::free(result);
    return 0;
}
