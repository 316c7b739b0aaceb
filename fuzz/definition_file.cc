// Definition files: the input is written to "Fuzz.ini" in a scratch
// directory and read by name with ErmittleEingabe and ErmittleEingabe2.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "fuzz_list.h"
#include "kx_input.h"

namespace {

EingabeElement *list = nullptr;
int count = 0;
std::string scratch;

void Release() {
    kx::fuzz::FreeList(list, count);
    kx::fuzz::ForgetKeywords();
    for (int slot = 0; slot < 2; ++slot) {
        std::free(_IniFilename[slot]);
        _IniFilename[slot] = nullptr;
    }
}

void RemoveScratch() {
    std::remove("Fuzz.ini");
    if (chdir("/") == 0) rmdir(scratch.c_str());
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    char pattern[] = "/tmp/kx-fuzz-definition-XXXXXX";
    if (mkdtemp(pattern) == nullptr || chdir(pattern) != 0) std::abort();
    scratch = pattern;
    std::atexit(RemoveScratch);
    _Utilsfpout = std::fopen("/dev/null", "w");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    std::FILE *file = std::fopen("Fuzz.ini", "wb");
    if (file == nullptr) std::abort();
    std::fwrite(data, 1, size, file);
    std::fclose(file);
    ErmittleEingabe("Fuzz", &list, &count, nullptr, 0);
    Release();
    ErmittleEingabe2("Fuzz", &list, &count, nullptr, "bin/prog", 0);
    Release();
    return 0;
}
