// Replaced at merge: stands in for the blade discovery until it is linked.
// Every address is a single server, so a trap names the server of its file.
#include "trap/blade_pending.h"

extern "C" int KXDetermineBladeProperties(const char * /*dbFile*/, const char *netAddress,
                                          DBAsciiAccessDatabase ** /*dbHandle*/, KXBladeProperties **properties) {
    if (properties != nullptr) *properties = nullptr;
    return netAddress == nullptr ? -11 : 0;
}
