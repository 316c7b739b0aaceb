// "_suboid" over any argument and any OID value. Input: the argument, NUL,
// the value.
#include <cstdlib>
#include <cstring>
#include <string>

#include "fuzz_input.h"
#include "kx_convert.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    auto texts = kx::fuzz::Texts(data, size, 2);
    std::string argument = texts[0];
    const std::string value = texts[1].c_str();
    char *result = ConvertToSubOID(argument.data(), texts[1].data(), -1);
    if (result == nullptr) std::abort();
    // The result is a piece of the value, or "n.a.".
    if (std::strcmp(result, "n.a.") != 0 && value.find(result) == std::string::npos) std::abort();
    std::free(result);
    return 0;
}
