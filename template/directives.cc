// The IF and DEFINE directives.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>
#include <string_view>
#include <vector>

#include "kx_template.h"
#include "template/cycle.h"
#include "core/entry.h"
#include "core/evaluation.h"
#include "core/text.h"
#include "template/invocation.h"
#include "template/placeholder.h"

namespace kx::tmpl {
using namespace kx::core;
namespace {

std::string_view TrimBlanks(std::string_view text) {
    const size_t first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

enum class Operator { Equal, Prefix, Bare };

constexpr std::string_view kEqualOperator = "==";
constexpr std::string_view kPrefixOperator = "~=";
static_assert(kEqualOperator.size() == kPrefixOperator.size());
constexpr std::string_view kIfWord = "IF";
constexpr std::string_view kDefineWord = "DEFINE";

// holds on the pieces of text between occurrences of separator (not empty),
// in order, until one holds; the pieces Split would give, without a list of
// them made for each line an IF is met on.
template <typename Holds>
bool AnyPiece(std::string_view text, std::string_view separator, Holds holds) {
    for (;;) {
        const size_t at = text.find(separator);
        if (holds(text.substr(0, at))) return true;
        if (at == std::string_view::npos) return false;
        text.remove_prefix(at + separator.size());
    }
}

// left==a|b, left~=a|b or a bare left side; the left side is evaluated as a
// placeholder of its own.
bool AlternativeHolds(std::string_view alternative) {
    Operator op = Operator::Equal;
    size_t at = alternative.find(kEqualOperator);
    if (at == std::string_view::npos) {
        op = Operator::Prefix;
        at = alternative.find(kPrefixOperator);
    }
    if (at == std::string_view::npos) op = Operator::Bare;
    std::string operand = "{";
    operand.append(alternative.substr(0, at)).push_back('}');
    const Evaluation left(std::move(operand), -2);
    if (op == Operator::Bare) return left.Changed() && !left.Text().empty();
    return AnyPiece(alternative.substr(at + kEqualOperator.size()), "|", [&left, op](std::string_view text) {
        return op == Operator::Equal ? left.Text() == text : left.Text().starts_with(text);
    });
}

// A name condition holds for an unknown name and for an entry with a value.
bool NameHolds(const Invocation &inv, const std::string &name) {
    const int index = EingabewertIndex(name.c_str(), *inv.pList, *inv.pCount);
    if (index >= *inv.pCount) return true;
    const EingabeElement &entry = (*inv.pList)[index];
    return entry.Wert != nullptr && *entry.Wert != '\0' && entry.WertGesetzt >= 1;
}

// Skips blanks and line ends after a DEFINE, and the ">" of "<!{DEFINE ...}>".
char *AfterDefine(const Invocation &inv, const Placeholder &ph) {
    char *rest = ph.M + inv.endMarker.size();
    const bool comment = ph.P - inv.textStart >= 2 && ph.P[-2] == '<' && ph.P[-1] == '!';
    rest += std::strspn(rest, comment ? " \t\r\n>" : " \t\r\n");
    return *rest == '\0' ? nullptr : rest;
}

void DeclareDefined(Invocation &inv, const std::string &name, const char *value) {
    const bool list = std::strchr(value, '~') != nullptr;
    AppendToEingabe(inv.pCount, inv.pList, kListDivider, name.c_str(), list ? 2 : 1, value);
    // The page's name index finds the entry as SetEingabeWert would, without
    // a walk over the list.
    const int index = SetEingabeWertI(*inv.pCount, *inv.pList, inv.names.Find(*inv.pList, *inv.pCount, name),
                                      value);
    if (!list || index >= *inv.pCount) return;
    EingabeElement &entry = (*inv.pList)[index];
    entry.WertGesetzt = ErmittleTextElemente(entry.Wert, kListDivider, nullptr, nullptr);
}

}  // namespace

bool IfHolds(Invocation &inv, const Placeholder &ph) {
    const char *from = ph.P + 1 + (ph.doubled ? 1 : 0) + kIfWord.size();
    if (from > ph.E) from = ph.E;
    const std::string_view condition = TrimBlanks({from, static_cast<size_t>(ph.E - from)});
    if (condition.size() <= 1) return condition != "0";
    if (condition.find(kEqualOperator) != std::string_view::npos) {
        return AnyPiece(condition, "||", AlternativeHolds);
    }
    return NameHolds(inv, std::string(condition));
}

char *Define(Invocation &inv, const Placeholder &ph, char *pos) {
    std::string_view body;
    if (ph.M != nullptr) {
        const char *from = ph.P + 1 + (ph.doubled ? 1 : 0) + kDefineWord.size();
        if (from < ph.M) body = TrimBlanks({from, static_cast<size_t>(ph.M - from)});
    }
    const size_t nameEnd = std::min(body.find_first_of(" \t"), body.size());
    const std::string name(body.substr(0, nameEnd));
    const std::string_view value = TrimBlanks(body.substr(nameEnd));
    if (name.empty() || value.empty()) {
        if (!inv.Current().skip) inv.Write(pos);
        return LineEnds(inv);
    }
    const Evaluation evaluated(value, inv.CycleIndex());
    DeclareDefined(inv, name, evaluated.CText());
    // During a replay the rest of the stored line is dropped.
    return inv.cycle.level == 0 ? AfterDefine(inv, ph) : LineEnds(inv);
}

}  // namespace kx::tmpl
