// CYCLE blocks: a body between '<!{CYCLE}>' and '<!{/CYCLE}>' is collected,
// then replayed once per value of the lists written in it. Levels 1 to 4 of
// the call's state hold the nested blocks.
#ifndef KX_TEMPLATE_CYCLE_H
#define KX_TEMPLATE_CYCLE_H

#include <vector>

#include "template/invocation.h"
#include "template/placeholder.h"

namespace kx::tmpl {

// The iterations one call replays at most, all levels together. A count
// entry or a list can ask for any number; past this the running iterations
// end as if their limit were reached.
inline constexpr long kMaxCycleIterations = 200000;

// The logical line ends: during a replay the next stored line is processed
// (returned), otherwise NULL.
char *LineEnds(Invocation &inv);

// A CYCLE or /CYCLE directive that has no level is refused and handled as
// text; its matching /CYCLE is text as well.
bool RefuseCycle(Invocation &inv);
bool RefuseCycleEnd(Invocation &inv);

// The CYCLE directive at ph, the text from pos on.
char *StartCycle(Invocation &inv, const Placeholder &ph, char *pos);

// The /CYCLE directive at ph.
char *EndCycle(Invocation &inv, const Placeholder &ph, char *pos);

// A level collecting its body stores the text from pos; it splits at the
// first CYCLE or /CYCLE directive from searchFrom on and returns where that
// directive's comment opener starts, or NULL when the line is stored whole.
char *Collect(Invocation &inv, char *pos, char *searchFrom);

// During a replay, at an ordinary placeholder of entry index with no value
// index: the number of iterations.
void CountIterations(Invocation &inv, int index, int valueIndex);

// After a placeholder of entry index was written at a level above 0.
void RecordEntry(Invocation &inv, int index);

// The cycle index an inline control after a placeholder is evaluated with:
// the fixed one, else the iteration counter plus the offset of the group the
// enclosing cycle stands on, else -1.
int ControlCycleIndex(const Invocation &inv);

// The indices of the entries whose Name texts the body recorded, in list
// order: where each was recorded, or found again when the list has changed
// since. They are put in the engine's room kept for them, which is returned.
const std::vector<int> &RecordedIndices(Invocation &inv, const Body &body);

// At the first stored line of a body being replayed: the rows that are sure
// to end in a further iteration are written in one loop when every line of
// the body is text and plain placeholders of steady entries, with the same
// bytes and the same steps of the lists as the general replay. The row that
// is then due goes the general way.
void RunSteadyRows(Invocation &inv);

// During a replay, the current text of a list the replay stepped, known
// without walking its values; NULL when the replay does not know it.
const char *ReplayText(const Invocation &inv, int index);

// During a replay, an entry of a kind other than 'n' whose list was not
// stepped writes the value numbered like the iteration; WertPosition is put
// back to 0 when the holder goes out of scope.
class CycleValue {
public:
    CycleValue(Invocation &inv, int index);
    ~CycleValue();
    CycleValue(const CycleValue &) = delete;
    CycleValue &operator=(const CycleValue &) = delete;

private:
    Invocation &inv_;
    int index_ = -1;
};

}  // namespace kx::tmpl

#endif
