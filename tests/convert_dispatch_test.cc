// The conversion table and the chain dispatcher.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <string>
#include <vector>

#include "kx_convert.h"
#include "support/kx_test.h"

using kx::test::HeapText;

namespace {

// The names in the order in which they are tried.
const std::vector<std::string> kStoredOrder = {
    "_mb", "_hextime", "_hex", "_ctime", "_count", "_bitfield,", "_div,", "_substring,",
    "_strstr,", "_format,", "_plus,", "_minus,", "_suboid", "_after,", "_uptime", "_+,", "_-,",
    "_multiply,", "_*,", "_minusr,", "_-r,", "_valueindex,", "_strchange,", "_strreplace,",
    "_cputime", "_processtime,", "_before,", "_call,", "_callp,", "_gmtime", "_localtime",
    "_rbefore,", "_tolower", "_toupper", "_fremove", "_mktemp", "_mod,", "_createdir",
    "_listdir", "_fcreate", "_frename,", "_fexists,", "_fexists", "_fcopy,", "_time",
    "_dividelist,", "_ping", "_hostname", "_ipaddress", "_iniread,", "_fwrite,"};

// Conversions of files, programs and the network act on the world, so two
// calls need not agree (and a host must stay on loopback): only their names
// are matched here; their own tests cover their results.
const std::vector<std::string> kActing = {
    "_call,", "_callp,", "_fremove", "_mktemp", "_createdir", "_listdir", "_fcreate",
    "_frename,", "_fexists,", "_fexists", "_fcopy,", "_ping", "_hostname", "_ipaddress",
    "_iniread,", "_fwrite,"};

// Applies a chain written as text to a heap copy of value (given up to it).
std::string Chain(std::string text, const char *value) {
    char *owned = value ? strdup(value) : nullptr;
    char *result = ConvertIt(text.data(), KX_CONVERT_UNBOUNDED, owned, 1, -1);
    std::string printed = result ? result : "<null>";
    std::free(result);
    return printed;
}

std::string Spelled(const std::string &name, int variant) {
    std::string spelled = name;
    for (std::size_t i = 0; i < spelled.size(); ++i) {
        const auto c = static_cast<unsigned char>(spelled[i]);
        const bool upper = variant == 1 || (variant == 2 && i % 2 == 1);
        spelled[i] = static_cast<char>(upper ? std::toupper(c) : std::tolower(c));
    }
    return spelled;
}

TEST(ConvertTable, RowsInStoredOrderWithTheirLengths) {
    ASSERT_EQ(ConvertTableCount, 51);
    ASSERT_EQ(kStoredOrder.size(), 51U);
    for (int i = 0; i < ConvertTableCount; ++i) {
        EXPECT_EQ(ConvertTable[i].name, kStoredOrder[i]) << "row " << i + 1;
        EXPECT_EQ(ConvertTable[i].length, static_cast<int>(std::strlen(ConvertTable[i].name)));
        EXPECT_NE(ConvertTable[i].handler, nullptr);
    }
}

TEST(ConvertTable, ShortNamesShareTheLongNamesHandlers) {
    auto handler = [](const std::string &name) {
        for (int i = 0; i < ConvertTableCount; ++i)
            if (name == ConvertTable[i].name) return ConvertTable[i].handler;
        return KonvertierungsFunktion{nullptr};
    };
    EXPECT_EQ(handler("_+,"), &ConvertByPlus);
    EXPECT_EQ(handler("_plus,"), &ConvertByPlus);
    EXPECT_EQ(handler("_-,"), &ConvertByMinus);
    EXPECT_EQ(handler("_*,"), &ConvertByMultiply);
    EXPECT_EQ(handler("_-r,"), &ConvertByMinusReversed);
    EXPECT_EQ(handler("_minusr,"), &ConvertByMinusReversed);
    EXPECT_EQ(handler("_hextime"), &ConvertHexTime);
}

// Each row is found by its own name in any letter case, and the chain then
// gives what the row's handler gives.
TEST(ConvertTable, EveryRowMatchesItsNameInAnyCase) {
    for (int i = 0; i < ConvertTableCount; ++i) {
        const std::string name = ConvertTable[i].name;
        const bool takesArgument = name.back() == ',';
        const std::string argument = takesArgument ? "3" : "";
        for (int variant = 0; variant < 3; ++variant) {
            std::string text = "pre" + Spelled(name, variant) + argument + ".Name";
            char *start = nullptr;
            char *named = DetermineConversion(text.data(), &start);
            EXPECT_STREQ(named, "Name") << text;
            EXPECT_EQ(start, text.data() + 3) << text;
            if (name == "_time") continue;  // the clock may move between the two calls
            if (std::find(kActing.begin(), kActing.end(), name) != kActing.end()) continue;
            std::string direct = argument;
            char value[] = "0B02031A0809";
            char *result = ConvertTable[i].handler(direct.data(), value, -1);
            const std::string expected = result == nullptr ? "<null>" : result;
            if (result != value) std::free(result);
            EXPECT_EQ(Chain(text.substr(3), value), expected) << text;
        }
    }
}

struct DetermineCase {
    std::string text;
    int name;   // offset of the returned name
    int start;  // offset of the conversion start, -1 for none
};

TEST(DetermineConversion, FindsTheNameBehindTheChain) {
    const std::vector<DetermineCase> cases = {
        {"_plus,1._hex.Counter", 13, 0},
        {"ab_HEX.X", 7, 2},
        {"_plus,2._mult,3.X", 16, 0},   // "_mult," is no conversion but the name is after the last "."
        {"Name", 0, -1},                // no "_"
        {"my_x _hex.X", 0, -1},         // only the first "_" is tried
        {"_hex", 0, -1},                // no "." after the name
        {"x_this", 0, 1},               // "_this" marks where the value goes
        {"_This", 0, -1},               // "_this" is compared with case
        {"_hextime.T", 9, 0},
    };
    for (const DetermineCase &c : cases) {
        std::string text = c.text;
        char *start = text.data() + 99;
        char *named = DetermineConversion(text.data(), &start);
        EXPECT_EQ(named - text.data(), c.name) << c.text;
        EXPECT_EQ(start, c.start < 0 ? nullptr : text.data() + c.start) << c.text;
    }
}

struct ChainCase {
    std::string chain;
    const char *value;
    std::string result;
};

TEST(ConvertIt, AppliesTheConversionNearestTheNameFirst) {
    const std::vector<ChainCase> cases = {
        {"_plus,1._hex.X", "255", "1"},            // ff reads as 0
        {"_HEX.X", "255", "ff"},
        {"_hextime.X", "0B02031A0809", "2011/02/03   26:08:09"},
        {"_plus,2._mult,3.X", "5", "7"},
        {"_plus,1._multiply,3._minus,2.X", "5", "10"},
        {"_hex._plus,10._mb.X", "3145728", "d"},
        {"_tolower._before,%20._after,=.X", "k=ONE TWO", "one"},
        {"_count._hex._plus,1.X", "254", "ff"},      // "_count" hands on the text it gets
        {"_plus,1._bitfield,0-A._count.X", "2", "1"},  // no bit set: null, read as 0
        {"_-r,10._-,1._*,2.X", "4", "3"},
    };
    for (const ChainCase &c : cases) EXPECT_EQ(Chain(c.chain, c.value), c.result) << c.chain;
}

TEST(ConvertIt, LeavesTheTextAsItWas) {
    std::string text = "_substring,1,3._strreplace,a|b,x.Y";
    const std::string before = text;
    EXPECT_EQ(Chain(text, "ab-ab"), "x-");
    EXPECT_EQ(text, before);
}

TEST(ConvertIt, NothingToApplyGivesTheValueItself) {
    char value[] = "v";
    std::string none = "Name";
    EXPECT_EQ(ConvertIt(none.data(), KX_CONVERT_UNBOUNDED, value, 1, -1), value)
        << "not freed either: value is not a heap text here";
    std::string chain = "_hex.X";
    EXPECT_EQ(ConvertIt(chain.data(), chain.data(), value, 1, -1), value) << "empty range";
    EXPECT_EQ(ConvertIt(nullptr, KX_CONVERT_UNBOUNDED, value, 0, -1), value);
}

TEST(ConvertIt, HandsTheValueOverOnlyWhenAsked) {
    char value[] = "12";
    std::string chain = "_plus,1.X";
    HeapText result(ConvertIt(chain.data(), KX_CONVERT_UNBOUNDED, value, 0, -1));
    EXPECT_EQ(result.str(), "13");
    EXPECT_STREQ(value, "12");
    std::string count = "_count.X";
    char *owned = strdup("7");
    char *same = ConvertIt(count.data(), KX_CONVERT_UNBOUNDED, owned, 1, -1);
    EXPECT_EQ(same, owned) << "a result equal to the value is not freed";
    std::free(same);
}

TEST(ConvertIt, NullValuesPassAlongTheChain) {
    EXPECT_EQ(Chain("_bitfield,1-A.X", nullptr), "<null>");
    EXPECT_EQ(Chain("_count._bitfield,1-A.X", "1"), "<null>");
    EXPECT_EQ(Chain("_after,=._bitfield,1-A.X", "1"), "");
    EXPECT_EQ(Chain("_suboid,1._bitfield,1-A.X", "1"), "n.a.");
    EXPECT_EQ(Chain("_uptime._bitfield,1-A.X", "1"), "0 days, 00:00:00");
}

}  // namespace
