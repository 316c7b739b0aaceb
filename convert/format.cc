// "_format,": printf-style formatting of a value through a template's format.
// A format reaches the formatter only after it was checked to hold exactly one
// conversion of a kind that matches the argument passed with it.
#include <cstdio>
#include <cstring>
#include <optional>
#include <string>

#include "convert/convert_internal.h"
#include "kx_convert.h"

namespace kx::convert {
namespace {

// Longest format, and largest width or precision, that a format may carry.
constexpr std::size_t kFormatLimit = kShortResultLimit;

enum class Kind { kInt, kLong, kLongLong, kString };

// The one conversion of a checked format.
struct Conversion {
    Kind kind;
    std::optional<std::size_t> lastNumber;  // the digits right before the letter
};

class FormatScanner {
public:
    explicit FormatScanner(std::string_view format) : format_(format) {}

    // The format's only conversion; nothing when it has none, several, or one
    // that is not allowed.
    std::optional<Conversion> Single() {
        std::optional<Conversion> found;
        while ((at_ = format_.find('%', at_)) != std::string_view::npos) {
            ++at_;
            if (Peek() == '%') { ++at_; continue; }
            std::optional<Conversion> conversion = One();
            if (!conversion || found) return std::nullopt;
            found = conversion;
        }
        return found;
    }

private:
    char Peek() const { return at_ < format_.size() ? format_[at_] : '\0'; }

    // Digits at the scan position, at most kFormatLimit; false when larger.
    bool Number(std::optional<std::size_t> &number) {
        std::size_t value = 0;
        bool any = false;
        for (; Peek() >= '0' && Peek() <= '9'; ++at_, any = true) {
            value = value * 10 + static_cast<std::size_t>(Peek() - '0');
            if (value > kFormatLimit) return false;
        }
        number = any ? std::optional<std::size_t>{value} : std::nullopt;
        return true;
    }

    std::optional<Conversion> One() {
        while (Peek() != '\0' && std::strchr("-+ #0'", Peek()) != nullptr) ++at_;
        std::optional<std::size_t> number;
        if (!Number(number)) return std::nullopt;
        if (Peek() == '.') {
            ++at_;
            if (!Number(number)) return std::nullopt;
        }
        std::string_view length = Length();
        const char letter = Peek();
        ++at_;
        if (letter == 's' && length.empty()) return Conversion{Kind::kString, number};
        if (letter == 'c' && length.empty()) return Conversion{Kind::kInt, number};
        if (letter == '\0' || std::strchr("diuoxX", letter) == nullptr) return std::nullopt;
        if (length == "l") return Conversion{Kind::kLong, number};
        if (length == "ll") return Conversion{Kind::kLongLong, number};
        return Conversion{Kind::kInt, number};
    }

    // A length modifier: "h", "hh", "l" or "ll".
    std::string_view Length() {
        const std::size_t from = at_;
        if (const char modifier = Peek(); modifier == 'h' || modifier == 'l') {
            ++at_;
            if (Peek() == modifier) ++at_;
        }
        return format_.substr(from, at_ - from);
    }

    std::string_view format_;
    std::size_t at_ = 0;
};

char *PrintNumber(const std::string &format, Kind kind, int32_t number) {
    char buffer[kShortResultLimit + 1];
    if (kind == Kind::kLong)
        std::snprintf(buffer, sizeof buffer, format.c_str(), static_cast<long>(number));
    else if (kind == Kind::kLongLong)
        std::snprintf(buffer, sizeof buffer, format.c_str(), static_cast<long long>(number));
    else
        std::snprintf(buffer, sizeof buffer, format.c_str(), static_cast<int>(number));
    return HeapCopy(buffer);
}

// A string format: "[suffix]" taken out, then either a cut to the maximum
// length written before the "s", or the value printed through the format.
char *PrintString(std::string_view format, std::string_view value) {
    std::string plain{format};
    std::string suffix;
    if (std::size_t open = format.find('['); open != std::string_view::npos) {
        if (std::size_t close = format.find(']', open); close != std::string_view::npos) {
            suffix = format.substr(open + 1, close - open - 1);
            plain = std::string{format.substr(0, open)}.append(format.substr(close + 1));
        }
    }
    std::optional<Conversion> conversion = FormatScanner(plain).Single();
    if (!conversion || conversion->kind != Kind::kString) return HeapCopy(kNotAvailable);
    if (std::optional<std::size_t> limit = conversion->lastNumber) {
        if (value.size() <= *limit) return HeapCopy(value.substr(0, kShortResultLimit));
        const std::size_t keep = *limit > suffix.size() ? *limit - suffix.size() : 0;
        std::string cut = std::string{value.substr(0, keep)} + suffix;
        return HeapCopy(std::string_view{cut}.substr(0, kShortResultLimit));
    }
    char buffer[kShortResultLimit + 1];
    std::snprintf(buffer, sizeof buffer, plain.c_str(), std::string{value}.c_str());
    return HeapCopy(buffer);
}

char *Format(const char *argument, const char *value, int cycleIndex) {
    const std::string format = Evaluated(ValueText(argument), cycleIndex);
    if (format.size() > kFormatLimit) return HeapCopy(kNotAvailable);
    std::optional<Conversion> conversion = FormatScanner(format).Single();
    if (conversion && conversion->kind != Kind::kString)
        return PrintNumber(format, conversion->kind, ReadInt(ValueText(value)));
    return PrintString(format, ValueText(value));
}

}  // namespace
}  // namespace kx::convert

extern "C" char *ConvertByFormat(char *argument, char *value, int cycleIndex) {
    return kx::convert::Format(argument, value, cycleIndex);
}
