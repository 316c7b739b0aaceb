// ChangeFileContent, ErweitereBlock and the whole-file operations under them.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>

#include "kx_template.h"
#include "support/kx_test.h"

namespace {

using kx::test::TempDir;

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
        EXPECT_EQ(kx::test::ReadFile(path), c.after.empty() ? c.before : c.after) << c.before;
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

TEST(FileContent, ReplacementKeepsModeAndLeavesNoTemporaryFile) {
    TempDir dir;
    const std::string path = dir.Write("f.ini", "k=1\n");
    ASSERT_EQ(chmod(path.c_str(), 0640), 0);
    ASSERT_EQ(ChangeFileContent(path.c_str(), "k=", "2", "\n", 1), 0);
    struct stat info;
    ASSERT_EQ(stat(path.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0640u);
    int files = 0;
    for (const auto &entry : std::filesystem::directory_iterator(dir.path())) files += entry.is_regular_file();
    EXPECT_EQ(files, 1);
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

}  // namespace
