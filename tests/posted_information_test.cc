// Reading posted data from standard input.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "kx_input.h"
#include "support/request_fixtures.h"

namespace {

using kx::test::StandardInputPipe;

struct PostedCase {
    const char *what;
    int initialSize;
    std::size_t bytes;
};

void PrintTo(const PostedCase &c, std::ostream *out) { *out << c.what; }

class PostedTest : public ::testing::TestWithParam<PostedCase> {};

TEST_P(PostedTest, ReadsEverything) {
    std::string data;
    for (std::size_t i = 0; i < GetParam().bytes; ++i) data.push_back(static_cast<char>('a' + i % 26));
    StandardInputPipe input;
    input.WriteAndClose(data);
    int length = -1;
    char *text = UtilsGetPostedInformation(GetParam().initialSize, nullptr, &length);
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(length, static_cast<int>(data.size()));
    EXPECT_EQ(std::string(text), data);
    free(text);
}

INSTANTIATE_TEST_SUITE_P(Sizes, PostedTest, ::testing::Values(
    PostedCase{"OneByte", 0, 1},
    PostedCase{"ManyGrowthSteps", 16, 40000},
    PostedCase{"FillsTheFirstBlockExactly", 8, 7},
    PostedCase{"OneMoreThanTheFirstBlock", 8, 8},
    PostedCase{"DefaultSize", -5, 5000},
    PostedCase{"SizeOne", 1, 300}),
    [](const auto &row) { return std::string(row.param.what); });

TEST(Posted, EmptyInputGivesNullAndLengthZero) {
    StandardInputPipe input;
    input.WriteAndClose("");
    int length = -1;
    EXPECT_EQ(UtilsGetPostedInformation(0, nullptr, &length), nullptr);
    EXPECT_EQ(length, 0);
}

TEST(Posted, ReadsTheGivenStreamOnceStandardInputIsReady) {
    StandardInputPipe input;
    input.WriteAndClose("");
    char data[] = "a=1&b=2";
    FILE *stream = fmemopen(data, sizeof data - 1, "r");
    char *text = UtilsGetPostedInformation(0, stream, nullptr);
    fclose(stream);
    EXPECT_STREQ(text, "a=1&b=2");
    free(text);
}

// The tests that wait: nothing arrives within the 5 seconds, or the input
// stops before its end; the limit covers the whole read.
TEST(Posted, InputThatDoesNotArriveWholeGivesNullAndLeavesTheLength) {
    for (const char *sent : {"", "a=1&b="}) {
        StandardInputPipe input;
        input.Write(sent);
        int length = 42;
        EXPECT_EQ(UtilsGetPostedInformation(0, nullptr, &length), nullptr) << sent;
        EXPECT_EQ(length, 42) << sent;
    }
}

}  // namespace
