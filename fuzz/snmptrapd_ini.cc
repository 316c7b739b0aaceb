// "./snmptrapd.ini": whatever the file holds, both directory buffers end in
// a NUL inside their 1024 bytes, and a file that sets neither gives the
// defaults. The target works in a scratch directory of its own.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "kx_trap.h"

namespace {

std::filesystem::path scratch;

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    char pattern[] = "/tmp/kx-fuzz-snmptrapd.XXXXXX";
    if (mkdtemp(pattern) == nullptr || chdir(pattern) != 0) std::abort();
    scratch = pattern;
    std::atexit([] { std::filesystem::remove_all(scratch); });
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    std::FILE *file = std::fopen("snmptrapd.ini", "wb");
    if (file == nullptr) return 0;
    std::fwrite(data, 1, size, file);
    std::fclose(file);
    TrapsDirectory[0] = DBDirectory[0] = '\0';
    KXDetermineDirectories();
    if (std::memchr(TrapsDirectory, '\0', sizeof TrapsDirectory) == nullptr ||
        std::memchr(DBDirectory, '\0', sizeof DBDirectory) == nullptr)
        std::abort();
    if (TrapsDirectory[0] == '\0' && DBDirectory[0] == '\0') std::abort();
    return 0;
}
