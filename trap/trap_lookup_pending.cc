// PENDING: stand-ins for the MIB index (GTDetermineMIBSuffix, GTCreateTrapMibs,
// GTGetTrapPointer), the trap file records (KXSnmpFileRead) and the
// server-list database (KXGetDBValue). They find nothing, so names keep
// their tags, no trap is re-labelled and pruning without a number text of
// its own does nothing. Each body becomes a call of the real operation when
// those layers are linked in.
#include "trap/trap_internal.h"

namespace kx::trap {

const char *MibSuffixFor(const char * /*name*/, int /*length*/) { return "mib"; }

int ReadTrapRecordOid(const char * /*path*/, std::string & /*enterpriseOid*/) { return 0; }

char *LookUpTrapMibFile(const char * /*oid*/, const char * /*specific*/, const char * /*generic*/) {
    return nullptr;
}

char *DatabaseValue(const char * /*dbFile*/, const char * /*table*/, const char * /*condition*/) {
    return nullptr;
}

}  // namespace kx::trap
