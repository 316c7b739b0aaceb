// Conversions of times: epoch seconds, time ticks, CPU time and hexadecimal
// dates into display text.
#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>
#include <system_error>
#include <string_view>

#include "convert/convert_internal.h"
#include "kx_convert.h"
#include "kx_input.h"

namespace kx::convert {
namespace {

// Year, month, day, hour, minute and second: the bytes of a hexadecimal date.
constexpr std::size_t kHexDateBytes = 6;
using HexDate = std::array<unsigned char, kHexDateBytes>;

// Digits and upper-case letters only: a lower-case letter gives a wrong value.
unsigned HexDigit(char digit) {
    const auto code = static_cast<unsigned char>(digit);
    return code < 58 ? code - 48U : code - 55U;
}

unsigned char HexByte(const char *pair) {
    return static_cast<unsigned char>((HexDigit(pair[0]) * 16 + HexDigit(pair[1])) & 0xFFU);
}

// The first six bytes of a hexadecimal date; missing bytes are 0.
HexDate ReadHexDate(std::string_view hex) {
    HexDate date{};
    for (std::size_t i = 0; i < kHexDateBytes && 2 * i + 1 < hex.size(); ++i)
        date[i] = HexByte(hex.data() + 2 * i);
    return date;
}

// A year byte: 80 to 99 are 1980 to 1999, the others from 2000 on.
int FullYear(unsigned char year) { return year > 79 ? 1900 + year : 2000 + year; }

// Reads epoch seconds like a 32-bit atol.
time_t Seconds(const char *value) { return static_cast<time_t>(ReadInt(ValueText(value))); }

// Reads a number like sscanf "%lu" into a 32-bit unsigned long: a minus sign
// negates, a number that is too large sticks at the largest value.
uint32_t ReadUnsigned(std::string_view text) {
    std::size_t i = 0;
    while (i < text.size() && (text[i] == ' ' || (text[i] >= '\t' && text[i] <= '\r'))) ++i;
    bool negative = false;
    if (i < text.size() && (text[i] == '+' || text[i] == '-')) negative = text[i++] == '-';
    uint64_t number = 0;
    for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i)
        number = std::min<uint64_t>(number * 10 + static_cast<uint64_t>(text[i] - '0'), UINT32_MAX);
    return static_cast<uint32_t>(negative ? 0U - number : number);
}

// A date or an uptime, built in place: a page of dates and uptimes formats
// a few numbers per row, which snprintf's parsing of its format, or a string
// growing past its inner buffer, would cost several times over. The longest
// text (six numbers of 32 bits, each with a sign and a separator) fits.
class ShortText {
public:
    // number as "%d" prints it.
    void Number(int number) {
        const auto printed = std::to_chars(text_ + size_, text_ + kCapacity, number);
        if (printed.ec == std::errc()) size_ = static_cast<std::size_t>(printed.ptr - text_);
    }
    // number as "%02d" prints it, followed by after (when not NUL).
    void Padded(int number, char after = '\0') {
        if (number >= 0 && number <= 9) Put('0');
        Number(number);
        if (after != '\0') Put(after);
    }
    void Append(std::string_view piece) {
        const std::size_t n = std::min(piece.size(), kCapacity - size_);
        piece.copy(text_ + size_, n);
        size_ += n;
    }
    // A new heap text (NULL when memory runs out).
    char *Copy() const { return HeapCopy({text_, size_}); }

private:
    static constexpr std::size_t kCapacity = 96;
    void Put(char c) {
        if (size_ < kCapacity) text_[size_++] = c;
    }
    char text_[kCapacity];
    std::size_t size_ = 0;
};

// "%02d/%02d/%02d %02d:%02d:%02d" of a broken-down time; a year after 1999
// prints as its years since 2000.
char *PrintDate(const std::tm &broken) {
    const int year = broken.tm_year <= 99 ? broken.tm_year : broken.tm_year - 100;
    ShortText date;
    date.Padded(broken.tm_mon + 1, '/');
    date.Padded(broken.tm_mday, '/');
    date.Padded(year, ' ');
    date.Padded(broken.tm_hour, ':');
    date.Padded(broken.tm_min, ':');
    date.Padded(broken.tm_sec);
    return date.Copy();
}

// The fields of UTC time that PrintDate shows, from the calendar alone:
// gmtime_r would pass through the C library's time zone state, and every
// 32-bit number of seconds lies in the years the calendar covers.
std::tm UtcFields(int32_t seconds) {
    using namespace std::chrono;
    const sys_seconds at{std::chrono::seconds{seconds}};
    const sys_days day = floor<days>(at);
    const year_month_day date{day};
    const hh_mm_ss time{at - day};
    std::tm broken{};
    broken.tm_year = static_cast<int>(date.year()) - 1900;
    broken.tm_mon = static_cast<int>(static_cast<unsigned>(date.month())) - 1;
    broken.tm_mday = static_cast<int>(static_cast<unsigned>(date.day()));
    broken.tm_hour = static_cast<int>(time.hours().count());
    broken.tm_min = static_cast<int>(time.minutes().count());
    broken.tm_sec = static_cast<int>(time.seconds().count());
    return broken;
}

char *BrokenDown(const char *value, bool local) {
    if (!local) return PrintDate(UtcFields(ReadInt(ValueText(value))));
    const time_t seconds = Seconds(value);
    std::tm broken{};
    if (localtime_r(&seconds, &broken) == nullptr) return HeapCopy(ValueText(value));
    return PrintDate(broken);
}

char *Ctime(const char *value) {
    const time_t seconds = Seconds(value);
    char buffer[64];
    if (seconds <= 0 || ctime_r(&seconds, buffer) == nullptr) return HeapCopy(ValueText(value));
    MacheLetztesElementZumText(buffer);
    return HeapCopy(buffer);
}

char *SinceNow(const char *value) {
    const int64_t then = ReadUnsigned(ValueText(value));
    const int64_t now = static_cast<int64_t>(std::time(nullptr));
    return HeapCopy(std::to_string(now >= then ? now - then : then - now));
}

char *UpTime(const char *value) {
    const int32_t seconds = ReadInt(ValueText(value)) / 100;
    const int32_t days = seconds / 86400;
    // "%d day%s, %02d:%02d:%02d"
    ShortText text;
    text.Number(days);
    text.Append(days == 1 ? " day, " : " days, ");
    text.Padded(seconds % 86400 / 3600, ':');
    text.Padded(seconds % 3600 / 60, ':');
    text.Padded(seconds % 60);
    return text.Copy();
}

char *CpuTime(const char *value) {
    const int32_t count = ReadInt(ValueText(value));
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%02d:%02d", count / 60, count % 60);
    return HeapCopy(buffer);
}

char *HexTime(const char *value) {
    const HexDate date = ReadHexDate(ValueText(value));
    char buffer[80];
    std::snprintf(buffer, sizeof buffer, "%d/%02d/%02d   %02d:%02d:%02d", FullYear(date[0]),
                  date[1], date[2], date[3], date[4], date[5]);
    return HeapCopy(buffer);
}

// The time of day of epoch seconds, taken from the seconds themselves.
char *TimeOfDay(time_t seconds) {
    const auto s = static_cast<int64_t>(seconds);
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%02d:%02d:%02d", static_cast<int>(s / 3600 % 24),
                  static_cast<int>(s % 3600 / 60), static_cast<int>(s % 60));
    return HeapCopy(buffer);
}

// The locale's date of a broken-down time, at most 15 characters ("" when
// the locale's form is longer).
char *LocaleDate(const std::tm &broken) {
    constexpr std::size_t kLocaleDateLimit = 15;
    char buffer[kLocaleDateLimit + 1];
    if (std::strftime(buffer, sizeof buffer, "%x", &broken) == 0) buffer[0] = '\0';
    return HeapCopy(buffer);
}

char *ProcessTime(std::string_view argument, const char *value, int cycleIndex) {
    const HexDate reference = ReadHexDate(Decoded(Evaluated(argument, cycleIndex)));
    const int day = reference[2];
    const int month = reference[1] - 1;
    const int year = reference[0] < 80 ? reference[0] + 100 : reference[0];
    const time_t seconds = Seconds(value);
    std::tm broken{};
    if (localtime_r(&seconds, &broken) == nullptr) return TimeOfDay(seconds);
    if (broken.tm_mday != day && broken.tm_mon != month && broken.tm_year != year)
        return TimeOfDay(seconds);
    return LocaleDate(broken);
}

}  // namespace
}  // namespace kx::convert

using kx::convert::ValueText;

extern "C" {

int HexToOctetString(unsigned char *out, const char *hex) {
    if (out == nullptr || hex == nullptr) return 0;
    int written = 0;
    for (; hex[0] != '\0' && hex[1] != '\0'; hex += 2) out[written++] = kx::convert::HexByte(hex);
    return written;
}

char *ConvertToCtime(char * /*argument*/, char *value, int /*cycleIndex*/) {
    return kx::convert::Ctime(value);
}

char *ConvertToLocaltime(char * /*argument*/, char *value, int /*cycleIndex*/) {
    return kx::convert::BrokenDown(value, true);
}

char *ConvertToGmtime(char * /*argument*/, char *value, int /*cycleIndex*/) {
    return kx::convert::BrokenDown(value, false);
}

char *ConvertCreateTime(char * /*argument*/, char *value, int /*cycleIndex*/) {
    return kx::convert::SinceNow(value);
}

char *ConvertUpTime(char * /*argument*/, char *value, int /*cycleIndex*/) {
    return kx::convert::UpTime(value);
}

char *ConvertCPUTime(char * /*argument*/, char *value, int /*cycleIndex*/) {
    return kx::convert::CpuTime(value);
}

char *ConvertHexTime(char * /*argument*/, char *value, int /*cycleIndex*/) {
    return kx::convert::HexTime(value);
}

char *ConvertProcessTime(char *argument, char *value, int cycleIndex) {
    return kx::convert::ProcessTime(ValueText(argument), value, cycleIndex);
}

}  // extern "C"
