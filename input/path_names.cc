// Base names of paths.
#include <string_view>

#include "companion/libKXUtils.h"
#include "kx_input.h"

extern "C" {

const char *HTMLBasename(const char *path) {
    if (path == nullptr) return nullptr;
    const std::size_t last = std::string_view(path).find_last_of("/\\");
    return last == std::string_view::npos ? path : path + last + 1;
}

const char *ErmittleProgrammname(const char *path) { return KXUtilsBasename(path, 0); }

}  // extern "C"
