// Stand-in for the page engine's placeholder evaluation until it is merged:
// every text comes back as a copy, unevaluated.
#include <cstdlib>
#include <cstring>

extern "C" char *MatchIt(const char *text, const char * /*marker*/, int /*cycleIndex*/,
                         const char * /*encodeChars*/) {
    return text == nullptr ? nullptr : strdup(text);
}
