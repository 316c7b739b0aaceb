// WertzuweisungEingabe: name=value assignments from a request or from the
// selection form, stored into the input list.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "core/entry.h"
#include "core/text.h"
#include "core/value_cursor.h"
#include "input/assignment_actions.h"
#include "input/eingabe/value_appender.h"
#include "kx_input.h"
#include "kx_template.h"

namespace kx::input {
using namespace kx::core;
namespace {

// Words that mark a pressed button when an element begins with one of them.
constexpr std::string_view kButtonWords[] = {"Save", "Open", "Delete", "Reset", "Submit"};
// How a "=" inside a name travels in an assignment.
constexpr std::string_view kEncodedEquals = "^i^g^";
constexpr char kButtonValue[] = "on";
constexpr char kDefaultDivider[] = " ";

// One element: its name (with "^i^g^" turned back into "="), then "=" and
// the value as it was sent.
struct Assignment {
    std::string element;
    size_t nameLength = 0;
    bool button = false;

    std::string_view Value() const {
        return nameLength < element.size() ? std::string_view(element).substr(nameLength + 1) : std::string_view();
    }
};

Assignment ParseElement(std::string_view raw) {
    Assignment a;
    a.nameLength = std::min(raw.find('='), raw.size());
    if (raw.find(kEncodedEquals) != std::string_view::npos) {
        std::string name = ReplaceAll(raw.substr(0, a.nameLength), kEncodedEquals, "=");
        const size_t shorter = name.size();
        a.element = name.append(raw.substr(a.nameLength));
        a.nameLength = shorter;
    } else {
        a.element = raw;
    }
    for (std::string_view word : kButtonWords)
        if (a.element.starts_with(word)) a.button = true;
    return a;
}

// Values laid end to end, each with its NUL, and how many there are.
struct Values {
    std::string bytes;
    int count = 0;
};

// A decoded piece as a text: it ends at its first NUL (a "%00" ends it).
void AddDecoded(Values &values, std::string_view piece) {
    values.bytes.append(Decoded(piece)).push_back('\0');
    ++values.count;
}

Values NewValues(const Assignment &a, char kind, std::string_view divider) {
    Values values;
    if (a.button) {
        values.bytes.assign(kButtonValue, sizeof kButtonValue);
        values.count = 1;
        return values;
    }
    std::string_view rest = a.Value();
    if (kind == 'j') {
        for (size_t at = rest.find(divider); at != std::string_view::npos; at = rest.find(divider)) {
            AddDecoded(values, rest.substr(0, at));
            rest.remove_prefix(at + divider.size());
        }
    }
    AddDecoded(values, rest);
    return values;
}

// Replaces the entry's values. WertPosition stays where it was when it still
// stands at the start of a value, otherwise it goes back to the first.
void SetValues(EingabeElement &entry, const Values &values) {
    char *block = ErweitereBlock(values.bytes.data(), static_cast<int>(values.bytes.size()), nullptr, 0, nullptr, 0);
    if (block == nullptr) return;
    std::free(entry.Wert);
    entry.Wert = block;
    entry.WertGesetzt = values.count;
    if (!ValueCursor(entry).OnValue()) entry.WertPosition = 0;
}

// The entry an element belongs to, or count. *append tells whether it adds
// values (kinds 'm' and 'c', indexed names) or replaces them.
int FindEntry(const Assignment &a, const EingabeElement *list, int count, bool *append) {
    for (int i = 0; i < count; ++i) {
        // An entry without a name would take every element; it takes none.
        if (list[i].Name == nullptr || list[i].Name[0] == '\0') continue;
        // The first byte turns most entries away before their name is measured.
        if (a.element.empty() || a.element[0] != list[i].Name[0]) continue;
        const std::string_view name(list[i].Name);
        if (!a.element.starts_with(name)) continue;
        const bool longer = a.nameLength > name.size();
        const std::string_view tail = std::string_view(a.element).substr(name.size());
        // An element "<name>Internalcount=" belongs to the count entry, not to <name>.
        if (longer && tail.starts_with(Text_Internalcount)) continue;
        const bool indexed = longer && tail[0] >= '0' && tail[0] <= '9';
        if (longer && !indexed && !a.button) continue;
        *append = list[i].Art == 'm' || list[i].Art == 'c' || indexed;
        return i;
    }
    return count;
}

// Stores one element; returns the Name of its entry when it was a button press.
char *AssignElement(std::string_view raw, EingabeElement *list, int count, std::string_view divider,
                    input::ValueAppender &appender) {
    const Assignment a = ParseElement(raw);
    bool append = false;
    const int index = FindEntry(a, list, count, &append);
    if (index >= count) return nullptr;
    EingabeElement &entry = list[index];
    const Values values = NewValues(a, entry.Art, divider);
    // Values are added in amortised constant time: a request may repeat one
    // indexed name many thousand times.
    if (append) {
        appender.Append(entry, values.bytes, values.count);
    } else {
        appender.Forget(entry);
        SetValues(entry, values);
    }
    return a.button ? entry.Name : nullptr;
}

char *Assign(int count, const char *text, int *pCount, EingabeElement **pList, const char *divider) {
    if (_Utilsfpout == nullptr) _Utilsfpout = stdout;
    if (pCount == nullptr || pList == nullptr) return nullptr;
    const std::string_view split = (divider != nullptr && *divider != '\0') ? divider : kDefaultDivider;
    char *pressed = nullptr;
    input::ValueAppender appender;
    const char *element = text;
    for (int i = 0; element != nullptr && i < count; ++i) {
        const std::string_view raw(element);
        if (char *name = AssignElement(raw, *pList, *pCount, split, appender)) pressed = name;
        element += raw.size() + 1;
    }
    if (!DeclarePLSet(pCount, pList, split)) return pressed;
    const WritableNames writable = WritableNamesOf(*pList, *pCount);
    ApplyMibPath(*pList, *pCount);
    ApplyParameterList(pCount, pList, split);
    ApplySetIniValue(*pList, *pCount, writable);
    return pressed;
}

}  // namespace
}  // namespace kx::input

extern "C" char *WertzuweisungEingabe(int count, const char *text, int *pCount, EingabeElement **pList,
                                      const char *divider) {
    return kx::input::Assign(count, text, pCount, pList, divider);
}
