// Building the trap MIB index over a MIB directory (a tenth of the MIBs
// define traps, a tenth more mention TRAP-TYPE only in comments) against
// `grep -l TRAP-TYPE` over the same files: 500, 1000 and 10000 MIB files of
// about 8 KB.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "kx_trap.h"
#include "measure.h"

namespace {

// A vendor MIB: objects with descriptions and comments, traps at the end.
std::string MibText(int number) {
    const std::string name = "VENDOR" + std::to_string(number) + "-MIB";
    std::string text = name + " DEFINITIONS ::= BEGIN\n-- Objects of product line " + std::to_string(number) +
                       "\nIMPORTS enterprises FROM RFC1155-SMI OBJECT-TYPE FROM RFC-1212;\n";
    if (number % 10 == 5) text += "-- Traps of this product are defined as TRAP-TYPE in another MIB.\n";
    for (int i = 1; i <= 40; ++i)
        text += "v" + std::to_string(i) + " OBJECT-TYPE -- column " + std::to_string(i) +
                "\n    SYNTAX INTEGER ACCESS read-only STATUS mandatory\n"
                "    DESCRIPTION \"A value of the product, read by the console.\"\n    ::= { vendor " +
                std::to_string(i) + " }\n";
    if (number % 10 == 0) text += "vTrap TRAP-TYPE ENTERPRISE vendor VARIABLES { v1 } ::= 1\n";
    return text + "END\n";
}

void ResetIndex() {
    for (int i = 0; i < GTTrapMIBsCount; ++i) std::free(GTTrapMIBs[i]);
    std::free(GTTrapMIBs), std::free(GTTrapMIBsLength);
    GTTrapMIBs = nullptr, GTTrapMIBsLength = nullptr, GTTrapMIBsCount = 0;
}

void Measure(const std::string &root, int files) {
    const std::string mibs = root + "/mibs" + std::to_string(files);
    std::filesystem::create_directories(mibs);
    for (int i = 0; i < files; ++i) std::ofstream(mibs + "/VENDOR" + std::to_string(i) + ".mib") << MibText(i);
    std::ofstream(root + "/MibPath") << mibs;
    int found = 0;
    const double index = kx::bench::BestSeconds([&] {
        ResetIndex();
        GTCreateTrapMibs(nullptr);
        found = GTTrapMIBsCount;
    });
    const std::string command = "cd '" + mibs + "' && grep -l TRAP-TYPE -- *.mib | wc -l > ../grep.count";
    const double grep = kx::bench::BestSeconds([&] { (void)std::system(command.c_str()); });
    int grepped = 0;
    std::ifstream(root + "/grep.count") >> grepped;
    std::printf("trap MIB index of %5d MIB files  %8.2f ms (%d trap MIBs)   grep -l %8.2f ms (%d files)   ratio %.2f\n",
                files, index * 1e3, found, grep * 1e3, grepped, index / grep);
}

}  // namespace

int main() {
    const std::string root = std::filesystem::temp_directory_path() / ("kx-bench-mibindex-" + std::to_string(getpid()));
    std::filesystem::create_directories(root);
    std::filesystem::current_path(root);
    for (const int files : {500, 1000, 10000}) Measure(root, files);
    ResetIndex();
    std::filesystem::current_path("/");
    std::filesystem::remove_all(root);
    return 0;
}
