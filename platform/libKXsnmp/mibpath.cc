// The directory of the MIB files that the MIB look-ups read.
#include <string>

#include "companion/libKXsnmp.h"
#include "mib_internal.h"

namespace kxsnmp {
namespace {

// The configured directory; empty until KXSetMibPath names one.
std::string &ConfiguredDirectory() {
    static std::string directory;
    return directory;
}

}  // namespace

std::string MibDirectory() {
    const std::string &configured = ConfiguredDirectory();
    return configured.empty() ? std::string("mibs") : configured;
}

}  // namespace kxsnmp

extern "C" {

int KXSetMibPath(const char *path) {
    if (path == nullptr) return -1;
    kxsnmp::ConfiguredDirectory() = path;
    return 0;
}

const char *KXGetMibPath(void) {
    const std::string &directory = kxsnmp::ConfiguredDirectory();
    return directory.empty() ? nullptr : directory.c_str();
}

}  // extern "C"
