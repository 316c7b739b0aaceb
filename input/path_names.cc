// Base names of paths.
#include "companion/libKXUtils.h"
#include "kx_input.h"

extern "C" {

const char *HTMLBasename(const char *path) { return KXUtilsBasename(path, 0); }

const char *ErmittleProgrammname(const char *path) { return KXUtilsBasename(path, 0); }

}  // extern "C"
