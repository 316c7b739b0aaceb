// The file helpers of libKXUtils that the file search relies on.
#include <gtest/gtest.h>

#include "companion/libKXUtils.h"
#include "support/kx_test.h"
#include "support/request_fixtures.h"

namespace {

struct BaseCase {
    const char *path;
    std::size_t offset;
};

class KXUtilsBasenameTest : public ::testing::TestWithParam<BaseCase> {};

TEST_P(KXUtilsBasenameTest, PointsAfterTheLastSeparator) {
    EXPECT_EQ(KXUtilsBasename(GetParam().path, 0), GetParam().path + GetParam().offset);
}

INSTANTIATE_TEST_SUITE_P(Paths, KXUtilsBasenameTest, ::testing::Values(
    BaseCase{"prog", 0}, BaseCase{"/usr/bin/prog", 9}, BaseCase{"a\\b/c", 4}, BaseCase{"a/b\\c", 4},
    BaseCase{"dir/", 4}, BaseCase{"", 0}));

TEST(KXUtilsBasename, NullPath) { EXPECT_EQ(KXUtilsBasename(nullptr, 0), nullptr); }

TEST(KXUtilsFileExists, FilesAndDirectoriesExist) {
    kx::test::TempDir tree;
    tree.Write("sub/file", "x");
    EXPECT_EQ(KXUtilsFileExists((tree.path() + "/sub/file").c_str()), 0);
    EXPECT_EQ(KXUtilsFileExists((tree.path() + "/sub").c_str()), 0);
    EXPECT_EQ(KXUtilsFileExists((tree.path() + "/missing").c_str()), -1);
    EXPECT_EQ(KXUtilsFileExists(""), -1);
    EXPECT_EQ(KXUtilsFileExists(nullptr), -1);
}

}  // namespace
