#include "reference/markers.h"

#include <cstring>

#include "core/entry.h"

namespace kx::tmpl::reference {
using namespace kx::core;

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

}  // namespace kx::tmpl::reference
