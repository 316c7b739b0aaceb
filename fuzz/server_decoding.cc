// ServerDecoding over any text: the output is never longer than the input.
#include <cstdlib>
#include <cstring>
#include <string>

#include "kx_input.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const std::string text(reinterpret_cast<const char *>(data), size);
    char *decoded = ServerDecoding(text.c_str());
    if (std::strlen(decoded) > std::strlen(text.c_str())) std::abort();
    std::free(decoded);
    return 0;
}
