// The text-scanning companion: positions, sets, regular expressions, case.
#include <gtest/gtest.h>

#include "companion/libparser.h"

namespace {

TEST(Parser, CharacterInSet) {
    const char *text = "a;b";
    int position = 1;
    EXPECT_EQ(InhaltGleichZeichen(text, &position, ",;", 2), 1);
    EXPECT_EQ(position, 1) << "the position is not moved";
    position = 0;
    EXPECT_LT(InhaltGleichZeichen(text, &position, ",;", 2), 0);
    position = 3;
    EXPECT_EQ(InhaltGleichZeichen(text, &position, ",", 2), 1) << "a set length past the text takes the NUL in";
}

TEST(Parser, ScanForwardAndBackward) {
    struct Case { const char *text; int start; const char *set; int setLength; int skipped, end; };
    const Case forward[] = {
        {"  \tx", 0, " \t", 2, 3, 3}, {"abc", 0, " ", 1, 0, 0}, {"   ", 0, " ", 2, 3, 3},
    };
    for (const Case &c : forward) {
        int position = c.start;
        EXPECT_EQ(UeberleseZeichen(c.text, &position, c.set, c.setLength), c.skipped) << c.text;
        EXPECT_EQ(position, c.end) << c.text;
    }
    int position = 5;
    EXPECT_EQ(UeberleseZeichenRueckwaerts("ab \r\n ", &position, " \r\n", 3, 0), 4);
    EXPECT_EQ(position, 1);
    position = 2;
    EXPECT_EQ(UeberleseZeichenRueckwaerts("   ", &position, " ", 1, 1), 1) << "never below start";
    EXPECT_EQ(position, 1);
}

TEST(Parser, PositionOnSetCharacters) {
    int position = 0;
    EXPECT_EQ(PositioniereAufZeichen("ab\rc\n", &position, "\n\r", 2), 1);
    EXPECT_EQ(position, 2);
    position = 0;
    EXPECT_EQ(PositioniereAufZeichen("abc", &position, "\n\r", 2), -1);
    EXPECT_EQ(position, 3) << "stops on the terminating NUL";
    position = 0;
    EXPECT_EQ(PositioniereAufZeichen("abc", &position, "\n\r", 3), 2) << "the NUL belongs to a set of length 3";
    position = 6;
    EXPECT_EQ(PositioniereAufZeichenRueckwaerts("a_b_cd", &position, "_", 1, 0), 0);
    EXPECT_EQ(position, 3);
    position = 2;
    EXPECT_EQ(PositioniereAufZeichenRueckwaerts("abc", &position, "_", 1, 0), -1);
    EXPECT_EQ(position, 0);
}

TEST(Parser, RegularExpressionMatchLength) {
    struct Case { const char *text, *expression; int length; };
    const Case cases[] = {
        {"123", "[0-9]+", 3}, {"12a", "[0-9]+", 2}, {"a12", "[0-9]+", -1}, {"", "[0-9]+", -1},
        {"trap.mib", "^[a-z]+\\.(mib|my)$", 8}, {"x", "(", -1}, {"abc", "", 0},
    };
    for (const Case &c : cases) EXPECT_EQ(Wertuebereinstimmung(c.text, c.expression) < 0 ? -1 : Wertuebereinstimmung(c.text, c.expression), c.length) << c.text << " ~ " << c.expression;
}

TEST(Parser, CaseConversionAndComparison) {
    char text[] = "MiXeD 1\xC4";
    EXPECT_STREQ(KonvertiereZuKleinbuchstaben(text), "mixed 1\xC4");
    EXPECT_STREQ(KonvertiereZuGrossbuchstaben(text), "MIXED 1\xC4");
    EXPECT_EQ(stricmp("Hello", "hELLO"), 0);
    EXPECT_LT(stricmp("abc", "ABD"), 0);
    EXPECT_GT(stricmp("abcd", "ABC"), 0);
    EXPECT_EQ(strnicmp("abcX", "ABCy", 3), 0);
    EXPECT_EQ(memicmp("a\0B", "A\0b", 3), 0);
    char *copy = ErzeugeText("abcdef", 2);
    EXPECT_STREQ(copy, "ab");
    free(copy);
}

}  // namespace
