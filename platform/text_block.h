// Lists the companions hand to their callers as one malloc'd block: the text
// pointers (and a null pointer after them when asked), then the texts with
// their NULs, so that one free() releases it all. Header-only: each
// companion is a shared library of its own.
#ifndef KX_PLATFORM_TEXT_BLOCK_H
#define KX_PLATFORM_TEXT_BLOCK_H

#include <cstdlib>
#include <cstring>
#include <string_view>
#include <vector>

namespace kx::platform {

// The block of texts; NULL when texts is empty or memory runs out.
inline char **PackTexts(const std::vector<std::string_view> &texts, bool nullTerminated = false) {
    if (texts.empty()) return nullptr;
    const std::size_t slots = texts.size() + (nullTerminated ? 1 : 0);
    std::size_t bytes = slots * sizeof(char *);
    for (const std::string_view text : texts) bytes += text.size() + 1;
    char **block = static_cast<char **>(std::malloc(bytes));
    if (block == nullptr) return nullptr;
    char *at = reinterpret_cast<char *>(block + slots);
    for (std::size_t i = 0; i < texts.size(); ++i) {
        block[i] = static_cast<char *>(std::memcpy(at, texts[i].data(), texts[i].size()));
        at[texts[i].size()] = '\0';
        at += texts[i].size() + 1;
    }
    if (nullTerminated) block[texts.size()] = nullptr;
    return block;
}

}  // namespace kx::platform

#endif
