// Name/value files such as "OID2Mib.ini" (a dotted OID, "=", a MIB file
// name), read with inih: their names and values hold no blanks, semicolons
// or colons that inih's trimming and comment rules would change.
#include <ini.h>

#include <cstring>
#include <string>

#include "companion/libKXUtils.h"

namespace {

struct Lookup {
    const char *name;
    std::string value;
    bool found = false;
};

// The first pair of the name, in any section, wins.
int TakePair(void *user, const char * /*section*/, const char *name, const char *value) {
    auto *lookup = static_cast<Lookup *>(user);
    if (lookup->found || std::strcmp(name, lookup->name) != 0) return 1;
    lookup->value = value;
    lookup->found = true;
    return 1;
}

}  // namespace

extern "C" char *KXUtilsGetValueFromName(const char *path, const char *name, int /*reserved*/) {
    if (path == nullptr || name == nullptr) return nullptr;
    Lookup lookup{name, {}};
    // A line inih cannot take (no "=", or longer than its line limit) is an
    // error it reports and reads past; only an unreadable file ends the read.
    if (ini_parse(path, TakePair, &lookup) < 0 || !lookup.found) return nullptr;
    return strdup(lookup.value.c_str());
}
