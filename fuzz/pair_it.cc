// PairIt finds a closing marker inside the text, or gives the text back.
#include <cstdlib>
#include <cstring>
#include <string>

#include "fuzz_input.h"
#include "kx_input.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    auto texts = kx::fuzz::Texts(data, size, 3);
    const char *text = texts[2].c_str();
    const char *close = texts[1].c_str();
    const char *found = PairIt(text, texts[0].c_str(), close);
    if (found != text && (found < text || found > text + std::strlen(text) ||
                          std::strncmp(found, close, std::strlen(close)) != 0))
        std::abort();
    return 0;
}
