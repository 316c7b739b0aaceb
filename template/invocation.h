// The state of one call of the template processor. Nothing of it is static:
// the processor is re-entered through MatchIt while a call is running.
#ifndef KX_TEMPLATE_INVOCATION_H
#define KX_TEMPLATE_INVOCATION_H

#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "kx_template.h"
#include "core/name_index.h"
#include "core/page_output.h"
#include "template/cycle_state.h"
#include "template/template_reader.h"

namespace kx::tmpl {

// The line buffer holds at least this many bytes; more for a larger input.
inline constexpr size_t kLineBufferMinimum = 4096;

// Room kept after the input's own size in a buffer sized from the input.
inline constexpr size_t kLineBufferHeadroom = 10;

// The openings of a line's IF comment, both of the same length.
inline constexpr std::string_view kIfComment = "<!{IF ";
inline constexpr std::string_view kIfScriptComment = "//{IF ";
static_assert(kIfComment.size() == kIfScriptComment.size());

// The list divider of the page engine.
inline constexpr const char *kListDivider = "~";

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
    std::optional<core::PageOutput> page; // file mode: the page, in blocks
    bool produced = false;

    int startIndex = -1;
    int endIndex = -1;
    int *pCount = nullptr;
    EingabeElement **pList = nullptr;
    std::string startMarker;
    std::string endMarker;
    bool markersDefined = false;

    LineBuffer line; // the line buffer: a string-mode text's size, grown on demand for a file
    char *textStart = nullptr; // the text being processed
    // Where the last "DEFINE" and the last IF comment ("<!{IF ", "//{IF ")
    // of the text begin (nullptr: none), found once per text when first
    // asked for, so that asking whether one follows a position costs no
    // search to the line's end.
    bool lastsKnown = false;
    const char *lastDefine = nullptr;
    const char *lastIfComment = nullptr;
    LineForm *form = nullptr; // a stored line's parsed form, kept for all its rows
    char message[KX_MESSAGE_SIZE] = {};

    int lineCounter = 1;
    int lineStart = 1;
    int passes = 0;
    int fixedCycleIndex = -1;
    bool deleteCopyright = false;
    bool escapeHtml = false;  // file mode: values are written HTML-escaped
    bool ifPrefix = false;
    PageTexts pageTexts;

    CycleEngine cycle;     // the CYCLE blocks of this call
    core::NameIndex names; // the entries of *pList by name
    ErsetzungsName name = {};

    Level &Current() { return cycle.Current(); }
    bool Collecting() const { return cycle.Collecting(); }
    bool Replaying() const { return cycle.Replaying(); }
    int CycleIndex() const;
    void Write(std::string_view piece);
    // text becomes the text processed; returns it. A stored line passes
    // its parsed form.
    char *StartText(char *text, LineForm *form = nullptr);
    // A "DEFINE" / an IF comment begins at pos or after it.
    bool DefineFrom(const char *pos) {
        FindLasts();
        return lastDefine != nullptr && lastDefine >= pos;
    }
    bool IfCommentFrom(const char *pos) {
        FindLasts();
        return lastIfComment != nullptr && lastIfComment >= pos;
    }
    void FindLasts();
    void ClearName();
};

// Processes one logical line (the text is changed during processing and
// restored; it stays NUL-terminated).
void ProcessText(Invocation &inv, char *text);

}  // namespace kx::tmpl

#endif
