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

std::optional<std::string> Piece(const char *text) { return text != nullptr ? std::optional<std::string>(text) : std::nullopt; }

// tests/data/trap_names.txt: a path, then the pieces of its base name.
TEST(TrapNameParser, CutsTheBaseNameIntoItsPieces) {
    for (const kx::test::DataRow &row : kx::test::DataTable("trap_names.txt")) {
        char *mib = nullptr, *enterprise = nullptr, *generic = nullptr, *specific = nullptr, *rest = nullptr;
        char *agent = nullptr, *server = nullptr, *states = nullptr;
        kx::test::HeapText copy(GTDetermineActTrapInformation(row[0]->c_str(), &mib, &enterprise, &generic, &specific,
                                                              &rest, &agent, &server, &states));
        kx::test::HeapText a(mib), b(agent), c(server), d(states);
        ASSERT_NE(copy.get(), nullptr);
        EXPECT_EQ((kx::test::DataRow{row[0], Piece(mib), Piece(enterprise), Piece(generic), Piece(specific), Piece(rest),
                                     Piece(agent), Piece(server), Piece(states)}),
                  row)
            << row[0]->substr(0, 64);
    }
}

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
