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

// One piece of a row: a text run, then a value from the row's values.
struct RowPiece {
    std::string_view text;
    size_t value = 0;
};

// values[0] is the empty value after a line's last text run, then come the
// texts no row changes, then the stepped lists' values, set at each row.
// textBytes counts the text runs.
struct RowPlan {
    std::vector<SteppedList> lists;
    std::vector<RowPiece> pieces;
    std::vector<std::string_view> values{std::string_view()};
    size_t textBytes = 0;
};

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
// more. False when one of them stands where the general step would walk.
bool PlanLists(Invocation &inv, const Body &body, RowPlan &plan) {
    for (const int i : RecordedIndices(inv, body)) {
        const EingabeElement &entry = (*inv.pList)[i];
        if (entry.WertGesetzt < 2) continue;
        const int mark = MarkOf(inv, i, entry);
        if (mark < 0) return false;
        plan.lists.push_back(SteppedList{i, &(*inv.pList)[i], &inv.cycle.marks[static_cast<size_t>(mark)]});
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
    plan.values.emplace_back(KnownValue(inv, index));
    return true;
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
            RowPiece piece{{text + slot.prefix, slot.start - slot.prefix}};
            if (!PlanValue(inv, body, slot.index, plan, piece)) return false;
            plan.pieces.push_back(piece);
        }
        plan.pieces.push_back(RowPiece{{text + form.tail, form.tailLength}});
    }
    for (const RowPiece &piece : plan.pieces) plan.textBytes += piece.text.size();
    return true;
}

// Every placeholder counts its entry's values towards the number of
// iterations, as the general replay does at each row.
void CountValues(Invocation &inv, Body &body) {
    for (size_t i = 1; i + 1 < body.lines.size(); ++i)
        for (const PlainSlot &slot : body.forms[i].slots)
            body.limit = std::max(body.limit, (*inv.pList)[slot.index].WertGesetzt);
}

// Short pieces are copied inline: two overlapping moves of 8 or 4 bytes
// cover any length up to 16 within the piece's own bytes.
void CopyPiece(char *to, std::string_view piece) {
    const char *from = piece.data();
    const size_t n = piece.size();
    if (n >= 8 && n <= 16) {
        std::memcpy(to, from, 8);
        std::memcpy(to + n - 8, from + n - 8, 8);
    } else if (n >= 4 && n < 8) {
        std::memcpy(to, from, 4);
        std::memcpy(to + n - 4, from + n - 4, 4);
    } else if (n > 0) {
        std::memcpy(to, from, n);
    }
}

// The row's bytes, the value of each stepped list set first. A list past its
// last value reads as the empty text. A value counts once per placeholder
// that writes it: a list may be written twice in a row, or not at all.
size_t SetValues(RowPlan &plan) {
    for (const SteppedList &list : plan.lists) {
        const EingabeElement &entry = *list.entry;
        plan.values[list.value] = list.mark->index < entry.WertGesetzt ? entry.Wert + entry.WertPosition : "";
    }
    size_t bytes = plan.textBytes;
    for (const RowPiece &piece : plan.pieces) bytes += plan.values[piece.value].size();
    return bytes;
}

// With HTML escaping, or for a row longer than the page's block, the pieces
// go one by one the general way.
void WritePieces(Invocation &inv, const RowPlan &plan) {
    for (const RowPiece &piece : plan.pieces) {
        inv.Write(piece.text);
        if (piece.value != 0) WritePlain(inv, plan.values[piece.value].data());
    }
}

void WriteRow(Invocation &inv, RowPlan &plan) {
    const size_t bytes = SetValues(plan);
    if (inv.escapeHtml || bytes > core::kPageBlockSize) {
        WritePieces(inv, plan);
        return;
    }
    char *const room = inv.page->Extend(bytes);
    char *out = room;
    for (const RowPiece &piece : plan.pieces) {
        CopyPiece(out, piece.text);
        out += piece.text.size();
        const std::string_view value = plan.values[piece.value];
        CopyPiece(out, value);
        out += value.size();
    }
    assert(out == room + bytes);
}

// The lists go on by one value, a list past its last value stays there.
void StepLists(const RowPlan &plan) {
    for (const SteppedList &list : plan.lists) {
        EingabeElement &entry = *list.entry;
        ValueMark &mark = *list.mark;
        if (mark.index >= entry.WertGesetzt) continue;
        entry.WertPosition += static_cast<int>(plan.values[list.value].size()) + 1;
        mark.position = entry.WertPosition;
        ++mark.index;
    }
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
    while (level.counter + 1 < body.limit && inv.cycle.iterations < kMaxCycleIterations) {
        WriteRow(inv, plan);
        ++level.counter;
        ++inv.cycle.iterations;
        StepLists(plan);
    }
}

}  // namespace kx::tmpl
