// KXUtils stand-in: reading ini files and file sizes.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "companion/libKXUtils.h"
#include "support/kx_test.h"

namespace {

using kx::test::TempDir;

// The pairs of one read, released at the end.
struct Read {
    Read(const std::string &path, const char *section, const char *key) {
        count = KXUtilsReadIniFile(path.c_str(), section, 0, '.', key, &pairs, 0);
    }
    ~Read() { KXUtilsFreeResources(pairs); }
    std::vector<std::string> Flat() const {
        std::vector<std::string> out;
        for (int i = 0; i < 2 * count && pairs != nullptr; ++i) out.emplace_back(pairs[i]);
        return out;
    }
    char **pairs = nullptr;
    int count = 0;
};

class IniFile : public ::testing::Test {
protected:
    TempDir dir_;
    std::string path_ = dir_.Write("t.ini",
                                   "|\r\ntitle= Main; page: x \r\n# note\nempty=\n[Net]\nHost=h=1\n"
                                   "Port=80\n  [Other]\nHost=o\nnoequals\n");
};

TEST_F(IniFile, WholeFileQualifiesSectionNames) {
    const Read r(path_, nullptr, nullptr);
    EXPECT_EQ(r.count, 5);
    EXPECT_EQ(r.Flat(), (std::vector<std::string>{"title", " Main; page: x ", "empty", "", "Net.Host",
                                                   "h=1", "Net.Port", "80", "Other.Host", "o"}));
}

TEST_F(IniFile, OneSection) {
    const Read r(path_, "Net", nullptr);
    EXPECT_EQ(r.Flat(), (std::vector<std::string>{"Host", "h=1", "Port", "80"}));
}

TEST_F(IniFile, OneKey) {
    const std::vector<std::tuple<const char *, const char *, int, std::string>> cases = {
        {nullptr, "title", 1, " Main; page: x "}, {"Other", "Host", 1, "o"},
        {nullptr, "Net.Port", 1, "80"},           {nullptr, "Host", 0, ""},
        {"Net", "title", 0, ""},                  {"None", "Host", 0, ""}};
    for (const auto &[section, key, count, value] : cases) {
        const Read r(path_, section, key);
        EXPECT_EQ(r.count, count) << key;
        if (count == 1) {
            EXPECT_STREQ(r.pairs[1], value.c_str()) << key;
        } else {
            EXPECT_EQ(r.pairs, nullptr) << key;
        }
    }
}

TEST_F(IniFile, MissingFileAndNoSeparator) {
    const Read missing(dir_.path() + "/none.ini", nullptr, nullptr);
    EXPECT_EQ(missing.count, -1);
    EXPECT_EQ(missing.pairs, nullptr);
    char **pairs = nullptr;
    EXPECT_EQ(KXUtilsReadIniFile(path_.c_str(), nullptr, 0, '\0', "Host", &pairs, 0), 1);
    EXPECT_STREQ(pairs[1], "h=1") << "unqualified names: the first Host";
    KXUtilsFreeResources(pairs);
}

TEST_F(IniFile, LongLinesAreReadWhole) {
    const std::string value(10000, 'v');
    const Read r(dir_.Write("long.ini", "k=" + value + "\n"), nullptr, "k");
    ASSERT_EQ(r.count, 1);
    EXPECT_EQ(std::string(r.pairs[1]), value);
}

TEST(FileSize, Sizes) {
    TempDir dir;
    EXPECT_EQ(KXUtilsFileSize(dir.Write("five", "12345").c_str()), 5);
    EXPECT_EQ(KXUtilsFileSize(dir.Write("zero", "").c_str()), 0);
    EXPECT_EQ(KXUtilsFileSize((dir.path() + "/none").c_str()), -1);
    EXPECT_EQ(KXUtilsFileSize(nullptr), -1);
}

}  // namespace
