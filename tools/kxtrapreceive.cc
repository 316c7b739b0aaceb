// kxtrapreceive: the trap receiver's hand. snmptrapd starts it once per
// received trap ("traphandle default kxtrapreceive TRAPS DATABASE") with the
// trap on standard input, as snmptrapd hands traps on:
//
//   host name
//   UDP: [10.0.0.1]:1024->[127.0.0.1]:10162
//   .1.3.6.1.2.1.1.3.0 1234                         sysUpTime.0
//   .1.3.6.1.6.3.1.1.4.1.0 .1.3.6.1.4.1.99999.0.7   snmpTrapOID.0
//   .1.3.6.1.4.1.99999.6 "46 61 6E 20 31 "          the trap's variables
//
// snmptrapd runs with -On -Ox -Ot, so OIDs are numeric, octet strings come as
// hexadecimal bytes and time ticks as plain numbers. The program writes the
// trap file of the store (docs/formats.md, "Trap files" and "Trap file
// names") and prints its path. Without arguments the directories come from
// "./snmptrapd.ini". Exit status 0 when the trap was stored, 1 otherwise.
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "companion/libDBAsciiAccess.h"
#include "companion/libSnmpFile.h"
#include "kx_trap.h"

namespace {

// The notification objects that snmptrapd adds or that carry the trap's
// identity rather than its variables.
constexpr std::string_view kUpTime = "1.3.6.1.2.1.1.3.0";
constexpr std::string_view kTrapOid = "1.3.6.1.6.3.1.1.4.1.0";
constexpr std::string_view kTrapAddress = "1.3.6.1.6.3.18.1.3.0";
constexpr std::string_view kTrapCommunity = "1.3.6.1.6.3.18.1.4.0";
constexpr std::string_view kTrapEnterprise = "1.3.6.1.6.3.1.1.4.3.0";
constexpr std::string_view kStandardTraps = "1.3.6.1.6.3.1.1.5";  // snmpTraps
constexpr std::string_view kEnterprises = "1.3.6.1.4.1.";

struct Variable {
    std::string oid, type, value;
};

struct Trap {
    std::string transportAddress;  // the sender as seen on the wire
    std::string upTime, trapOid, agentAddress, enterprise;
    std::vector<Variable> variables;
};

struct TrapNumbers {
    std::string enterprise;  // the enterprise OID
    int generic = 6;
    std::string specific;
};

std::string_view Trimmed(std::string_view text) {
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.front()))) text.remove_prefix(1);
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back()))) text.remove_suffix(1);
    return text;
}

std::string WithoutDot(std::string_view oid) { return std::string(oid.starts_with('.') ? oid.substr(1) : oid); }

bool IsIpv4(std::string_view text) {
    int parts = 0;
    for (std::string_view rest = text;; ++parts) {
        const size_t dot = rest.find('.');
        const std::string_view part = rest.substr(0, dot);
        unsigned value = 256;
        const auto [end, error] = std::from_chars(part.data(), part.data() + part.size(), value);
        if (part.empty() || part.size() > 3 || error != std::errc() || end != part.data() + part.size() || value > 255)
            return false;
        if (dot == std::string_view::npos) return parts == 3;
        rest.remove_prefix(dot + 1);
    }
}

// "46 61 6E " (as -Ox prints octet strings) to the bytes; nullopt when the
// text is not such a list.
std::optional<std::string> HexBytes(std::string_view text) {
    std::string bytes;
    for (std::string_view rest = Trimmed(text); !rest.empty(); rest = Trimmed(rest.substr(2))) {
        unsigned value = 0;
        if (rest.size() < 2 || std::from_chars(rest.data(), rest.data() + 2, value, 16).ptr != rest.data() + 2)
            return std::nullopt;
        bytes.push_back(static_cast<char>(value));
    }
    return bytes;
}

// snmptrapd hands values on without their type; the printed form tells
// enough of it for the trap text: quoted bytes, an OID, an address, a number.
Variable Typed(std::string oid, std::string_view printed) {
    if (printed.size() >= 2 && printed.front() == '"' && printed.back() == '"') {
        const std::string_view inner = printed.substr(1, printed.size() - 2);
        if (auto bytes = HexBytes(inner)) return {std::move(oid), "OCTETSTRING", std::move(*bytes)};
        return {std::move(oid), "OCTETSTRING", std::string(inner)};
    }
    if (printed.starts_with('.')) return {std::move(oid), "OBJECTID", WithoutDot(printed)};
    if (IsIpv4(printed)) return {std::move(oid), "IPADDRESS", std::string(printed)};
    long long number = 0;
    const auto [end, error] = std::from_chars(printed.data(), printed.data() + printed.size(), number);
    if (!printed.empty() && error == std::errc() && end == printed.data() + printed.size())
        return {std::move(oid), "INTEGER", std::string(printed)};
    return {std::move(oid), "OCTETSTRING", std::string(printed)};
}

// "UDP: [10.0.0.1]:1024->[...]": the first bracketed address.
std::string TransportAddress(std::string_view line) {
    const size_t open = line.find('['), close = line.find(']');
    if (open == std::string_view::npos || close == std::string_view::npos || close < open) return {};
    return std::string(line.substr(open + 1, close - open - 1));
}

void Take(Trap &trap, Variable variable) {
    if (variable.oid == kUpTime) trap.upTime = variable.value;
    else if (variable.oid == kTrapOid) trap.trapOid = variable.value;
    else if (variable.oid == kTrapAddress) trap.agentAddress = variable.value;
    else if (variable.oid == kTrapEnterprise) trap.enterprise = variable.value;
    else if (variable.oid != kTrapCommunity) trap.variables.push_back(std::move(variable));
}

Trap ReadTrap(std::istream &in) {
    Trap trap;
    std::string line;
    std::getline(in, line);  // the sender's host name: the address serves better
    std::getline(in, line);
    trap.transportAddress = TransportAddress(line);
    std::string pending;  // a value may run on over several lines
    auto flush = [&] {
        const std::string_view text = Trimmed(pending);
        if (text.empty()) return;
        const size_t blank = text.find(' ');
        const std::string_view oid = text.substr(0, blank);
        const std::string_view value = blank == std::string_view::npos ? "" : Trimmed(text.substr(blank));
        Take(trap, Typed(WithoutDot(oid), value));
        pending.clear();
    };
    while (std::getline(in, line)) {
        if (line.starts_with('.')) flush();
        pending += pending.empty() ? "" : " ";
        pending += line;
    }
    flush();
    return trap;
}

// The v1 view of a trap as RFC 3584 (3.2) maps notifications to it.
TrapNumbers NumbersOf(const Trap &trap) {
    const std::string_view oid = trap.trapOid;
    const size_t last = oid.rfind('.');
    if (last != std::string_view::npos && oid.substr(0, last) == kStandardTraps) {
        int number = 0;
        std::from_chars(oid.data() + last + 1, oid.data() + oid.size(), number);
        return {trap.enterprise.empty() ? std::string(kStandardTraps) : trap.enterprise, number - 1, "0"};
    }
    if (last == std::string_view::npos) return {trap.enterprise, 6, "0"};  // no OID of a notification
    std::string_view enterprise = oid.substr(0, last);
    if (enterprise.ends_with(".0")) enterprise.remove_suffix(2);
    return {std::string(enterprise), 6, std::string(oid.substr(last + 1))};
}

// The enterprise number of the file name: the arc below 1.3.6.1.4.1, "0"
// for a trap of another tree (the standard traps among them).
std::string EnterpriseNumber(std::string_view enterpriseOid) {
    if (!enterpriseOid.starts_with(kEnterprises)) return "0";
    std::string_view arc = enterpriseOid.substr(kEnterprises.size());
    arc = arc.substr(0, arc.find('.'));
    const bool digits = !arc.empty() && std::all_of(arc.begin(), arc.end(), [](char c) { return c >= '0' && c <= '9'; });
    return digits ? std::string(arc) : "0";
}

// The server list's name for the agent, made safe for a file name; "0000"
// when the list does not know the address.
std::string ServerName(const char *database, const std::string &address) {
    DBAsciiAccessDatabase *db = nullptr;
    std::string name = "0000";
    if (database != nullptr && DBAsciiAccessOpen(database, DBASCII_ACCESS_READ, &db) == 0) {
        char **entries = nullptr;
        const std::string condition = "ServerName?NetAddress=" + address;
        if (DBAsciiAccessGetAllEntries(db, "SERVER_LIST", condition.c_str(), &entries, 1, 0) > 0 && entries[0][0] != '\0')
            name = entries[0];
        DBAsciiAccessFree(entries);
        DBAsciiAccessCloseKeepStaticDllInfo(db);
    }
    // "/" and a backslash separate directories for the trap store's readers,
    // a "." would end the name early: a blade chassis, backslash, blade is stored as
    // "chassis-blade".
    std::replace_if(name.begin(), name.end(), [](char c) { return c == '/' || c == '\\' || c == '.' || c < ' '; }, '-');
    return name;
}

// The newest identifier among the trap files already stored.
unsigned long long NewestStored(const std::string &directory) {
    char *directories[] = {const_cast<char *>(directory.c_str())};
    char **list = nullptr;
    const int count = GTGetTrapFiles(1, directories, &list, nullptr);
    unsigned long long newest = 0;
    for (int i = 0; i < count; ++i) {
        const char *dot = GTGetUniqueIdentifier(list[i]);
        if (dot != nullptr) newest = std::max(newest, std::strtoull(dot + 1, nullptr, 10));
    }
    GTFreeRessources(count, list);
    return newest;
}

// The identifiers handed out so far live in ".trapid" beside the traps,
// under an exclusive lock held until the trap file is in place: each trap
// gets its arrival second, or the second after the last one handed out when
// that second is taken already (docs/formats.md).
class IdentifierClaim {
public:
    explicit IdentifierClaim(const std::string &directory) : path_(directory + "/.trapid") {
        fd_ = open(path_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
        if (fd_ >= 0 && flock(fd_, LOCK_EX) != 0) Close();
        if (fd_ < 0) return;
        char text[32] = {};
        stored_ = pread(fd_, text, sizeof text - 1, 0);
        const unsigned long long last = stored_ > 0 ? std::strtoull(text, nullptr, 10) : NewestStored(directory);
        id_ = std::max<unsigned long long>(static_cast<unsigned long long>(std::time(nullptr)), last + 1);
    }
    ~IdentifierClaim() { Close(); }
    IdentifierClaim(const IdentifierClaim &) = delete;
    IdentifierClaim &operator=(const IdentifierClaim &) = delete;

    bool held() const { return fd_ >= 0; }
    unsigned long long id() const { return id_; }
    // Records the identifier as handed out; the lock goes with the object.
    // Identifiers never get shorter, so the text is written over the old one
    // in place: truncating first costs a journal commit of its own on ext4
    // (auto_da_alloc), as much as the trap file's fsync.
    bool Commit() {
        const std::string text = std::to_string(id_) + "\n";
        const auto length = static_cast<ssize_t>(text.size());
        return pwrite(fd_, text.data(), text.size(), 0) == length && (stored_ <= length || ftruncate(fd_, length) == 0);
    }

private:
    void Close() {
        if (fd_ >= 0) close(fd_);  // closing drops the lock
        fd_ = -1;
    }
    std::string path_;
    int fd_ = -1;
    ssize_t stored_ = 0;  // the length of the text the file held
    unsigned long long id_ = 0;
};

// The MIB tag of the file name ("l<length>n<MIB name>") when the trap MIB
// index or "OID2Mib.ini" of the working directory knows the trap's MIB.
std::string MibTag(const TrapNumbers &numbers) {
    GTCreateTrapMibs(nullptr);
    char *mibFile = nullptr;
    const std::string generic = std::to_string(numbers.generic);
    const std::string enterprise = WithoutDot(numbers.enterprise);
    const KXTrapDescription *description = GTGetTrapPointer(enterprise.c_str(), nullptr, numbers.specific.c_str(),
                                                            generic.c_str(), "OID2Mib.ini", &mibFile, nullptr);
    std::string name = description != nullptr && mibFile != nullptr ? mibFile : "";
    std::free(mibFile);
    name = name.substr(0, name.rfind('.'));
    if (name.empty() || name.find('/') != std::string::npos) return {};  // no name a file name can carry
    return "l" + std::to_string(name.size()) + "n" + name;
}

std::string Underscored(std::string text) {
    std::replace(text.begin(), text.end(), '.', '_');
    return text;
}

int Store(const Trap &trap, const std::string &directory, const char *database) {
    const TrapNumbers numbers = NumbersOf(trap);
    std::string address = !trap.agentAddress.empty() && trap.agentAddress != "0.0.0.0" ? trap.agentAddress
                                                                                          : trap.transportAddress;
    if (!IsIpv4(address)) address = "0.0.0.0";
    std::vector<Variable> records = {{"", "TIMETICKS", trap.upTime}, {WithoutDot(numbers.enterprise), "IPADDRESS", address}};
    records.insert(records.end(), trap.variables.begin(), trap.variables.end());
    std::vector<KXSnmpVar> vars;
    std::vector<size_t> lengths;
    for (Variable &record : records) {
        vars.push_back({record.oid.data(), record.type.data(), record.value.data()});
        lengths.push_back(record.value.size());
    }
    IdentifierClaim claim(directory);
    if (!claim.held()) return 1;
    const std::string path = directory + "/T" + EnterpriseNumber(WithoutDot(numbers.enterprise)) + MibTag(numbers) + "_" +
                             std::to_string(numbers.generic) + "_" + numbers.specific + "_" + Underscored(address) +
                             "_" + ServerName(database, address) + "_000000000." + std::to_string(claim.id());
    if (KXSnmpFileWrite(path.c_str(), vars.data(), lengths.data(), static_cast<int>(vars.size())) != 0 ||
        !claim.Commit())
        return 1;
    std::cout << path << '\n';
    return 0;
}

}  // namespace

int main(int argc, char **argv) {
    if (argc == 1) KXDetermineDirectories();
    const std::string directory = argc > 1 ? argv[1] : TrapsDirectory;
    const char *database = argc > 2 ? argv[2] : (argc == 1 ? DBDirectory : nullptr);
    const Trap trap = ReadTrap(std::cin);
    if (trap.trapOid.empty()) {
        std::cerr << "kxtrapreceive: no snmpTrapOID.0 in the trap\n";
        return 1;
    }
    const int status = Store(trap, directory, database);
    if (status != 0) std::cerr << "kxtrapreceive: the trap could not be stored in " << directory << '\n';
    return status;
}
