// The trap MIB scan: any text as a MIB file. KXUtilsSearchInFile must find
// TRAP-TYPE outside "--" comments exactly where a plain character-by-character
// reading of the text does.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "companion/libKXUtils.h"

namespace {

// A comment runs from "--" to the next "--" or line end.
long Reference(std::string_view text) {
    bool comment = false;
    for (std::size_t at = 0; at < text.size();) {
        if (text.compare(at, 2, "--") == 0) {
            comment = !comment, at += 2;
        } else if (text[at] == '\n' || text[at] == '\r') {
            comment = false, ++at;
        } else if (!comment && text.compare(at, 9, "TRAP-TYPE") == 0) {
            return static_cast<long>(at);
        } else {
            ++at;
        }
    }
    return -1;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    static const std::string path = "/tmp/kx-fuzz-mib-scan." + std::to_string(getpid());
    const std::string_view text(reinterpret_cast<const char *>(data), size);
    if (std::FILE *file = std::fopen(path.c_str(), "wb")) {
        std::fwrite(data, 1, size, file);
        std::fclose(file);
    }
    const int found = KXUtilsSearchInFile(path.c_str(), 9, "TRAP-TYPE", 0, "--", 0, 0);
    unlink(path.c_str());
    if (found != Reference(text)) std::abort();
    return 0;
}
