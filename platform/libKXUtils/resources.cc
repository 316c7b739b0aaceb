// Texts and blocks handed out by this library are plain malloc blocks.
#include <cstdlib>

#include "companion/libKXUtils.h"

extern "C" void KXUtilsFreeResources(void *resource) { std::free(resource); }
