// Inside the MIB library: the tokens of a MIB text as the TRAP-TYPE reader
// sees them. Comments run from "--" to the next "--" or the line end; those
// that begin "--#" are annotations and become tokens of their own.
#ifndef KX_PLATFORM_LIBKXSNMP_TRAP_LEXER_H
#define KX_PLATFORM_LIBKXSNMP_TRAP_LEXER_H

#include <string_view>
#include <vector>

namespace kxsnmp {

struct MibToken {
    enum Kind { Word, Text, Annotation } kind = Word;
    std::string_view text;  // the word; the quoted text without its quotes; the annotation's value
    std::string_view key;   // the annotation's keyword ("SUMMARY")
    bool closed = true;     // false for a quoted text that the input ends inside
};

std::vector<MibToken> TokeniseMib(std::string_view text);

}  // namespace kxsnmp

#endif
