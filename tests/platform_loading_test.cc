// Loading at request start: companions opened on their first call, and the
// optimised libraries' own ceil, which must give libm's result for every
// double the C++ runtime may hand it.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "companion/libKXmbcs.h"
#include "platform/companion_loader.h"

// This program links platform/runtime_ceil.cc: ::ceil is the libraries' own.
double (*volatile ours)(double) = &::ceil;

namespace {

TEST(CompanionLoader, CallsTheCompanionAndLeavesWhenOneIsMissing) {
    void *mbcs = kx::platform::OpenCompanion("libKXmbcs.so.1");
    const auto find = kx::platform::CompanionEntry<decltype(&_mbsstr)>(mbcs, "_mbsstr");
    char text[] = "rack 7 blade";
    EXPECT_EQ(find(text, "7 b"), text + 5);
    EXPECT_EXIT(kx::platform::OpenCompanion("libKXnone.so.1"), testing::ExitedWithCode(127),
                "^libKXSnmpTrapDll: cannot load libKXnone.so.1: ");
    EXPECT_EXIT(kx::platform::CompanionEntry<decltype(&_mbsstr)>(mbcs, "_mbsnone"), testing::ExitedWithCode(127),
                "^libKXSnmpTrapDll: cannot load _mbsnone: ");
}

TEST(RuntimeCeil, SameBitsAsLibm) {
    void *libm = dlopen("libm.so.6", RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(libm, nullptr);
    const auto reference = reinterpret_cast<double (*)(double)>(dlsym(libm, "ceil"));
    ASSERT_NE(reference, nullptr);
    ASSERT_NE(reference, ours);
    const double inf = std::numeric_limits<double>::infinity();
    const double cases[] = {0.0, -0.0, 0.5, -0.5, 1.0, -1.0, 1.5, -1.5, 2.0 / 3, -2.0 / 3, 1e-300, -1e-300,
                            4.9e-324, -4.9e-324, 0x1p52 - 0.5, -(0x1p52 - 0.5), 0x1p52, -0x1p52, 0x1p52 + 1,
                            0x1p63, -0x1p63, 1e300, -1e300, 12345.000001, 16.0 / 0.75, inf, -inf,
                            std::numeric_limits<double>::quiet_NaN()};
    for (const double x : cases) {
        const double mine = ours(x), theirs = reference(x);
        EXPECT_EQ(std::memcmp(&mine, &theirs, sizeof mine), 0) << x << ": " << mine << " against " << theirs;
    }
    dlclose(libm);
}

}  // namespace
