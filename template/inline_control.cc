// CreateValueFromControl: an inline control {=[_type.]condition?then:else}
// chooses a branch text, which is converted and evaluated.
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>

#include "companion/libKXUtils.h"
#include "kx_convert.h"
#include "kx_template.h"
#include "core/entry.h"
#include "core/evaluation.h"
#include "core/number.h"
#include "core/text.h"
#include "template/markers.h"
#include "template/nesting.h"

extern "C" {
int _InCreateValueFromControl = 0;
int _ThisValueIndex = -1;
}

namespace kx::tmpl {
using namespace kx::core;
namespace {

struct Control {
    int elementIndex;
    int cycleIndex;
    int *pCount;
    EingabeElement **pList;
    int valueIndex;
    int skip;
    const char *endMarker;
    char *message;
};

// The control flag is 1 while a control is evaluated and 0 after any return.
class ControlMode {
public:
    ControlMode() { _InCreateValueFromControl = 1; }
    ~ControlMode() { _InCreateValueFromControl = 0; }
    ControlMode(const ControlMode &) = delete;
    ControlMode &operator=(const ControlMode &) = delete;
};

// MatchIt's result as a heap text of our own; nullptr when memory runs out.
// A text without a "{" is copied as it stands, as MatchIt would leave it.
char *EvaluatedCopy(std::string_view text, int cycleIndex) {
    if (text.find('{') == std::string_view::npos) return HeapCopy(text);
    return Evaluation(text, cycleIndex).Release();
}

// "_type." right after "=": a word between "_" and the first ".".
std::string TypeOf(const char *at, const char *end, const char **body) {
    *body = at;
    if (*at != '_') return "_string";
    const char *c = at + 1;
    while (c < end && (std::isalnum(static_cast<unsigned char>(*c)) || *c == '_')) ++c;
    if (c >= end || *c != '.') return "_string";
    *body = c + 1;
    return std::string(at, c);
}

const char *ThisValue(const Control &ctl) {
    const EingabeElement *entry = EntryAt(ctl.pCount, ctl.pList, ctl.elementIndex);
    if (entry == nullptr) return "";
    const char *value = ctl.valueIndex >= 0 ? ValueAt(*entry, ctl.valueIndex) : nullptr;
    if (value == nullptr) value = CurrentText(*entry);
    return value != nullptr ? value : "";
}

// "?then:else" alone: the this entry's number decides, then is the default.
std::string EmptyCondition(const Control &ctl, std::string body, int *consumed) {
    if (!body.empty() && body.back() == '}') {
        body.pop_back();
        --*consumed;
    }
    const size_t colon = body.find(':');
    const std::string thenText = body.substr(1, colon == std::string::npos ? colon : colon - 1);
    const std::string elseText = colon == std::string::npos ? "" : body.substr(colon + 1);
    const EingabeElement *entry = EntryAt(ctl.pCount, ctl.pList, ctl.elementIndex);
    if (entry == nullptr) return thenText;
    const char *text = CurrentText(*entry);
    return ReadInt(text != nullptr ? text : "") != 0 ? thenText : elseText;
}

// The left operand "{X}": its entry (count when none) and value index.
// False when it names nothing at all.
bool LeftEntry(const Control &ctl, std::string_view left, int *index, int *valueIndex) {
    std::string copy(left);
    char *end = std::strrchr(copy.data(), '}');
    ErsetzungsName name = {};
    ReplaceValue(copy.data(), end, ctl.pCount, ctl.pList, "~", &name, ctl.message, valueIndex,
                 ctl.cycleIndex);
    const bool named = name.Aktuell != nullptr;
    if (named) *index = EingabewertIndex(name.Aktuell, *ctl.pList, *ctl.pCount);
    std::free(name.Liste);
    return named;
}

// "_file": "1" when the evaluated path exists, else "0".
std::string FileTest(std::string_view left) {
    std::string path(left);
    for (char &c : path)
        if (c == '/' || c == '\\') c = Verzeichnistrenner[0];
    const Evaluation evaluated(path, -2);
    const bool exists = !evaluated.Failed() && KXUtilsFileExists(evaluated.CText()) == 0;
    return exists ? "1" : "0";
}

// Puts a list entry on the cycle's value for the comparison, and back after.
// The comparison may add entries (a DEFINE in its right text), so the list
// can move meanwhile: the entry is found again by its index.
class CyclePosition {
public:
    CyclePosition(const Control &ctl, int index) : ctl_(ctl) {
        EingabeElement *entry = EntryAt(ctl.pCount, ctl.pList, index);
        if (entry == nullptr || ctl.cycleIndex < 0 || entry->Art == 'n' || entry->WertGesetzt < 2 ||
            entry->WertPosition != 0)
            return;
        index_ = index;
        const int offset = ValueOffset(*entry, ctl.cycleIndex);
        entry->WertPosition = offset >= 0 ? offset : static_cast<int>(ValuesSpan(*entry));
    }
    ~CyclePosition() {
        if (EingabeElement *entry = EntryAt(ctl_.pCount, ctl_.pList, index_)) entry->WertPosition = 0;
    }
    CyclePosition(const CyclePosition &) = delete;
    CyclePosition &operator=(const CyclePosition &) = delete;

private:
    const Control &ctl_;
    int index_ = -1;
};

char *Evaluate(const Control &ctl, const std::string &branch);

// Where the conversion chain of a branch text starts and the name behind it.
struct ConversionChain {
    char *name = nullptr;   // the name after the chain, or the branch text itself
    char *start = nullptr;  // the "_" that starts the chain (or "_this"), or NULL
};

// The value of the this entry stands where a branch names "_this".
constexpr std::string_view kThis = "_this";

// A branch that starts so is a control of its own.
constexpr std::string_view kNestedControl = "{=";

// The chosen branch: a nested control, or a name behind a conversion chain.
char *BranchValue(const Control &ctl, std::string branch) {
    if (branch.starts_with(kNestedControl)) return Evaluate(ctl, branch);
    ConversionChain chain;
    chain.name = DetermineConversion(branch.data(), &chain.start);
    const char *thisAt = std::strstr(chain.name, kThis.data());
    if (chain.start == nullptr && thisAt == nullptr) {
        // No conversion and no "_this": the evaluated name is the value as
        // it stands.
        char *value = EvaluatedCopy(chain.name, ctl.cycleIndex);
        return value != nullptr ? value : HeapCopy({});
    }
    char *value = thisAt != nullptr ? HeapCopy(ThisValue(ctl)) : EvaluatedCopy(chain.name, ctl.cycleIndex);
    const int saved = _ThisValueIndex;
    _ThisValueIndex = ctl.elementIndex;
    HeapText converted(ConvertIt(branch.data(), KX_CONVERT_UNBOUNDED, value, 1, ctl.cycleIndex));
    _ThisValueIndex = saved;
    const char *afterThis = thisAt != nullptr ? thisAt + kThis.size() : nullptr;
    if (afterThis != nullptr && *afterThis != '\0') {
        // "_this" inside a longer text (a link): the converted value takes its
        // place and the whole text is evaluated.
        std::string joined(chain.name, static_cast<size_t>(thisAt - chain.name));
        joined.append(converted.View()).append(afterThis);
        return EvaluatedCopy(ReplaceAll(joined, "javascript%3A", "javascript:"), ctl.cycleIndex);
    }
    if (chain.start == nullptr || chain.start == branch.data()) {
        // Nothing before the chain: the converted value is the result.
        char *result = converted.Release();
        return result != nullptr ? result : HeapCopy({});
    }
    std::string out(branch.data(), static_cast<size_t>(chain.start - branch.data()));
    out.append(converted.View());
    return HeapCopy(out);
}

// The parts of "left op right"; left and op lie in the control's body.
struct Condition {
    std::string type;
    std::string_view left;
    std::string_view op;
    std::string right;  // NUL-terminated for CompareFunction
};

// Decides the condition; false when the left operand names no entry.
// *usable becomes false when the left operand names nothing at all.
bool Holds(const Control &ctl, const Condition &cond, bool *usable) {
    int leftIndex = -1;
    int leftValueIndex = -1;
    std::string fileText;
    if (cond.type == "_file") {
        fileText = FileTest(cond.left);
    } else if (cond.left.starts_with("{")) {
        *usable = LeftEntry(ctl, cond.left, &leftIndex, &leftValueIndex);
    } else {
        *usable = EntryAt(ctl.pCount, ctl.pList, ctl.elementIndex) != nullptr;
        leftIndex = ctl.elementIndex;
        leftValueIndex = ctl.valueIndex;
    }
    if (!*usable) return false;
    if (EntryAt(ctl.pCount, ctl.pList, leftIndex) == nullptr && cond.type != "_file") return false;
    const CyclePosition position(ctl, cond.left.starts_with("{") ? leftIndex : -1);
    // An operator outside the table (a single "=" or "!") has the index -1,
    // which CompareFunction answers with false.
    const int op = DetermineCompareIndex(cond.op.data(), static_cast<int>(cond.op.size()));
    return CompareFunction(cond.type.c_str(), op, cond.type == "_file" ? fileText.c_str() : nullptr,
                           cond.right.c_str(), ctl.cycleIndex, leftIndex, leftValueIndex,
                           ctl.elementIndex, ctl.pList, ctl.pCount) != 0;
}

// The branch the condition chose: the body splits at "?" and the ":" that
// pairs with it; no ":" leaves the else branch empty.
std::string_view Branch(std::string_view body, size_t question, bool holds) {
    const std::string_view rest = body.substr(question);
    const size_t colon = PairedIn(rest, '?', ':');
    if (colon == std::string_view::npos) return holds ? rest.substr(1) : std::string_view();
    return holds ? rest.substr(1, colon - 1) : rest.substr(colon + 1);
}

// The control's text from its type on; *consumed is adjusted. NULL result
// with *consumed kept: the control yields nothing. The body is a view into the
// control's text: only the chosen branch is copied, for the conversion.
char *EvaluateBody(const Control &ctl, const std::string &type, std::string_view body, int *consumed) {
    const size_t question = body.find('?');
    if (question == std::string::npos) {
        *consumed = 0;
        return nullptr;
    }
    if (question == 0) return HeapCopy(EmptyCondition(ctl, std::string(body), consumed));
    const std::string_view condition = body.substr(0, question);
    const size_t op = condition.find_first_of("!=<>");
    if (op == std::string_view::npos) return nullptr;
    const size_t opLength = op + 1 < condition.size() && condition[op + 1] == '=' ? 2 : 1;
    const Condition cond{type, condition.substr(0, op), condition.substr(op, opLength),
                         std::string(condition.substr(op + opLength))};
    if (!cond.left.starts_with("{") && !cond.left.starts_with("_this") && type != "_file")
        return nullptr;
    bool usable = true;
    const bool holds = Holds(ctl, cond, &usable);
    if (!usable) return nullptr;
    return BranchValue(ctl, std::string(Branch(body, question, holds)));
}

// The control at text; its result (or NULL), *consumed its length.
char *Run(const Control &ctl, char *text, int *consumed) {
    const char *close = PairIt(text, "{", ctl.endMarker);
    if (close == text || static_cast<int>(strnlen(text, static_cast<size_t>(ctl.skip))) < ctl.skip ||
        close < text + ctl.skip) {
        *consumed = 0;
        return nullptr;
    }
    *consumed = static_cast<int>(close - text) + 1;
    const char *body = nullptr;
    const std::string type = TypeOf(text + ctl.skip, close, &body);
    char *result = EvaluateBody(ctl, type, std::string_view(body, static_cast<size_t>(close - body)), consumed);
    if (result == nullptr || std::strstr(result, "{_txt_") == nullptr) return result;
    const HeapText once(result);
    return EvaluatedCopy(once.View(), ctl.cycleIndex);
}

char *Evaluate(const Control &ctl, const std::string &branch) {
    std::string copy = branch;
    char *result = nullptr;
    CreateValueFromControl(copy.data(), ctl.elementIndex, ctl.cycleIndex, ctl.pCount, ctl.pList,
                           &result, ctl.valueIndex, ctl.skip, ctl.endMarker, ctl.message);
    return result;
}

}  // namespace
}  // namespace kx::tmpl

extern "C" int CreateValueFromControl(char *text, int elementIndex, int cycleIndex, int *pCount,
                                      EingabeElement **pList, char **result, int valueIndex,
                                      int skip, const char *endMarker, char *message) {
    using namespace kx::tmpl;
    const ControlMode mode;
    if (result != nullptr) *result = nullptr;
    NestingGuard nesting;
    if (text == nullptr || result == nullptr || pCount == nullptr || pList == nullptr ||
        endMarker == nullptr || *endMarker == '\0' || skip < 1 || nesting.TooDeep())
        return 0;
    char spare[KX_MESSAGE_SIZE] = {};
    const Control ctl{elementIndex, cycleIndex, pCount,    pList,
                      valueIndex,   skip,       endMarker, message != nullptr ? message : spare};
    int consumed = 0;
    *result = Run(ctl, text, &consumed);
    return consumed;
}
