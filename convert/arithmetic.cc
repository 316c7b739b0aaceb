// Conversions that read the value as a number: one-operand arithmetic,
// division with a fraction, hexadecimal, megabytes and bit fields.
#include <cstdint>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "convert/convert_internal.h"
#include "kx_convert.h"

namespace kx::convert {
namespace {

constexpr int32_t kMegabyte = 1048576;

// Arithmetic on 32-bit numbers wraps in two's complement.
int32_t Wrap(int64_t number) { return static_cast<int32_t>(static_cast<uint32_t>(number)); }

int32_t Operand(const char *argument, int cycleIndex) {
    return ReadInt(Evaluated(ValueText(argument), cycleIndex));
}

enum class Operation { kPlus, kMinus, kMinusReversed, kMultiply, kModulo };

char *Calculate(Operation operation, const char *argument, const char *value, int cycleIndex) {
    const int64_t v = ReadInt(ValueText(value));
    const int64_t a = Operand(argument, cycleIndex);
    switch (operation) {
        case Operation::kPlus: return PrintInt(Wrap(v + a));
        case Operation::kMinus: return PrintInt(Wrap(v - a));
        case Operation::kMinusReversed: return PrintInt(Wrap(a - v));
        case Operation::kMultiply: return PrintInt(Wrap(v * a));
        case Operation::kModulo: return a == 0 ? HeapCopy(kNotAvailable) : PrintInt(Wrap(v % a));
    }
    return HeapCopy(kNotAvailable);
}

// The remainder printed as the fraction of a divisor written as a power of
// ten: zero-padded to one digit less than the divisor text has.
std::string Fraction(uint32_t remainder, std::size_t divisorLength) {
    std::string digits = std::to_string(remainder);
    const std::size_t width = divisorLength > 1 ? divisorLength - 1 : 0;
    if (digits.size() < width) digits.insert(0, width - digits.size(), '0');
    return digits;
}

char *Divide(const char *argument, const char *value, int cycleIndex) {
    const Cut parts = CutAt(ValueText(argument), ',');
    const std::string option = parts.hasRest ? Evaluated(parts.rest, cycleIndex) : std::string{};
    const std::string divisorText = Evaluated(parts.head, cycleIndex);
    const int64_t d = ReadInt(divisorText);
    if (d == 0) return HeapCopy(kNotAvailable);
    const int64_t v = ReadInt(ValueText(value));
    // 64-bit arithmetic keeps the lowest quotient divided by -1 defined.
    const int64_t q = v / d;
    const uint32_t quotient = static_cast<uint32_t>(q);
    if (!option.empty() && (option[0] == 'i' || option[0] == 'I'))
        return HeapCopy(std::to_string(quotient));
    const uint32_t remainder = static_cast<uint32_t>(v - q * d);
    return HeapCopy(std::to_string(quotient) + "." + Fraction(remainder, divisorText.size()));
}

// Names of the set bits among "bit-name" pairs, joined with ",".
char *BitNames(const char *argument, const char *value) {
    const uint32_t mask = static_cast<uint32_t>(ReadInt(ValueText(value)));
    std::string names;
    bool any = false;
    for (std::string_view element : Split(ValueText(argument), ",")) {
        const Cut pair = CutAt(element, '-');
        if (!pair.hasRest) continue;
        const uint32_t bit = static_cast<uint32_t>(ReadInt(pair.head)) % 32;
        if ((mask >> bit & 1U) == 0) continue;
        if (any) names += ',';
        names += Decoded(pair.rest);
        any = true;
    }
    return any ? HeapCopy(names) : nullptr;
}

}  // namespace
}  // namespace kx::convert

using kx::convert::Operation;

extern "C" {

char *ConvertByPlus(char *argument, char *value, int cycleIndex) {
    return kx::convert::Calculate(Operation::kPlus, argument, value, cycleIndex);
}

char *ConvertByMinus(char *argument, char *value, int cycleIndex) {
    return kx::convert::Calculate(Operation::kMinus, argument, value, cycleIndex);
}

char *ConvertByMinusReversed(char *argument, char *value, int cycleIndex) {
    return kx::convert::Calculate(Operation::kMinusReversed, argument, value, cycleIndex);
}

char *ConvertByMultiply(char *argument, char *value, int cycleIndex) {
    return kx::convert::Calculate(Operation::kMultiply, argument, value, cycleIndex);
}

char *ConvertByModulo(char *argument, char *value, int cycleIndex) {
    return kx::convert::Calculate(Operation::kModulo, argument, value, cycleIndex);
}

char *ConvertByDivide(char *argument, char *value, int cycleIndex) {
    return kx::convert::Divide(argument, value, cycleIndex);
}

char *ConvertToHex(char * /*argument*/, char *value, int /*cycleIndex*/) {
    // "%x": small hexadecimal digits, no padding.
    char buffer[16];
    const auto number = static_cast<unsigned>(kx::convert::ReadInt(kx::convert::ValueText(value)));
    const auto printed = std::to_chars(buffer, buffer + sizeof buffer, number, 16);
    return kx::convert::HeapCopy({buffer, static_cast<size_t>(printed.ptr - buffer)});
}

char *ConvertToMB(char * /*argument*/, char *value, int /*cycleIndex*/) {
    return kx::convert::PrintInt(kx::convert::ReadInt(kx::convert::ValueText(value)) /
                                 kx::convert::kMegabyte);
}

char *ConvertToCount(char * /*argument*/, char *value, int /*cycleIndex*/) { return value; }

char *ConvertBitFieldToText(char *argument, char *value, int /*cycleIndex*/) {
    if (argument == nullptr) return value;
    return kx::convert::BitNames(argument, value);
}

}  // extern "C"
