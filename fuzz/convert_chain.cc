// ConvertIt over any chain text and any value. Input: one flag byte (bit 0:
// a null value; the rest: the cycle index), the chain, NUL, the value.
#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <string>

#include "fuzz_input.h"
#include "kx_convert.h"

namespace {

// Conversions that touch files, start programs or reach the network stay out
// of the fuzzer's reach.
bool TouchesTheSystem(std::string chain) {
    std::transform(chain.begin(), chain.end(), chain.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    for (const char *name : {"_fremove", "_mktemp", "_createdir", "_listdir", "_fcreate",
                             "_frename", "_fexists", "_fcopy", "_fwrite", "_call", "_ping",
                             "_hostname", "_ipaddress", "_iniread"})
        if (chain.find(name) != std::string::npos) return true;
    return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size < 1) return 0;
    auto texts = kx::fuzz::Texts(data + 1, size - 1, 2);
    if (TouchesTheSystem(texts[0])) return 0;
    std::string chain = texts[0];
    const std::string before = chain;
    char *value = (data[0] & 1) ? nullptr : strdup(texts[1].c_str());
    const int cycleIndex = (data[0] >> 1) - 2;
    char *result = ConvertIt(chain.data(), KX_CONVERT_UNBOUNDED, value, 1, cycleIndex);
    if (result != nullptr) (void)std::strlen(result);
    std::free(result);  // the value itself, or a new text after the value was freed
    if (chain != before) std::abort();
    return 0;
}
