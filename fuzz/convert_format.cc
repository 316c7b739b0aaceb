// ConvertByFormat over any format and any value. Input: the format, NUL,
// the value.
#include <cstdlib>
#include <cstring>
#include <string>

#include "fuzz_input.h"
#include "kx_convert.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    auto texts = kx::fuzz::Texts(data, size, 2);
    std::string format = texts[0];
    const std::string before = format;
    char *result = ConvertByFormat(format.data(), texts[1].data(), -1);
    if (result == nullptr || std::strlen(result) > 127 || format != before) std::abort();
    std::free(result);
    return 0;
}
