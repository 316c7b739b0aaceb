// Number conversions: arithmetic, division, hexadecimal, megabytes, bit
// fields and printf-style formats.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "convert_support.h"

using kx::test::Convert;
using kx::test::ExpectAll;
using kx::test::HandlerCase;

namespace {

TEST(Arithmetic, OneOperand) {
    ExpectAll({
        {ConvertByPlus, "1", "41", "42"},
        {ConvertByPlus, "-5", "3abc", "-2"},
        {ConvertByPlus, "1", "2147483647", "-2147483648"},  // wraps
        {ConvertByMinus, "10", "3", "-7"},
        {ConvertByMinusReversed, "10", "3", "7"},
        {ConvertByMultiply, "3", "-4", "-12"},
        {ConvertByMultiply, "65536", "65536", "0"},
        {ConvertByModulo, "3", "-7", "-1"},
        {ConvertByModulo, "-3", "7", "1"},
        {ConvertByModulo, "-1", "-2147483648", "0"},
        {ConvertByPlus, "abc", "x", "0"},
        {ConvertByPlus, "99999999999", "0", "2147483647"},  // sticks at the 32-bit limit
    });
}

TEST(Arithmetic, NullValueCountsAsZero) {
    ExpectAll({
        {ConvertByPlus, "4", nullptr, "4"},
        {ConvertByMinusReversed, "4", nullptr, "4"},
        {ConvertByMultiply, "4", nullptr, "0"},
        {ConvertToHex, "", nullptr, "0"},
        {ConvertToMB, "", nullptr, "0"},
        {ConvertByDivide, "10", nullptr, "0.0"},
    });
}

TEST(Arithmetic, ZeroDivisorGivesNotAvailable) {
    ExpectAll({
        {ConvertByModulo, "0", "7", "n.a."},
        {ConvertByModulo, "abc", "7", "n.a."},
        {ConvertByDivide, "0", "7", "n.a."},
        {ConvertByDivide, "", "7", "n.a."},
        {ConvertByDivide, "0,i", "7", "n.a."},
    });
}

TEST(Arithmetic, DivisionWithFraction) {
    ExpectAll({
        {ConvertByDivide, "1000,i", "1234", "1"},
        {ConvertByDivide, "1000,I", "1234", "1"},
        {ConvertByDivide, "100", "1234", "12.34"},
        {ConvertByDivide, "1000", "1234", "1.234"},
        {ConvertByDivide, "1000", "5", "0.005"},
        {ConvertByDivide, "7", "10", "1.3"},
        {ConvertByDivide, "1", "10", "10.0"},
        {ConvertByDivide, "2", "-7", "4294967293.4294967295"},  // printed unsigned
        {ConvertByDivide, "-1", "-2147483648", "2147483648.0"},
        {ConvertByDivide, "10,x", "25", "2.5"},
    });
}

TEST(Arithmetic, HexAndMegabytes) {
    ExpectAll({
        {ConvertToHex, "", "255", "ff"},
        {ConvertToHex, "", "abc", "0"},
        {ConvertToHex, "", "-1", "ffffffff"},
        {ConvertToMB, "", "1048575", "0"},
        {ConvertToMB, "", "3145728", "3"},
        {ConvertToMB, "", "-1048577", "-1"},
    });
}

TEST(Arithmetic, CountGivesTheValueItself) {
    char value[] = "x";
    char argument[] = "";
    EXPECT_EQ(ConvertToCount(argument, value, -1), value);
    EXPECT_EQ(ConvertToCount(argument, nullptr, -1), nullptr);
}

TEST(Arithmetic, BitFieldNamesTheSetBits) {
    ExpectAll({
        {ConvertBitFieldToText, "0-Power,2-Fan%20failure,4-Temp", "5", "Power,Fan failure"},
        {ConvertBitFieldToText, "0-Power,2-Fan", "2", "<null>"},
        {ConvertBitFieldToText, "0-Power,2-Fan", nullptr, "<null>"},
        {ConvertBitFieldToText, "Power,1-Fan", "3", "Fan"},  // no "-": skipped
        {ConvertBitFieldToText, "33-High", "2", "High"},     // bit numbers modulo 32
        {ConvertBitFieldToText, "31-Top,0-A-B", "-2147483647", "Top,A-B"},
        {ConvertBitFieldToText, "", "1", "<null>"},
    });
    char value[] = "1";
    EXPECT_EQ(ConvertBitFieldToText(nullptr, value, -1), value);
}

TEST(Format, IntegerFormats) {
    ExpectAll({
        {ConvertByFormat, "%05d", "42", "00042"},
        {ConvertByFormat, "%x kB", "255", "ff kB"},
        {ConvertByFormat, "%ld", "-3", "-3"},
        {ConvertByFormat, "%lld", "7", "7"},
        {ConvertByFormat, "%hhu", "257", "1"},
        {ConvertByFormat, "%-4i|", "7", "7   |"},
        {ConvertByFormat, "%c", "65", "A"},
        {ConvertByFormat, "100%% %d", "9", "100% 9"},
        {ConvertByFormat, "%d [x]", "9", "9 [x]"},  // brackets are a suffix only for strings
        {ConvertByFormat, "%d", nullptr, "0"},
    });
}

TEST(Format, StringFormats) {
    ExpectAll({
        {ConvertByFormat, "<%s>", "abc", "<abc>"},
        {ConvertByFormat, "%10s[...]", "123456789012345", "1234567..."},
        {ConvertByFormat, "%.10s[...]", "1234567890", "1234567890"},
        {ConvertByFormat, "%-20s[..]", "short", "short"},  // the rest of the format is not used
        {ConvertByFormat, "%2s[...]", "abcdef", "..."},
        {ConvertByFormat, "%3s", "abcdef", "abc"},
        {ConvertByFormat, "%s old", "an", "an old"},
        {ConvertByFormat, "<%s>", nullptr, "<>"},
    });
}

TEST(Format, RefusesEverythingElse) {
    ExpectAll({
        {ConvertByFormat, "%n", "1", "n.a."},
        {ConvertByFormat, "%s%s", "1", "n.a."},
        {ConvertByFormat, "%d%n", "1", "n.a."},
        {ConvertByFormat, "%*d", "1", "n.a."},
        {ConvertByFormat, "%1$d", "1", "n.a."},
        {ConvertByFormat, "%f", "1", "n.a."},
        {ConvertByFormat, "%p", "1", "n.a."},
        {ConvertByFormat, "%ls", "1", "n.a."},
        {ConvertByFormat, "%lc", "1", "n.a."},
        {ConvertByFormat, "%jd", "1", "n.a."},
        {ConvertByFormat, "%lllu", "1", "n.a."},
        {ConvertByFormat, "plain", "1", "n.a."},
        {ConvertByFormat, "", "1", "n.a."},
        {ConvertByFormat, "%", "1", "n.a."},
        {ConvertByFormat, "%128d", "1", "n.a."},
        {ConvertByFormat, "%.128d", "1", "n.a."},
        {ConvertByFormat, "%d [%s]", "1", "n.a."},
        {ConvertByFormat, "%s [...", "abc", "abc [..."},  // no "]": no suffix
        {ConvertByFormat, std::string(120, 'x') + "%d" + std::string(5, 'y'), "1",
         std::string(120, 'x') + "1" + std::string(5, 'y')},  // a format of 127 characters
        {ConvertByFormat, std::string(120, 'x') + "%d" + std::string(6, 'y'), "1", "n.a."},
    });
}

TEST(Format, ResultsStopAt127Characters) {
    const std::string longValue(300, 'v');
    ExpectAll({
        {ConvertByFormat, "%127d", "1", std::string(126, ' ') + "1"},
        {ConvertByFormat, "%s!", longValue.c_str(), std::string(127, 'v')},
        {ConvertByFormat, "%127s[.]", longValue.c_str(), std::string(126, 'v') + "."},
        {ConvertByFormat, "x%127d", "1", "x" + std::string(126, ' ')},
    });
}

}  // namespace
