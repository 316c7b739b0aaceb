// The placeholder markers of the current list: the current texts of the
// entries iErsetzungsAnfang and iErsetzungsEnde, "{" and "}" where those are
// not defined.
#ifndef KX_REFERENCE_MARKERS_H
#define KX_REFERENCE_MARKERS_H

#include <string>

#include "kx_input.h"

namespace kx::tmpl::reference {

struct Markers {
    std::string start;
    std::string end;
};

Markers CurrentMarkers(int *pCount, EingabeElement **pList);

// The text after the start marker at start; the text's end when it is
// shorter than the marker.
char *AfterStartMarker(char *start, const Markers &markers);

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

}  // namespace kx::tmpl::reference

#endif
