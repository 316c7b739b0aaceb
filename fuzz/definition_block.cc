// Definitions in memory: the input becomes a block of NUL-terminated lines
// (its line ends and NUL bytes end texts) behind an in-memory marker chosen
// by the first byte, which also picks ErmittleEingabe or ErmittleEingabe2.
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "fuzz_list.h"
#include "kx_input.h"

namespace {

constexpr std::array<char, 12> kMarkers = {'~', '|', ' ', '&', '%', '$', '\xA7', '!', '"', '!', '^', '#'};

EingabeElement *list = nullptr;
int count = 0;

// Frees the list and forgets the indices that pointed into it.
void Release() {
    kx::fuzz::FreeList(list, count);
    kx::fuzz::ForgetKeywords();
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    _Utilsfpout = std::fopen("/dev/null", "w");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size == 0) return 0;
    std::string block(1, kMarkers[data[0] % kMarkers.size()]);
    for (size_t i = 1; i < size; ++i) block.push_back(data[i] == '\n' ? '\0' : static_cast<char>(data[i]));
    block.append(2, '\0');
    if (data[0] & 0x80)
        ErmittleEingabe2(block.c_str(), &list, &count, nullptr, nullptr, 0);
    else
        ErmittleEingabe(block.c_str(), &list, &count, nullptr, 0);
    Release();
    return 0;
}
