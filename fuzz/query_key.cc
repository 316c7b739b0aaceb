// PositioniereAufSchluesselwortWert over arbitrary queries: the input is
// query, key and assignment text separated by NUL bytes (missing ones null).
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "kx_input.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const std::string input(reinterpret_cast<const char *>(data), size);
    const char *parts[3] = {nullptr, nullptr, nullptr};
    size_t start = 0;
    for (int part = 0; part < 3 && start <= input.size(); ++part) {
        parts[part] = input.c_str() + start;
        start += std::strlen(parts[part]) + 1;
    }
    const char *value = PositioniereAufSchluesselwortWert(parts[0], parts[1], parts[2]);
    // The value lies within the query.
    if (value != nullptr && (value < parts[0] || value > parts[0] + std::strlen(parts[0]))) std::abort();
    return 0;
}
