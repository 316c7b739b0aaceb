// GetIndexedValue by position or by keyword over any text.
#include <cstdlib>
#include <string>

#include "fuzz_input.h"
#include "kx_input.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    auto texts = kx::fuzz::Texts(data, size, 3);
    std::free(GetIndexedValue(texts[2].c_str(), texts[0].c_str(), texts[1].empty() ? nullptr : texts[1].c_str()));
    return 0;
}
