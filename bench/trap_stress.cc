// The stress run at full size: 10,000 traps written while four processes
// acknowledge and one prunes to 2,000; beside it the writer alone.
#include <cstdio>
#include <filesystem>

#include <unistd.h>

#include "measure.h"
#include "support/trap_stress.h"

int main() {
    const std::string work = std::filesystem::temp_directory_path() / ("kx-bench-stress-" + std::to_string(getpid()));
    std::filesystem::create_directories(work + "/Traps");
    std::filesystem::create_directory(work + "/Alone");
    kx::stress::Outcome outcome;
    const double stress = kx::bench::BestSeconds(
        [&] { outcome = kx::stress::RunTrapStress(work + "/Traps", work, 10000, 2000); }, 1);
    kx::stress::Shared shared{};
    const double alone = kx::bench::BestSeconds([&] { kx::stress::Writer(work + "/Alone", 10000, shared); }, 1);
    std::printf("10000 traps, 4 acknowledgers, 1 pruner %9.2f s   writer alone %9.2f s   ratio %.2f\n", stress,
                alone, stress / alone);
    std::printf("%s: %s\n", outcome.Clean() ? "clean" : "FAULTS", outcome.Text().c_str());
    std::filesystem::remove_all(work);
    return outcome.Clean() ? 0 : 1;
}
