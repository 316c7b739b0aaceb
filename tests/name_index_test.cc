// core::NameIndex gives FindEntry's answer while the list changes under it.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "core/entry.h"
#include "core/name_index.h"
#include "kx_list.h"

namespace {

EingabeElement Entry(const std::string &name) {
    return EingabeElement{strdup(name.c_str()), static_cast<uint32_t>(name.size()), nullptr, 0, 0, 'n', nullptr};
}

TEST(NameIndex, FollowsTheList) {
    int count = 40;
    auto *list = static_cast<EingabeElement *>(std::malloc(sizeof(EingabeElement) * 100));
    for (int i = 0; i < count; ++i) list[i] = Entry("e" + std::to_string(i % 30));  // e0..e9 twice
    kx::core::NameIndex index;
    struct Row { const char *what; void (*change)(EingabeElement *&, int &); const char *name; };
    const Row rows[] = {
        {"first of two", [](EingabeElement *&, int &) {}, "e5"},
        {"appended", [](EingabeElement *&l, int &c) { l[c++] = Entry("new"); }, "new"},
        {"renamed behind", [](EingabeElement *&l, int &) { std::free(l[7].Name); l[7].Name = strdup("e5"); }, "e5"},
        {"moved", [](EingabeElement *&l, int &) { l = static_cast<EingabeElement *>(std::realloc(l, sizeof(EingabeElement) * 200)); }, "e29"},
        {"shrunk", [](EingabeElement *&l, int &c) { std::free(l[--c].Name); }, "new"},
        {"missing", [](EingabeElement *&, int &) {}, "absent"},
    };
    for (const Row &row : rows) {
        row.change(list, count);
        EXPECT_EQ(index.Find(list, count, row.name), kx::core::FindEntry(list, count, row.name)) << row.what;
    }
    KXFreeEingabeList(list, count);
}

}  // namespace
