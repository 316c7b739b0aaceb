// Trap file names: the parser on well-formed and malformed names, the split
// before the states, the comparison of two arrivals, and the multibyte
// helpers the name functions search with.
#include <gtest/gtest.h>

#include <clocale>
#include <string>

#include "companion/libKXmbcs.h"
#include "kx_trap.h"
#include "support/kx_test.h"

namespace {

const std::string kLong(4000, '7');

struct ParseCase {
    std::string path;
    // mibFile enterprise generic specific rest agentAddress server states; "-" for left unset
    std::vector<std::string> pieces;
};

void PrintTo(const ParseCase &c, std::ostream *out) { *out << c.path.substr(0, 64); }

std::string Piece(const char *text) { return text != nullptr ? text : "-"; }

class TrapNameParser : public ::testing::TestWithParam<ParseCase> {};

TEST_P(TrapNameParser, CutsTheBaseNameIntoItsPieces) {
    char *mib = nullptr, *enterprise = nullptr, *generic = nullptr, *specific = nullptr, *rest = nullptr;
    char *agent = nullptr, *server = nullptr, *states = nullptr;
    kx::test::HeapText copy(GTDetermineActTrapInformation(GetParam().path.c_str(), &mib, &enterprise, &generic,
                                                          &specific, &rest, &agent, &server, &states));
    kx::test::HeapText a(mib), b(agent), c(server), d(states);
    ASSERT_NE(copy.get(), nullptr);
    EXPECT_EQ((std::vector<std::string>{Piece(mib), Piece(enterprise), Piece(generic), Piece(specific), Piece(rest),
                                        Piece(agent), Piece(server), Piece(states)}),
              GetParam().pieces);
}

INSTANTIATE_TEST_SUITE_P(Names, TrapNameParser, ::testing::Values(
    ParseCase{"T99999l5nABCDE_6_1001_192_168_1_10_srv01_000000000.1700000000",
              {"ABCDE.mib", "99999", "6", "1001", "192_168_1_10_srv01_000000000.1700000000", "192.168.1.10", "srv01", "000000000"}},
    ParseCase{"Traps/t123_0_0_10_0_0_1_0000_000000011.42",
              {"-", "123", "0", "0", "10_0_0_1_0000_000000011.42", "10.0.0.1", "-", "000000011"}},
    ParseCase{"T1_2_3_4_5_6_7_srv_000000000",  // no dot
              {"-", "1", "2", "3", "4_5_6_7_srv_000000000", "-", "-", "-"}},
    ParseCase{"T1_6_1.99",  // no state field: the specific number ends at the dot
              {"-", "1", "6", "1", "99", "-", "-", "-"}},
    ParseCase{"T1_6_1_10_0_0_1.99",  // states, but no server behind the address
              {"-", "1", "6", "1", "10_0_0_1.99", "-", "-", "1"}},
    ParseCase{"T1l999nAB",  // MIB tag length beyond the end
              {"AB.mib", "1", "", "", "", "-", "-", "-"}},
    ParseCase{"Tabc_x_y_1_2_3_4_s_000000000.zz",  // no digits where numbers belong
              {"-", "", "bc", "x", "y_1_2_3_4_s_000000000.zz", "y.1.2.3", "4_s", "000000000"}},
    ParseCase{"T" + kLong + "_1_2_3_4_5_6_s_000000000.1",
              {"-", kLong, "1", "2", "3_4_5_6_s_000000000.1", "3.4.5.6", "s", "000000000"}},
    ParseCase{"T1l4000n" + kLong, {kLong + ".mib", "1", "", "", "", "-", "-", "-"}},
    ParseCase{"/var/T1_2_3_4_5/6_7_s_000000000.1",  // the base name starts behind the last "/"
              {"-", "", "7", "s", "000000000.1", "-", "-", "-"}},
    ParseCase{"Traps/", {"-", "", "", "", "", "-", "-", "-"}}));

TEST(TrapNameParser, NullPathAndNoOutputs) {
    EXPECT_EQ(GTDetermineActTrapInformation(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                            nullptr),
              nullptr);
    kx::test::HeapText copy(GTDetermineActTrapInformation("T1l2nAB_6_1_1_2_3_4_s_000000000.5", nullptr, nullptr,
                                                          nullptr, nullptr, nullptr, nullptr, nullptr, nullptr));
    EXPECT_STREQ(copy.get(), "T1");
}

TEST(TrapNames, SplitAndSameTrapFromTheSameServer) {
    const char *a = "T99999_6_1001_192_168_1_10_srv01_000000000.1700000000";
    char *id = nullptr;
    EXPECT_EQ(GTSplitTrapFileName(a, &id), 32);
    EXPECT_STREQ(id, ".1700000000");
    EXPECT_EQ(GTGetUniqueIdentifier(a), id);
    EXPECT_EQ(GTSplitTrapFileName("no dot", &id), -1);
    EXPECT_EQ(id, nullptr);
    EXPECT_EQ(GTSplitTrapFileName("a.b", nullptr), 0);
    EXPECT_EQ(GTSplitTrapFileName(nullptr, nullptr), -1);
    const struct {
        const char *name2;
        int same;
    } cases[] = {
        {"t99999_6_1001_192_168_1_10_SRV01_000000011.1700000099", 0},  // states, time and case differ
        {"T99999_6_1001_192_168_1_10_srv01_000000000.1700000000", 1},  // the same file
        {"T99999_6_1001_192_168_1_10_srv11_000000000.1700000099", 1},  // another server
        {"T99999_6_1001_192_168_1_10_srv1_000000000.1700000099", 1},   // another length
        {"T99999_6_1001_192_168_1_10_srv01_000000000", 1},             // no identifier
    };
    for (const auto &c : cases) EXPECT_EQ(GTIsSameTrapAndServer(0, nullptr, a, c.name2, nullptr) != 0, c.same) << c.name2;
    EXPECT_EQ(GTIsSameTrapAndServer(0, nullptr, "T1_2_3_4_5_6_7_s_0.1", "T1_2_3_4_5_6_7_s_0.2", nullptr), 1);
    EXPECT_EQ(GTIsSameTrapAndServer(32, ".17", a, cases[0].name2, &id), 0);
    EXPECT_STREQ(id, ".1700000099");
}

TEST(MultibyteHelpers, StepOverWholeCharacters) {
    const char *text = "a\xC3\xA9.b.\xC3\xA9";  // "aé.b.é" in UTF-8
    EXPECT_EQ(_mbschr(text, 0xA9), text + 2);  // the "C" locale: every byte is a character
    ASSERT_NE(std::setlocale(LC_CTYPE, "C.UTF-8"), nullptr);
    EXPECT_EQ(_mbschr(text, 0xA9), nullptr);
    EXPECT_EQ(_mbsstr(text, "\xA9."), nullptr);
    EXPECT_EQ(_mbsstr(text, ".b"), text + 3);
    EXPECT_EQ(_mbsrchr(text, '.'), text + 5);
    EXPECT_EQ(_mbsicmp("Trap\xC3\xA9", "tRAP\xC3\xA9"), 0);
    EXPECT_NE(_mbsicmp("\xC3\x89", "\xC3\xA9"), 0);  // É and é: only ASCII letters fold
    std::setlocale(LC_CTYPE, "C");
    EXPECT_LT(_mbscmp(nullptr, "a"), 0);
    EXPECT_EQ(_mbsnbcmp("abc", "abd", 2), 0);
}

}  // namespace
