// Temporary stand-ins until the input list and URL decoding land; removed
// before this branch is merged.
#include <cstdlib>
#include <cstring>

#include "kx_input.h"

extern "C" {

EingabeElement **_pEingabe = nullptr;
int *_pEingabeAnzahl = nullptr;

char *ServerDecoding(const char *text) {
    if (text == nullptr) text = "";
    char *out = static_cast<char *>(std::malloc(std::strlen(text) + 1));
    char *w = out;
    for (const char *p = text; *p; ++p) {
        if (*p == '+') {
            *w++ = ' ';
        } else if (*p == '%' && p[1] && p[2]) {
            char hex[3] = {p[1], p[2], 0};
            *w++ = static_cast<char>(std::strtol(hex, nullptr, 16));
            p += 2;
        } else {
            *w++ = *p;
        }
    }
    *w = '\0';
    return out;
}

}  // extern "C"
