// Decoding what ServerEncoding made gives back the text it started from.
#include <cstdlib>
#include <cstring>
#include <string>

#include "kx_input.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size == 0) return 0;
    const int blank = data[0] & 1;
    const std::string text(reinterpret_cast<const char *>(data + 1), size - 1);
    int length = -1;
    char *encoded = ServerEncoding(text.c_str(), &length, blank, 0);
    if (length != static_cast<int>(std::strlen(encoded))) std::abort();
    char *decoded = ServerDecoding(encoded);
    if (std::strcmp(decoded, text.c_str()) != 0) std::abort();
    std::free(encoded);
    std::free(decoded);
    return 0;
}
