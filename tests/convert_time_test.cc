// Time conversions, in a fixed time zone (five hours behind UTC, no summer
// time) and the "C" locale.
#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

#include "convert_support.h"

using kx::test::Convert;
using kx::test::ExpectAll;

namespace {

class TimeConversions : public ::testing::Test {
protected:
    void SetUp() override {
        const char *zone = std::getenv("TZ");
        savedZone_ = zone ? zone : "";
        hadZone_ = zone != nullptr;
        setenv("TZ", "EST5", 1);
        tzset();
        savedLocale_ = std::setlocale(LC_TIME, nullptr);
        std::setlocale(LC_TIME, "C");
    }
    void TearDown() override {
        if (hadZone_) setenv("TZ", savedZone_.c_str(), 1);
        else unsetenv("TZ");
        tzset();
        std::setlocale(LC_TIME, savedLocale_.c_str());
    }

private:
    std::string savedZone_;
    bool hadZone_ = false;
    std::string savedLocale_;
};

TEST_F(TimeConversions, Durations) {
    ExpectAll({
        {ConvertUpTime, "", "8640000", "1 day, 00:00:00"},
        {ConvertUpTime, "", "9000", "0 days, 00:01:30"},
        {ConvertUpTime, "", "99", "0 days, 00:00:00"},
        {ConvertUpTime, "", "17280000", "2 days, 00:00:00"},
        {ConvertUpTime, "", "9000000", "1 day, 01:00:00"},
        {ConvertUpTime, "", nullptr, "0 days, 00:00:00"},
        {ConvertCPUTime, "", "125", "02:05"},
        {ConvertCPUTime, "", "59", "00:59"},
        {ConvertCPUTime, "", "abc", "00:00"},
    });
}

TEST_F(TimeConversions, EpochSeconds) {
    ExpectAll({
        {ConvertToGmtime, "", "0", "01/01/70 00:00:00"},
        {ConvertToGmtime, "", "1000000000", "09/09/01 01:46:40"},
        {ConvertToGmtime, "", "946684799", "12/31/99 23:59:59"},
        {ConvertToLocaltime, "", "1000000000", "09/08/01 20:46:40"},
        {ConvertToLocaltime, "", "0", "12/31/69 19:00:00"},
        {ConvertToLocaltime, "", nullptr, "12/31/69 19:00:00"},
        {ConvertToCtime, "", "1000000000", "Sat Sep  8 20:46:40 2001"},
        {ConvertToCtime, "", "0", "0"},
        {ConvertToCtime, "", "-5", "-5"},
        {ConvertToCtime, "", "abc", "abc"},
        {ConvertToCtime, "", nullptr, ""},
    });
}

TEST_F(TimeConversions, HexadecimalDates) {
    ExpectAll({
        {ConvertHexTime, "", "0B02031A0809", "2011/02/03   26:08:09"},
        {ConvertHexTime, "", "5F0C1F173B3B", "1995/12/31   23:59:59"},
        {ConvertHexTime, "", "0B02031A0809FFFFFFFF", "2011/02/03   26:08:09"},  // six bytes only
        {ConvertHexTime, "", "0B02", "2011/02/00   00:00:00"},
        {ConvertHexTime, "", "0B020", "2011/02/00   00:00:00"},
        {ConvertHexTime, "", "0b", "2043/00/00   00:00:00"},  // lower case reads wrongly
        {ConvertHexTime, "", nullptr, "2000/00/00   00:00:00"},
    });
}

TEST(HexToOctetString, OneBytePerPair) {
    unsigned char out[4] = {7, 7, 7, 7};
    EXPECT_EQ(HexToOctetString(out, "0B02FF"), 3);
    EXPECT_EQ(out[0], 0x0B);
    EXPECT_EQ(out[1], 0x02);
    EXPECT_EQ(out[2], 0xFF);
    EXPECT_EQ(out[3], 7) << "no terminator";
    EXPECT_EQ(HexToOctetString(out, "ABC"), 1);
    EXPECT_EQ(out[0], 0xAB);
    EXPECT_EQ(HexToOctetString(out, ""), 0);
    EXPECT_EQ(HexToOctetString(nullptr, "AB"), 0);
    EXPECT_EQ(HexToOctetString(out, nullptr), 0);
}

// The value 1000000000 is 20:46:40 on 8 September 2001 here, 01:46:40 UTC.
TEST_F(TimeConversions, ProcessTimeBranches) {
    ExpectAll({
        {ConvertProcessTime, "010908000000", "1000000000", "09/08/01"},   // same day
        {ConvertProcessTime, "0A0A08000000", "1000000000", "09/08/01"},   // only the day equal
        {ConvertProcessTime, "020A0A000000", "1000000000", "01:46:40"},   // all three differ
        {ConvertProcessTime, "02%30A0A000000", "1000000000", "01:46:40"},  // decoded first
        {ConvertProcessTime, "020A0A000000FFFF", "1000000000", "01:46:40"},
        {ConvertProcessTime, "", "1000000000", "01:46:40"},  // 2000/00/00 is no date of the value
    });
}

TEST_F(TimeConversions, SecondsSinceNow) {
    const time_t before = std::time(nullptr);
    const std::string now = Convert(ConvertCreateTime, "", std::to_string(before).c_str());
    const std::string future = Convert(ConvertCreateTime, "", std::to_string(before + 1000).c_str());
    const time_t after = std::time(nullptr);
    EXPECT_LE(std::stoll(now), after - before);
    EXPECT_GE(std::stoll(future), 1000 - (after - before));
    EXPECT_LE(std::stoll(future), 1000);
    EXPECT_GE(std::stoll(Convert(ConvertCreateTime, "", nullptr)), before);
}

}  // namespace
