// Text search helpers.
#include <cstring>

#include "companion/libKXUtils.h"

extern "C" char *KXUtils_strrstr(const char *text, const char *needle) {
    if (text == nullptr || needle == nullptr) return nullptr;
    // An empty needle is found last at the text's end.
    if (*needle == '\0') return const_cast<char *>(text + std::strlen(text));
    const char *last = nullptr;
    for (const char *found = std::strstr(text, needle); found != nullptr;
         found = std::strstr(found + 1, needle))
        last = found;
    return const_cast<char *>(last);
}
