// URL encoding and decoding.
#include <gtest/gtest.h>

#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

#include "support/kx_test.h"

using kx::test::HeapText;

namespace {

TEST(UrlCodec, DecodesEscapesAndKeepsBadOnes) {
    struct Case { const char *in, *out; };
    const Case cases[] = {
        {"a+b%2Fc", "a b/c"}, {"%41%42", "AB"}, {"%e4%C4", "\xE4\xC4"},
        {"100%", "100%"}, {"%G1", "%G1"}, {"%4", "%4"}, {"%", "%"}, {"%%41", "%A"},
        {"%1G%", "%1G%"}, {"%u", "%u"}, {"%u30", "%u30"}, {"%u304", "%u304"}, {"", ""},
    };
    for (const Case &c : cases) EXPECT_EQ(HeapText(ServerDecoding(c.in)).str(), c.out) << c.in;
    HeapText empty(ServerDecoding(nullptr));
    ASSERT_NE(empty.get(), nullptr);
    EXPECT_STREQ(empty.get(), "");
    HeapText nul(ServerDecoding("a%00b"));
    EXPECT_EQ(std::string(nul.get(), 3), std::string("a\0b", 3)) << "%00 is decoded like any byte";
}

TEST(UrlCodec, EncodesTheFixedSet) {
    struct Case { const char *in; int blank, doubled; const char *out; };
    const Case cases[] = {
        {"a b&c", 0, 0, "a+b%26c"},
        {"a b&c", 1, 0, "a%20b%26c"},
        {"a b&c", 0, 1, "a+b%%26c"},
        {"a b&c", 1, 1, "a%%20b%%26c"},
        {"a b&c", 0, 2, "a+b%26c"},
        {" \"/:+&=%~#'`>|", 1, 0, "%20%22%2F%3A%2B%26%3D%25%7E%23%27%60%3E%7C"},
        {"azAZ09.-_?<;!*()[]{}\\@$^,\x80\xFF", 0, 0, "azAZ09.-_?<;!*()[]{}\\@$^,\x80\xFF"},
    };
    for (const Case &c : cases) {
        int length = -1;
        HeapText out(ServerEncoding(c.in, &length, c.blank, c.doubled));
        EXPECT_EQ(out.str(), c.out) << c.in << " " << c.blank << c.doubled;
        EXPECT_EQ(length, static_cast<int>(std::string(c.out).size()));
    }
    int length = -1;
    EXPECT_EQ(HeapText(ServerEncoding(nullptr, &length, 0, 0)).str(), "");
    EXPECT_EQ(length, 0);
}

TEST(UrlCodec, DecodingUndoesEncodingForEveryByte) {
    std::string all;
    for (int b = 1; b < 256; ++b) all += static_cast<char>(b);
    for (int blank = 0; blank < 2; ++blank) {
        HeapText encoded(ServerEncoding(all.c_str(), nullptr, blank, 0));
        EXPECT_EQ(HeapText(ServerDecoding(encoded.get())).str(), all);
    }
}

TEST(UrlCodec, HexDigits) {
    EXPECT_EQ(x2c("41"), 'A');
    EXPECT_EQ(static_cast<unsigned char>(x2c("fF")), 0xFF);
    EXPECT_EQ(static_cast<unsigned char>(x2c("aB")), 0xAB);
    EXPECT_EQ(atox('c'), 12);
    EXPECT_EQ(atox('C'), 12);
    EXPECT_EQ(atox('7'), 7);
    EXPECT_EQ(atox('x'), 'x');
}

// "%u" escapes switch the whole process to the locale "Japanese" on first
// use, once: each case runs in a child process of its own.
class WideEscape : public ::testing::Test {
protected:
    // Decodes text in a child with LOCPATH set; returns what came out.
    static std::string DecodeInChild(const std::string &locpath, const char *text) {
        int fds[2];
        if (pipe(fds) != 0) return "<pipe>";
        const pid_t child = fork();
        if (child == 0) {
            close(fds[0]);
            setenv("LOCPATH", locpath.c_str(), 1);
            HeapText out(ServerDecoding(text));
            const std::string result = out.str();
            _exit(write(fds[1], result.data(), result.size()) == static_cast<ssize_t>(result.size()) ? 0 : 1);
        }
        close(fds[1]);
        std::string result;
        char buffer[256];
        for (ssize_t n; (n = read(fds[0], buffer, sizeof buffer)) > 0;) result.append(buffer, n);
        close(fds[0]);
        int status = 0;
        waitpid(child, &status, 0);
        return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? result : "<child failed>";
    }
};

TEST_F(WideEscape, DecodedIntoTheJapaneseLocale) {
    kx::test::TempDir locales;
    // The C library resolves "Japanese" through its alias table (to
    // ja_JP.eucJP) where it has one, and takes the name as it is otherwise.
    const std::string command = "localedef -i ja_JP -f EUC-JP " + locales.path() + "/Japanese && ln -s Japanese " +
                                locales.path() + "/ja_JP.eucJP";
    ASSERT_EQ(system(command.c_str()), 0) << "localedef builds ja_JP in EUC-JP";
    EXPECT_EQ(DecodeInChild(locales.path(), "x%u3042y"), "x\xA4\xA2y") << "six characters make one character";
    EXPECT_EQ(DecodeInChild(locales.path(), "%u00e9%41"), "\x8F\xAB\xB1" "A") << "three bytes are kept";
    EXPECT_EQ(DecodeInChild(locales.path(), "%u304"), "%u304") << "an escape cut short stays";
}

TEST_F(WideEscape, KeptWhenTheLocaleIsMissing) {
    kx::test::TempDir empty;
    EXPECT_EQ(DecodeInChild(empty.path(), "x%u3042y%20"), "x%u3042y ");
}

}  // namespace
