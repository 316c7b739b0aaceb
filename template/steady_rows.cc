// Steady rows of a CYCLE body: once the first row has been replayed the
// general way, a body whose stored lines are all text and plain placeholders
// writes the same pieces at every row, and only the values of the lists it
// steps move on. Such rows are written here in one loop from a plan made at
// the first line of a row: the text runs, which list (or which fixed text)
// each placeholder writes, and the marks of the stepped lists. Each row has
// exactly the effects of the general replay of its lines and its /CYCLE
// line: the same bytes, the same steps of WertPosition and of the marks, the
// same counters. The row that ends the cycle goes the general way, and so
// does any body or row the plan does not cover.
#include <algorithm>
#include <cassert>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "template/cycle.h"
#include "template/invocation.h"
#include "template/placeholder.h"

namespace kx::tmpl {
namespace {

// A list the iterations step: its index in the list of entries, its mark in
// the engine's marks, and the slot of the row's values its value goes in.
// While the rows run, nothing changes the list or the marks' room, so the
// entry and the mark are held by address.
struct SteppedList {
    int index = -1;
    EingabeElement *entry = nullptr;
    ValueMark *mark = nullptr;
    size_t value = 0;
};

// A value of a row: where its bytes start and how many there are.
struct RowValue {
    const char *data = "";
    size_t size = 0;
};

// One piece of a row: a text run, then the value in the row's values[value].
// The text lies in RowPlan::texts.
struct RowPiece {
    size_t text = 0;
    size_t textSize = 0;
    size_t value = 0;
};

// values[0] is the empty value after the row's last text run, then come the
// texts no row changes, then the stepped lists' values, set at each row.
// The text runs are gathered in texts, a run that ends a line joined with the
// one that begins the next, and texts has kTextSlack bytes more at its end,
// so that a run can be copied in whole moves of 16 bytes.
struct RowPlan {
    std::vector<SteppedList> lists;
    std::vector<RowPiece> pieces;
    std::vector<RowValue> values{RowValue{}};
    std::string texts;
    size_t textBytes = 0;
};

constexpr size_t kMove = 16;
constexpr size_t kTextSlack = kMove;
static_assert(core::kPageSlack >= kMove, "a run's last move may pass its end");

// Lines 1 up to the last but one are text and plain placeholders, the last
// is the /CYCLE, and no nested body starts in between.
bool PlainBody(const Body &body) {
    const size_t count = body.lines.size();
    if (count < 2 || body.forms.size() != count || !body.nested.empty()) return false;
    for (size_t i = 1; i + 1 < count; ++i)
        if (body.forms[i].shape != LineForm::Shape::Plain) return false;
    return body.forms[count - 1].shape == LineForm::Shape::CycleEnd;
}

// Nothing sets the number of iterations or a nested group's size from a
// count entry, and no IF or refused directive is pending.
bool Ungoverned(Invocation &inv) {
    const int next = inv.cycle.level + 1;
    const Level &level = inv.Current();
    return level.governing < 0 && (next >= kLevelCount || inv.cycle.levels[next].governing < 0) &&
           inv.cycle.refused == 0 && !level.skip && level.counter >= 1;
}

// The mark that tells the value number entry index stands on, as the
// general step reads it; -1 when none does. A list a row has stepped stands
// past its first value (a list at its first value would be numbered like the
// iteration instead), and its mark tells where.
int MarkOf(const Invocation &inv, int index, const EingabeElement &entry) {
    if (entry.Wert == nullptr || entry.WertPosition <= 0) return -1;
    for (size_t k = 0; k < inv.cycle.marks.size(); ++k) {
        const ValueMark &mark = inv.cycle.marks[k];
        if (mark.entry == index)
            return mark.wert == entry.Wert && mark.count == entry.WertGesetzt &&
                           mark.position == entry.WertPosition
                       ? static_cast<int>(k)
                       : -1;
    }
    return -1;
}

// The lists each iteration steps: the recorded entries holding two values or
// more. False when one of them stands where the general step would walk, or
// when two of them are one entry or share a mark (the general step moves such
// an entry once per list).
bool PlanLists(Invocation &inv, const Body &body, RowPlan &plan) {
    for (const int i : RecordedIndices(inv, body)) {
        const EingabeElement &entry = (*inv.pList)[i];
        if (entry.WertGesetzt < 2) continue;
        const int mark = MarkOf(inv, i, entry);
        if (mark < 0) return false;
        ValueMark *const held = &inv.cycle.marks[static_cast<size_t>(mark)];
        for (const SteppedList &list : plan.lists)
            if (list.index == i || list.mark == held) return false;
        plan.lists.push_back(SteppedList{i, &(*inv.pList)[i], held});
    }
    return true;
}

// A placeholder's value in the plan: a stepped list, or a text no row changes
// (an entry of one value, recorded or named like the cycle). False for an
// entry of several values that no iteration steps.
bool PlanValue(const Invocation &inv, const Body &body, int index, RowPlan &plan, RowPiece &piece) {
    for (const SteppedList &list : plan.lists)
        if (list.index == index) {
            piece.value = list.value;
            return true;
        }
    const EingabeElement &entry = (*inv.pList)[index];
    if (entry.WertGesetzt >= 2) return false;
    const bool recorded = std::find(body.recorded.begin(), body.recorded.end(), entry.Name) != body.recorded.end();
    const bool cycleList = !body.cycleName.empty() && body.cycleName == entry.Name;
    if (!recorded && !cycleList) return false;
    piece.value = plan.values.size();
    const char *text = KnownValue(inv, index);
    plan.values.push_back(RowValue{text, std::strlen(text)});
    return true;
}

// A text run goes on the last piece when that piece has no value yet (the
// tail of one line and the start of the next), else it starts a piece.
void AddText(RowPlan &plan, const char *text, size_t size) {
    if (plan.pieces.empty() || plan.pieces.back().value != 0)
        plan.pieces.push_back(RowPiece{plan.texts.size(), 0, 0});
    plan.texts.append(text, size);
    plan.pieces.back().textSize += size;
}

// The pieces of the stored lines between CYCLE and /CYCLE, in order.
bool PlanPieces(Invocation &inv, Body &body, RowPlan &plan) {
    for (SteppedList &list : plan.lists) {
        list.value = plan.values.size();
        plan.values.emplace_back();
    }
    for (size_t i = 1; i + 1 < body.lines.size(); ++i) {
        const char *text = body.lines[i].data();
        LineForm &form = body.forms[i];
        for (PlainSlot &slot : form.slots) {
            if (!ResolveSlot(inv, text, slot)) return false;
            AddText(plan, text + slot.prefix, slot.start - slot.prefix);
            if (!PlanValue(inv, body, slot.index, plan, plan.pieces.back())) return false;
        }
        AddText(plan, text + form.tail, form.tailLength);
    }
    plan.texts.append(kTextSlack, '\0');
    for (const RowPiece &piece : plan.pieces) plan.textBytes += piece.textSize;
    return true;
}

// Every placeholder counts its entry's values towards the number of
// iterations, as the general replay does at each row.
void CountValues(Invocation &inv, Body &body) {
    for (size_t i = 1; i + 1 < body.lines.size(); ++i)
        for (const PlainSlot &slot : body.forms[i].slots)
            body.limit = std::max(body.limit, (*inv.pList)[slot.index].WertGesetzt);
}

void Move16(char *to, const char *from) { std::memcpy(to, from, kMove); }

// A text run, in whole moves of 16 bytes: its source has kTextSlack bytes
// past the last run and the page has core::kPageSlack past its room, and
// what a move writes past the run the next piece overwrites.
void CopyText(char *to, const char *from, size_t n) {
    if (n <= kMove) {
        Move16(to, from);
        return;
    }
    size_t done = 0;
    do {
        Move16(to + done, from + done);
        done += kMove;
    } while (done < n);
}

// A value is read only within its bytes (the list's last value may end its
// block): overlapping moves of 16, 8 or 4 bytes inside the value, and single
// bytes below 4.
void CopyValue(char *to, const char *from, size_t n) {
    if (n >= kMove) {
        for (size_t done = 0; done + kMove < n; done += kMove) Move16(to + done, from + done);
        Move16(to + n - kMove, from + n - kMove);
    } else if (n >= 8) {
        std::memcpy(to, from, 8);
        std::memcpy(to + n - 8, from + n - 8, 8);
    } else if (n >= 4) {
        std::memcpy(to, from, 4);
        std::memcpy(to + n - 4, from + n - 4, 4);
    } else {
        for (size_t i = 0; i < n; ++i) to[i] = from[i];
    }
}

// With HTML escaping, or for a row longer than the page's block, the pieces
// go one by one the general way.
void WritePieces(Invocation &inv, const RowPlan &plan) {
    for (const RowPiece &piece : plan.pieces) {
        inv.Write({plan.texts.data() + piece.text, piece.textSize});
        if (piece.value != 0) WritePlain(inv, plan.values[piece.value].data);
    }
}

// Where a stepped list stands while the rows run: its value number and
// WertPosition, written back to the entry and its mark after the last row;
// the row's value it sets, and how many placeholders write that value.
struct Cursor {
    const char *wert;
    int count;
    int index;
    int position;
    RowValue *value;
    size_t uses;
};

// A piece as the loop reads it: its text run by address.
struct RowStep {
    const char *text;
    size_t textSize;
    const RowValue *value;
};

// The stepped lists as the rows start, each with the number of placeholders
// that write its value.
std::vector<Cursor> CursorsOf(RowPlan &plan) {
    std::vector<Cursor> cursors;
    for (const SteppedList &list : plan.lists) {
        size_t uses = 0;
        for (const RowPiece &piece : plan.pieces) uses += piece.value == list.value ? 1 : 0;
        cursors.push_back(Cursor{list.entry->Wert, list.entry->WertGesetzt, list.mark->index,
                                 list.entry->WertPosition, &plan.values[list.value], uses});
    }
    return cursors;
}

// The pieces by address, and the bytes of a row that no list changes: the
// text runs and the fixed values.
std::vector<RowStep> StepsOf(const RowPlan &plan, size_t *fixedBytes) {
    std::vector<RowStep> steps;
    *fixedBytes = plan.textBytes;
    for (const RowPiece &piece : plan.pieces) {
        steps.push_back(RowStep{plan.texts.data() + piece.text, piece.textSize, &plan.values[piece.value]});
        if (piece.value >= plan.lists.size() + 1 || piece.value == 0) *fixedBytes += plan.values[piece.value].size;
    }
    return steps;
}

// Sets each live list's value for this row and steps it past; returns the
// row's bytes.
size_t MeasureRow(Cursor *first, Cursor *last, size_t fixedBytes) {
    size_t bytes = fixedBytes;
    for (Cursor *cursor = first; cursor != last; ++cursor) {
        const char *data = cursor->wert + cursor->position;
        const size_t size = std::strlen(data);
        *cursor->value = RowValue{data, size};
        bytes += size * cursor->uses;
        cursor->position += static_cast<int>(size) + 1;
    }
    return bytes;
}

// Copies one row of bytes bytes into the page's buffer.
void CopyRow(Invocation &inv, const std::vector<RowStep> &steps, size_t bytes) {
    char *const room = inv.page->Extend(bytes);
    char *out = room;
    for (const RowStep &step : steps) {
        CopyText(out, step.text, step.textSize);
        out += step.textSize;
        CopyValue(out, step.value->data, step.value->size);
        out += step.value->size;
    }
    assert(out == room + bytes);
    static_cast<void>(room);
}

// The lists with values left go to live, and the longest run of rows during
// which none of them runs out (at most rows); the others write the empty text.
long StartRun(std::vector<Cursor> &cursors, std::vector<Cursor> &live, long rows) {
    live.clear();
    long run = rows;
    for (const Cursor &cursor : cursors) {
        if (cursor.index < cursor.count) {
            live.push_back(cursor);
            run = std::min<long>(run, cursor.count - cursor.index);
        } else {
            *cursor.value = RowValue{};
        }
    }
    for (Cursor &cursor : live) cursor.index += static_cast<int>(run);
    return run;
}

// Back to the cursors at a run's end: the next run is read from them.
void EndRun(std::vector<Cursor> &cursors, const std::vector<Cursor> &live) {
    size_t k = 0;
    for (Cursor &cursor : cursors)
        if (cursor.index < cursor.count) cursor = live[k++];
}

// The entries and marks where the last row left the lists.
void WriteBack(const RowPlan &plan, const std::vector<Cursor> &cursors) {
    for (size_t k = 0; k < cursors.size(); ++k) {
        const SteppedList &list = plan.lists[k];
        if (cursors[k].index == list.mark->index) continue;
        list.entry->WertPosition = cursors[k].position;
        list.mark->position = cursors[k].position;
        list.mark->index = cursors[k].index;
    }
}

// Writes rows rows in runs during which no list runs out: within a run every
// list's value is measured once per row, for the write and for the step. A
// list past its last value reads as the empty text and stays there.
void WriteRows(Invocation &inv, RowPlan &plan, long rows) {
    std::vector<Cursor> cursors = CursorsOf(plan), live;
    size_t fixedBytes = 0;
    const std::vector<RowStep> steps = StepsOf(plan, &fixedBytes);
    const bool direct = !inv.escapeHtml;
    while (rows > 0) {
        long run = StartRun(cursors, live, rows);
        rows -= run;
        for (; run > 0; --run) {
            const size_t bytes = MeasureRow(live.data(), live.data() + live.size(), fixedBytes);
            if (direct && bytes <= core::kPageBlockSize) CopyRow(inv, steps, bytes);
            else WritePieces(inv, plan);
        }
        EndRun(cursors, live);
    }
    WriteBack(plan, cursors);
}

}  // namespace

void RunSteadyRows(Invocation &inv) {
    if (!inv.Replaying() || inv.stringMode || !Ungoverned(inv)) return;
    Level &level = inv.Current();
    Body &body = level.Active();
    if (!PlainBody(body)) return;
    RowPlan plan;
    if (!PlanLists(inv, body, plan) || !PlanPieces(inv, body, plan)) return;
    CountValues(inv, body);
    // A row runs here when its /CYCLE would start a further iteration.
    const long rows = std::min<long>(body.limit - 1 - level.counter, kMaxCycleIterations - inv.cycle.iterations);
    if (rows <= 0) return;
    WriteRows(inv, plan, rows);
    level.counter += static_cast<int>(rows);
    inv.cycle.iterations += rows;
}

}  // namespace kx::tmpl
