// The directory of the MIB files that the MIB look-ups read.
#include <string>

#include "companion/libKXsnmp.h"

namespace kxsnmp {
namespace {

// The configured directory; empty until KXSetMibPath names one.
std::string &MibDirectory() {
    static std::string directory;
    return directory;
}

}  // namespace
}  // namespace kxsnmp

extern "C" {

int KXSetMibPath(const char *path) {
    if (path == nullptr) return -1;
    kxsnmp::MibDirectory() = path;
    return 0;
}

const char *KXGetMibPath(void) {
    const std::string &directory = kxsnmp::MibDirectory();
    return directory.empty() ? nullptr : directory.c_str();
}

}  // extern "C"
