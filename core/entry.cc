#include "core/entry.h"

#include <cstdint>
#include <cstring>

namespace kx::core {

size_t ValuesSpan(const EingabeElement &entry) {
    if (entry.Wert == nullptr) return 0;
    if (entry.WertGesetzt < 1) return std::strlen(entry.Wert) + 1;
    size_t span = 0;
    for (int i = 0; i < entry.WertGesetzt; ++i) span += std::strlen(entry.Wert + span) + 1;
    return span;
}

const char *CurrentText(const EingabeElement &entry) {
    if (entry.Wert == nullptr) return entry.Vorgabe;
    if (entry.WertPosition == 0) return entry.Wert;
    if (entry.WertPosition < 0 || static_cast<size_t>(entry.WertPosition) >= ValuesSpan(entry)) return "";
    return entry.Wert + entry.WertPosition;
}

const char *SettingText(const EingabeElement &entry) {
    return (entry.Wert != nullptr && *entry.Wert != '\0') ? entry.Wert : entry.Vorgabe;
}

int ValueOffset(const EingabeElement &entry, int index) {
    if (entry.Wert == nullptr || index < 0 || index >= entry.WertGesetzt) return -1;
    size_t offset = 0;
    for (int i = 0; i < index; ++i) offset += std::strlen(entry.Wert + offset) + 1;
    return static_cast<int>(offset);
}

const char *ValueAt(const EingabeElement &entry, int index) {
    const int offset = ValueOffset(entry, index);
    return offset < 0 ? nullptr : entry.Wert + offset;
}

// Four entries a step: each costs a compare and a branch not taken. Names
// of one length often differ in their last byte ("Server1", "Server2"), so
// that byte is compared before the rest.
int FindEntry(const EingabeElement *list, int count, std::string_view name) {
    if (list == nullptr || name.size() > UINT32_MAX) return count;
    const auto size = static_cast<uint32_t>(name.size());
    const char last = size > 0 ? name.back() : '\0';
    const auto named = [&](int i) {
        const EingabeElement &entry = list[i];
        return entry.NameLaenge == size && entry.Name != nullptr && (size == 0 || entry.Name[size - 1] == last) &&
               std::memcmp(entry.Name, name.data(), size) == 0;
    };
    int i = 0;
    for (; i + 4 <= count; i += 4) {
        if (named(i)) return i;
        if (named(i + 1)) return i + 1;
        if (named(i + 2)) return i + 2;
        if (named(i + 3)) return i + 3;
    }
    for (; i < count; ++i)
        if (named(i)) return i;
    return count;
}

EingabeElement *EntryAt(int *pCount, EingabeElement **pList, int index) {
    if (pCount == nullptr || pList == nullptr || *pList == nullptr) return nullptr;
    if (index < 0 || index >= *pCount) return nullptr;
    return &(*pList)[index];
}

const char *CurrentTextAt(int *pCount, EingabeElement **pList, int index) {
    const EingabeElement *entry = EntryAt(pCount, pList, index);
    return entry != nullptr ? CurrentText(*entry) : nullptr;
}

}  // namespace kx::core
