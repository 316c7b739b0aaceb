// WertzuweisungEingabe over arbitrary assignment texts against a fixed list:
// the list stays consistent (every entry's values can be walked), a pressed
// button is one of the list's names, and everything is released each run.
#include <cstdlib>
#include <cstring>
#include <string>

#include "fuzz_input.h"
#include "fuzz_list.h"
#include "kx_template.h"

namespace {

void Declare(EingabeElement *&list, int &count) {
    const struct { const char *name; char kind; const char *defaultText; } entries[] = {
        {"Name", 'n', nullptr}, {"Save", 'n', nullptr},  {"L", 'j', "x"},        {"M", 'm', nullptr},
        {"C", 'c', nullptr},    {"LInternalcount", 'n', "0"}, {"a=b", 'n', nullptr},
        {"MibPath", 'n', nullptr}, {"ParameterList", 'n', nullptr}, {"SetIniValue", 'n', nullptr},
    };
    for (const auto &e : entries) {
        list = static_cast<EingabeElement *>(std::realloc(list, sizeof(EingabeElement) * (count + 1)));
        list[count++] = EingabeElement{strdup(e.name), static_cast<uint32_t>(std::strlen(e.name)), nullptr, 0, 0,
                                       e.kind, e.defaultText ? strdup(e.defaultText) : nullptr};
    }
}

// Walks every value of every entry; a list that lies about its values makes
// the address sanitizer stop here.
void Check(const EingabeElement *list, int count, const char *pressed) {
    bool pressedFound = pressed == nullptr;
    for (int i = 0; i < count; ++i) {
        const EingabeElement &e = list[i];
        if (e.NameLaenge != std::strlen(e.Name) || e.WertGesetzt < 0 || (e.Wert == nullptr && e.WertGesetzt != 0))
            std::abort();
        size_t offset = 0;
        for (int v = 0; v < e.WertGesetzt; ++v) offset += std::strlen(e.Wert + offset) + 1;
        if (e.Wert != nullptr && (e.WertPosition < 0 || static_cast<size_t>(e.WertPosition) >= offset)) std::abort();
        pressedFound = pressedFound || pressed == e.Name;
    }
    if (!pressedFound) std::abort();
}

}  // namespace

// Input: the divider, a NUL, then the elements separated by NULs.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    auto texts = kx::fuzz::Texts(data, size, 2);
    std::string body = texts[1];
    body.push_back('\0');
    int elements = 0;
    for (char ch : body) elements += ch == '\0';
    EingabeElement *list = nullptr;
    int count = 0;
    Declare(list, count);
    const char *pressed = WertzuweisungEingabe(elements, body.data(), &count, &list, texts[0].c_str());
    Check(list, count, pressed);
    kx::fuzz::FreeList(list, count);
    return 0;
}
