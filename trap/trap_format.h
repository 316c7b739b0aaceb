// Printing a trap summary: a printf-like format whose conversions are a
// single character after "%", filled from ten typed slots. Never hands the
// format to the C library, so a format from a MIB or a trap cannot make it
// read what was not given.
#ifndef KX_TRAP_TRAP_FORMAT_H
#define KX_TRAP_TRAP_FORMAT_H

#include <array>
#include <string>
#include <string_view>

namespace kx::trap {

// One argument of a summary: none given (a null pointer or 0, as printf
// would receive it), a text or a number.
struct Slot {
    enum class Kind { Zero, Text, Number } kind = Kind::Zero;
    std::string text;
    int number = 0;
    static Slot Text(std::string text) { return Slot{Kind::Text, std::move(text), 0}; }
    static Slot Number(int number) { return Slot{Kind::Number, {}, number}; }
};

// The format with "%%" as "%" and its conversions filled in order from slots:
// s/S the text ("(null)" for none), d/i/u/x/X/o/c the number. A conversion
// past the last slot prints nothing; another character prints as written.
std::string FormatSummary(std::string_view format, const std::array<Slot, 10> &slots);

}  // namespace kx::trap

#endif
