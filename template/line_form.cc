// Replaying a stored cycle line from its parsed form: each row writes the
// text runs and the values of the entries found at the first row (and runs
// the controls parsed then), with none of the searches a line otherwise
// takes, and a line whose first placeholder
// is the closing /CYCLE ends the iteration at once. Any line or row the form
// does not cover goes the general way.
#include "template/line_form.h"

#include <array>
#include <cstring>
#include <string>
#include <string_view>

#include "template/cycle.h"
#include "template/invocation.h"
#include "template/placeholder.h"

namespace kx::tmpl {
namespace {

constexpr const char *kCycleEnd = "{/CYCLE}";
constexpr std::string_view kPageTextPrefix = "_txt_";
constexpr size_t kCycleEndLength = std::char_traits<char>::length(kCycleEnd);

// ASCII letters and digits whatever the locale: a byte that some locale
// counts as a letter only sends its placeholder the general way. A table,
// looked up once a byte: every placeholder of a line is measured with it.
constexpr std::array<bool, 256> kNameCharacters = [] {
    std::array<bool, 256> table{};
    for (int c = 0; c < 256; ++c)
        table[static_cast<size_t>(c)] =
            (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
    return table;
}();

bool NameCharacter(char c) { return kNameCharacters[static_cast<unsigned char>(c)]; }

// Only a name starting with one of these can be a directive or "CycleCount".
bool DirectiveStart(char c) { return c == 'I' || c == '/' || c == 'D' || c == 'C'; }

// The plain placeholder at start, if it is one; *after is where its line
// goes on.
bool PlainAt(const char *start, PlainSlot *slot, const char **after) {
    const char *name = start + 1;
    const char *end = PlainEnd(start);
    if (end == nullptr || DirectiveStart(*name)) return false;
    const char *rest = end + 1;
    if ((rest[0] == '{' && rest[1] == '=') || ImageName(rest)) return false;
    slot->nameLength = static_cast<size_t>(end - name);
    *after = rest;
    return true;
}

// A name the dispatch could take for a directive ("IF", "DEFINE", "CYCLE",
// "CycleCount", a "/..." end) or that starts a control of its own.
bool DirectiveLikeName(const char *name) {
    return name[0] == '/' || name[0] == 'C' || name[0] == '=' || std::strncmp(name, "IF", 2) == 0 ||
           std::strncmp(name, "DEFINE", 6) == 0;
}

// A placeholder of an entry followed by a control ("{name}{=...}") that
// takes some of the text and after which no image name follows. The
// control's form is kept at its offset, for the rows and for the general way.
bool ControlAt(LineForm &form, const char *text, const char *start, PlainSlot *slot, const char **after) {
    const char *end = PlainEnd(start);
    if (end == nullptr || end[1] != '{' || end[2] != '=' || DirectiveLikeName(start + 1)) return false;
    const char *control = end + 1;
    const ControlForm &kept = KeepControl(form.controls, static_cast<size_t>(control - text), control);
    slot->control = static_cast<size_t>(&kept - form.controls.data());
    const auto length = static_cast<size_t>(kept.consumed);
    if (length == 0 || ImageName(control + length)) return false;
    slot->nameLength = static_cast<size_t>(end - start - 1);
    slot->controlLength = length;
    *after = control + length;
    return true;
}

void Parse(Invocation &inv, LineForm &form) {
    form.shape = LineForm::Shape::Other;
    if (!BraceMarkers(inv) || inv.DefineFrom(inv.textStart) ||
        inv.IfCommentFrom(inv.textStart))
        return;
    const char *text = inv.textStart;
    const char *first = std::strchr(text, '{');
    if (first != nullptr && std::strncmp(first, kCycleEnd, kCycleEndLength) == 0 &&
        PairIt(first, "{", "}") == first + kCycleEndLength - 1) {
        form.shape = LineForm::Shape::CycleEnd;
        return;
    }
    const char *pos = text;
    std::vector<PlainSlot> slots;
    bool controls = false;
    for (const char *start = std::strchr(pos, '{'); start != nullptr; start = std::strchr(pos, '{')) {
        PlainSlot slot;
        slot.prefix = static_cast<size_t>(pos - text);
        slot.start = static_cast<size_t>(start - text);
        if (!PlainAt(start, &slot, &pos) && !ControlAt(form, text, start, &slot, &pos)) return;
        controls = controls || slot.controlLength > 0;
        slots.push_back(slot);
    }
    form.slots = std::move(slots);
    form.tail = static_cast<size_t>(pos - text);
    form.tailLength = std::strlen(pos);
    form.shape = controls ? LineForm::Shape::Controls : LineForm::Shape::Plain;
}

// A line of the Controls shape: each placeholder as the general way writes
// it, without the search for it and the checks it passes. A control that
// takes another length than at the first row (the nesting bound refused it)
// leaves the rest of the line to the general way.
bool ReplayControls(Invocation &inv, LineForm &form, char **next) {
    char *text = inv.textStart;
    for (const PlainSlot &slot : form.slots) {
        inv.message[0] = '\0';
        inv.Write({text + slot.prefix, slot.start - slot.prefix});
        if (slot.controlLength == 0) {
            WriteKnown(inv, slot.index);
            continue;
        }
        char *control = text + slot.start + slot.nameLength + 2;
        const size_t length = WriteControlled(inv, slot.index, control, form.controls[slot.control]);
        if (length != slot.controlLength) {
            *next = control + length;
            return true;
        }
    }
    inv.Write({text + form.tail, form.tailLength});
    *next = LineEnds(inv);
    return true;
}

}  // namespace

// PairIt passes over a "}" written right after "javascript"; with no "{"
// inside a name, any other name is paired with the "}" that follows it.
bool EndsLikeJavascript(std::string_view name) {
    constexpr std::string_view kWord = "javascript";
    if (name.size() < kWord.size()) return false;
    const std::string_view tail = name.substr(name.size() - kWord.size());
    constexpr char kLowerCaseBit = 0x20;
    for (size_t i = 0; i < kWord.size(); ++i)
        if ((tail[i] | kLowerCaseBit) != kWord[i]) return false;
    return true;
}

const char *PlainEnd(const char *start) {
    const char *name = start + 1;
    const char *end = name;
    while (NameCharacter(*end)) ++end;
    if (end == name || *end != '}') return nullptr;
    if (EndsLikeJavascript({name, static_cast<size_t>(end - name)})) return nullptr;
    return end;
}

size_t SinglePlainName(const char *text) {
    if (text[0] != '{' || DirectiveStart(text[1])) return 0;
    const char *end = PlainEnd(text);
    if (end == nullptr || end[1] != '\0') return 0;
    return static_cast<size_t>(end - text - 1);
}

bool BraceMarkers(const Invocation &inv) {
    return inv.startMarker.size() == 1 && inv.startMarker[0] == '{' && inv.endMarker.size() == 1 &&
           inv.endMarker[0] == '}';
}

bool ResolveSlot(Invocation &inv, const char *text, PlainSlot &slot) {
    const EingabeElement *list = *inv.pList;
    const int count = *inv.pCount;
    const char *name = text + slot.start + 1;
    if (slot.list == list && slot.count == count && slot.index >= 0 && slot.index < count) {
        const EingabeElement &entry = list[slot.index];
        if (entry.Name == slot.name && entry.NameLaenge == slot.nameLength &&
            std::memcmp(entry.Name, name, slot.nameLength) == 0)
            return true;
    }
    const int index = inv.names.Find(list, count, std::string_view(name, slot.nameLength));
    if (index >= count) return false;
    slot.list = list;
    slot.count = count;
    slot.name = list[index].Name;
    slot.index = index;
    return true;
}

bool PlainStep(Invocation &inv, char *pos, char **next) {
    if (inv.stringMode || inv.cycle.level != 0 || inv.ifPrefix || inv.Current().skip || inv.Collecting() ||
        _InCreateValueFromControl != 0 || !BraceMarkers(inv))
        return false;
    char *start = std::strchr(pos, '{');
    if (start == nullptr || inv.DefineFrom(pos) || inv.IfCommentFrom(pos)) return false;
    PlainSlot slot;
    const char *after = nullptr;
    if (!PlainAt(start, &slot, &after)) return false;
    const std::string_view name(start + 1, slot.nameLength);
    const int index = inv.names.Find(*inv.pList, *inv.pCount, name);
    // An unknown "_txt_" name is a page text.
    if (index >= *inv.pCount && name.starts_with(kPageTextPrefix)) return false;
    inv.ClearName();
    inv.message[0] = '\0';
    inv.Write({pos, static_cast<size_t>(start - pos)});
    if (index >= *inv.pCount)
        inv.Write({start, static_cast<size_t>(after - start)});
    else
        WritePlain(inv, KnownValue(inv, index));
    *next = const_cast<char *>(after);
    return true;
}

bool ReplayFromForm(Invocation &inv, char **next) {
    LineForm *form = inv.form;
    if (form == nullptr || inv.stringMode || inv.ifPrefix || inv.Current().skip || inv.Collecting() ||
        _InCreateValueFromControl != 0)
        return false;
    if (form->shape == LineForm::Shape::Unparsed) Parse(inv, *form);
    if (form->shape == LineForm::Shape::CycleEnd) {
        // A /CYCLE refused as text, or met outside a replay, goes the general way.
        if (inv.cycle.refused != 0 || !inv.Replaying()) return false;
        inv.message[0] = '\0';
        *next = EndCycle(inv, Placeholder{}, inv.textStart);
        return true;
    }
    if (form->shape != LineForm::Shape::Plain && form->shape != LineForm::Shape::Controls) return false;
    const char *text = inv.textStart;
    for (PlainSlot &slot : form->slots)
        if (!ResolveSlot(inv, text, slot)) return false;
    if (form->shape == LineForm::Shape::Controls) return ReplayControls(inv, *form, next);
    if (inv.Current().lineIndex == 1) RunSteadyRows(inv);
    for (const PlainSlot &slot : form->slots) {
        inv.message[0] = '\0';
        inv.Write({text + slot.prefix, slot.start - slot.prefix});
        WriteKnown(inv, slot.index);
    }
    inv.Write({text + form->tail, form->tailLength});
    *next = LineEnds(inv);
    return true;
}

}  // namespace kx::tmpl
