// ChangeFileContent, ErweitereBlock and the whole-file operations under them.
#include <gtest/gtest.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "companion/libKXUtils.h"
#include "kx_template.h"
#include "support/kx_test.h"

namespace {

using kx::test::TempDir;

std::string Read(const std::string &path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

struct Case {
    std::string before;
    const char *key, *text, *stopSet;
    int stopSetLength;
    int result;
    std::string after;  // empty: the file is unchanged
};

const Case kCases[] = {
    {"k;n;old\nrest", "k;n;", "new", "\n\r", 2, 0, "k;n;new\nrest"},
    {"k;n;old\r\nrest", "k;n;", "new", "\n\r", 2, 0, "k;n;new\r\nrest"},
    {"k;n;old\nrest", "k;n;", nullptr, "\n\r", 2, 0, "k;n;\nrest"},
    {"k;n;a\nk;n;b\n", "k;n;", "X", "\n\r", 2, 0, "k;n;X\nk;n;b\n"},
    {"k;n;\n", "k;n;", "longer value", "\n\r", 2, 0, "k;n;longer value\n"},
    {"k;n;old", "k;n;", "new", "\n\r", 2, -1, ""},
    {"k;n;old", "k;n;", "new", "\n\r", 3, 0, "k;n;new"},  // the NUL is in the set
    {"k;n;old", "k;n;", "new", "\n\r", 99, 0, "k;n;new"},  // a set never reaches past its NUL
    {"x;n;old\n", "k;n;", "new", "\n\r", 2, -1, ""},
    {"k;n;old\n", "", "new", "\n\r", 2, -1, ""},
    {"k;n;old\n", "k;n;", "new", nullptr, 2, -1, ""},
    {std::string("k;n;old\nA\0B", 11), "k;n;", "v", "\n", 1, 0, std::string("k;n;v\nA\0B", 9)},
};

TEST(FileContent, ChangeFileContent) {
    for (const Case &c : kCases) {
        TempDir dir;
        const std::string path = dir.Write("f.ini", c.before);
        EXPECT_EQ(ChangeFileContent(path.c_str(), c.key, c.text, c.stopSet, c.stopSetLength), c.result) << c.before;
        EXPECT_EQ(Read(path), c.after.empty() ? c.before : c.after) << c.before;
    }
}

TEST(FileContent, MissingFileAndArguments) {
    TempDir dir;
    const std::string path = dir.path() + "/none.ini";
    EXPECT_EQ(ChangeFileContent(path.c_str(), "k", "v", "\n", 1), -1);
    EXPECT_FALSE(std::filesystem::exists(path));
    EXPECT_EQ(ChangeFileContent(nullptr, "k", "v", "\n", 1), -1);
    const std::string file = dir.Write("f.ini", "k=1\n");
    EXPECT_EQ(ChangeFileContent(file.c_str(), nullptr, "v", "\n", 1), -1);
}

// What a write leaves: the mode kept, no temporary file, one of a writer that
// died removed while one still being written (its lock held) stays, a
// read-only file refused, a symbolic link written through to its target.
TEST(FileContent, ReplacementRespectsTheFileAndCleansUp) {
    enum Other { kNone, kAbandoned, kLive };  // another writer's temporary file
    struct Case {
        const char *what;
        mode_t mode;
        bool link;
        Other other;
        int result;
    };
    const Case cases[] = {
        {"plain", 0640, false, kNone, 0},
        {"abandoned temporary", 0600, false, kAbandoned, 0},
        {"temporary being written", 0600, false, kLive, 0},
        {"read-only", 0444, false, kNone, -1},
        {"through a link", 0644, true, kNone, 0},
    };
    for (const Case &c : cases) {
        TempDir dir;
        const std::string real = dir.Write("real/f.ini", "k=1\n");
        ASSERT_EQ(chmod(real.c_str(), c.mode), 0);
        const std::string path = c.link ? dir.path() + "/f.ini" : real;
        if (c.link) ASSERT_EQ(symlink("real/f.ini", path.c_str()), 0);
        const std::string other = c.other != kNone ? dir.Write("real/.f.ini.Ab12Cd.tmp", "partial") : "";
        const int held = c.other == kLive ? open(other.c_str(), O_RDONLY) : -1;
        if (held >= 0) ASSERT_EQ(flock(held, LOCK_EX), 0);
        EXPECT_EQ(ChangeFileContent(path.c_str(), "k=", "2", "\n", 1), c.result) << c.what;
        if (held >= 0) close(held);
        struct stat info;
        ASSERT_EQ(lstat(real.c_str(), &info), 0);
        EXPECT_EQ(info.st_mode & 07777, c.mode) << c.what;
        std::ifstream in(real);
        std::string line;
        std::getline(in, line);
        EXPECT_EQ(line, c.result == 0 ? "k=2" : "k=1") << c.what;
        EXPECT_EQ(std::filesystem::is_symlink(path), c.link) << c.what;
        int temporary = 0;
        for (const auto &entry : std::filesystem::directory_iterator(dir.path() + "/real"))
            temporary += entry.path().extension() == ".tmp";
        EXPECT_EQ(temporary, c.other == kLive ? 1 : 0) << c.what;
    }
}

TEST(FileContent, ErweitereBlock) {
    struct Block { const char *front; int frontLength; const char *back; int backLength; const char *middle;
                   int middleLength; std::string expected; };
    const Block cases[] = {
        {"ab", 2, "cd", 2, "XY", 2, "abXYcd"}, {"ab", 2, "cd", 2, "XY", 0, "abcd"},
        {"ab", -1, "cd", 2, "XY", 2, "XYcd"},  {"a\0b", 3, nullptr, 5, nullptr, -1, std::string("a\0b", 3)},
        {nullptr, 0, nullptr, 0, nullptr, 0, ""},
    };
    for (const Block &c : cases) {
        char *block = ErweitereBlock(c.front, c.frontLength, c.back, c.backLength, c.middle, c.middleLength);
        ASSERT_NE(block, nullptr) << c.expected;
        EXPECT_EQ(std::string(block, c.expected.size()), c.expected);
        std::free(block);
    }
}

TEST(FileContent, CompanionWholeFileOperations) {
    TempDir dir;
    char *buffer = reinterpret_cast<char *>(1);
    int error = 0;
    char *message = nullptr;
    const std::string missing = dir.path() + "/none";
    EXPECT_EQ(KXUtilsReadFileToMemoryErrorOutput(missing.c_str(), &buffer, &error, &message), -1);
    EXPECT_EQ(buffer, nullptr);
    EXPECT_EQ(error, ENOENT);
    ASSERT_NE(message, nullptr);
    KXUtilsFreeResources(message);

    const std::string path = dir.path() + "/new.txt";
    EXPECT_EQ(KXUtilsWriteMemoryToFileErrorOutput(path.c_str(), "hello", 0, &error, nullptr), 1);
    EXPECT_EQ(KXUtilsWriteMemoryToFileErrorOutput(path.c_str(), "hello", 4, &error, nullptr), 1);
    EXPECT_EQ(KXUtilsReadFileToMemoryErrorOutput(path.c_str(), &buffer, &error, nullptr), 4);
    EXPECT_STREQ(buffer, "hell");
    EXPECT_EQ(error, 0);
    KXUtilsFreeResources(buffer);
    EXPECT_EQ(KXUtilsWriteMemoryToFileErrorOutput((missing + "/x").c_str(), "x", 0, &error, nullptr), -1);
    EXPECT_EQ(error, ENOENT);

    char *text = KXUtilsAppendText("ab", 2, "cd", 2, nullptr, -1);
    EXPECT_STREQ(text, "abcd");
    KXUtilsFreeResources(text);
    text = KXUtilsAppendText("ab", 1, "cd", 0, "XYZ", 2);
    EXPECT_STREQ(text, "aXY");
    KXUtilsFreeResources(text);
}

}  // namespace
