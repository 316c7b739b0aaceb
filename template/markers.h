// The placeholder markers of the current list: the current texts of the
// entries iErsetzungsAnfang and iErsetzungsEnde, "{" and "}" where those are
// not defined.
#ifndef KX_TEMPLATE_MARKERS_H
#define KX_TEMPLATE_MARKERS_H

#include <cstddef>
#include <string>
#include <string_view>

#include "kx_input.h"

namespace kx::tmpl {

struct Markers {
    std::string start;
    std::string end;
};

Markers CurrentMarkers(int *pCount, EingabeElement **pList);

// The text after the start marker at start; the text's end when it is
// shorter than the marker.
char *AfterStartMarker(char *start, const Markers &markers);

// PairIt for markers of one character each (a control's "?" and ":") within
// text, which need not end with a NUL: the offset of the close that pairs
// with the first open, nested pairs counted and a close right after
// "javascript" passed over; npos when none pairs. A control's branches are
// split so in place, without a copy of its body to end it with a NUL.
size_t PairedIn(std::string_view text, char open, char close);

// Characters written over with NUL for a while and put back when the holder
// goes out of scope, in reverse order.
class Cuts {
public:
    Cuts() = default;
    Cuts(const Cuts &) = delete;
    Cuts &operator=(const Cuts &) = delete;
    ~Cuts();
    void At(char *position);

private:
    static constexpr int kMaxCuts = 4;
    char *where_[kMaxCuts] = {};
    char saved_[kMaxCuts] = {};
    int count_ = 0;
};

}  // namespace kx::tmpl

#endif
