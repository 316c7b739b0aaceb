// StringReplace and StringNReplace over any texts and lengths.
#include <cstdlib>
#include <cstring>
#include <string>

#include "fuzz_input.h"
#include "kx_input.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size < 2) return 0;
    auto texts = kx::fuzz::Texts(data + 2, size - 2, 3);
    const char *text = texts[0].c_str(), *old = texts[1].c_str(), *replacement = texts[2].c_str();
    std::free(StringReplace(text, old, replacement));
    std::free(StringNReplace(text, data[0] % 16, old, data[1] % 16, replacement));
    return 0;
}
