// CYCLE blocks: collecting a body, replaying it once per iteration, the
// number of iterations, stepping list values and the offset of a nested
// cycle's group.
//
// The state (template/cycle_state.h) moves like this. Every level starts
// Idle. A CYCLE directive met at level L-1 (StartCycle -> StartBody) makes
// level L Collecting with a new body; the lines the processor reads then go
// into that body (Collect) instead of the page, and a nested CYCLE starts a
// body one level deeper. The /CYCLE that closes a body (EndCollection) goes
// back to the enclosing level (Leave). When the outermost body, level 1, is
// closed, BeginReplay moves every level from 1 to the deepest one collected
// to Replaying at once, and the processor is fed the stored lines
// (ReplayLine) instead of the template's. At the end of a body's lines
// EndOfIteration starts the next iteration (NextIteration, stepping the lists
// written in it) or, at the limit, LastIterationDone; when that happens at
// level 1, every level is Reset to Idle and the text after the outermost
// /CYCLE goes on at level 0 (ResumePage). The replay of a nested body is
// entered from its line in the enclosing body (StartCycle -> EnterReplay).
#include "template/cycle.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "core/entry.h"
#include "core/messages.h"
#include "template/nesting.h"

namespace kx::tmpl {
using namespace kx::core;
namespace {

// The scratch room for a cycle name followed by "Internalcount".
constexpr size_t kScratchSize = 512;

// The decimal value of a count text; 0 for none, clamped to the int range.
int CountOf(const char *text) {
    if (text == nullptr) return 0;
    const long value = std::strtol(text, nullptr, 10);
    return static_cast<int>(std::clamp<long>(value, INT_MIN, INT_MAX));
}

// The value number an entry stands on, when a mark of this call knows it;
// -1 otherwise.
int MarkedIndex(const Invocation &inv, int index, const EingabeElement &entry) {
    for (const ValueMark &mark : inv.cycle.marks)
        if (mark.entry == index && mark.wert == entry.Wert && mark.count == entry.WertGesetzt &&
            mark.position == entry.WertPosition)
            return mark.index;
    return -1;
}

void Mark(Invocation &inv, int index, const EingabeElement &entry, int value) {
    const ValueMark mark{index, entry.Wert, entry.WertGesetzt, entry.WertPosition, value};
    for (ValueMark &known : inv.cycle.marks)
        if (known.entry == index) {
            known = mark;
            return;
        }
    inv.cycle.marks.push_back(mark);
}

// The value number of a position found by walking the values; the count when
// it lies past them, -1 inside a value.
int WalkedIndex(const EingabeElement &entry) {
    size_t offset = 0;
    int value = 0;
    for (; value < entry.WertGesetzt && offset < static_cast<size_t>(entry.WertPosition); ++value)
        offset += std::strlen(entry.Wert + offset) + 1;
    return offset == static_cast<size_t>(entry.WertPosition) ? value : -1;
}

// Steps entry index to its next value. A position that already stands past
// the last value stays there (it reads as the empty text), so nothing behind
// the values is ever read.
void StepValue(Invocation &inv, int index) {
    EingabeElement &entry = (*inv.pList)[index];
    if (entry.Wert == nullptr || entry.WertPosition < 0) return;
    int value = entry.WertPosition == 0 ? 0 : MarkedIndex(inv, index, entry);
    if (value < 0) {
        if (static_cast<size_t>(entry.WertPosition) >= ValuesSpan(entry)) return;
        value = WalkedIndex(entry);
    }
    if (value >= entry.WertGesetzt) return;
    entry.WertPosition += static_cast<int>(std::strlen(entry.Wert + entry.WertPosition)) + 1;
    if (value >= 0) Mark(inv, index, entry, value + 1);
}

bool Recorded(const Body &body, const char *name) {
    return std::find(body.recorded.begin(), body.recorded.end(), name) != body.recorded.end();
}

EingabeElement *List(const Invocation &inv) { return *inv.pList; }

void Record(Body &body, const EingabeElement *list, int index) {
    body.recorded.push_back(list[index].Name);
    body.recordedAt.push_back(index);
}

bool EndsInCount(const EingabeElement &entry) {
    return entry.Name != nullptr && entry.NameLaenge >= Text_Internalcount.size() &&
           std::string_view(entry.Name + entry.NameLaenge - Text_Internalcount.size(), Text_Internalcount.size()) ==
               Text_Internalcount;
}

// The count entries of the list. A page only appends entries, so while the
// known ones are still where they were, only the entries added since are
// looked at (the list may have moved); otherwise they are collected anew.
CountEntries &KnownCountEntries(Invocation &inv) {
    CountEntries &known = inv.cycle.counts;
    const EingabeElement *list = List(inv);
    const int count = *inv.pCount;
    bool kept = known.count <= count;
    for (const auto &[index, name] : known.entries) kept = kept && list[index].Name == name;
    if (!kept) {
        known.entries.clear();
        known.count = 0;
    }
    for (int i = known.count; i < count; ++i)
        if (EndsInCount(list[i])) known.entries.emplace_back(i, list[i].Name);
    known.count = count;
    return known;
}

// The first entry named "<name>Internalcount", the count when none is.
int CountEntryOf(Invocation &inv, std::string_view name) {
    for (const auto &[index, text] : KnownCountEntries(inv).entries) {
        const EingabeElement &entry = List(inv)[index];
        if (entry.NameLaenge == name.size() + Text_Internalcount.size() &&
            std::memcmp(text, name.data(), name.size()) == 0)
            return index;
    }
    return *inv.pCount;
}

}  // namespace

const std::vector<int> &RecordedIndices(Invocation &inv, const Body &body) {
    std::vector<int> &indices = inv.cycle.stepped;
    indices.clear();
    for (size_t k = 0; k < body.recorded.size(); ++k) {
        int at = body.recordedAt[k];
        if (at >= *inv.pCount || List(inv)[at].Name != body.recorded[k]) {
            at = 0;
            while (at < *inv.pCount && List(inv)[at].Name != body.recorded[k]) ++at;
        }
        if (at < *inv.pCount) indices.push_back(at);
    }
    std::sort(indices.begin(), indices.end());
    return indices;
}

namespace {

// The stored line at the level's line index becomes the text processed.
char *ReplayLine(Invocation &inv) {
    Level &level = inv.Current();
    Body &body = level.Active();
    if (level.lineIndex >= body.lines.size()) return nullptr;
    if (body.forms.size() < body.lines.size()) body.forms.resize(body.lines.size());
    NestingGuard::StartLine(body.lines[level.lineIndex].size());
    return inv.StartText(body.lines[level.lineIndex].data(), &body.forms[level.lineIndex]);
}

// Enters a level that replays a body: line 1 follows the directive.
char *EnterReplay(Invocation &inv, int level, size_t body) {
    inv.cycle.level = level;
    inv.cycle.levels[level].body = body;
    inv.cycle.levels[level].lineIndex = 1;
    inv.cycle.refused = 0;
    ++inv.cycle.iterations;
    return ReplayLine(inv);
}

// Where a directive's line goes on: after its end marker, blanks, line ends
// and the ">" that closes its comment.
char *AfterDirective(const Invocation &inv, const Placeholder &ph) {
    char *rest = After(inv, ph);
    return rest + std::strspn(rest, " \t\r\n>");
}

// The comment opener "<!" or "//" before the directive at P; a directive
// written without one is its own opener.
char *CycleOpener(char *pos, char *P) {
    char *html = std::strstr(pos, "<!");
    if (html != nullptr && html <= P) return html;
    char *script = std::strstr(pos, "//");
    if (script != nullptr && script <= P) return script;
    return P;
}

// The "<!" or "//" written directly before the directive at P, else P.
char *AdjacentOpener(char *pos, char *P) {
    if (P - pos >= 2 && (std::strncmp(P - 2, "<!", 2) == 0 || std::strncmp(P - 2, "//", 2) == 0))
        return P - 2;
    return P;
}

char *EndOfIteration(Invocation &inv);

// During a replay: the body at the next level of the nested CYCLE directive
// on the current stored line.
bool NestedBody(Invocation &inv, size_t *index) {
    const int next = inv.cycle.level + 1;
    if (next >= kLevelCount || inv.cycle.levels[next].state != CycleState::Replaying) return false;
    const Level &level = inv.Current();
    for (const auto &[line, body] : inv.Current().Active().nested) {
        if (line != level.lineIndex || body >= inv.cycle.levels[next].bodies.size()) continue;
        *index = body;
        return true;
    }
    return false;
}

// A CYCLE directive collected at level - 1 starts a body at level; a level
// that collects already gets a further body beside the ones it holds. The
// enclosing body stores the whole text as the line that enters it.
Body &StartBody(Invocation &inv, int level, char *text) {
    Level &at = inv.cycle.levels[level];
    if (at.state != CycleState::Collecting) at.bodies.clear();
    at.state = CycleState::Collecting;
    at.body = at.bodies.size();
    at.bodies.emplace_back();
    inv.cycle.deepest = std::max(inv.cycle.deepest, level);
    if (level > 1) {
        Body &outer = inv.Current().Active();
        outer.nested.emplace_back(outer.lines.size(), at.body);
        outer.lines.emplace_back(text);
    }
    return at.bodies.back();
}

// The lists written at the level go on: the recorded ones by one value, and
// the count entry of the next level's group gives its new size.
char *NextIteration(Invocation &inv) {
    Level &level = inv.Current();
    level.lineIndex = 1;
    inv.cycle.refused = 0;
    ++inv.cycle.iterations;
    for (const int i : RecordedIndices(inv, level.Active()))
        if (List(inv)[i].WertGesetzt >= 2) StepValue(inv, i);
    const int next = inv.cycle.level + 1;
    if (next < kLevelCount) {
        const int governing = inv.cycle.levels[next].governing;
        if (governing >= 0 && governing < *inv.pCount && List(inv)[governing].WertGesetzt >= 2)
            inv.cycle.levels[next].countValue = CountOf(CurrentText(List(inv)[governing]));
    }
    return ReplayLine(inv);
}

// After the last iteration: ungoverned lists go back to their first value,
// governed ones on to the value after the group.
void RewindLists(Invocation &inv, const Body &body, bool governed) {
    for (const int i : RecordedIndices(inv, body)) {
        EingabeElement &entry = List(inv)[i];
        if (entry.WertGesetzt <= 1) continue;
        if (!governed)
            entry.WertPosition = 0;
        else
            StepValue(inv, i);
    }
}

// The outermost cycle has ended: the text after its /CYCLE goes on at level 0.
char *ResumePage(Invocation &inv) {
    inv.cycle.refused = 0;
    for (Level &level : inv.cycle.levels) {
        level.governing = -1;
        level.countValue = -1;
    }
    std::string leftover;
    leftover.swap(inv.cycle.levels[1].leftover);
    if (leftover.empty()) return nullptr;
    const size_t length = std::min(leftover.size(), inv.line.size() - 1);
    std::memcpy(inv.line.data(), leftover.data(), length);
    inv.line[length] = '\0';
    return inv.StartText(inv.line.data());
}

// The outermost body is collected: every level collected starts replaying.
char *BeginReplay(Invocation &inv) {
    for (int l = 1; l <= inv.cycle.deepest; ++l) inv.cycle.levels[l].state = CycleState::Replaying;
    return EnterReplay(inv, 1, 0);
}

// Leaves the current level; rest is the text after a /CYCLE that ended a
// collection.
char *Leave(Invocation &inv, char *rest) {
    --inv.cycle.level;
    if (inv.cycle.level > 0) {
        if (inv.Replaying()) return LineEnds(inv);
        // The text after a nested /CYCLE belongs to the enclosing body.
        ++inv.Current().lineIndex;
        return rest;
    }
    if (inv.cycle.levels[1].state == CycleState::Idle) return ResumePage(inv);
    return BeginReplay(inv);
}

char *LastIterationDone(Invocation &inv) {
    Level &level = inv.Current();
    RewindLists(inv, level.Active(), level.governing >= 0);
    if (inv.cycle.level == 1) {
        // The outermost cycle frees every body it collected.
        for (int l = 1; l <= inv.cycle.deepest; ++l) inv.cycle.levels[l].Reset();
        inv.cycle.deepest = 0;
    } else {
        level.lineIndex = 0;
        level.counter = 0;
    }
    return Leave(inv, nullptr);
}

// Each iteration starts with the IF skip flag clear: a false IF met during
// the replay drops the rest of its iteration only.
char *EndOfIteration(Invocation &inv) {
    Level &level = inv.Current();
    level.skip = false;
    ++level.counter;
    if (level.counter < level.Active().limit && inv.cycle.iterations < kMaxCycleIterations)
        return NextIteration(inv);
    return LastIterationDone(inv);
}

// The /CYCLE that closes a body being collected is its last line.
char *EndCollection(Invocation &inv, const Placeholder &ph, char *pos) {
    Level &level = inv.Current();
    level.lineIndex = 0;
    level.counter = 0;
    std::vector<std::string> &lines = level.Active().lines;
    // Text before the directive on its line ends the body's last row.
    char *opener = AdjacentOpener(pos, ph.P);
    if (opener > pos) lines.emplace_back(pos, static_cast<size_t>(opener - pos));
    char *rest = AfterDirective(inv, ph);
    if (*rest == '\0') {
        lines.emplace_back(opener);
        return Leave(inv, nullptr);
    }
    lines.emplace_back(opener, static_cast<size_t>(rest - opener));
    if (inv.cycle.level == 1) {
        level.leftover = rest;
        rest = nullptr;
    }
    return Leave(inv, rest);
}

// The first "{CYCLE" or "{/CYCLE}" from from on, with its comment opener.
char *NextDirective(char *pos, char *from) {
    char *start = std::strstr(from, "{CYCLE");
    char *end = std::strstr(from, "{/CYCLE}");
    char *first = start == nullptr ? end : end == nullptr ? start : std::min(start, end);
    return first == nullptr ? nullptr : AdjacentOpener(pos, first);
}

// The group of a nested cycle: how many values of the flat inner list the
// groups before the current value of the cycle's list G hold.
int GroupOffset(const Invocation &inv, const std::string &group) {
    if (group.empty() || group.size() + Text_Internalcount.size() >= kScratchSize) return 0;
    const int list = FindEntry(List(inv), *inv.pCount, group);
    const std::string countName = group + std::string(Text_Internalcount);
    const int counts = FindEntry(List(inv), *inv.pCount, countName);
    if (list >= *inv.pCount || counts >= *inv.pCount) return 0;
    const EingabeElement &entry = List(inv)[list];
    if (entry.Wert == nullptr) return 0;
    int k = 0;
    for (size_t offset = 0; k < entry.WertGesetzt && static_cast<long>(offset) < entry.WertPosition;
         ++k)
        offset += std::strlen(entry.Wert + offset) + 1;
    if (k >= entry.WertGesetzt) return 0;
    long sum = 0;
    for (int i = 0; i < k; ++i) sum += CountOf(ValueAt(List(inv)[counts], i));
    return static_cast<int>(std::clamp<long>(sum, INT_MIN, INT_MAX));
}

}  // namespace

void Level::Reset() {
    state = CycleState::Idle;
    bodies.clear();
    body = 0;
    lineIndex = 0;
    counter = 0;
    skip = false;
    governing = -1;
    countValue = -1;
}

char *LineEnds(Invocation &inv) {
    if (!inv.Replaying()) return nullptr;
    Level &level = inv.Current();
    ++level.lineIndex;
    // Only a /CYCLE line dropped under a false IF lets the replay run out.
    if (level.lineIndex >= level.Active().lines.size()) return EndOfIteration(inv);
    return ReplayLine(inv);
}

bool RefuseCycle(Invocation &inv) {
    const int next = inv.cycle.level + 1;
    size_t body = 0;
    const bool refuse = next >= kLevelCount || (inv.Replaying() && !NestedBody(inv, &body));
    if (refuse) ++inv.cycle.refused;
    return refuse;
}

bool RefuseCycleEnd(Invocation &inv) {
    if (inv.cycle.refused == 0) return false;
    --inv.cycle.refused;
    return true;
}

char *StartCycle(Invocation &inv, const Placeholder &ph, char *pos) {
    const int next = inv.cycle.level + 1;
    size_t nested = 0;
    if (inv.Replaying() && NestedBody(inv, &nested)) return EnterReplay(inv, next, nested);
    Body &body = StartBody(inv, next, pos);
    char *opener = CycleOpener(pos, ph.P);
    inv.Write({pos, static_cast<size_t>(opener - pos)});
    char *rest = AfterDirective(inv, ph);
    body.lines.emplace_back(opener, static_cast<size_t>(rest - opener));
    constexpr size_t kWordAndSeparator = 6; // "CYCLE" and one separator character
    if (ph.nameLength > kWordAndSeparator)
        body.cycleName.assign(ph.name + kWordAndSeparator, ph.nameLength - kWordAndSeparator);
    inv.cycle.level = next;
    inv.cycle.refused = 0;
    return *rest == '\0' ? nullptr : rest;
}

char *EndCycle(Invocation &inv, const Placeholder &ph, char *pos) {
    if (inv.cycle.level == 0) {
        inv.Write(MessageText(PageMessage::NoMatchingCycle));
        return nullptr;
    }
    if (inv.Collecting()) return EndCollection(inv, ph, pos);
    return EndOfIteration(inv);
}

char *Collect(Invocation &inv, char *pos, char *searchFrom) {
    char *split = NextDirective(pos, searchFrom);
    std::vector<std::string> &lines = inv.Current().Active().lines;
    if (split != nullptr && split > pos) {
        lines.emplace_back(pos, static_cast<size_t>(split - pos));
        return split;
    }
    lines.emplace_back(pos);
    return nullptr;
}

void CountIterations(Invocation &inv, int index, int valueIndex) {
    if (!inv.Replaying() || valueIndex >= 0 || index < 0 || index >= *inv.pCount) return;
    Level &level = inv.Current();
    Body &body = level.Active();
    const EingabeElement &entry = List(inv)[index];
    if (level.governing < 0) {
        body.limit = std::max(body.limit, entry.WertGesetzt);
        return;
    }
    if (index == level.governing) level.countValue = CountOf(CurrentText(entry));
    body.limit = level.countValue;
}

void RecordEntry(Invocation &inv, int index) {
    if (inv.cycle.level == 0 || index < 0 || index >= *inv.pCount) return;
    Body &body = inv.Current().Active();
    const EingabeElement &entry = List(inv)[index];
    if (Recorded(body, entry.Name) || (!body.cycleName.empty() && body.cycleName == entry.Name))
        return;
    Record(body, List(inv), index);
    const int counts = CountEntryOf(inv, {entry.Name, entry.NameLaenge});
    if (counts >= *inv.pCount) return;
    const int next = inv.cycle.level + 1;
    if (next < kLevelCount) {
        inv.cycle.levels[next].governing = counts;
        inv.cycle.levels[next].countValue = CountOf(CurrentText(List(inv)[counts]));
    }
    if (!Recorded(body, List(inv)[counts].Name)) Record(body, List(inv), counts);
}

int ControlCycleIndex(const Invocation &inv) {
    if (inv.fixedCycleIndex >= 0) return inv.fixedCycleIndex;
    if (inv.cycle.level == 0) return -1;
    const Level &level = inv.cycle.levels[inv.cycle.level];
    const std::string &group = level.body < level.bodies.size() ? level.bodies[level.body].cycleName : "";
    const long index = static_cast<long>(level.counter) + GroupOffset(inv, group);
    return static_cast<int>(std::clamp<long>(index, INT_MIN, INT_MAX));
}

const char *ReplayText(const Invocation &inv, int index) {
    if (!inv.Replaying() || index < 0 || index >= *inv.pCount) return nullptr;
    const EingabeElement &entry = (*inv.pList)[index];
    if (entry.Wert == nullptr || entry.WertPosition <= 0) return nullptr;
    const int value = MarkedIndex(inv, index, entry);
    if (value < 0) return nullptr;
    return value < entry.WertGesetzt ? entry.Wert + entry.WertPosition : "";
}

CycleValue::CycleValue(Invocation &inv, int index) : inv_(inv) {
    if (!inv.Replaying() || inv.Current().counter <= 0) return;
    EingabeElement *entry = EntryAt(inv.pCount, inv.pList, index);
    if (entry == nullptr || entry->Art == 'n' || entry->WertGesetzt <= 1 || entry->WertPosition != 0 ||
        entry->Wert == nullptr)
        return;
    const int offset = ValueOffset(*entry, inv.Current().counter);
    // A list shorter than the cycle reads as the empty text past its end.
    entry->WertPosition = offset >= 0 ? offset : static_cast<int>(ValuesSpan(*entry));
    index_ = index;
}

CycleValue::~CycleValue() {
    EingabeElement *entry = EntryAt(inv_.pCount, inv_.pList, index_);
    if (entry != nullptr) entry->WertPosition = 0;
}

}  // namespace kx::tmpl
