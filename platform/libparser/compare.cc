// Text and numeric comparisons behind the condition types of inline controls.
//
// Every function takes (left, right) and returns 1 when the relation holds and
// 0 when it does not. A null text counts as the empty text.
//   plain     byte for byte, bytes taken as unsigned (strcmp order)
//   "i"       the same, ASCII letters compared without regard to case
//   "N"       only the first strlen(right) bytes of left take part: "==" means
//             "left begins with right", and an empty right equals every left
//   numeric   decimal numbers; a text that is not a number is unordered
#include <locale.h>

#include <atomic>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string_view>

#include "companion/libparser.h"

namespace parser {
namespace {

int LowerAscii(unsigned char ch) { return (ch >= 'A' && ch <= 'Z') ? ch + ('a' - 'A') : ch; }

std::string_view View(const char *text) { return text ? std::string_view(text) : std::string_view(); }

// strcmp-style order of a and b: -1, 0 or 1.
int Order(std::string_view a, std::string_view b, bool ignoreCase) {
    const size_t common = a.size() < b.size() ? a.size() : b.size();
    for (size_t i = 0; i < common; ++i) {
        int x = static_cast<unsigned char>(a[i]);
        int y = static_cast<unsigned char>(b[i]);
        if (ignoreCase) {
            x = LowerAscii(static_cast<unsigned char>(x));
            y = LowerAscii(static_cast<unsigned char>(y));
        }
        if (x != y) return x < y ? -1 : 1;
    }
    if (a.size() == b.size()) return 0;
    return a.size() < b.size() ? -1 : 1;
}

int TextOrder(const char *left, const char *right, bool ignoreCase, bool prefixOnly) {
    std::string_view l = View(left);
    const std::string_view r = View(right);
    if (prefixOnly && l.size() > r.size()) l = l.substr(0, r.size());
    return Order(l, r, ignoreCase);
}

// A decimal number: optional sign, digits with an optional fraction, an
// optional exponent; blanks and tabs around it are allowed.
bool IsNumber(std::string_view t, bool *integral) {
    size_t i = 0;
    auto digits = [&]() {
        const size_t from = i;
        while (i < t.size() && t[i] >= '0' && t[i] <= '9') ++i;
        return i - from;
    };
    if (i < t.size() && (t[i] == '+' || t[i] == '-')) ++i;
    size_t mantissa = digits();
    *integral = true;
    if (i < t.size() && t[i] == '.') {
        ++i;
        mantissa += digits();
        *integral = false;
    }
    if (mantissa == 0) return false;
    if (i < t.size() && (t[i] == 'e' || t[i] == 'E')) {
        ++i;
        if (i < t.size() && (t[i] == '+' || t[i] == '-')) ++i;
        if (digits() == 0) return false;
        *integral = false;
    }
    return i == t.size();
}

std::string_view TrimBlanks(std::string_view t) {
    while (!t.empty() && (t.front() == ' ' || t.front() == '\t')) t.remove_prefix(1);
    while (!t.empty() && (t.back() == ' ' || t.back() == '\t')) t.remove_suffix(1);
    return t;
}

// The C locale's reading of numbers whatever the process's locale is: a
// console may set LC_NUMERIC to a locale with a decimal comma. Made once per
// process; two threads that meet on the first call keep the first one's.
// (An atomic rather than a guarded static: the guard would bring the C++
// runtime's exception support into this library.)
locale_t CLocale() {
    static std::atomic<locale_t> made{nullptr};
    locale_t c = made.load(std::memory_order_acquire);
    if (c != nullptr) return c;
    locale_t fresh = newlocale(LC_ALL_MASK, "C", nullptr);
    if (made.compare_exchange_strong(c, fresh, std::memory_order_acq_rel)) return fresh;
    freelocale(fresh);
    return c;
}

// The double a checked decimal number starts at text: its nearest value, or
// nothing when it lies beyond a double's range (it overflows, or a non-zero
// number rounds to zero); a subnormal value is a value. (strtod_l rather
// than std::from_chars, whose floating-point reader brings a large part of
// the C++ runtime into this library.) The caller's errno is kept.
std::optional<double> ReadReal(const char *text) {
    const int saved = errno;
    errno = 0;
    const double value = strtod_l(text, nullptr, CLocale());
    const bool outOfRange = errno == ERANGE && (value == 0 || std::isinf(value));
    errno = saved;
    if (outOfRange) return std::nullopt;
    return value;
}

// The number a text denotes. Integers that fit 64 bits are kept exact.
struct Number {
    bool integral;
    int64_t whole;
    double real;
};

std::optional<Number> ReadNumber(const char *text) {
    std::string_view t = TrimBlanks(View(text));
    bool integral = false;
    if (!IsNumber(t, &integral)) return std::nullopt;
    if (t.front() == '+') t.remove_prefix(1);  // from_chars takes no plus sign
    Number n{false, 0, 0.0};
    if (integral) {
        const auto r = std::from_chars(t.data(), t.data() + t.size(), n.whole);
        if (r.ec == std::errc()) n.integral = true;
    }
    // A whole number of 64 bits converts to its nearest double directly;
    // other numbers are read as decimal text.
    if (n.integral) {
        n.real = static_cast<double>(n.whole);
        return n;
    }
    const std::optional<double> real = ReadReal(t.data());
    if (!real) return std::nullopt;  // beyond the range of a double
    n.real = *real;
    return n;
}

// -1, 0 or 1 for two numbers; nullopt when either text is not a number.
std::optional<int> NumericOrder(const char *left, const char *right) {
    const auto a = ReadNumber(left);
    const auto b = ReadNumber(right);
    if (!a || !b) return std::nullopt;
    if (a->integral && b->integral) return a->whole < b->whole ? -1 : (a->whole > b->whole ? 1 : 0);
    return a->real < b->real ? -1 : (a->real > b->real ? 1 : 0);
}

enum class Relation { Equal, NotEqual, LowerEqual, GreaterEqual, Lower, Greater };

int Holds(int order, Relation relation) {
    switch (relation) {
    case Relation::Equal: return order == 0;
    case Relation::NotEqual: return order != 0;
    case Relation::LowerEqual: return order <= 0;
    case Relation::GreaterEqual: return order >= 0;
    case Relation::Lower: return order < 0;
    case Relation::Greater: return order > 0;
    }
    return 0;
}

// Texts that are not numbers stand in no order: only "!=" holds for them.
int HoldsNumeric(const char *left, const char *right, Relation relation) {
    const auto order = NumericOrder(left, right);
    if (!order) return relation == Relation::NotEqual ? 1 : 0;
    return Holds(*order, relation);
}

}  // namespace
}  // namespace parser

#define KX_TEXT_COMPARE(name, relation, ignoreCase, prefixOnly)                                       \
    int name(const char *left, const char *right) {                                                   \
        return parser::Holds(parser::TextOrder(left, right, ignoreCase, prefixOnly), relation);      \
    }
#define KX_NUMERIC_COMPARE(name, relation) \
    int name(const char *left, const char *right) { return parser::HoldsNumeric(left, right, relation); }

extern "C" {

using parser::Relation;

KX_TEXT_COMPARE(TextCompareEqual, Relation::Equal, false, false)
KX_TEXT_COMPARE(TextCompareNotEqual, Relation::NotEqual, false, false)
KX_TEXT_COMPARE(TextCompareLowerEqual, Relation::LowerEqual, false, false)
KX_TEXT_COMPARE(TextCompareGreaterEqual, Relation::GreaterEqual, false, false)
KX_TEXT_COMPARE(TextCompareLower, Relation::Lower, false, false)
KX_TEXT_COMPARE(TextCompareGreater, Relation::Greater, false, false)

KX_TEXT_COMPARE(TextCompareEquali, Relation::Equal, true, false)
KX_TEXT_COMPARE(TextCompareNotEquali, Relation::NotEqual, true, false)
KX_TEXT_COMPARE(TextCompareLowerEquali, Relation::LowerEqual, true, false)
KX_TEXT_COMPARE(TextCompareGreaterEquali, Relation::GreaterEqual, true, false)
KX_TEXT_COMPARE(TextCompareLoweri, Relation::Lower, true, false)
KX_TEXT_COMPARE(TextCompareGreateri, Relation::Greater, true, false)

KX_TEXT_COMPARE(TextCompareEqualN, Relation::Equal, false, true)
KX_TEXT_COMPARE(TextCompareNotEqualN, Relation::NotEqual, false, true)
KX_TEXT_COMPARE(TextCompareLowerEqualN, Relation::LowerEqual, false, true)
KX_TEXT_COMPARE(TextCompareGreaterEqualN, Relation::GreaterEqual, false, true)
KX_TEXT_COMPARE(TextCompareLowerN, Relation::Lower, false, true)
KX_TEXT_COMPARE(TextCompareGreaterN, Relation::Greater, false, true)

KX_TEXT_COMPARE(TextCompareEqualNi, Relation::Equal, true, true)
KX_TEXT_COMPARE(TextCompareNotEqualNi, Relation::NotEqual, true, true)
KX_TEXT_COMPARE(TextCompareLowerEqualNi, Relation::LowerEqual, true, true)
KX_TEXT_COMPARE(TextCompareGreaterEqualNi, Relation::GreaterEqual, true, true)
KX_TEXT_COMPARE(TextCompareLowerNi, Relation::Lower, true, true)
KX_TEXT_COMPARE(TextCompareGreaterNi, Relation::Greater, true, true)

KX_NUMERIC_COMPARE(NumericCompareEqual, Relation::Equal)
KX_NUMERIC_COMPARE(NumericCompareNotEqual, Relation::NotEqual)
KX_NUMERIC_COMPARE(NumericCompareLowerEqual, Relation::LowerEqual)
KX_NUMERIC_COMPARE(NumericCompareGreaterEqual, Relation::GreaterEqual)
KX_NUMERIC_COMPARE(NumericCompareLower, Relation::Lower)
KX_NUMERIC_COMPARE(NumericCompareGreater, Relation::Greater)

}  // extern "C"
