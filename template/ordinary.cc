// An ordinary placeholder: the text before it, unknown names, page texts,
// inline controls, the image rule and writing the value.
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <strings.h>

#include <iterator>
#include <string>

#include "kx_template.h"
#include "template/cycle.h"
#include "core/entry.h"
#include "template/invocation.h"
#include "template/placeholder.h"

namespace kx::tmpl {
using namespace kx::core;
namespace {

constexpr const char *kNil = "<nil>";

// The image file endings, looked for in this order; the first found counts.
constexpr const char *kImageEndings[] = {".gif", ".GIF", ".jpg", ".JPG"};

// A line that holds "<!{IF " or "//{IF " withholds the text before its
// placeholders, so that the comment around an IF is not written.
void WritePrefix(Invocation &inv, const char *pos, const char *placeholder) {
    const bool ifAhead =
        std::strstr(pos, "<!{IF ") != nullptr || std::strstr(pos, "//{IF ") != nullptr;
    const bool longEnough = inv.stringMode ? placeholder - pos > 6 : strnlen(pos, 7) > 6;
    if (ifAhead && longEnough) {
        inv.ifPrefix = true;
        return;
    }
    inv.Write({pos, static_cast<size_t>(placeholder - pos)});
    inv.ifPrefix = false;
}

// "{_txt_key}" that names no entry: the page text file's value of the
// URL-decoded key, or the decoded key itself.
void WritePageText(Invocation &inv, const char *key, const char *end) {
    char *decoded = ServerDecoding(std::string(key, end).c_str());
    const char *text = decoded;
    for (int i = 0; i < inv.pageTexts.Count(); ++i) {
        char *name = ServerDecoding(inv.pageTexts.Name(i));
        const bool same = std::strcmp(name, decoded) == 0;
        std::free(name);
        if (same) {
            text = inv.pageTexts.Value(i);
            break;
        }
    }
    inv.Write(text);
    std::free(decoded);
}

char *Unknown(Invocation &inv, const Placeholder &ph) {
    char *after = After(inv, ph);
    if (NameIs(ph, "CycleCount")) {
        inv.Write(std::to_string(inv.Current().counter));
        return after;
    }
    if (strnlen(ph.P, 5) > 4 && strncasecmp(ph.P, "{IF ", 4) == 0) {
        inv.ifPrefix = true;
        return after;
    }
    if (!inv.stringMode && StartsWith(ph.P, "{_txt_") && *ph.E == '}')
        WritePageText(inv, ph.P + 6, ph.E);
    else
        inv.Write({ph.P, static_cast<size_t>(after - ph.P)});
    inv.ifPrefix = false;
    return after;
}

bool ImageNameCharacter(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) || c == '-' || c == '_';
}

// A value that forms part of an image file name is written URL-encoded: the
// text after the placeholder holds an image ending, the first of them found,
// with only letters, digits, "-" and "_" before it. None of the endings can
// start among those characters, so an ending right after them is the first
// occurrence of its kind; only when a later ending of the list stands there
// must the whole text be searched for the earlier ones.
bool ImageName(const char *text) {
    if (strnlen(text, 5) <= 4) return false;
    const char *stop = text;
    while (ImageNameCharacter(*stop)) ++stop;
    for (size_t i = 0; i < std::size(kImageEndings); ++i) {
        if (!StartsWith(stop, kImageEndings[i])) continue;
        for (size_t earlier = 0; earlier < i; ++earlier)
            if (std::strstr(text, kImageEndings[earlier]) != nullptr) return false;
        return true;
    }
    return false;
}

// A control may follow the placeholder ("{name}{=...}") or be the
// placeholder ("{=_type.x==1?a:b}"). Returns the characters it adds after M.
int RunControl(Invocation &inv, Placeholder &ph, int index, char **owned) {
    const std::string &start = inv.startMarker;
    const int skip = static_cast<int>(start.size()) + 1;
    char *next = ph.M != nullptr ? ph.M + 1 : nullptr;
    int length = 0;
    if (next != nullptr && std::strncmp(next, start.c_str(), start.size()) == 0 &&
        next[start.size()] == '=') {
        length = CreateValueFromControl(next, index, ControlCycleIndex(inv), inv.pCount, inv.pList,
                                        owned, ph.valueIndex, skip, inv.endMarker.c_str(),
                                        inv.message);
        ph.E += length;
    } else if (ph.nameLength >= 2 && StartsWith(ph.name, "=_")) {
        char *at = ph.P + (ph.doubled ? 1 : 0);
        const int used = CreateValueFromControl(at, index, inv.CycleIndex(), inv.pCount,
                                                inv.pList, owned, ph.valueIndex, skip,
                                                inv.endMarker.c_str(), inv.message);
        // A placeholder that is no control keeps its own end.
        if (used > 0) ph.E = at + used - 1;
    }
    if (inv.message[0] != '\0') {
        inv.Write(inv.message);
        inv.message[0] = '\0';
    }
    return length;
}

// The entry's current text; a list that a replay steps is read without a
// walk over all its values.
const char *CurrentOf(const Invocation &inv, int index, const EingabeElement &entry) {
    const char *known = ReplayText(inv, index);
    return known != nullptr ? known : CurrentText(entry);
}

const char *StringModeValue(const Invocation &inv, const EingabeElement *entry, int index) {
    if (entry == nullptr) return "";
    const int fixed = inv.fixedCycleIndex;
    if (entry->Wert != nullptr && fixed >= 0 && entry->WertGesetzt > 1 &&
        fixed < entry->WertGesetzt)
        return ValueAt(*entry, fixed);
    const char *text = CurrentOf(inv, index, *entry);
    return text != nullptr ? text : "";
}

const char *FileModeValue(const Invocation &inv, const EingabeElement *entry, int index,
                          int valueIndex) {
    if (entry == nullptr) return kNil;
    if (entry->Wert != nullptr && valueIndex >= 0) {
        const char *value = ValueAt(*entry, valueIndex);
        return value != nullptr ? value : kNil;
    }
    if (entry->Wert != nullptr && entry->WertPosition < 0) return kNil;
    const char *text = CurrentOf(inv, index, *entry);
    return text != nullptr ? text : kNil;
}

void WriteValue(Invocation &inv, const Placeholder &ph, int index, const char *owned,
                bool image) {
    const EingabeElement *entry = EntryAt(inv.pCount, inv.pList, index);
    if (ph.doubled || image) {
        const char *value = owned != nullptr ? owned : entry != nullptr ? CurrentOf(inv, index, *entry) : nullptr;
        char *encoded = ServerEncoding(value, nullptr, image ? 1 : 0, 0);
        inv.Write(encoded);
        std::free(encoded);
    } else if (owned != nullptr) {
        inv.Write(owned);
    } else {
        inv.Write(inv.stringMode ? StringModeValue(inv, entry, index)
                                 : FileModeValue(inv, entry, index, ph.valueIndex));
    }
}

}  // namespace

char *Ordinary(Invocation &inv, Placeholder &ph, char *pos) {
    WritePrefix(inv, pos, ph.P);
    const int index = FindEntry(*inv.pList, *inv.pCount, ph.Name());
    const bool control = ph.nameLength >= 2 && StartsWith(ph.name, "=_");
    if (index >= *inv.pCount && !control) return Unknown(inv, ph);
    CountIterations(inv, index, ph.valueIndex);
    char *owned = nullptr;
    const int controlLength = RunControl(inv, ph, index, &owned);
    const char *rest = ph.M != nullptr ? ph.M + 1 + controlLength : ph.E + 1;
    {
        const CycleValue value(inv, index);
        WriteValue(inv, ph, index, owned, ImageName(rest));
    }
    std::free(owned);
    if (!control) RecordEntry(inv, index);
    return After(inv, ph);
}

}  // namespace kx::tmpl
