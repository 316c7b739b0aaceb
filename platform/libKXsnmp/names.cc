// MIB names of OIDs. No MIB is loaded in this build, so no OID has a MIB and
// no object is known.
#include <cstdlib>

#include "companion/libKXsnmp_names.h"

extern "C" {

char *KXGetMibname(KXMib **mib, const char * /*oid*/) {
    if (mib != nullptr) *mib = nullptr;
    return nullptr;
}

int KXGetName(KXMib * /*mib*/, const char * /*oid*/, char **object, char **objectOid, int /*flags*/) {
    if (object != nullptr) *object = nullptr;
    if (objectOid != nullptr) *objectOid = nullptr;
    return -1;
}

void KXFreeResources(void *resource) { std::free(resource); }

}  // extern "C"
