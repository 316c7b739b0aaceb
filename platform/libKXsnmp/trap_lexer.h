// Inside the MIB library: the tokens of a MIB text as the TRAP-TYPE reader
// sees them. Comments run from "--" to the next "--" or the line end; those
// that begin "--#" are annotations and become tokens of their own.
#ifndef KX_PLATFORM_LIBKXSNMP_TRAP_LEXER_H
#define KX_PLATFORM_LIBKXSNMP_TRAP_LEXER_H

#include <cstddef>
#include <optional>
#include <string_view>

namespace kxsnmp {

struct MibToken {
    enum Kind { Word, Text, Annotation } kind = Word;
    std::string_view text;  // the word; the quoted text without its quotes; the annotation's value
    std::string_view key;   // the annotation's keyword ("SUMMARY")
    bool closed = true;     // false for a quoted text that the input ends inside
};

// Hands out the tokens of a text one at a time, so that a huge text never
// makes a huge token list.
class MibLexer {
public:
    explicit MibLexer(std::string_view text) : text_(text) {}
    // The next token; nothing at the end of the text.
    std::optional<MibToken> Next();

private:
    bool At(std::string_view what) const { return text_.substr(pos_).starts_with(what); }
    bool SkipBlanks();
    void SkipCommentRest();
    std::optional<MibToken> Comment();
    MibToken AnnotationToken();
    MibToken Quoted();
    MibToken WordToken();

    std::string_view text_;
    std::size_t pos_ = 0;
};

}  // namespace kxsnmp

#endif
