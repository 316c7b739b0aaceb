// Small helpers for texts handed to callers, who free them with free().
#ifndef KX_INPUT_EINGABE_HEAP_TEXT_H
#define KX_INPUT_EINGABE_HEAP_TEXT_H

#include <cstdlib>
#include <cstring>
#include <string_view>

namespace kx::input {

// A malloc'd copy of text with a terminating NUL; nullptr when memory runs out.
inline char *HeapCopy(std::string_view text) {
    char *copy = static_cast<char *>(std::malloc(text.size() + 1));
    if (copy == nullptr) return nullptr;
    if (!text.empty()) std::memcpy(copy, text.data(), text.size());
    copy[text.size()] = '\0';
    return copy;
}

}  // namespace kx::input

#endif
