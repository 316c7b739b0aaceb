// Turns a fuzz input into texts: the bytes split at NUL bytes, so that one
// input feeds the several text arguments of an operation.
#ifndef KX_FUZZ_FUZZ_INPUT_H
#define KX_FUZZ_FUZZ_INPUT_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace kx::fuzz {

// The first `count` texts of data (missing ones are empty); the last takes
// the rest of the bytes, its NULs included.
inline std::vector<std::string> Texts(const uint8_t *data, size_t size, size_t count) {
    std::vector<std::string> texts(count);
    size_t field = 0;
    for (size_t i = 0; i < size; ++i) {
        if (data[i] == 0 && field + 1 < count) {
            ++field;
            continue;
        }
        texts[field].push_back(static_cast<char>(data[i]));
    }
    return texts;
}

}  // namespace kx::fuzz

#endif
