// MatchIt: the placeholders inside an argument text, evaluated by the
// processor in string mode.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "core/alloc.h"
#include "core/entry.h"
#include "core/text.h"
#include "kx_template.h"
#include "template/line_form.h"
#include "template/nesting.h"
#include "template/placeholder.h"

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

bool MarkerIs(int index, char marker) {
    const char *text = core::CurrentTextAt(_pEingabeAnzahl, _pEingabe, index);
    return text != nullptr && text[0] == marker && text[1] == '\0';
}

// A text that is one plain placeholder of a known entry, with the markers
// "{" and "}", is its entry's value: the processor would write nothing else.
// Such texts are most of what DEFINE values and IF conditions evaluate, so
// they are answered here without a run of the processor; the nesting limit
// and the line's budget count them all the same. False when the text needs
// the processor; else *result is the value's heap copy, or NULL when the
// nesting limit refuses the text or memory runs out.
bool PlainValue(const char *text, int cycleIndex, char **result) {
    const size_t length = SinglePlainName(text);
    if (length == 0 || !MarkerIs(iErsetzungsAnfang, '{') || !MarkerIs(iErsetzungsEnde, '}')) return false;
    const int index = core::FindEntry(*_pEingabe, *_pEingabeAnzahl, {text + 1, length});
    if (index >= *_pEingabeAnzahl) return false;
    const NestingGuard nesting;
    *result = nesting.TooDeep() ? nullptr
                                : core::HeapCopy(StringModeText((*_pEingabe)[index], cycleIndex, nullptr));
    return true;
}

}  // namespace
}  // namespace kx::tmpl

extern "C" char *MatchIt(const char *text, const char *marker, int cycleIndex,
                         const char *encodeChars) {
    char *same = const_cast<char *>(text);
    if (text == nullptr || marker == nullptr || std::strstr(text, marker) == nullptr) return same;
    if (std::strcmp(text, "{CycleCount}") == 0) return kx::tmpl::CycleCountText(cycleIndex);
    if (_pEingabe == nullptr || _pEingabeAnzahl == nullptr) return same;
    char *result = nullptr;
    if (!kx::tmpl::PlainValue(text, cycleIndex, &result)) {
        result = reinterpret_cast<char *>(static_cast<intptr_t>(cycleIndex));
        ErsetzeUndGebeHtmlDateiAus(text, &result, iErsetzungsAnfang, iErsetzungsEnde,
                                   _pEingabeAnzahl, _pEingabe);
    }
    if (result == nullptr) return same;
    if (encodeChars != nullptr) result = kx::tmpl::EncodeCharacters(result, encodeChars);
    return result;
}
