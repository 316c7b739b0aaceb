// CYCLE blocks over any template, in string mode (first byte even) or file
// mode (odd), with a list that holds lists and count entries for groups.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "page_list.h"

namespace {

// Longer templates add nothing the seeds cannot reach, only time: each
// replayed row costs its length.
constexpr size_t kMaxTemplate = 1024;

void StringMode(const std::string &text) {
    kx::fuzz::PageList list;
    char *result = reinterpret_cast<char *>(static_cast<intptr_t>(-1));
    ErsetzeUndGebeHtmlDateiAus(text.c_str(), &result, 0, 1, list.Count(), list.List());
    std::free(result);
}

void FileMode(const std::string &text) {
    char path[] = "/tmp/kx-fuzz-cycles.XXXXXX";
    const int fd = mkstemp(path);
    if (fd < 0) return;
    FILE *page = fdopen(fd, "wb");
    if (page == nullptr) return;
    std::fwrite(text.data(), 1, text.size(), page);
    std::fclose(page);
    kx::fuzz::PageList list;
    FILE *sink = std::fopen("/dev/null", "w");
    FILE *saved = _Utilsfpout;
    _Utilsfpout = sink;
    ErsetzeUndGebeHtmlDateiAus(path, nullptr, 0, 1, list.Count(), list.List());
    _Utilsfpout = saved;
    if (sink != nullptr) std::fclose(sink);
    std::remove(path);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size < 1 || size > kMaxTemplate) return 0;
    const std::string text(reinterpret_cast<const char *>(data) + 1, size - 1);
    if (data[0] % 2 == 0)
        StringMode(text);
    else
        FileMode(text);
    return 0;
}
