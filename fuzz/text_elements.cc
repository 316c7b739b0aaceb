// ErmittleTextElemente: element count, lengths and longest agree with the text.
#include <cstdlib>
#include <cstring>
#include <string>

#include "fuzz_input.h"
#include "kx_input.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    auto texts = kx::fuzz::Texts(data, size, 2);
    const std::string &separator = texts[0];
    if (separator.empty()) return 0;
    std::string text = texts[1].c_str();
    int longest = -1, *lengths = nullptr;
    const int count = ErmittleTextElemente(text.data(), separator.c_str(), &longest, &lengths);
    size_t total = 0;
    int greatest = 0;
    for (int i = 0; i < count; ++i) {
        total += static_cast<size_t>(lengths[i]);
        greatest = lengths[i] > greatest ? lengths[i] : greatest;
    }
    if (total + static_cast<size_t>(count - 1) * separator.size() != text.size() || greatest != longest) std::abort();
    std::free(lengths);
    return 0;
}
