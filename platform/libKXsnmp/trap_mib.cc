// The TRAP-TYPE macros of a MIB text: name, ENTERPRISE, VARIABLES,
// DESCRIPTION and the annotations --#TYPE, --#SUMMARY, --#ARGUMENTS and
// --#SEVERITY. ENTERPRISE names resolve through the OID assignments of the
// same text ("x OBJECT IDENTIFIER ::= { parent n }", and the "::= { ... }"
// of OBJECT-TYPE and similar macros) and the SMI roots.
#include <algorithm>
#include <climits>
#include <deque>
#include <optional>

#include "mib_internal.h"
#include "trap_lexer.h"
#include "trap_mib.h"

namespace kxsnmp {
namespace {

// Macros whose "::= { parent n }" places a name in the OID tree.
constexpr std::string_view kPlacingMacros[] = {
    "OBJECT-TYPE", "OBJECT-IDENTITY", "MODULE-IDENTITY", "NOTIFICATION-TYPE",
    "OBJECT-GROUP", "NOTIFICATION-GROUP", "MODULE-COMPLIANCE", "AGENT-CAPABILITIES",
};

// Deeper chains of OID assignments than this are taken for a loop.
constexpr int kMaxAssignmentDepth = 64;

// The highest argument number that still gives one character '0' + n.
constexpr unsigned kMaxArgument = 255 - '0';

// An OID value "{ base n n ... }"; base empty when it starts with numbers.
struct OidValue {
    std::string base;
    std::vector<std::uint32_t> numbers;
};

bool IsNumber(std::string_view text) {
    if (text.empty() || text.size() > 9) return false;
    for (const char c : text)
        if (c < '0' || c > '9') return false;
    return true;
}

std::uint32_t ToNumber(std::string_view digits) {
    std::uint32_t value = 0;
    for (const char c : digits) value = value * 10 + static_cast<std::uint32_t>(c - '0');
    return value;
}

bool IsIdentifier(const MibToken &token) {
    return token.kind == MibToken::Word && !token.text.empty() &&
           ((token.text[0] >= 'a' && token.text[0] <= 'z') || (token.text[0] >= 'A' && token.text[0] <= 'Z'));
}

// Names of values (OIDs, traps) begin with a lower-case letter; words such as
// SYNTAX in "SYNTAX OBJECT IDENTIFIER" never start a definition.
bool IsValueName(const MibToken &token) {
    return IsIdentifier(token) && token.text[0] >= 'a' && token.text[0] <= 'z';
}

bool EqualsNoCase(std::string_view a, std::string_view b) { return EqualNoCase(a, b); }

class TrapMibParser {
public:
    explicit TrapMibParser(std::string_view text) : lexer_(text) {}

    std::unique_ptr<TrapMib> Run();

private:
    // The token at position at (counted from the text's start); nullptr at
    // the end. Tokens before pos_ are gone once the main loop moved on.
    const MibToken *Token(std::size_t at) {
        while (at >= base_ + window_.size()) {
            std::optional<MibToken> next = lexer_.Next();
            if (!next) return nullptr;
            window_.push_back(*next);
        }
        return at >= base_ ? &window_[at - base_] : nullptr;
    }
    void ForgetRead() {
        for (; base_ < pos_ && !window_.empty(); ++base_) window_.pop_front();
    }
    bool WordAt(std::size_t at, std::string_view word) {
        const MibToken *token = Token(at);
        return token != nullptr && token->kind == MibToken::Word && token->text == word;
    }
    void SkipPast(std::string_view word);
    void SkipMacroDefinition();
    bool StartsDefinition(std::size_t at);
    std::optional<OidValue> ReadOidValue();
    void ReadAssignment();
    std::unique_ptr<TrapEntry> ReadTrap();
    bool ReadTrapClause(TrapEntry &trap);
    bool ReadVariables(TrapEntry &trap);
    void TakeAnnotation(TrapEntry &trap, const MibToken &token) const;
    std::optional<std::string> Resolve(const std::string &name, int depth) const;
    std::optional<std::string> Resolve(const OidValue &value, int depth) const;

    MibLexer lexer_;
    std::deque<MibToken> window_;  // the tokens from base_ on (a deque keeps references on growth)
    std::size_t base_ = 0;
    std::size_t pos_ = 0;
    std::map<std::string, OidValue> assignments_;
    std::vector<std::pair<std::unique_ptr<TrapEntry>, OidValue>> pending_;
    OidValue enterprise_;  // ENTERPRISE of the trap being read
};

void TrapMibParser::SkipPast(std::string_view word) {
    while (Token(pos_) != nullptr && !WordAt(pos_, word)) ++pos_;
    if (Token(pos_) != nullptr) ++pos_;
}

// "NAME MACRO ::= BEGIN ... END" defines a macro (RFC-1215 itself): its body
// holds no definitions.
void TrapMibParser::SkipMacroDefinition() { SkipPast("END"); }

bool TrapMibParser::StartsDefinition(std::size_t at) {
    if (Token(at) == nullptr || !IsValueName(*Token(at))) return false;
    if (WordAt(at + 1, "OBJECT") && WordAt(at + 2, "IDENTIFIER")) return true;
    for (const std::string_view macro : kPlacingMacros)
        if (WordAt(at + 1, macro)) return true;
    return false;
}

// "{ name n name(n) ... }" at pos_; nothing when it is not an OID value.
std::optional<OidValue> TrapMibParser::ReadOidValue() {
    if (!WordAt(pos_, "{")) return std::nullopt;
    ++pos_;
    OidValue value;
    for (bool first = true; Token(pos_) != nullptr && !WordAt(pos_, "}"); first = false) {
        const MibToken &token = *Token(pos_++);
        if (token.kind != MibToken::Word) return std::nullopt;
        if (IsNumber(token.text)) {
            value.numbers.push_back(ToNumber(token.text));
        } else if (WordAt(pos_, "(") && Token(pos_ + 2) != nullptr && IsNumber(Token(pos_ + 1)->text) &&
                   WordAt(pos_ + 2, ")")) {
            value.numbers.push_back(ToNumber(Token(pos_ + 1)->text));
            pos_ += 3;
        } else if (first && IsIdentifier(token)) {
            value.base = std::string(token.text);
        } else {
            return std::nullopt;
        }
    }
    if (Token(pos_) == nullptr) return std::nullopt;
    ++pos_;
    if (value.base.empty() && value.numbers.empty()) return std::nullopt;
    return value;
}

// "name ... ::= { ... }" from the name at pos_; the first assignment of a
// name counts.
void TrapMibParser::ReadAssignment() {
    const std::string name(Token(pos_)->text);
    pos_ += 2;
    while (Token(pos_) != nullptr && !WordAt(pos_, "::=") && !StartsDefinition(pos_) && !WordAt(pos_ + 1, "TRAP-TYPE"))
        ++pos_;
    if (!WordAt(pos_, "::=")) return;
    ++pos_;
    if (std::optional<OidValue> value = ReadOidValue()) assignments_.emplace(name, std::move(*value));
}

std::unique_ptr<TrapEntry> TrapMibParser::ReadTrap() {
    auto trap = std::make_unique<TrapEntry>();
    trap->name = std::string(Token(pos_)->text);
    pos_ += 2;
    while (Token(pos_) != nullptr) {
        if (WordAt(pos_, "::=")) {
            ++pos_;
            if (Token(pos_) == nullptr || Token(pos_)->kind != MibToken::Word || !IsNumber(Token(pos_)->text))
                return nullptr;
            trap->number = ToNumber(Token(pos_++)->text);
            return trap;
        }
        if (!ReadTrapClause(*trap)) return nullptr;
    }
    return nullptr;  // the text ends inside the macro
}

// One clause of a TRAP-TYPE at pos_; false (pos_ on the stray token) when
// the macro is broken there.
bool TrapMibParser::ReadTrapClause(TrapEntry &trap) {
    const MibToken &token = *Token(pos_);
    if (token.kind == MibToken::Annotation) {
        TakeAnnotation(trap, token);
        ++pos_;
        return true;
    }
    if (WordAt(pos_, "VARIABLES")) return ReadVariables(trap);
    const bool description = WordAt(pos_, "DESCRIPTION");
    if (description || WordAt(pos_, "REFERENCE")) {
        if (Token(pos_ + 1) == nullptr || Token(pos_ + 1)->kind != MibToken::Text || !Token(pos_ + 1)->closed)
            return false;
        if (description) trap.description = std::string(Token(pos_ + 1)->text);
        pos_ += 2;
        return true;
    }
    if (!WordAt(pos_, "ENTERPRISE")) return false;
    ++pos_;
    std::optional<OidValue> value;
    if (WordAt(pos_, "{")) {
        value = ReadOidValue();
    } else if (Token(pos_) != nullptr && IsIdentifier(*Token(pos_))) {
        value = OidValue{std::string(Token(pos_++)->text), {}};
    }
    if (!value) return false;
    enterprise_ = std::move(*value);
    return true;
}

// "VARIABLES { a, b, c }".
bool TrapMibParser::ReadVariables(TrapEntry &trap) {
    if (!WordAt(pos_ + 1, "{")) return false;
    pos_ += 2;
    while (Token(pos_) != nullptr && !WordAt(pos_, "}")) {
        if (WordAt(pos_, ",")) {
            ++pos_;
            continue;
        }
        if (!IsIdentifier(*Token(pos_))) return false;
        trap.variables.emplace_back(Token(pos_++)->text);
    }
    if (Token(pos_) == nullptr) return false;
    ++pos_;
    return true;
}

// "{0,1}" gives "01": one character '0' + n per argument n.
std::string ArgumentCharacters(std::string_view value) {
    std::string characters;
    std::size_t at = 0;
    while (at < value.size()) {
        if (value[at] < '0' || value[at] > '9') {
            ++at;
            continue;
        }
        const std::size_t start = at;
        while (at < value.size() && value[at] >= '0' && value[at] <= '9') ++at;
        const std::string_view digits = value.substr(start, at - start);
        if (IsNumber(digits) && ToNumber(digits) <= kMaxArgument)
            characters += static_cast<char>('0' + ToNumber(digits));
    }
    return characters;
}

void TrapMibParser::TakeAnnotation(TrapEntry &trap, const MibToken &token) const {
    if (EqualsNoCase(token.key, "SUMMARY")) {
        // Several summary lines make one summary.
        if (!trap.summary.empty() && !token.text.empty()) trap.summary += ' ';
        trap.summary += token.text;
    } else if (EqualsNoCase(token.key, "TYPE")) {
        if (trap.type.empty()) trap.type = std::string(token.text);
    } else if (EqualsNoCase(token.key, "ARGUMENTS")) {
        if (trap.arguments.empty()) trap.arguments = ArgumentCharacters(token.text);
    } else if (EqualsNoCase(token.key, "SEVERITY")) {
        const std::string_view word = token.text.substr(0, token.text.find_first_of(" \t"));
        if (trap.severity.empty()) trap.severity = std::string(word);
    }
}

std::optional<std::string> TrapMibParser::Resolve(const std::string &name, int depth) const {
    if (depth > kMaxAssignmentDepth) return std::nullopt;
    const auto assigned = assignments_.find(name);
    if (assigned != assignments_.end()) return Resolve(assigned->second, depth + 1);
    return SmiRootOid(name);
}

std::optional<std::string> TrapMibParser::Resolve(const OidValue &value, int depth) const {
    std::string oid;
    if (!value.base.empty()) {
        const std::optional<std::string> base = Resolve(value.base, depth);
        if (!base) return std::nullopt;
        oid = *base;
    }
    for (const std::uint32_t number : value.numbers) {
        if (!oid.empty()) oid += '.';
        oid += std::to_string(number);
    }
    return oid;
}

std::unique_ptr<TrapMib> TrapMibParser::Run() {
    for (; Token(pos_) != nullptr; ForgetRead()) {
        if (WordAt(pos_, "IMPORTS") || WordAt(pos_, "EXPORTS")) {
            SkipPast(";");
        } else if (WordAt(pos_ + 1, "MACRO")) {
            SkipMacroDefinition();
        } else if (IsValueName(*Token(pos_)) && WordAt(pos_ + 1, "TRAP-TYPE")) {
            enterprise_ = OidValue{};
            if (std::unique_ptr<TrapEntry> trap = ReadTrap()) pending_.emplace_back(std::move(trap), enterprise_);
        } else if (StartsDefinition(pos_)) {
            ReadAssignment();
        } else {
            ++pos_;
        }
    }
    auto mib = std::make_unique<TrapMib>();
    for (auto &[trap, enterprise] : pending_) {
        if (std::optional<std::string> oid = Resolve(enterprise, 0); oid && !oid->empty()) {
            trap->enterprise = std::move(*oid);
            mib->byKey.emplace(std::make_pair(trap->enterprise, trap->number), trap.get());
        }
        trap->FillRecord();
        mib->traps.push_back(std::move(trap));
    }
    return mib;
}

// A text of the record: NULL with length 0 when empty. Callers read the
// texts as C texts, so a NUL byte in the MIB ends the text it stands in.
void PointAt(std::string &text, int &length, char *&pointer) {
    text.resize(std::min(text.size(), text.find('\0')));
    length = static_cast<int>(std::min<std::size_t>(text.size(), INT_MAX));
    pointer = text.empty() ? nullptr : text.data();
}

}  // namespace

void TrapEntry::FillRecord() {
    record = KXTrapDescription{};
    PointAt(name, record.NameLength, record.Name);
    variablePointers.clear();
    for (std::string &variable : variables) {
        variable.resize(std::min(variable.size(), variable.find('\0')));
        variablePointers.push_back(variable.data());
    }
    record.VariableCount = static_cast<int>(std::min<std::size_t>(variables.size(), INT_MAX));
    record.Variables = variables.empty() ? nullptr : variablePointers.data();
    PointAt(description, record.DescriptionLength, record.Description);
    PointAt(type, record.TypeLength, record.Type);
    PointAt(summary, record.SummaryLength, record.Summary);
    PointAt(arguments, record.ArgumentCount, record.Arguments);
    PointAt(severity, record.SeverityLength, record.Severity);
}

TrapEntry *TrapMib::Find(const std::string &enterprise, std::int64_t number) const {
    const auto found = byKey.find(std::make_pair(enterprise, number));
    return found != byKey.end() ? found->second : nullptr;
}

std::unique_ptr<TrapMib> ParseTrapMib(std::string_view text) { return TrapMibParser(text).Run(); }

}  // namespace kxsnmp
