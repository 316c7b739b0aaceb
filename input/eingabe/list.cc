// The input list: finding entries by name and setting their values.
#include <cstdlib>
#include <cstring>

#include "core/text.h"
#include "kx_input.h"

EingabeElement **_pEingabe = nullptr;
int *_pEingabeAnzahl = nullptr;
char _UtilsMyDefaultBlank[1] = {'\0'};

namespace kx::input {
namespace {

bool ValidIndex(int index, int count) { return index >= 0 && index < count; }

// Replaces the entry's value by an owned text (or none), making it current.
void StoreValue(EingabeElement &entry, char *value) {
    std::free(entry.Wert);
    entry.Wert = value;
    entry.WertPosition = 0;
    entry.WertGesetzt = value != nullptr ? 1 : 0;
}

// The definition block that declares one entry: the separator line, the
// definition line and the empty text that ends the block.
char *DeclarationBlock(const char *separator, const char *name, char kind, const char *defaultText) {
    const size_t s = std::strlen(separator), n = std::strlen(name), d = std::strlen(defaultText);
    char *block = static_cast<char *>(std::malloc(3 * s + n + d + 4));
    if (block == nullptr) return nullptr;
    char *p = block;
    auto put = [&p](const char *text, size_t length) { std::memcpy(p, text, length), p += length; };
    put(separator, s + 1);
    put(name, n), put(separator, s), put(&kind, 1), put(separator, s), put(defaultText, d + 1);
    *p = '\0';
    return block;
}

}  // namespace
}  // namespace kx::input

extern "C" {

int EingabewertIndex(const char *name, EingabeElement *list, int count) {
    if (name == nullptr || list == nullptr) return count;
    const size_t length = std::strlen(name);
    for (int i = 0; i < count; ++i)
        if (list[i].NameLaenge == length && std::memcmp(list[i].Name, name, length) == 0) return i;
    return count;
}

int SetEingabeWertI(int count, EingabeElement *list, int index, const char *text) {
    if (list == nullptr || !kx::input::ValidIndex(index, count)) return index;
    kx::input::StoreValue(list[index], text ? kx::core::HeapCopy(text) : nullptr);
    return index;
}

int SetEingabeWert(int count, EingabeElement *list, const char *name, const char *text) {
    return SetEingabeWertI(count, list, EingabewertIndex(name, list, count), text);
}

int AppendEingabeWert(int count, EingabeElement *list, const char *name, const char *text) {
    const int index = EingabewertIndex(name, list, count);
    if (!kx::input::ValidIndex(index, count)) return index;
    EingabeElement &entry = list[index];
    const char *tail = text ? text : "";
    char *joined = EweitereText(entry.Wert, tail, static_cast<int>(std::strlen(tail)), nullptr);
    if (joined != nullptr) kx::input::StoreValue(entry, joined);
    return index;
}

int GetInputValue(int count, EingabeElement *list, const char *name, char **value) {
    if (value != nullptr) *value = nullptr;
    const int index = EingabewertIndex(name, list, count);
    if (value != nullptr && kx::input::ValidIndex(index, count) && list[index].Wert != nullptr &&
        list[index].Wert[0] != '\0')
        *value = list[index].Wert;
    return index;
}

int AppendToEingabe(int *count, EingabeElement **list, const char *separator, const char *name,
                    int kind, const char *defaultText) {
    if (name == nullptr) return -1;
    char *block = kx::input::DeclarationBlock(separator ? separator : "|", name, kind < 2 ? 'n' : 'j',
                                              defaultText ? defaultText : "");
    if (block == nullptr) return -1;
    ErmittleEingabe(block, list, count, nullptr, 0);
    std::free(block);
    return 0;
}

}  // extern "C"
