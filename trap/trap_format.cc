#include "trap/trap_format.h"

#include <cstdio>

namespace kx::trap {
namespace {

std::string Number(char conversion, int value) {
    char out[16];
    if (conversion == 'c') return std::string(1, static_cast<char>(value));
    if (conversion == 'd' || conversion == 'i') std::snprintf(out, sizeof out, "%d", value);
    else if (conversion == 'u') std::snprintf(out, sizeof out, "%u", static_cast<unsigned>(value));
    else if (conversion == 'o') std::snprintf(out, sizeof out, "%o", static_cast<unsigned>(value));
    else std::snprintf(out, sizeof out, conversion == 'X' ? "%X" : "%x", static_cast<unsigned>(value));
    return out;
}

bool IsNumberConversion(char c) {
    return c == 'd' || c == 'i' || c == 'u' || c == 'x' || c == 'X' || c == 'o' || c == 'c';
}

void Print(std::string &out, char conversion, const Slot &slot) {
    if (conversion == 's' || conversion == 'S') {
        if (slot.kind == Slot::Kind::Text) out += slot.text;
        else if (slot.kind == Slot::Kind::Zero) out += "(null)";
        else out += std::to_string(slot.number);
    } else if (slot.kind == Slot::Kind::Text) {
        out += slot.text;  // a text slot always has a text conversion; kept safe all the same
    } else {
        out += Number(conversion, slot.kind == Slot::Kind::Number ? slot.number : 0);
    }
}

}  // namespace

std::string FormatSummary(std::string_view format, const std::array<Slot, 10> &slots) {
    std::string out;
    out.reserve(format.size() + 64);
    std::size_t next = 0;
    for (std::size_t at = 0; at < format.size(); ++at) {
        if (format[at] != '%' || at + 1 == format.size()) {
            out.push_back(format[at]);
            continue;
        }
        const char conversion = format[++at];
        if (conversion == '%') {
            out.push_back('%');
        } else if (conversion != 's' && conversion != 'S' && !IsNumberConversion(conversion)) {
            out.push_back('%'), out.push_back(conversion), ++next;
        } else if (next < slots.size()) {
            Print(out, conversion, slots[next++]);
        }
    }
    return out;
}

}  // namespace kx::trap
