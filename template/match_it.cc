// MatchIt: the placeholders inside an argument text, evaluated by the
// processor in string mode.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "core/alloc.h"
#include "kx_template.h"

namespace kx::tmpl {
namespace {

// Size of the text that "{CycleCount}" yields.
constexpr size_t kCycleCountSize = 64;

char *CycleCountText(int cycleIndex) {
    char *text = static_cast<char *>(kx::core::Allocate(kCycleCountSize));
    if (text != nullptr) std::snprintf(text, kCycleCountSize, "%d", cycleIndex < 0 ? 0 : cycleIndex);
    return text;
}

// Each character of encodeChars becomes "%XX" in the heap text result.
char *EncodeCharacters(char *result, const char *encodeChars) {
    for (const char *c = encodeChars; *c != '\0'; ++c) {
        if (std::strchr(result, *c) == nullptr) continue;
        const char old[2] = {*c, '\0'};
        char replacement[4];
        std::snprintf(replacement, sizeof replacement, "%%%02X", static_cast<unsigned char>(*c));
        char *replaced = StringReplace(result, old, replacement);
        std::free(result);
        result = replaced;
    }
    return result;
}

}  // namespace
}  // namespace kx::tmpl

extern "C" char *MatchIt(const char *text, const char *marker, int cycleIndex,
                         const char *encodeChars) {
    char *same = const_cast<char *>(text);
    if (text == nullptr || marker == nullptr || std::strstr(text, marker) == nullptr) return same;
    if (std::strcmp(text, "{CycleCount}") == 0) return kx::tmpl::CycleCountText(cycleIndex);
    if (_pEingabe == nullptr || _pEingabeAnzahl == nullptr) return same;
    char *result = reinterpret_cast<char *>(static_cast<intptr_t>(cycleIndex));
    ErsetzeUndGebeHtmlDateiAus(text, &result, iErsetzungsAnfang, iErsetzungsEnde, _pEingabeAnzahl,
                               _pEingabe);
    if (result == nullptr) return same;
    if (encodeChars != nullptr) result = kx::tmpl::EncodeCharacters(result, encodeChars);
    return result;
}
