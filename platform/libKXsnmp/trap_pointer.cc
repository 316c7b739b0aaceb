// Trap descriptions by MIB file, enterprise OID and trap numbers. Each MIB
// file is parsed once per process; its descriptions live until the process
// ends (texts given with KXSetTrapMibText until they are replaced).
#include <dirent.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <new>

#include "companion/libKXsnmp_traps.h"
#include "mib_internal.h"
#include "trap_mib.h"

namespace kxsnmp {
namespace {

// The generic trap number that says "the specific number identifies it".
constexpr std::int64_t kEnterpriseSpecific = 6;

struct TrapMibs {
    std::map<std::string, std::unique_ptr<TrapMib>> texts;  // by name given to KXSetTrapMibText
    std::map<std::string, std::unique_ptr<TrapMib>> files;  // by path as asked for
};

TrapMibs &Mibs() {
    static TrapMibs mibs;
    return mibs;
}

// The whole file; empty when it cannot be read.
std::string ReadWholeFile(const std::string &path) {
    std::string contents;
    std::FILE *file = std::fopen(path.c_str(), "rb");
    if (file == nullptr) return contents;
    char buffer[65536];
    std::size_t got = 0;
    while ((got = std::fread(buffer, 1, sizeof buffer, file)) > 0) contents.append(buffer, got);
    std::fclose(file);
    return contents;
}

// The file mibFile of the MIB directory. Its extension may be spelt in any
// case on disk: the trap MIB search asks for "Q47.mib" and finds Q47.MIB.
std::string MibPath(const std::string &directory, const std::string &mibFile) {
    const std::string exact = directory + "/" + mibFile;
    const std::size_t dot = mibFile.rfind('.');
    if (access(exact.c_str(), F_OK) == 0 || dot == std::string::npos) return exact;
    DIR *dir = opendir(directory.c_str());
    if (dir == nullptr) return exact;
    std::string found;
    while (const dirent *entry = readdir(dir)) {
        const std::string_view name = entry->d_name;
        if (name.size() == mibFile.size() && name.substr(0, dot) == std::string_view(mibFile).substr(0, dot) &&
            EqualNoCase(name.substr(dot), std::string_view(mibFile).substr(dot))) {
            found = name;
            break;
        }
    }
    closedir(dir);
    return found.empty() ? exact : directory + "/" + found;
}

const TrapMib &MibNamed(const std::string &mibFile) {
    TrapMibs &mibs = Mibs();
    if (const auto text = mibs.texts.find(mibFile); text != mibs.texts.end()) return *text->second;
    const std::string directory = MibDirectory();
    auto &parsed = mibs.files[directory + "/" + mibFile];
    if (!parsed) parsed = ParseTrapMib(ReadWholeFile(MibPath(directory, mibFile)));
    return *parsed;
}

// A decimal text as a number; nothing for anything else.
std::optional<std::int64_t> DecimalNumber(std::string_view text) {
    if (text.empty() || text.size() > 10) return std::nullopt;
    std::int64_t value = 0;
    for (const char c : text) {
        if (c < '0' || c > '9') return std::nullopt;
        value = value * 10 + (c - '0');
    }
    return value;
}

// The TRAP-TYPE number that generic and specific ask for.
std::optional<std::int64_t> TrapNumber(const char *specific, const char *generic) {
    const std::optional<std::int64_t> genericNumber = DecimalNumber(generic);
    if (!genericNumber || *genericNumber > kEnterpriseSpecific) return std::nullopt;
    if (*genericNumber < kEnterpriseSpecific) return genericNumber;
    return DecimalNumber(specific);
}

// The OID in the form the parsed enterprises have ("1.3.6.1.4.1.99999").
std::optional<std::string> CanonicalOid(const char *oid) {
    const auto numbers = ParseDottedOid(oid);
    if (!numbers) return std::nullopt;
    std::string text;
    for (const std::uint32_t number : *numbers) {
        if (!text.empty()) text += '.';
        text += std::to_string(number);
    }
    return text;
}

KXTrapDescription *FindTrap(const char *mibFile, const char *oid, const char *specific, const char *generic) {
    const std::optional<std::int64_t> number = TrapNumber(specific, generic);
    const std::optional<std::string> enterprise = CanonicalOid(oid);
    if (!number || !enterprise) return nullptr;
    TrapEntry *trap = MibNamed(mibFile).Find(*enterprise, *number);
    return trap != nullptr ? &trap->record : nullptr;
}

}  // namespace
}  // namespace kxsnmp

extern "C" {

KXTrapDescription *GetTrapPointer(const char *mibFile, const char *oid, const char *specific,
                                  const char *generic) {
    if (mibFile == nullptr || oid == nullptr || specific == nullptr || generic == nullptr) return nullptr;
    try {
        return kxsnmp::FindTrap(mibFile, oid, specific, generic);
    } catch (const std::bad_alloc &) {
        return nullptr;
    }
}

int KXSetTrapMibText(const char *mibFile, const char *text, size_t length) {
    if (mibFile == nullptr || (text == nullptr && length > 0)) return -1;
    try {
        auto mib = kxsnmp::ParseTrapMib(text != nullptr ? std::string_view(text, length) : std::string_view{});
        const int count = static_cast<int>(std::min<std::size_t>(mib->traps.size(), INT_MAX));
        kxsnmp::Mibs().texts[mibFile] = std::move(mib);
        return count;
    } catch (const std::bad_alloc &) {
        return -1;
    }
}

}  // extern "C"
