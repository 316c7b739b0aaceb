// ReplaceValue: which entry a placeholder prints; for a selection form, the
// new entry Prefix_<candidate> with the selected values of Prefix.
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "core/entry.h"
#include "core/messages.h"
#include "core/text.h"
#include "kx_input.h"
#include "kx_template.h"
#include "reference/invocation.h"
#include "reference/markers.h"

namespace kx::tmpl::reference {
using namespace kx::core;
namespace {

// "3 - Degraded": the digits, the whole value or the text, as "EnumOutput"
// says ("Numeric", "Both", anything else).
std::string EnumeratedPart(const char *value, int *pCount, EingabeElement **pList) {
    size_t digits = 0;
    if (std::isdigit(static_cast<unsigned char>(value[0])) || value[0] == '-') digits = 1;
    if (digits == 0) return value;
    while (std::isdigit(static_cast<unsigned char>(value[digits]))) ++digits;
    if (std::strncmp(value + digits, " - ", 3) != 0) return value;
    const char *mode =
        CurrentTextAt(pCount, pList, EingabewertIndex("EnumOutput", *pList, *pCount));
    if (mode != nullptr && std::strcmp(mode, "Numeric") == 0) return std::string(value, digits);
    if (mode != nullptr && std::strcmp(mode, "Both") == 0) return value;
    return value + digits + 3;
}

// The value printed for selected position index of Prefix.
const char *SelectedValue(const EingabeElement &prefix, int index, int valueIndex,
                          int savedPosition) {
    if (valueIndex >= 0 && savedPosition == 0 && valueIndex < prefix.WertGesetzt)
        index += valueIndex;
    const char *value = ValueAt(prefix, index);
    return value != nullptr ? value : "";
}

struct Store {
    int *pCount;
    EingabeElement **pList;
    const char *divider;
    const char *name;
    char *message;
};

// The selected values, URL-encoded, joined by the divider.
std::string CollectValues(const Store &st, const EingabeElement &prefix, const int *indices,
                          int count, int valueIndex) {
    std::string collected;
    for (int i = 0; i < count; ++i) {
        const char *value = SelectedValue(prefix, indices[i], valueIndex, prefix.WertPosition);
        const std::string printed = EnumeratedPart(value, st.pCount, st.pList);
        // A value that memory does not suffice to encode is left empty.
        const HeapText encoded(ServerEncoding(printed.c_str(), nullptr, 0, 0));
        if (i > 0) collected += st.divider;
        collected += encoded.View();
    }
    return collected;
}

void StoreSelection(const Store &st, const std::string &prefixName, const int *indices,
                    int count, int valueIndex) {
    AppendToEingabe(st.pCount, st.pList, st.divider, st.name, count, nullptr);
    const EingabeElement *prefix = EntryAt(st.pCount, st.pList,
                                           EingabewertIndex(prefixName.c_str(), *st.pList, *st.pCount));
    const bool empty = prefix == nullptr ||
                       ((prefix->Wert == nullptr || *prefix->Wert == '\0') && prefix->WertGesetzt <= 1);
    if (empty || indices[0] >= prefix->WertGesetzt) {
        std::snprintf(st.message, KX_MESSAGE_SIZE, MessageText(PageMessage::PrefixUnknown), prefixName.c_str());
        return;
    }
    const std::string values = CollectValues(st, *prefix, indices, count, valueIndex);
    // A "=" inside the name would end it in the assignment text.
    std::string text = ReplaceAll(st.name, "=", "^i^g^") + "=" + values;
    WertzuweisungEingabe(1, text.data(), st.pCount, st.pList, st.divider);
}

}  // namespace
}  // namespace kx::tmpl::reference

// Formerly exported; here a function of the reference.
namespace kx::tmpl::reference {
int ReplaceValue(char *start, char *end, int *pCount, EingabeElement **pList,
                            const char *divider, ErsetzungsName *name, char *message,
                            int *valueIndex, int cycleIndex) {

    message[0] = '\0';
    int *indices = nullptr;
    char *bracket = nullptr;
    const int count = reference::DetermineReplaceValue(start, end, pCount, pList, divider, name, message,
                                            &indices, &bracket, valueIndex, cycleIndex);
    if (count >= 1 && indices == nullptr) return count;
    if (count <= 0) {
        std::free(indices);
        EingabeElement *entry = name->Aktuell == nullptr ? nullptr
            : EntryAt(pCount, pList, EingabewertIndex(name->Aktuell, *pList, *pCount));
        if (entry != nullptr && entry->Wert == nullptr)
            SetEingabeWert(*pCount, *pList, name->Aktuell, "");
        return 0;
    }
    const Markers markers = CurrentMarkers(pCount, pList);
    const char *from = AfterStartMarker(start, markers);
    const std::string prefix(from, bracket > from ? static_cast<size_t>(bracket - from) : 0);
    StoreSelection({pCount, pList, divider, name->Aktuell, message}, prefix, indices, count,
                   *valueIndex);
    std::free(indices);
    return count;
}

}  // namespace kx::tmpl::reference
