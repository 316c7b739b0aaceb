// The template processor in string mode over any text, with a fixed list.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "page_list.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    kx::fuzz::PageList page;
    const std::string text(reinterpret_cast<const char *>(data), size);
    char *result = reinterpret_cast<char *>(static_cast<intptr_t>(size % 3) - 1);
    ErsetzeUndGebeHtmlDateiAus(text.c_str(), &result, 0, 1, page.Count(), page.List());
    std::free(result);
    return 0;
}
