// An ordinary placeholder: the text before it, unknown names, page texts,
// inline controls, the image rule and writing the value.
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <strings.h>

#include <cstddef>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "core/entry.h"
#include "core/html_escape.h"
#include "core/text.h"
#include "kx_template.h"
#include "template/control_form.h"
#include "template/cycle.h"
#include "template/invocation.h"
#include "template/placeholder.h"

namespace kx::tmpl {
using namespace kx::core;
namespace {

constexpr const char *kNil = "<nil>";
constexpr std::string_view kIfPlaceholder = "{IF ";
constexpr std::string_view kPageTextOpening = "{_txt_";
// Every image ending is this long and starts with ".".
constexpr size_t kImageEndingLength = 4;

// The image file endings, looked for in this order; the first found counts.
constexpr const char *kImageEndings[] = {".gif", ".GIF", ".jpg", ".JPG"};

// A line that holds "<!{IF " or "//{IF " withholds the text before its
// placeholders, so that the comment around an IF is not written.
void WritePrefix(Invocation &inv, const char *pos, const char *placeholder) {
    const bool ifAhead = inv.IfCommentFrom(pos);
    const auto commentLength = static_cast<std::ptrdiff_t>(kIfComment.size());
    const bool longEnough = inv.stringMode ? placeholder - pos > commentLength
                                           : strnlen(pos, kIfComment.size() + 1) > kIfComment.size();
    if (ifAhead && longEnough) {
        inv.ifPrefix = true;
        return;
    }
    inv.Write({pos, static_cast<size_t>(placeholder - pos)});
    inv.ifPrefix = false;
}

// "{_txt_key}" that names no entry: the page text file's value of the
// URL-decoded key, or the decoded key itself. A key or name that memory does
// not suffice to decode reads as the empty text.
void WritePageText(Invocation &inv, const char *key, const char *end) {
    const std::string decoded = Decoded(std::string_view(key, static_cast<size_t>(end - key)));
    for (int i = 0; i < inv.pageTexts.Count(); ++i) {
        if (Decoded(inv.pageTexts.Name(i)) != decoded) continue;
        inv.Write(inv.pageTexts.Value(i));
        return;
    }
    inv.Write(decoded);
}

char *Unknown(Invocation &inv, const Placeholder &ph) {
    char *after = After(inv, ph);
    if (NameIs(ph, "CycleCount")) {
        inv.Write(std::to_string(inv.Current().counter));
        return after;
    }
    if (strnlen(ph.P, kIfPlaceholder.size() + 1) > kIfPlaceholder.size() &&
        strncasecmp(ph.P, kIfPlaceholder.data(), kIfPlaceholder.size()) == 0) {
        inv.ifPrefix = true;
        return after;
    }
    if (!inv.stringMode && StartsWith(ph.P, kPageTextOpening.data()) && *ph.E == '}')
        WritePageText(inv, ph.P + kPageTextOpening.size(), ph.E);
    else
        inv.Write({ph.P, static_cast<size_t>(after - ph.P)});
    inv.ifPrefix = false;
    return after;
}

// CreateValueFromControl; a control of a stored cycle line keeps its parsed
// form beside the line, for the rows after.
int Control(Invocation &inv, char *text, const ControlCall &call, char **owned) {
    std::vector<ControlForm> *kept = inv.form != nullptr ? &inv.form->controls : nullptr;
    return ControlValue(text, call, kept, static_cast<size_t>(text - inv.textStart), owned);
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
        length = Control(inv, next, {index, ControlCycleIndex(inv), inv.pCount, inv.pList,
                                     ph.valueIndex, skip, inv.endMarker.c_str(), inv.message},
                         owned);
        ph.E += length;
    } else if (ph.nameLength >= 2 && StartsWith(ph.name, "=_")) {
        char *at = ph.P + (ph.doubled ? 1 : 0);
        const int used = Control(inv, at, {index, inv.CycleIndex(), inv.pCount, inv.pList,
                                           ph.valueIndex, skip, inv.endMarker.c_str(), inv.message},
                                 owned);
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
    return StringModeText(*entry, inv.fixedCycleIndex, ReplayText(inv, index));
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
        // The URL form keeps "<" as it is: escaped too when asked for. A value
        // that memory does not suffice to encode is written as nothing.
        const HeapText encoded(ServerEncoding(value, nullptr, image ? 1 : 0, 0));
        if (encoded) WritePlain(inv, encoded.Get());
    } else if (owned != nullptr) {
        WritePlain(inv, owned);
    } else {
        WritePlain(inv, inv.stringMode ? StringModeValue(inv, entry, index)
                                       : FileModeValue(inv, entry, index, ph.valueIndex));
    }
}

}  // namespace

const char *StringModeText(const EingabeElement &entry, int fixedCycleIndex, const char *replayed) {
    if (entry.Wert != nullptr && fixedCycleIndex >= 0 && entry.WertGesetzt > 1 &&
        fixedCycleIndex < entry.WertGesetzt)
        return ValueAt(entry, fixedCycleIndex);
    const char *text = replayed != nullptr ? replayed : CurrentText(entry);
    return text != nullptr ? text : "";
}

// "<nil>" is the engine's own mark, never a value, and stays.
void WritePlain(Invocation &inv, const char *value) {
    if (inv.escapeHtml && value != nullptr && value != kNil)
        core::WriteHtmlEscaped(value, [&inv](std::string_view piece) { inv.Write(piece); });
    else
        inv.Write(value);
}

const char *KnownValue(const Invocation &inv, int index) {
    return FileModeValue(inv, EntryAt(inv.pCount, inv.pList, index), index, -1);
}

namespace {

bool ImageNameCharacter(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) || c == '-' || c == '_';
}

}  // namespace

// A value that forms part of an image file name is written URL-encoded: the
// text after the placeholder holds an image ending, the first of them found,
// with only letters, digits, "-" and "_" before it. None of the endings can
// start among those characters, so an ending right after them is the first
// occurrence of its kind; only when a later ending of the list stands there
// must the whole text be searched for the earlier ones.
bool ImageName(const char *text) {
    if (strnlen(text, kImageEndingLength + 1) <= kImageEndingLength) return false;
    const char *stop = text;
    while (ImageNameCharacter(*stop)) ++stop;
    if (*stop != '.') return false;
    for (size_t i = 0; i < std::size(kImageEndings); ++i) {
        if (!StartsWith(stop, kImageEndings[i])) continue;
        for (size_t earlier = 0; earlier < i; ++earlier)
            if (std::strstr(text, kImageEndings[earlier]) != nullptr) return false;
        return true;
    }
    return false;
}

void WriteKnown(Invocation &inv, int index) {
    CountIterations(inv, index, -1);
    {
        const CycleValue value(inv, index);
        WritePlain(inv, KnownValue(inv, index));
    }
    RecordEntry(inv, index);
}

size_t WriteControlled(Invocation &inv, int index, char *control, ControlForm &form) {
    CountIterations(inv, index, -1);
    char *owned = nullptr;
    const int length = ControlValue(control, {index, ControlCycleIndex(inv), inv.pCount, inv.pList, -1, 2,
                                              inv.endMarker.c_str(), inv.message},
                                    form, &owned);
    if (inv.message[0] != '\0') {
        inv.Write(inv.message);
        inv.message[0] = '\0';
    }
    {
        const CycleValue value(inv, index);
        WritePlain(inv, owned != nullptr ? owned : KnownValue(inv, index));
    }
    std::free(owned);
    RecordEntry(inv, index);
    return static_cast<size_t>(length);
}

char *Ordinary(Invocation &inv, Placeholder &ph, char *pos) {
    WritePrefix(inv, pos, ph.P);
    const int index = inv.names.Find(*inv.pList, *inv.pCount, ph.Name());
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
