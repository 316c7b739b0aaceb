// Nothing is lost while the trap receiver writes and CGI processes
// acknowledge and prune at the same time (processes, not threads).
#include <gtest/gtest.h>

#include <filesystem>

#include "support/kx_test.h"
#include "support/trap_stress.h"

namespace {

TEST(TrapStoreUnderConcurrency, EveryKeptTrapOnceWithItsLastStates) {
    kx::test::TempDir work;
    const std::string traps = work.path() + "/Traps";
    std::filesystem::create_directory(traps);
    const kx::stress::Outcome outcome = kx::stress::RunTrapStress(traps, work.path(), 600, 200);
    EXPECT_TRUE(outcome.Clean()) << outcome.Text();
    EXPECT_GT(outcome.renames, 300) << outcome.Text();
}

}  // namespace
