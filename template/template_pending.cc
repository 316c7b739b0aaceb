// Stand-in for the value assignment until it lands; removed then.
#include "kx_input.h"
#include <cstdlib>
#include <cstring>
#include <string>
// Minimal assignment of one "name=v1~v2" element, until the value assignment lands.
extern "C" char *WertzuweisungEingabe(int, const char *text, int *pCount, EingabeElement **pList,
                                      const char *divider) {
    const char *eq = std::strchr(text, '=');
    if (eq == nullptr) return nullptr;
    std::string name(text, eq);
    for (size_t at; (at = name.find("^i^g^")) != std::string::npos;) name.replace(at, 5, "=");
    const int index = EingabewertIndex(name.c_str(), *pList, *pCount);
    if (index >= *pCount) return nullptr;
    std::string value = eq + 1, block;
    int n = 0;
    for (size_t from = 0;; ++n) {
        const size_t at = value.find(divider, from);
        char *decoded = ServerDecoding(value.substr(from, at - from).c_str());
        block.append(decoded).push_back('\0');
        std::free(decoded);
        if (at == std::string::npos) { ++n; break; }
        from = at + std::strlen(divider);
    }
    EingabeElement &e = (*pList)[index];
    std::free(e.Wert);
    e.Wert = static_cast<char *>(std::malloc(block.size()));
    std::memcpy(e.Wert, block.data(), block.size());
    e.WertGesetzt = n;
    e.WertPosition = 0;
    return nullptr;
}
