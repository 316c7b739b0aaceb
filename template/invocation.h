// The state of one call of the template processor. Nothing of it is static:
// the processor is re-entered through MatchIt while a call is running.
#ifndef KX_TEMPLATE_INVOCATION_H
#define KX_TEMPLATE_INVOCATION_H

#include <cstdio>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "kx_template.h"

namespace kx::tmpl {

// Levels of a call: 0 is the page outside any CYCLE block, 1 to 4 the nested
// blocks. Each level has its own IF skip flag and iteration counter.
inline constexpr int kLevelCount = 5;

// The line buffer holds at least this many bytes; more for a larger input.
inline constexpr size_t kLineBufferMinimum = 4096;

// Room kept after the input's own size in the line buffer.
inline constexpr size_t kLineBufferHeadroom = 10;

// The list divider of the page engine.
inline constexpr const char *kListDivider = "~";

// What a level is doing with its CYCLE block.
enum class CycleState { Idle, Collecting, Replaying };

// One CYCLE block's body. Line 0 is the CYCLE directive, the last line the
// /CYCLE directive.
struct Body {
    std::vector<std::string> lines;
    // Lines that hold a nested CYCLE directive, with the index of its body
    // at the next level.
    std::vector<std::pair<size_t, size_t>> nested;
    int limit = 1;                      // number of iterations
    std::string cycleName;              // the list of groups a nested cycle belongs to
    std::vector<const char *> recorded; // Name texts of the entries written here
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

    // The body in use; a level that is not idle always has one.
    Body &Active() {
        if (bodies.empty()) bodies.emplace_back();
        return bodies[body < bodies.size() ? body : (body = 0)];
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

// The (name, value) pairs of the page's text file.
class PageTexts {
public:
    PageTexts() = default;
    PageTexts(const PageTexts &) = delete;
    PageTexts &operator=(const PageTexts &) = delete;
    ~PageTexts();
    void Load(const std::string &path);
    int Count() const { return count_; }
    const char *Name(int i) const { return pairs_[2 * i]; }
    const char *Value(int i) const { return pairs_[2 * i + 1]; }

private:
    char **pairs_ = nullptr;
    int count_ = 0;
};

struct Invocation {
    bool stringMode = false;
    std::string path;  // file mode: the template
    std::string output; // string mode: the result so far
    bool produced = false;

    int startIndex = -1;
    int endIndex = -1;
    int *pCount = nullptr;
    EingabeElement **pList = nullptr;
    std::string startMarker;
    std::string endMarker;
    bool markersDefined = false;

    std::vector<char> line; // the line buffer, never grown
    char *textStart = nullptr; // the text being processed
    char message[KX_MESSAGE_SIZE] = {};

    int lineCounter = 1;
    int lineStart = 1;
    int passes = 0;
    int fixedCycleIndex = -1;
    bool deleteCopyright = false;
    bool escapeHtml = false;  // file mode: values are written HTML-escaped
    bool ifPrefix = false;
    PageTexts pageTexts;

    Level levels[kLevelCount];
    int level = 0;
    int deepest = 0;       // the deepest level entered since the outermost cycle started
    int refused = 0;       // CYCLE directives refused at the deepest level, still open
    long iterations = 0;   // iterations replayed by this call
    std::vector<ValueMark> marks; // the lists stepped by the replays
    ErsetzungsName name = {};

    Level &Current() { return levels[level]; }
    bool Collecting() const { return levels[level].state == CycleState::Collecting; }
    bool Replaying() const { return level > 0 && levels[level].state == CycleState::Replaying; }
    int CycleIndex() const;
    void Write(std::string_view piece);
    void ClearName();
};

// Processes one logical line (the text is changed during processing and
// restored; it stays NUL-terminated).
void ProcessText(Invocation &inv, char *text);

}  // namespace kx::tmpl

#endif
