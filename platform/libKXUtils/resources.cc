// Releasing what the utility library handed out.
#include <cstdlib>

#include "companion/libKXUtils.h"

extern "C" void KXUtilsFreeResources(void *resource) { std::free(resource); }
