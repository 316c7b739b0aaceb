// CompareFunction: the condition of an inline control, an input-list value
// against one or more right-hand alternatives.
#include <cstdlib>
#include <cstring>
#include <span>
#include <vector>

#include "companion/libparser.h"
#include "core/evaluation.h"
#include "template/compare.h"
#include "core/text.h"
#include "kx_input.h"
#include "kx_template.h"
#include "core/value_cursor.h"

namespace kx::tmpl {
using namespace kx::core;
namespace {

// A comparison type and its table. Type names are compared without regard to case.
struct CompareType {
    std::string_view name;
    const VergleichsFunktion *table;
};

constexpr CompareType kCompareTypes[] = {
    {"_string", TextCompareFunction},
    {"_stringi", TextCompareFunctioni},
    {"_stringn", TextCompareFunctionN},
    {"_stringni", TextCompareFunctionNi},
    {"_numeric", NumericCompareFunction},
    {"_file", NumericCompareFunction},
    {"_strstr", SubstringCompareFunction},
};

// The type whose "empty alternative matches an entry without values" rule applies.
constexpr std::string_view kTypeEmptyMatches = "_stringn";
constexpr std::string_view kTypeFile = "_file";
constexpr char kAlternativeSeparator[] = "|";

// The type as given; empty for none, which is no type's name.
std::string_view TypeName(const char *type) { return type != nullptr ? type : ""; }

bool IsType(std::string_view type, std::string_view name) { return EqualsIgnoringCase(type, name); }

// The row of type; null for an unknown type.
const CompareType *FindType(std::string_view type) {
    for (const CompareType &row : kCompareTypes)
        if (IsType(type, row.name)) return &row;
    return nullptr;
}

// The right text with its placeholders evaluated, or URL-decoded when it
// holds none. Owns the heap text.
class Alternatives {
    // No placeholder, escape or separator. A right text is a word or a
    // number: a loop reads it in fewer steps than strpbrk sets up its table.
    static bool Single(const char *text) {
        for (const char *c = text; *c != '\0'; ++c)
            if (*c == '{' || *c == '%' || *c == '|') return false;
        return true;
    }

public:
    Alternatives(const char *rightText, int cycleIndex) {
        // A text with no placeholder, escape or separator is its one
        // alternative, as it stands.
        if (rightText != nullptr && Single(rightText)) {
            single_ = rightText;
            return;
        }
        Evaluation evaluated(rightText != nullptr ? rightText : "", cycleIndex);
        if (!evaluated.Changed() && evaluated.Text().find('%') != std::string_view::npos)
            text_.Reset(ServerDecoding(evaluated.CText()));
        else
            text_.Reset(evaluated.Release());
        Split();
    }
    Alternatives(const Alternatives &) = delete;
    Alternatives &operator=(const Alternatives &) = delete;

    std::span<const char *const> List() const {
        if (single_ != nullptr) return {&single_, 1};
        return list_;
    }

    // 1 when function holds between left and any alternative, tried in order.
    int AnyHolds(VergleichsFunktion function, const char *left) const {
        for (const char *alternative : List())
            if (function(left, alternative) != 0) return 1;
        return 0;
    }

    bool HasEmpty() const {
        for (const char *alternative : List())
            if (*alternative == '\0') return true;
        return false;
    }

private:
    // ErmittleTextElemente writes a NUL over each "|"; the pieces then follow
    // one another, each ended by its NUL.
    void Split() {
        if (!text_) return;
        const int n = ErmittleTextElemente(text_.Get(), kAlternativeSeparator, nullptr, nullptr);
        const char *piece = text_.Get();
        for (int i = 0; i < n; ++i) {
            list_.push_back(piece);
            piece += std::strlen(piece) + 1;
        }
    }

    HeapText text_;
    const char *single_ = nullptr; // the right text itself, when it is the one alternative
    std::vector<const char *> list_;
};

// Every value of the left entry from its current one, until one matches.
// The this entry steps along so that the two stay on the same position.
int AnyValueHolds(const Alternatives &alternatives, VergleichsFunktion function, EingabeElement &left,
                  EingabeElement *thisEntry) {
    ValueCursor cursor(left);
    EingabeElement unused{};
    ValueCursor thisCursor(thisEntry != nullptr ? *thisEntry : unused);
    for (int tried = 0; tried < left.WertGesetzt; ++tried) {
        if (alternatives.AnyHolds(function, cursor.Current())) return 1;
        if (left.WertGesetzt <= 1 || !cursor.Step()) break;
        thisCursor.Step();
    }
    return 0;
}

// The value leftValueIndex places after the current one; 0 when there is none.
int ChosenValueHolds(const Alternatives &alternatives, VergleichsFunktion function, EingabeElement &left,
                     int leftValueIndex) {
    ValueCursor cursor(left);
    int steps = 0;
    while (steps < leftValueIndex && steps < left.WertGesetzt && cursor.Step()) ++steps;
    if (steps < leftValueIndex || steps >= left.WertGesetzt) return 0;
    return alternatives.AnyHolds(function, cursor.Current());
}

// ValueCursor(entry).Current() without counting every value: only whether
// WertPosition lies inside the values matters, which the values up to it tell.
const char *CurrentValue(const EingabeElement &entry) {
    if (entry.Wert == nullptr || entry.WertPosition < 0) return nullptr;
    const auto position = static_cast<size_t>(entry.WertPosition);
    size_t end = 0;
    for (int i = 0; i < entry.WertGesetzt; ++i) {
        end += std::strlen(entry.Wert + end) + 1;
        if (position < end) return entry.Wert + position;
    }
    return nullptr;
}

struct Operands {
    const Comparison &comparison;
    int cycleIndex;
    int leftValueIndex;
};

int CompareEntry(const Operands &o, const Alternatives &alternatives, EingabeElement *list, int count, int leftIndex,
                 int elementIndex) {
    const VergleichsFunktion function = o.comparison.function;
    if (function == nullptr) return 0;
    EingabeElement &left = list[leftIndex];
    if (o.cycleIndex >= 0) return alternatives.AnyHolds(function, CurrentValue(left));
    if (o.leftValueIndex >= 0) return ChosenValueHolds(alternatives, function, left, o.leftValueIndex);
    const bool otherThis = elementIndex != leftIndex && elementIndex >= 0 && elementIndex < count;
    return AnyValueHolds(alternatives, function, left, otherThis ? &list[elementIndex] : nullptr);
}

}  // namespace

Comparison ResolveComparison(std::string_view type, int op) {
    // The names of the rows differ, so the row found tells the type.
    const CompareType *row = FindType(type);
    if (row == nullptr) return {op, nullptr, false, false};
    const bool known = op >= 0 && op < CompareTabLength;
    return {op, known ? row->table[op] : nullptr, row->name == kTypeFile, row->name == kTypeEmptyMatches};
}

int Compare(const Comparison &comparison, const char *leftText, const char *rightText, int cycleIndex,
            int leftIndex, int leftValueIndex, int elementIndex, EingabeElement **pList, int *pCount) {
    // An operator outside the table (a single "=" or "!") never holds.
    const int op = comparison.op;
    if (op < 0 || op >= CompareTabLength) return 0;
    const Alternatives alternatives(rightText, cycleIndex);
    if (alternatives.List().empty()) return 0;
    if (comparison.file) return NumericCompareFunction[op](leftText, alternatives.List().front());

    EingabeElement *list = pList ? *pList : nullptr;
    const int count = pCount ? *pCount : 0;
    if (list == nullptr || leftIndex < 0 || leftIndex >= count) return 0;
    const Operands operands{comparison, cycleIndex, leftValueIndex};
    if (CompareEntry(operands, alternatives, list, count, leftIndex, elementIndex) != 0) return 1;
    // An entry without values equals an empty alternative for "_stringn".
    return (list[leftIndex].WertGesetzt == 0 && comparison.emptyMatches && alternatives.HasEmpty()) ? 1 : 0;
}

}  // namespace kx::tmpl

extern "C" int CompareFunction(const char *type, int op, const char *leftText, const char *rightText,
                               int cycleIndex, int leftIndex, int leftValueIndex, int elementIndex,
                               EingabeElement **pList, int *pCount) {
    const kx::tmpl::Comparison comparison = kx::tmpl::ResolveComparison(kx::tmpl::TypeName(type), op);
    return kx::tmpl::Compare(comparison, leftText, rightText, cycleIndex, leftIndex, leftValueIndex,
                             elementIndex, pList, pCount);
}
