// The record block that every reader of this library hands out, shared by
// the trap file reader and the SNMP reads.
#ifndef KX_PLATFORM_SNMPFILE_RECORDS_H
#define KX_PLATFORM_SNMPFILE_RECORDS_H

#include <string>
#include <vector>

#include "companion/libSnmpFile.h"

namespace snmpfile {

struct Record {
    std::string oid, type, value;
};

// One malloc block holding the records and their texts, released with
// KXSnmpFileFreeResources; nullptr when memory runs out. records is not empty.
KXSnmpVar *BuildBlock(const std::vector<Record> &records);

}  // namespace snmpfile

#endif
