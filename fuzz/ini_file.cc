// Ini files: the input is written to a scratch file and read whole, by
// section and by key; every pair comes back as two texts.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "companion/libKXUtils.h"

namespace {

std::string path;

// Reads the file one way and walks every text it handed back: each is a
// piece of the file, a qualified name at most its section, separator and name.
void ReadAndWalk(size_t size, const char *section, char separator, const char *key) {
    char **pairs = nullptr;
    const int n = KXUtilsReadIniFile(path.c_str(), section, 0, separator, key, &pairs, 0);
    if (n > 0 && pairs == nullptr) std::abort();
    for (int i = 0; i < 2 * n; ++i)
        if (std::strlen(pairs[i]) > size) std::abort();
    KXUtilsFreeResources(pairs);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    char pattern[] = "/tmp/kx-fuzz-ini.XXXXXX";
    const int fd = mkstemp(pattern);
    if (fd < 0) std::abort();
    close(fd);
    path = pattern;
    std::atexit([] { std::remove(path.c_str()); });
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    std::FILE *file = std::fopen(path.c_str(), "wb");
    if (file == nullptr) return 0;
    std::fwrite(data, 1, size, file);
    std::fclose(file);
    ReadAndWalk(size, nullptr, '.', nullptr);
    ReadAndWalk(size, nullptr, 0, nullptr);
    ReadAndWalk(size, "Net", '.', nullptr);
    ReadAndWalk(size, nullptr, '.', "Net.Host");
    ReadAndWalk(size, "Net", '.', "Host");
    return 0;
}
