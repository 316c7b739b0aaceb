// The selection form {Prefix[{Key[e1|e2|...]}]}: DetermineReplaceValue
// parses it and picks the values, ReplaceValue stores them as the entry
// Prefix_<candidate>.
#include <strings.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "core/alloc.h"
#include "kx_template.h"
#include "core/entry.h"
#include "core/evaluation.h"
#include "core/messages.h"
#include "core/number.h"
#include "core/selection_form.h"
#include "core/text.h"
#include "template/markers.h"

namespace kx::tmpl {
using namespace kx::core;
namespace {

// The state of one DetermineReplaceValue call.
struct Selection {
    char *start;
    int *pCount;
    EingabeElement **pList;
    ErsetzungsName *name;
    char *message;
    int cycleIndex;
    Markers markers;
};

int Lookup(const Selection &s, const std::string &name) {
    return EingabewertIndex(name.c_str(), *s.pList, *s.pCount);
}

// In control mode a simple placeholder yields its bare name.
int SimplePlaceholder(Selection &s) {
    if (_InCreateValueFromControl == 0) return 0;
    const char *from = AfterStartMarker(s.start, s.markers);
    const char *close = std::strchr(from, '}');
    const std::string bare = close != nullptr ? std::string(from, close) : std::string(from);
    s.name->Liste = HeapCopy(bare);
    s.name->Aktuell = s.name->Liste;
    return 1;
}

// Prefix_e1|Prefix_e2|..., each element evaluated first.
std::string Candidates(const std::string &prefix, const std::string &elements, int cycleIndex) {
    std::string list;
    for (std::string_view element : Split(elements, "|")) {
        if (!list.empty()) list += '|';
        list += prefix + "_" + Evaluated(element, cycleIndex < 0 ? -2 : cycleIndex);
    }
    return list;
}

// "[n]" or "[{X}]" at the end of the candidate text.
int ValueIndexIn(const std::string &bracketed, int cycleIndex) {
    if (bracketed.empty() || bracketed[0] != '{') return ReadInt(bracketed);
    const std::string value = Evaluated(bracketed, cycleIndex < 0 ? -2 : cycleIndex);
    return (!value.empty() && value[0] == '{') ? -1 : ReadInt(value);
}

std::vector<char *> SplitCandidates(char *list) {
    std::vector<char *> candidates;
    const int count = ErmittleTextElemente(list, "|", nullptr, nullptr);
    for (int i = 0; i < count; ++i) {
        candidates.push_back(list);
        list += std::strlen(list) + 1;
    }
    return candidates;
}

int ValueCount(const EingabeElement &entry) {
    return entry.WertGesetzt > 0 ? entry.WertGesetzt : (entry.Wert != nullptr ? 1 : 0);
}

// Positions of the key values that equal the candidate's part after "_",
// each widened to r positions when Prefix holds r times as many values.
std::vector<int> Positions(const EingabeElement &key, const char *candidate, int ratio) {
    const char *underscore = std::strchr(candidate, '_');
    const char *part = underscore != nullptr ? underscore + 1 : candidate;
    std::vector<int> positions;
    for (int p = 0; p < ValueCount(key); ++p) {
        const char *value = key.WertGesetzt > 0 ? ValueAt(key, p) : key.Wert;
        if (value == nullptr || std::strcmp(value, part) != 0) continue;
        for (int k = 0; k < ratio; ++k) positions.push_back(p * ratio + k);
    }
    return positions;
}

bool NoValueAmong(const EingabeElement *prefix, const std::vector<int> &positions) {
    for (int position : positions) {
        const char *value = prefix != nullptr ? ValueAt(*prefix, position) : nullptr;
        if (value != nullptr &&
            (strncasecmp(value, "unknown", 7) == 0 || strncasecmp(value, "NoValue", 7) == 0))
            return true;
    }
    return false;
}

int Choose(Selection &s, const std::vector<char *> &candidates, int keyIndex,
           const std::string &prefixName, int **indexList) {
    const int prefixIndex = Lookup(s, prefixName);
    const EingabeElement *prefix = EntryAt(s.pCount, s.pList, prefixIndex);
    const EingabeElement &key = (*s.pList)[keyIndex];
    const int prefixValues = prefix != nullptr ? ValueCount(*prefix) : 0;
    const int ratio = prefixValues > ValueCount(key) ? prefixValues / ValueCount(key) : 1;
    std::vector<int> chosen;
    char *taken = nullptr;
    bool any = false;
    for (size_t c = 0; c < candidates.size() && taken == nullptr; ++c) {
        chosen = Positions(key, candidates[c], ratio);
        if (chosen.empty()) continue;
        any = true;
        const bool last = c + 1 == candidates.size();
        if (candidates.size() > 1 && chosen[0] < prefixValues && !last &&
            NoValueAmong(prefix, chosen)) {
            chosen.clear();
            continue;
        }
        taken = candidates[c];
    }
    s.name->Aktuell = taken != nullptr ? taken : any ? candidates.back() : candidates.front();
    if (chosen.empty()) return 0;
    *indexList = static_cast<int *>(kx::core::Allocate(chosen.size() * sizeof(int)));
    if (*indexList == nullptr) return 0;
    std::memcpy(*indexList, chosen.data(), chosen.size() * sizeof(int));
    return static_cast<int>(chosen.size());
}

// A candidate that is an entry already (an earlier placeholder made it) is
// printed as it is, from its first value.
bool ExistingCandidate(Selection &s, const std::vector<char *> &candidates) {
    for (char *candidate : candidates) {
        EingabeElement *entry = EntryAt(s.pCount, s.pList, Lookup(s, candidate));
        if (entry == nullptr) continue;
        entry->WertPosition = 0;
        s.name->Aktuell = candidate;
        return true;
    }
    return false;
}

void Message(char *message, const char *format, const std::string &name) {
    std::snprintf(message, KX_MESSAGE_SIZE, format, name.c_str());
}

// The parts of the form; false, with the fault's message where it has one,
// when the form is malformed.
bool ReadParts(Selection &s, SelectionParts &parts) {
    const auto say = [&](PageMessage message) {
        std::snprintf(s.message, KX_MESSAGE_SIZE, "%s", MessageText(message));
        return false;
    };
    switch (ReadSelectionForm(s.start, s.markers.start, SelectionSource::kPlaceholder, parts)) {
    case SelectionFault::kNone: return true;
    case SelectionFault::kNoKey: return false;
    case SelectionFault::kNoClosingBracket: return say(PageMessage::FirstBracketMissing);
    case SelectionFault::kKeyNotClosed: return say(PageMessage::SecondBracketMissing);
    }
    return false;
}

int SelectionForm(Selection &s, int **indexList, int *valueIndex) {
    SelectionParts parts;
    if (!ReadParts(s, parts)) return 0;
    const std::string prefix(parts.prefix);
    const std::string keyName(parts.key);
    std::string list = Candidates(prefix, std::string(parts.elements), s.cycleIndex);
    const size_t bracket = list.find('[');
    if (bracket != std::string::npos) {
        const char *close = PairIt(list.c_str() + bracket, "[", "]");
        const size_t end = close > list.c_str() + bracket ? static_cast<size_t>(close - list.c_str()) : list.size();
        *valueIndex = ValueIndexIn(list.substr(bracket + 1, end - bracket - 1), s.cycleIndex);
        list.resize(bracket);
    }
    s.name->Liste = HeapCopy(list);
    if (s.name->Liste == nullptr) return 0;
    const std::vector<char *> candidates = SplitCandidates(s.name->Liste);
    if (ExistingCandidate(s, candidates)) return 0;
    const EingabeElement *key = EntryAt(s.pCount, s.pList, Lookup(s, keyName));
    if (key == nullptr || key->Wert == nullptr || *key->Wert == '\0') {
        Message(s.message, MessageText(PageMessage::KeyUnknown), keyName);
        return 0;
    }
    return Choose(s, candidates, static_cast<int>(key - *s.pList), prefix, indexList);
}

}  // namespace
}  // namespace kx::tmpl

extern "C" int DetermineReplaceValue(char *start, char *end, int *pCount, EingabeElement **pList,
                                     const char * /*divider*/, ErsetzungsName *name,
                                     char *message, int **indexList, char **bracket,
                                     int *valueIndex, int cycleIndex) {
    using namespace kx::tmpl;
    *indexList = nullptr;
    *valueIndex = -1;
    message[0] = '\0';
    if (bracket != nullptr) *bracket = nullptr;
    if (start == nullptr || pCount == nullptr || pList == nullptr) return 0;
    Selection s{start, pCount, pList, name, message, cycleIndex, CurrentMarkers(pCount, pList)};
    Cuts cuts;
    if (end != nullptr && *end != '\0') cuts.At(end + 1);
    const char *close = PairIt(start, s.markers.start.c_str(), s.markers.end.c_str());
    char *open = std::strchr(start, '[');
    if (open == nullptr || open >= close) return SimplePlaceholder(s);
    if (bracket != nullptr) *bracket = open;
    return SelectionForm(s, indexList, valueIndex);
}
