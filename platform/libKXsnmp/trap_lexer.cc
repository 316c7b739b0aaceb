// The tokens of a MIB text for the TRAP-TYPE reader.
#include "trap_lexer.h"

#include <algorithm>
#include <utility>

namespace kxsnmp {
namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f' || c == '\v'; }
bool IsPunctuation(char c) { return c == '{' || c == '}' || c == '(' || c == ')' || c == ',' || c == ';' || c == '[' || c == ']'; }
bool IsLetter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

}  // namespace

std::optional<MibToken> MibLexer::Next() {
    while (SkipBlanks()) {
        if (At("--")) {
            if (std::optional<MibToken> annotation = Comment()) return annotation;
        } else if (text_[pos_] == '"') {
            return Quoted();
        } else {
            return WordToken();
        }
    }
    return std::nullopt;
}

bool MibLexer::SkipBlanks() {
    while (pos_ < text_.size() && IsBlank(text_[pos_])) ++pos_;
    return pos_ < text_.size();
}

// Past the comment's end: the next "--" (taken) or the line end.
void MibLexer::SkipCommentRest() {
    while (pos_ < text_.size() && text_[pos_] != '\n') {
        if (At("--")) {
            pos_ += 2;
            return;
        }
        ++pos_;
    }
}

std::optional<MibToken> MibLexer::Comment() {
    pos_ += 2;
    std::optional<MibToken> annotation;
    if (pos_ < text_.size() && text_[pos_] == '#') {
        ++pos_;
        annotation = AnnotationToken();
    }
    SkipCommentRest();
    return annotation;
}

// "--#KEY value": a quoted value runs to its closing quote, a bare one
// to its last non-blank; neither goes past the comment's end.
MibToken MibLexer::AnnotationToken() {
    MibToken token{MibToken::Annotation, {}, {}, true};
    const std::size_t keyStart = pos_;
    while (pos_ < text_.size() && IsLetter(text_[pos_])) ++pos_;
    token.key = text_.substr(keyStart, pos_ - keyStart);
    while (pos_ < text_.size() && (text_[pos_] == ' ' || text_[pos_] == '\t')) ++pos_;
    const std::size_t end = std::min({text_.find('\n', pos_), text_.find("--", pos_), text_.size()});
    if (pos_ < text_.size() && text_[pos_] == '"') {
        const std::size_t close = text_.find('"', pos_ + 1);
        const std::size_t stop = close < end ? close : end;
        token.text = text_.substr(pos_ + 1, stop - pos_ - 1);
        pos_ = close < end ? close + 1 : end;
        return token;
    }
    token.text = text_.substr(pos_, end - pos_);
    while (!token.text.empty() && IsBlank(token.text.back())) token.text.remove_suffix(1);
    pos_ = end;
    return token;
}

MibToken MibLexer::Quoted() {
    const std::size_t close = text_.find('"', pos_ + 1);
    MibToken token{MibToken::Text, {}, {}, close != std::string_view::npos};
    const std::size_t end = token.closed ? close : text_.size();
    token.text = text_.substr(pos_ + 1, end - pos_ - 1);
    pos_ = token.closed ? close + 1 : end;
    return token;
}

MibToken MibLexer::WordToken() {
    const std::size_t start = pos_;
    if (IsPunctuation(text_[pos_])) {
        ++pos_;
    } else if (At("::=")) {
        pos_ += 3;
    } else {
        while (pos_ < text_.size() && !IsBlank(text_[pos_]) && !IsPunctuation(text_[pos_]) &&
               text_[pos_] != '"' && !At("--"))
            ++pos_;
    }
    return MibToken{MibToken::Word, text_.substr(start, pos_ - start), {}, true};
}

}  // namespace kxsnmp
