// Processing one logical line: finding each placeholder, the order of checks
// at a placeholder, and the directives IF, /ELSE, /IF.
#include <cstdlib>
#include <cstring>

#include "kx_template.h"
#include "template/cycle.h"
#include "template/invocation.h"
#include "template/nesting.h"
#include "template/placeholder.h"

namespace kx::tmpl {
namespace {

// End of the text: the rest is written unless an IF withheld the line; a
// level collecting a cycle body stores it.
char *EndOfText(Invocation &inv, char *pos) {
    if (inv.Current().skip) return LineEnds(inv);
    if (inv.Collecting()) return Collect(inv, pos, pos);
    if (!inv.ifPrefix) inv.Write(pos);
    inv.ifPrefix = false;
    return LineEnds(inv);
}

// A start marker without an end: the rest is written as it stands.
char *Unfinished(Invocation &inv, char *pos) {
    if (inv.Current().skip) return LineEnds(inv);
    if (inv.Collecting()) return Collect(inv, pos, pos);
    inv.Write(pos);
    return LineEnds(inv);
}

constexpr std::string_view kCycleCount = "CycleCount";

// Directive-like placeholders ("CycleCount", IF, anything on a line with a
// DEFINE) are not resolved through ReplaceValue; only a text at least as long
// as "CycleCount" after the start marker is looked at.
bool DirectiveLike(Invocation &inv, const Placeholder &ph, const char *after, const char *pos) {
    const char *content = ph.P + 1;
    return strnlen(after, kCycleCount.size()) >= kCycleCount.size() &&
           (StartsWith(content, kCycleCount.data()) || inv.DefineFrom(pos) ||
            StartsWith(content, "IF"));
}

// A placeholder that ReplaceValue would leave as it is: outside a control, a
// paired placeholder without a "[" up to its end names no selection form.
bool Plain(const Placeholder &ph) {
    return _InCreateValueFromControl == 0 && ph.M != nullptr &&
           std::memchr(ph.P, '[', static_cast<size_t>(ph.M - ph.P) + 1) == nullptr;
}

// Which entry the placeholder prints and where it ends. False when the
// placeholder turns out to be unfinished.
bool ResolveName(Invocation &inv, Placeholder &ph, char *pos) {
    const char *after = ph.P + inv.startMarker.size();
    if (!DirectiveLike(inv, ph, after, pos)) {
        if (!Plain(ph))
            ReplaceValue(ph.P, ph.M, inv.pCount, inv.pList, kListDivider, &inv.name, inv.message,
                     &ph.valueIndex, inv.CycleIndex());
    } else if (StartsWith(ph.P + 1, "IF")) {
        if (ph.M == nullptr) return false;
        ph.E = ph.M;
    }
    if (inv.message[0] != '\0') {
        inv.Write(inv.message);
        inv.message[0] = '\0';
        if (ph.M == nullptr) return false;
        ph.E = ph.M;
    }
    if (inv.name.Aktuell != nullptr && *inv.pCount > 0) {
        if (ph.M == nullptr) {
            inv.ClearName();
            return false;
        }
        ph.E = ph.M;
    }
    return true;
}

void Measure(const Invocation &inv, Placeholder &ph) {
    ph.doubled = ph.P[1] == inv.startMarker[0] && ph.E[1] == inv.endMarker[0];
    if (inv.name.Aktuell != nullptr) {
        ph.name = inv.name.Aktuell;
        ph.nameLength = std::strlen(inv.name.Aktuell);
        return;
    }
    ph.name = ph.P + 1 + (ph.doubled ? 1 : 0);
    ph.nameLength = static_cast<size_t>(ph.E - ph.P - 1) - (ph.doubled ? 1 : 0);
}

// Only a name starting with one of these can be a directive.
bool MayBeDirective(const Placeholder &ph) {
    const char first = ph.name[0];
    return first == 'I' || first == '/' || first == 'D' || first == 'C';
}

// The directives, tested in this order; everything else is an ordinary
// placeholder, stored instead while a level collects a cycle body.
char *Dispatch(Invocation &inv, Placeholder &ph, char *pos) {
    Level &level = inv.Current();
    if (!MayBeDirective(ph)) {
        if (level.skip) return LineEnds(inv);
        if (inv.Collecting()) return Collect(inv, pos, After(inv, ph));
        return Ordinary(inv, ph, pos);
    }
    if (StartsWith(ph.name, "IF")) {
        if (!IfHolds(inv, ph)) {
            level.skip = true;
            return LineEnds(inv);
        }
    } else if (NameIs(ph, "/ELSE")) {
        level.skip = !level.skip;
        return LineEnds(inv);
    } else if (NameIs(ph, "/IF")) {
        level.skip = false;
        return LineEnds(inv);
    } else if (StartsWith(ph.name, "DEFINE")) {
        return inv.Collecting() ? Collect(inv, pos, ph.P + 1) : Define(inv, ph, pos);
    }
    if (level.skip) return LineEnds(inv);
    if (StartsWith(ph.name, "CYCLE") && !RefuseCycle(inv)) return StartCycle(inv, ph, pos);
    if (NameIs(ph, "/CYCLE") && !RefuseCycleEnd(inv)) return EndCycle(inv, ph, pos);
    if (inv.Collecting()) return Collect(inv, pos, After(inv, ph));
    return Ordinary(inv, ph, pos);
}

// A marker of one character, as "{" and "}" are, is found by strchr.
char *FindMarker(char *from, const std::string &marker) {
    return marker.size() == 1 ? std::strchr(from, marker[0]) : std::strstr(from, marker.c_str());
}

// Handles the next placeholder from pos; returns where to go on, or NULL
// when the logical line ends.
char *Step(Invocation &inv, char *pos) {
    char *start = inv.markersDefined ? FindMarker(pos, inv.startMarker) : nullptr;
    if (start == nullptr) return EndOfText(inv, pos);
    // A level collecting a cycle body stores a line whose placeholder is a
    // DEFINE unprocessed.
    if (inv.Collecting() && StartsWith(start + inv.startMarker.size(), "DEFINE"))
        return Collect(inv, pos, start + 1);
    Placeholder ph;
    ph.P = start;
    ph.E = FindMarker(start + 1, inv.endMarker);
    if (ph.E == nullptr || ph.E == start + 1) return Unfinished(inv, pos);
    // A plain name's end is the end PairIt would pair, found without its
    // count of nested markers.
    const char *plain = BraceMarkers(inv) ? PlainEnd(start) : nullptr;
    const char *match = plain != nullptr ? plain : PairIt(start, inv.startMarker.c_str(), inv.endMarker.c_str());
    ph.M = match == start ? nullptr : const_cast<char *>(match);
    inv.ClearName();
    inv.message[0] = '\0';
    if (!ResolveName(inv, ph, pos)) return Unfinished(inv, pos);
    Measure(inv, ph);
    return Dispatch(inv, ph, pos);
}

}  // namespace

void ProcessText(Invocation &inv, char *text) {
    NestingGuard::StartLine(std::strlen(text));
    inv.StartText(text);
    for (char *pos = text; pos != nullptr;) {
        char *next = nullptr;
        if (pos == inv.textStart && ReplayFromForm(inv, &next))
            pos = next;
        else
            pos = PlainStep(inv, pos, &next) ? next : Step(inv, pos);
    }
    inv.ClearName();
}

}  // namespace kx::tmpl
