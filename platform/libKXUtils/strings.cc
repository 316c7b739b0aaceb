// Text search helpers.
#include <cstring>

#include "companion/libKXUtils.h"

extern "C" char *KXUtils_strrstr(const char *text, const char *needle) {
    if (text == nullptr || needle == nullptr) return nullptr;
    const std::size_t length = std::strlen(needle);
    const char *last = nullptr;
    for (const char *found = std::strstr(text, needle); found != nullptr;
         found = *found == '\0' ? nullptr : std::strstr(found + 1, needle))
        last = found;
    // An empty needle is found last at the text's end.
    if (length == 0) last = text + std::strlen(text);
    return const_cast<char *>(last);
}
