// The trap list page's lines (KXCreateUserValue) and single values of the
// server-list database (KXGetDBValue).
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "companion/libDBAsciiAccess.h"
#include "companion/libKXUtils.h"
#include "companion/libKXsnmp_names.h"
#include "companion/libparser.h"
#include "core/number.h"
#include "core/text.h"
#include "kx_input.h"
#include "kx_trap.h"
#include "kx_inventory.h"
#include "trap/trap_internal.h"

namespace kx::trap {
namespace {

using core::HeapText;

constexpr char kSortInfo[] = "/TrapLastSortInfo";
constexpr char kOidToMibFile[] = "OID2Mib.ini";
constexpr char kFieldEnd[] = ",,";
// The state characters shown, in field order: pager, mail, exec, station,
// broadcast, eventlog, alarmack (positions in the name's state field).
constexpr int kShownStates[] = {1, 2, 4, 5, 3, 0, 8};

// One database handle for a whole call.
struct Database {
    DBAsciiAccessDatabase *handle = nullptr;
    explicit Database(const char *file) { DBAsciiAccessOpen(file, DBASCII_ACCESS_READ, &handle); }
    ~Database() { DBAsciiAccessCloseKeepStaticDllInfo(handle); }
    Database(const Database &) = delete;
    Database &operator=(const Database &) = delete;
};

// The pieces of a trap file's name.
struct NamePieces {
    HeapText copy, server, states;
    char *enterprise = nullptr, *generic = nullptr, *specific = nullptr;
    explicit NamePieces(const char *path) {
        char *serverText = nullptr, *stateText = nullptr;
        copy.Reset(GTDetermineActTrapInformation(path, nullptr, &enterprise, &generic, &specific, nullptr,
                                                 nullptr, &serverText, &stateText));
        server.Reset(serverText), states.Reset(stateText);
    }
};

// A trap file's records; types of their own once GTDetermineTypes gave them.
struct Records {
    KXSnmpVar *block = nullptr;
    int count = 0;
    bool ownTypes = false;
    explicit Records(const char *path) : count(KXSnmpFileRead(-1, path, &block, 0)) {
        if (count >= 1) ownTypes = GTDetermineTypes(block, count, nullptr) == 1;
    }
    ~Records() {
        for (int i = 0; ownTypes && i < count; ++i) KXUtilsFreeResources(block[i].Type);
        KXSnmpFileFreeResources(block);
    }
    Records(const Records &) = delete;
    Records &operator=(const Records &) = delete;
    const char *HeaderOid() const { return count > 1 ? block[1].Oid : nullptr; }
    const char *Agent() const { return count > 1 && block[1].Value != nullptr ? block[1].Value : ""; }
};

bool HasText(const char *text) { return text != nullptr && *text != '\0'; }

std::string Encoded(const char *text) {
    HeapText encoded(ServerEncoding(text != nullptr ? text : "", nullptr, 1, 0));
    return std::string(encoded.View());
}

// The description of the trap, else the unknown-trap one filled in unknown.
KXTrapDescription *Describe(const NamePieces &name, const Records &records, KXTrapDescription &unknown,
                            HeapText &mibFile) {
    char *found = nullptr;
    KXTrapDescription *d = nullptr;
    if (records.count > 2)
        d = GTGetTrapPointer(records.block[2].Oid, records.HeaderOid(), name.specific, name.generic, kOidToMibFile,
                             &found, nullptr);
    if (d == nullptr) {
        const std::string enterpriseOid = std::string("1.3.6.1.4.1.") + name.enterprise;
        d = GTGetTrapPointer(enterpriseOid.c_str(), records.HeaderOid(), name.specific, name.generic,
                             kOidToMibFile, &found, nullptr);
    }
    mibFile.Reset(found);
    if (d != nullptr) return d;
    const char *enterprise = records.HeaderOid() != nullptr ? records.HeaderOid() : "";
    GTCreateUnknownTrap(&unknown, records.count - 2, enterprise, name.specific, name.generic);
    return &unknown;
}

int Severity(const KXTrapDescription &d, const char *mibFile) {
    const char *severity = d.SeverityLength > 0 && d.Severity != nullptr ? d.Severity : "";
    if (*severity != '\0' && stricmp(severity, "UNKNOWN") != 0) return KXSeverityTextToNumber(severity);
    if (mibFile == nullptr) return KXSeverityTextToNumber(severity);
    for (int i = 0; i < GTTrapMIBsCount; ++i)
        if (stricmp(mibFile, (std::string(GTTrapMIBs[i]) + ".mib").c_str()) == 0) return 4;
    return 0;
}

std::string Server(Database &db, const NamePieces &name, const Records &records) {
    KXBladeProperties *blade = nullptr;
    std::string server;
    if (KXDetermineBladeProperties(DBDirectory, records.Agent(), &db.handle, &blade) > 0 && blade != nullptr &&
        blade->BladeMark > 0 && HasText(blade->ChassisName))
        server = blade->ChassisName;
    std::free(blade);
    if (!server.empty()) return server;
    if (HasText(name.server.Get()) && std::strcmp(name.server.Get(), "0000") != 0) return name.server.Get();
    return records.Agent();
}

const char *DisplayName(const KXTrapDescription &d) {
    if (d.TypeLength > 0 && HasText(d.Type)) return d.Type;
    if (d.DescriptionLength > 0 && HasText(d.Description)) return d.Description;
    return d.Name != nullptr ? d.Name : "";
}

// The list line of the trap file at path; empty when it cannot be read.
std::string ListLine(Database &db, const char *path) {
    const NamePieces name(path);
    const Records records(path);
    if (!name.copy || records.count < 1) return {};
    KXTrapDescription unknown{};
    HeapText mibFile;
    KXTrapDescription *d = Describe(name, records, unknown, mibFile);
    char text[KX_TRAP_TEXT_SIZE] = "";
    GTCreateTrapString(text, nullptr, d, records.count, records.block, &unknown);
    const std::string_view states = name.states.View();
    const char *dot = std::strrchr(path, '.');
    const std::string id = dot != nullptr && dot[1] != '\0' ? dot + 1 : "0";
    std::string line = std::string("0") + kFieldEnd + Encoded(DisplayName(*d)) + kFieldEnd + kFieldEnd +
                       std::to_string(Severity(*d, mibFile.Get())) + kFieldEnd +
                       Encoded(Server(db, name, records).c_str()) + kFieldEnd;
    for (int position : kShownStates)
        line.append(states.substr(std::min(states.size(), static_cast<std::size_t>(position)), 1)).append(kFieldEnd);
    return line + kFieldEnd + id + kFieldEnd + kFieldEnd + Encoded(text) + kFieldEnd;
}

// The unique identifiers as last shown: "TrapLastSortInfo" up to its first line end.
std::vector<std::string> ShownIdentifiers() {
    char *content = nullptr;
    KXUtilsReadFileToMemory((std::string(TrapsDirectory) + kSortInfo).c_str(), &content);
    std::vector<std::string> ids;
    if (content != nullptr && *content != '\0') {
        for (std::string_view id : core::Split(std::string_view(content, std::strcspn(content, "\r\n")), "~"))
            ids.emplace_back(id);
    }
    KXUtilsFreeResources(content);
    return ids;
}

// The trap files by unique identifier (the first of a kind counts).
std::unordered_map<std::string_view, const char *> FilesById(int count, char **files) {
    std::unordered_map<std::string_view, const char *> byId;
    for (int i = 0; i < count; ++i)
        if (const char *dot = std::strrchr(files[i], '.')) byId.emplace(dot + 1, files[i]);
    return byId;
}

std::string ListLines(std::string_view positions, const char *separator) {
    const std::vector<std::string> ids = ShownIdentifiers();
    if (ids.empty()) return {};
    char *directories[] = {TrapsDirectory};
    char **files = nullptr;
    const int count = GTGetTrapFiles(1, directories, &files, nullptr);
    const auto byId = FilesById(count, files);
    GTCreateTrapMibs("./TrapMibs");
    Database db(DBDirectory);
    std::string lines;
    const std::vector<std::string_view> wanted = core::Split(positions, "|");
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        const int position = core::ReadInt(wanted[i]);
        if (position < 0 || static_cast<std::size_t>(position) >= ids.size()) continue;
        const auto file = byId.find(ids[static_cast<std::size_t>(position)]);
        if (file == byId.end()) continue;
        const std::string line = ListLine(db, file->second);
        if (!line.empty()) lines.append(i > 0 ? separator : "").append(line);
    }
    GTFreeRessources(count, files);
    return lines;
}

}  // namespace
}  // namespace kx::trap

extern "C" {

int KXCreateUserValue(const char *positions, const char *separator, char **result) {
    if (result == nullptr) return -1;
    *result = nullptr;
    if (positions == nullptr || separator == nullptr) return -1;
    if (*positions == '\0' || *positions == ' ') return 0;
    KXDetermineDirectories();
    const std::string lines = kx::trap::ListLines(positions, separator);
    if (!lines.empty()) *result = kx::core::HeapCopy(lines);
    return 0;
}

char *KXGetDBValue(const char *dbFile, const char *table, const char *condition) {
    if (table == nullptr || condition == nullptr) return nullptr;
    if (dbFile == nullptr) KXDetermineDirectories(), dbFile = DBDirectory;
    DBAsciiAccessDatabase *handle = nullptr;
    if (DBAsciiAccessOpen(dbFile, DBASCII_ACCESS_READ, &handle) != 0) return nullptr;
    char **entries = nullptr;
    char *value = nullptr;
    if (DBAsciiAccessTableOpen(handle, table) == 0 &&
        DBAsciiAccessGetAllEntries(handle, table, condition, &entries, 0, 0) >= 1)
        value = kx::core::HeapCopy(entries[0]);
    DBAsciiAccessFree(entries);
    DBAsciiAccessCloseKeepStaticDllInfo(handle);
    return value;
}

}  // extern "C"
