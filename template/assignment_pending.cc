// Stand-ins until the request setup and the placeholder values land; removed then.
#include <cstdlib>
#include <cstring>
#include <string>

#include "kx_input.h"
#include "kx_template.h"

extern "C" {
FILE *_Utilsfpout = nullptr;
char *_IniFilename[2] = {nullptr, nullptr};
char _IniFilenameDivideSign[2] = {0, 0};

// Replaces each "{name}" by the current text of that entry of the current list.
char *MatchIt(const char *text, const char *marker, int, const char *) {
    if (text == nullptr || std::strstr(text, marker) == nullptr) return const_cast<char *>(text);
    std::string out;
    for (const char *p = text; *p;) {
        const char *close = *p == '{' ? std::strchr(p, '}') : nullptr;
        if (close == nullptr) { out.push_back(*p++); continue; }
        const std::string name(p + 1, close);
        const int i = _pEingabe ? EingabewertIndex(name.c_str(), *_pEingabe, *_pEingabeAnzahl) : 0;
        if (_pEingabe && i < *_pEingabeAnzahl) {
            const EingabeElement &e = (*_pEingabe)[i];
            const char *v = e.Wert ? e.Wert + e.WertPosition : e.Vorgabe;
            out += v ? v : "";
        } else {
            out.append(p, close + 1);
        }
        p = close + 1;
    }
    return strdup(out.c_str());
}
}
