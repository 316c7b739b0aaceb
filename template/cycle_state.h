// The state of the CYCLE engine in one call of the template processor: the
// bodies each level collects and replays, and what the replays know of the
// lists they step. One CycleEngine is a member of the per-call state; the
// moves between the states are made in template/cycle.cc, which describes
// them at its top.
#ifndef KX_TEMPLATE_CYCLE_STATE_H
#define KX_TEMPLATE_CYCLE_STATE_H

#include <cassert>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "template/line_form.h"

namespace kx::tmpl {

// Levels of a call: 0 is the page outside any CYCLE block, 1 to 4 the nested
// blocks. Each level has its own IF skip flag and iteration counter.
inline constexpr int kLevelCount = 5;

// What a level is doing with its CYCLE block.
enum class CycleState { Idle, Collecting, Replaying };

// One CYCLE block's body. Line 0 is the CYCLE directive, the last line the
// /CYCLE directive.
struct Body {
    std::vector<std::string> lines;
    std::vector<LineForm> forms;        // beside lines, made as they are replayed
    // Lines that hold a nested CYCLE directive, with the index of its body
    // at the next level.
    std::vector<std::pair<size_t, size_t>> nested;
    int limit = 1;                      // number of iterations
    std::string cycleName;              // the list of groups a nested cycle belongs to
    std::vector<const char *> recorded; // Name texts of the entries written here
    std::vector<int> recordedAt;        // the index each of them had when recorded
};

// One level of CYCLE blocks. Blocks nested side by side in one body each
// have their own body at the level; one of them runs at a time.
struct Level {
    CycleState state = CycleState::Idle;
    std::vector<Body> bodies;
    size_t body = 0;        // the body being collected or replayed
    size_t lineIndex = 0;   // the stored line being replayed
    int counter = 0;        // iterations finished so far ("{CycleCount}")
    bool skip = false;      // the IF skip flag of this level
    std::string leftover;   // the text after the outermost "/CYCLE" on its line
    int governing = -1;     // index of the count entry that sets the limit
    int countValue = -1;    // the number read from it

    // The body in use. Only a level that is not idle has one: asking an idle
    // level for it is a fault of the engine, not of the page.
    Body &Active() {
        assert(body < bodies.size());
        return bodies[body];
    }
    // Back to idle with no body; the leftover stays.
    void Reset();
};

// What a replay knows of a list it stepped: entry `entry`, while it still
// holds the values at `wert` (`count` of them) and stands at `position`, is
// at value number `index` (`count` when past its last value). Spares a walk
// over all the values at each row.
struct ValueMark {
    int entry = -1;
    const char *wert = nullptr;
    int count = 0;
    int position = 0;
    int index = 0;
};

// The entries whose names end in "Internalcount", in list order, as the list
// was when they were looked at (how many entries, their Name texts).
// A body asks for "<name>Internalcount" once per entry it writes; most lists
// hold one such entry or none, so a walk over those few answers it.
struct CountEntries {
    int count = 0;  // the entries looked at
    std::vector<std::pair<int, const char *>> entries;
};

struct CycleEngine {
    Level levels[kLevelCount];
    int level = 0;         // the level the processor is at
    int deepest = 0;       // the deepest level entered since the outermost cycle started
    int refused = 0;       // CYCLE directives refused at the deepest level, still open
    long iterations = 0;   // iterations replayed by this call
    std::vector<ValueMark> marks; // the lists stepped by the replays
    std::vector<int> stepped;     // room for the entries an iteration steps, kept between rows
    CountEntries counts;          // the count entries of the list

    Level &Current() { return levels[level]; }
    bool Collecting() const { return levels[level].state == CycleState::Collecting; }
    bool Replaying() const { return level > 0 && levels[level].state == CycleState::Replaying; }
};

}  // namespace kx::tmpl

#endif
