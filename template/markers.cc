#include "template/markers.h"

#include <cstring>
#include <string_view>

#include "core/entry.h"
#include "core/text.h"

namespace kx::tmpl {
using namespace kx::core;
namespace {

constexpr std::string_view kJavascript = "javascript";

// PairIt passes over a close written right after "javascript", the word
// looked for only after the close found before (or after the text's first
// character).
bool AfterJavascript(const char *text, size_t from, size_t at) {
    return at - from >= kJavascript.size() &&
           EqualsIgnoringCase({text + at - kJavascript.size(), kJavascript.size()}, kJavascript);
}

}  // namespace

// One pass with PairIt's answer: PairIt takes the k-th close as the pair of
// the first open when no (k+1)-th open comes before it, which is when at most
// k opens stand up to it. A close before the first open counts as well, if an
// open follows.
size_t PairedIn(std::string_view text, char open, char close) {
    constexpr size_t kNone = std::string_view::npos;
    if (open == '\0' || close == '\0') return kNone;
    size_t opens = 0;
    size_t closes = 0;
    size_t from = 1;
    for (size_t at = 0; at < text.size(); ++at) {
        if (text[at] == open) ++opens;
        if (text[at] != close || at < from || AfterJavascript(text.data(), from, at)) continue;
        if (opens <= ++closes) return opens > 0 || text.find(open, at + 1) != kNone ? at : kNone;
        from = at + 1;
    }
    return kNone;
}

Markers CurrentMarkers(int *pCount, EingabeElement **pList) {
    const char *start = CurrentTextAt(pCount, pList, iErsetzungsAnfang);
    const char *end = CurrentTextAt(pCount, pList, iErsetzungsEnde);
    return {start != nullptr && *start != '\0' ? start : "{",
            end != nullptr && *end != '\0' ? end : "}"};
}

char *AfterStartMarker(char *start, const Markers &markers) {
    return start + strnlen(start, markers.start.size());
}

Cuts::~Cuts() {
    while (count_ > 0) {
        --count_;
        *where_[count_] = saved_[count_];
    }
}

void Cuts::At(char *position) {
    if (position == nullptr || count_ == kMaxCuts) return;
    where_[count_] = position;
    saved_[count_] = *position;
    ++count_;
    *position = '\0';
}

}  // namespace kx::tmpl
