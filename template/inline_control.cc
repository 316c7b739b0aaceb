// CreateValueFromControl: an inline control {=[_type.]condition?then:else}
// chooses a branch text, which is converted and evaluated. The text is read
// into a form first; the engine keeps the forms of a stored cycle line's
// controls for all its rows, every other call reads its text anew.
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "companion/libKXUtils.h"
#include "kx_template.h"
#include "core/entry.h"
#include "core/evaluation.h"
#include "core/number.h"
#include "core/text.h"
#include "template/control_form.h"
#include "template/markers.h"
#include "template/nesting.h"

extern "C" {
int _InCreateValueFromControl = 0;
int _ThisValueIndex = -1;
}

namespace kx::tmpl {
using namespace kx::core;
namespace {

using Control = ControlCall;

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

const char *ThisValue(const Control &ctl) {
    const EingabeElement *entry = EntryAt(ctl.pCount, ctl.pList, ctl.elementIndex);
    if (entry == nullptr) return "";
    const char *value = ctl.valueIndex >= 0 ? ValueAt(*entry, ctl.valueIndex) : nullptr;
    if (value == nullptr) value = CurrentText(*entry);
    return value != nullptr ? value : "";
}

// "?then:else" alone: the this entry's number decides, then is the default.
std::string_view EmptyChoice(const Control &ctl, const ControlForm &form) {
    const EingabeElement *entry = EntryAt(ctl.pCount, ctl.pList, ctl.elementIndex);
    if (entry == nullptr) return form.View(form.then.text);
    const char *text = CurrentText(*entry);
    return form.View(ReadInt(text != nullptr ? text : "") != 0 ? form.then.text : form.otherwise.text);
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

char *Evaluate(const Control &ctl, std::string_view branch);

// The value of the this entry stands where a branch names "_this".
constexpr std::string_view kThis = "_this";

// A link's scheme as URL encoding leaves it, put back after "_this".
constexpr std::string_view kEncodedJavascript = "javascript%3A";

// A branch that starts so is a control of its own.
constexpr std::string_view kNestedControl = "{=";

// "_type." right after "=": a word between "_" and the first ".". The
// locale's letters count, as the engine has always read the word.
std::string_view TypeOf(const char *at, const char *end, const char **body) {
    constexpr std::string_view kDefaultType = "_string";
    *body = at;
    if (*at != '_') return kDefaultType;
    const char *c = at + 1;
    while (c < end && (std::isalnum(static_cast<unsigned char>(*c)) || *c == '_')) ++c;
    if (c >= end || *c != '.') return kDefaultType;
    *body = c + 1;
    return {at, static_cast<size_t>(c - at)};
}

// Where the conversion chain and "_this" stand in a branch's text: found
// when the branch is first chosen, as many a branch never is.
void ReadBranch(BranchForm &branch, const char *text) {
    branch.read = true;
    branch.nested = std::string_view(text, branch.text.length).starts_with(kNestedControl);
    if (branch.nested) return;
    convert::Conversion found = convert::FindConversion(text);
    branch.name = found.name;
    branch.chainStart = found.start;
    const char *thisAt = std::strstr(text + found.name, kThis.data());
    branch.thisAt = thisAt != nullptr ? thisAt - text : -1;
    branch.chain = std::move(found.chain);
}

// piece, NUL-ended, at the end of the form's texts.
TextSpan Add(ControlForm &form, std::string_view piece) {
    const TextSpan added{form.texts.size(), piece.size()};
    form.texts.append(piece).push_back('\0');
    return added;
}

// "?then:else" alone: a "}" before the close is left out, and the first ":"
// splits.
void ReadEmptyCondition(ControlForm &form, std::string_view body) {
    form.shape = ControlForm::Shape::EmptyCondition;
    if (body.back() == '}') {
        body.remove_suffix(1);
        --form.consumed;
    }
    const size_t colon = body.find(':');
    form.then.text = Add(form, body.substr(1, colon == std::string_view::npos ? colon : colon - 1));
    form.otherwise.text = Add(form, colon == std::string_view::npos ? std::string_view() : body.substr(colon + 1));
}

// The body splits at "?" and the ":" that pairs with it; no ":" leaves the
// else branch empty.
void ReadBranches(ControlForm &form, std::string_view body, size_t question) {
    const std::string_view rest = body.substr(question);
    const size_t colon = PairedIn(rest, '?', ':');
    const bool paired = colon != std::string_view::npos;
    form.then.text = Add(form, paired ? rest.substr(1, colon - 1) : rest.substr(1));
    form.otherwise.text = Add(form, paired ? rest.substr(colon + 1) : std::string_view());
}

// The control's text from its type on: "left op right" before the "?".
// text: where the control, and the form's texts, begin.
void ReadBody(ControlForm &form, const char *text, std::string_view type, std::string_view body) {
    const size_t question = body.find('?');
    if (question == std::string_view::npos) {
        form.shape = ControlForm::Shape::NoQuestion;
        form.consumed = 0;
        return;
    }
    if (question == 0) return ReadEmptyCondition(form, body);
    form.shape = ControlForm::Shape::Unreadable;
    const std::string_view condition = body.substr(0, question);
    const size_t op = condition.find_first_of("!=<>");
    if (op == std::string_view::npos) return;
    const size_t opLength = op + 1 < condition.size() && condition[op + 1] == '=' ? 2 : 1;
    form.file = type == "_file";
    const std::string_view left = condition.substr(0, op);
    form.left = {static_cast<size_t>(left.data() - text), left.size()};
    if (!left.starts_with("{") && !left.starts_with(kThis) && !form.file) return;
    // An operator outside the table (a single "=" or "!") has the index -1,
    // which CompareFunction answers with false.
    form.comparison =
        ResolveComparison(type, DetermineCompareIndex(condition.data() + op, static_cast<int>(opLength)));
    form.right = Add(form, condition.substr(op + opLength));
    form.shape = ControlForm::Shape::Condition;
    ReadBranches(form, body, question);
}

// The chosen branch: a nested control, or a name behind a conversion chain.
char *BranchValue(const Control &ctl, BranchForm &branch, char *text) {
    if (!branch.read) ReadBranch(branch, text);
    if (branch.nested) return Evaluate(ctl, {text, branch.text.length});
    const char *name = text + branch.name;
    if (branch.chainStart < 0 && branch.thisAt < 0) {
        // No conversion and no "_this": the evaluated name is the value as
        // it stands.
        char *value = EvaluatedCopy(name, ctl.cycleIndex);
        return value != nullptr ? value : HeapCopy({});
    }
    const char *thisAt = branch.thisAt >= 0 ? text + branch.thisAt : nullptr;
    char *value = thisAt != nullptr ? HeapCopy(ThisValue(ctl)) : EvaluatedCopy(name, ctl.cycleIndex);
    const int saved = _ThisValueIndex;
    _ThisValueIndex = ctl.elementIndex;
    HeapText converted(convert::ApplyChain(branch.chain, text, value, true, ctl.cycleIndex));
    _ThisValueIndex = saved;
    const char *afterThis = thisAt != nullptr ? thisAt + kThis.size() : nullptr;
    if (afterThis != nullptr && *afterThis != '\0') {
        // "_this" inside a longer text (a link): the converted value takes its
        // place and the whole text is evaluated.
        std::string joined(name, static_cast<size_t>(thisAt - name));
        joined.append(converted.View()).append(afterThis);
        if (joined.find(kEncodedJavascript) == std::string::npos) return EvaluatedCopy(joined, ctl.cycleIndex);
        return EvaluatedCopy(ReplaceAll(joined, kEncodedJavascript, "javascript:"), ctl.cycleIndex);
    }
    if (branch.chainStart <= 0) {
        // Nothing before the chain: the converted value is the result.
        char *result = converted.Release();
        return result != nullptr ? result : HeapCopy({});
    }
    std::string out(text, static_cast<size_t>(branch.chainStart));
    out.append(converted.View());
    return HeapCopy(out);
}

// Decides the condition; false when the left operand names no entry.
// *usable becomes false when the left operand names nothing at all.
bool Holds(const Control &ctl, const ControlForm &form, bool *usable) {
    int leftIndex = -1;
    int leftValueIndex = -1;
    std::string fileText;
    const std::string_view left = form.View(form.left);
    const bool braced = left.starts_with("{");
    if (form.file) {
        fileText = FileTest(left);
    } else if (braced) {
        *usable = LeftEntry(ctl, left, &leftIndex, &leftValueIndex);
    } else {
        *usable = EntryAt(ctl.pCount, ctl.pList, ctl.elementIndex) != nullptr;
        leftIndex = ctl.elementIndex;
        leftValueIndex = ctl.valueIndex;
    }
    if (!*usable) return false;
    // A file test has no left entry, and the this entry was found above.
    const bool leftEntry = braced && !form.file;
    if (leftEntry && EntryAt(ctl.pCount, ctl.pList, leftIndex) == nullptr) return false;
    std::optional<CyclePosition> position;
    if (leftEntry) position.emplace(ctl, leftIndex);
    return Compare(form.comparison, form.file ? fileText.c_str() : nullptr, form.View(form.right).data(),
                   ctl.cycleIndex, leftIndex, leftValueIndex, ctl.elementIndex, ctl.pList, ctl.pCount) != 0;
}

// The control's result (or NULL) from its form; *consumed its length, 0
// when the text is no control.
char *RunForm(const Control &ctl, ControlForm &form, int *consumed) {
    *consumed = form.consumed;
    char *result = nullptr;
    switch (form.shape) {
    case ControlForm::Shape::Refused:
    case ControlForm::Shape::NoQuestion:
    case ControlForm::Shape::Unreadable:
        return nullptr;
    case ControlForm::Shape::EmptyCondition:
        result = HeapCopy(EmptyChoice(ctl, form));
        break;
    case ControlForm::Shape::Condition: {
        bool usable = true;
        const bool holds = Holds(ctl, form, &usable);
        if (!usable) return nullptr;
        BranchForm &branch = holds ? form.then : form.otherwise;
        result = BranchValue(ctl, branch, form.At(branch.text));
        break;
    }
    }
    if (result == nullptr || std::strchr(result, '{') == nullptr || std::strstr(result, "{_txt_") == nullptr)
        return result;
    const HeapText once(result);
    return EvaluatedCopy(once.View(), ctl.cycleIndex);
}

// A new form becomes the control at text. skip: the start marker's length
// and the "="; keyed: the form keeps its text as its key.
void ParseControl(ControlForm &form, const char *text, int skip, const char *endMarker, bool keyed) {
    const char *close = PairIt(text, "{", endMarker);
    const auto skipLength = static_cast<size_t>(skip);
    if (close == text || strnlen(text, skipLength) < skipLength || close < text + skip) return;
    const auto length = static_cast<size_t>(close - text) + 1;
    form.consumed = static_cast<int>(length);
    // The right operand and the branches lie in the control text: the
    // texts never need more than twice its room.
    form.texts.reserve(2 * (length + 1));
    form.texts.assign(text, length).push_back('\0');
    if (keyed) form.keyLength = length;
    const char *body = nullptr;
    const std::string_view type = TypeOf(text + skip, close, &body);
    ReadBody(form, text, type, std::string_view(body, static_cast<size_t>(close - body)));
}

char *Evaluate(const Control &ctl, std::string_view branch) {
    std::string copy(branch);
    char *result = nullptr;
    CreateValueFromControl(copy.data(), ctl.elementIndex, ctl.cycleIndex, ctl.pCount, ctl.pList,
                           &result, ctl.valueIndex, ctl.skip, ctl.endMarker, ctl.message);
    return result;
}

bool Callable(const char *text, const Control &ctl) {
    return text != nullptr && ctl.pCount != nullptr && ctl.pList != nullptr && ctl.endMarker != nullptr &&
           *ctl.endMarker != '\0' && ctl.skip >= 1;
}

// A kept form answers for text when text starts with its key: the pairing
// of the braces, and all that is read after it, looks no further.
ControlForm &KeptForm(std::vector<ControlForm> &kept, size_t offset, const char *text, int skip,
                      const char *endMarker) {
    for (ControlForm &form : kept) {
        if (form.offset != offset) continue;
        if (form.keyLength == 0 || std::strncmp(text, form.texts.data(), form.keyLength) != 0) {
            form = ControlForm();
            ParseControl(form, text, skip, endMarker, true);
            form.offset = offset;
        }
        return form;
    }
    ControlForm &form = kept.emplace_back();
    ParseControl(form, text, skip, endMarker, true);
    form.offset = offset;
    return form;
}

// What every call of a control passes through: the control flag, the
// nesting bound, the checks of the arguments and a message buffer of its
// own when none is given. run yields the result and sets the length taken.
template <typename Run>
int Guarded(char *text, const ControlCall &call, char **result, Run run) {
    const ControlMode mode;
    *result = nullptr;
    const NestingGuard nesting;
    if (!Callable(text, call) || nesting.TooDeep()) return 0;
    char spare[KX_MESSAGE_SIZE];
    Control ctl = call;
    if (ctl.message == nullptr) {
        spare[0] = '\0';
        ctl.message = spare;
    }
    int consumed = 0;
    *result = run(static_cast<const Control &>(ctl), &consumed);
    return consumed;
}

// With the markers "{" and "}" the pairing starts at the text's own "{".
bool Keepable(const char *text, const Control &ctl) {
    return text[0] == '{' && ctl.skip == 2 && ctl.endMarker[0] == '}' && ctl.endMarker[1] == '\0';
}

}  // namespace

ControlForm &KeepControl(std::vector<ControlForm> &kept, size_t offset, const char *text) {
    return KeptForm(kept, offset, text, 2, "}");
}

int ControlValue(char *text, const ControlCall &call, std::vector<ControlForm> *kept, size_t offset,
                 char **result) {
    return Guarded(text, call, result, [&](const Control &ctl, int *consumed) {
        if (kept != nullptr && Keepable(text, ctl))
            return RunForm(ctl, KeptForm(*kept, offset, text, ctl.skip, ctl.endMarker), consumed);
        ControlForm form;
        ParseControl(form, text, ctl.skip, ctl.endMarker, false);
        return RunForm(ctl, form, consumed);
    });
}

int ControlValue(char *text, const ControlCall &call, ControlForm &form, char **result) {
    return Guarded(text, call, result,
                   [&form](const Control &ctl, int *consumed) { return RunForm(ctl, form, consumed); });
}

}  // namespace kx::tmpl

extern "C" int CreateValueFromControl(char *text, int elementIndex, int cycleIndex, int *pCount,
                                      EingabeElement **pList, char **result, int valueIndex,
                                      int skip, const char *endMarker, char *message) {
    if (result == nullptr) {
        // Nothing to hand the value to: only the flag and the nesting count
        // see the call.
        const kx::tmpl::ControlMode mode;
        const kx::tmpl::NestingGuard nesting;
        return 0;
    }
    const kx::tmpl::ControlCall call{elementIndex, cycleIndex, pCount,    pList,
                                     valueIndex,   skip,       endMarker, message};
    return kx::tmpl::ControlValue(text, call, nullptr, 0, result);
}
