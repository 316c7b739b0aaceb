// The rule of one definition line "name<sep>kind<sep>default": the list layer
// owns it, so that the definition reader (line by line) and AppendToEingabe
// (one line built from its arguments) declare entries the same way without
// one calling the other.
#ifndef KX_INPUT_EINGABE_DECLARATION_H
#define KX_INPUT_EINGABE_DECLARATION_H

#include <string_view>

#include "core/name_index.h"
#include "kx_input.h"

namespace kx::input {

// The list being filled and the name messages give for the definition.
struct DeclarationTarget {
    EingabeElement **list;
    int *count;
    int before;  // entries declared before the definition began: these are updated
    std::string_view sourceName;
    core::NameIndex *index = nullptr;  // for many lines: finds earlier entries without a walk
};

enum class Declared {
    Entry,     // the entry was added or updated
    Skipped,   // a blank line, or a line whose problem was reported into the page
    NoMemory,  // memory ran out: the list stays as it was
};

// Applies one line (parsed with separator, already cut at its line end).
// A line without a separator after the name, or without one after the kind,
// reports "<! ErmittleEingabe: ...>" into the page.
Declared DeclareFromLine(const DeclarationTarget &target, std::string_view line, std::string_view separator);

// Declares what a line with name, kind and defaultText as its three parts
// declares (the default is cut at its line end here), for a caller that has
// the parts already.
Declared Declare(const DeclarationTarget &target, std::string_view name, char kind, std::string_view defaultText);

// The first list anything is declared into becomes the current list (the
// process-wide handles); an empty list is set to NULL.
void RememberList(EingabeElement **list, int *count);

}  // namespace kx::input

#endif
