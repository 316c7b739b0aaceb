// SNMP reads of a managed server through net-snmp's library: one get, one
// getnext, or a walk (getnext after getnext), SNMP v1 or v2c with a community.
// The answers come back as the same record blocks as trap files.
#include <net-snmp/net-snmp-config.h>
#include <net-snmp/net-snmp-includes.h>

#include <charconv>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "companion/libSnmpFile.h"
#include "platform/netsnmp_loader.h"
#include "records.h"

namespace snmpfile {
namespace {

// net-snmp, once OpenSession has found it: everything that uses it runs on
// a session that OpenSession opened.
const kx::platform::NetSnmp &Snmp() { return *kx::platform::NetSnmpLibrary(); }

constexpr int kDefaultTimeoutMs = 5000;
enum class Operation { Get, GetNext, Walk };

std::optional<Operation> OperationOf(const char *name) {
    const std::string_view text = name != nullptr ? name : "walk";
    if (text == "get") return Operation::Get;
    if (text == "getnext") return Operation::GetNext;
    if (text == "walk") return Operation::Walk;
    return std::nullopt;
}

// A dotted numeric OID ("1.3.6.1", a leading "." allowed); nothing for any
// other text. Names are not looked up: the MIB library gives the numbers.
std::optional<std::vector<oid>> ParseOid(std::string_view text) {
    if (text.starts_with('.')) text.remove_prefix(1);
    std::vector<oid> numbers;
    while (!text.empty()) {
        unsigned long number = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
        if (error != std::errc() || number > 0xFFFFFFFFUL) return std::nullopt;
        numbers.push_back(number);
        text.remove_prefix(static_cast<std::size_t>(end - text.data()));
        if (text.empty()) break;
        if (text.front() != '.' || text.size() == 1) return std::nullopt;
        text.remove_prefix(1);
    }
    if (numbers.size() < 2 || numbers.size() > MAX_OID_LEN) return std::nullopt;
    return numbers;
}

std::string OidText(const oid *numbers, std::size_t length) {
    std::string text;
    for (std::size_t i = 0; i < length; ++i) {
        if (i > 0) text += '.';
        text += std::to_string(numbers[i]);
    }
    return text;
}

struct Value {
    const char *type;
    std::string text;
};

std::string Unsigned(std::uint64_t number) { return std::to_string(number); }

// The type word and value text of a variable (octet strings byte for byte).
Value ValueOf(const netsnmp_variable_list &var) {
    const auto bytes = [&var] { return std::string(reinterpret_cast<const char *>(var.val.string), var.val_len); };
    switch (var.type) {
    case ASN_INTEGER: return {"INTEGER", std::to_string(*var.val.integer)};
    case ASN_OCTET_STR: return {"OCTETSTRING", bytes()};
    case ASN_OPAQUE: return {"OPAQUE", bytes()};
    case ASN_BIT_STR: return {"BITSTRING", bytes()};
    case ASN_OBJECT_ID: return {"OBJECTID", OidText(var.val.objid, var.val_len / sizeof(oid))};
    case ASN_COUNTER: return {"COUNTER", Unsigned(static_cast<unsigned long>(*var.val.integer) & 0xFFFFFFFFUL)};
    case ASN_GAUGE: return {"GAUGE", Unsigned(static_cast<unsigned long>(*var.val.integer) & 0xFFFFFFFFUL)};
    case ASN_TIMETICKS: return {"TIMETICKS", Unsigned(static_cast<unsigned long>(*var.val.integer) & 0xFFFFFFFFUL)};
    case ASN_COUNTER64:
        return {"COUNTER64", Unsigned((std::uint64_t{var.val.counter64->high} << 32) | var.val.counter64->low)};
    case ASN_NULL: return {"NULL", ""};
    case ASN_IPADDRESS: {
        if (var.val_len != 4) return {"IPADDRESS", bytes()};
        const unsigned char *b = var.val.string;
        return {"IPADDRESS", std::to_string(b[0]) + "." + std::to_string(b[1]) + "." + std::to_string(b[2]) + "." +
                                 std::to_string(b[3])};
    }
    default: return {"OPAQUE", bytes()};
    }
}

// The v2c exceptions: the agent has no value for the OID.
const char *ExceptionName(u_char type) {
    switch (type) {
    case SNMP_NOSUCHOBJECT: return "noSuchObject";
    case SNMP_NOSUCHINSTANCE: return "noSuchInstance";
    case SNMP_ENDOFMIBVIEW: return "endOfMibView";
    default: return nullptr;
    }
}

struct SessionCloser {
    void operator()(void *session) const { Snmp().snmp_sess_close(session); }
};
using Session = std::unique_ptr<void, SessionCloser>;

struct Request {
    std::string peer;
    std::string community;
    long version;
    long timeoutMicroseconds;
    int retries;
};

Session OpenSession(const Request &request) {
    if (kx::platform::NetSnmpLibrary() == nullptr) return Session(nullptr);
    static const bool transportsReady = [] {
        // No configuration file of the machine is read; OIDs are numeric, so
        // no MIB is needed either (snmp_sess_init sets the transports up).
        Snmp().netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_DONT_READ_CONFIGS, 1);
        return true;
    }();
    (void)transportsReady;
    netsnmp_session settings;
    Snmp().snmp_sess_init(&settings);
    settings.peername = const_cast<char *>(request.peer.c_str());
    settings.version = request.version;
    settings.community = reinterpret_cast<u_char *>(const_cast<char *>(request.community.c_str()));
    settings.community_len = request.community.size();
    settings.timeout = request.timeoutMicroseconds;
    settings.retries = request.retries;
    return Session(Snmp().snmp_sess_open(&settings));
}

struct Answer {
    int status;  // 0, or a negative KX_SNMPFILE_ code
    netsnmp_pdu *pdu;
};

Answer Ask(void *session, int command, const std::vector<oid> &name) {
    netsnmp_pdu *pdu = Snmp().snmp_pdu_create(command);
    if (pdu == nullptr) return {KX_SNMPFILE_NO_MEMORY, nullptr};
    Snmp().snmp_add_null_var(pdu, name.data(), name.size());
    netsnmp_pdu *response = nullptr;
    const int status = Snmp().snmp_sess_synch_response(session, pdu, &response);
    if (status == STAT_TIMEOUT) return {KX_SNMPFILE_TIMEOUT, response};
    if (status != STAT_SUCCESS || response == nullptr) return {KX_SNMPFILE_NO_SESSION, response};
    return {0, response};
}

struct PduFree {
    void operator()(netsnmp_pdu *pdu) const { Snmp().snmp_free_pdu(pdu); }
};

bool InSubtree(const netsnmp_variable_list &var, const std::vector<oid> &root) {
    return var.name_length > root.size() && std::equal(root.begin(), root.end(), var.name);
}

// One get or getnext: its record; an exception comes back as an "ERROR"
// record whose value begins with "errorStatus".
int ReadOne(void *session, Operation operation, const std::vector<oid> &name, std::vector<Record> &out) {
    const Answer answer = Ask(session, operation == Operation::Get ? SNMP_MSG_GET : SNMP_MSG_GETNEXT, name);
    const std::unique_ptr<netsnmp_pdu, PduFree> owner(answer.pdu);
    if (answer.status != 0) return answer.status;
    if (answer.pdu->errstat != SNMP_ERR_NOERROR || answer.pdu->variables == nullptr) return KX_SNMPFILE_SNMP_ERROR;
    const netsnmp_variable_list &var = *answer.pdu->variables;
    const std::string oidText = OidText(var.name, var.name_length);
    if (const char *exception = ExceptionName(var.type))
        out.push_back({oidText, "ERROR", std::string("errorStatus=") + exception});
    else {
        Value value = ValueOf(var);
        out.push_back({oidText, value.type, std::move(value.text)});
    }
    return 0;
}

// Getnext after getnext from root until an OID outside it (when subtreeOnly),
// the end of the agent's MIB or limit records. v1 ends with noSuchName.
int Walk(void *session, const std::vector<oid> &root, bool subtreeOnly, int limit, std::vector<Record> &out) {
    std::vector<oid> next = root;
    while (limit <= 0 || out.size() < static_cast<std::size_t>(limit)) {
        const Answer answer = Ask(session, SNMP_MSG_GETNEXT, next);
        const std::unique_ptr<netsnmp_pdu, PduFree> owner(answer.pdu);
        if (answer.status != 0) return answer.status;
        if (answer.pdu->errstat == SNMP_ERR_NOSUCHNAME) return 0;
        if (answer.pdu->errstat != SNMP_ERR_NOERROR) return KX_SNMPFILE_SNMP_ERROR;
        const netsnmp_variable_list *var = answer.pdu->variables;
        if (var == nullptr || ExceptionName(var->type) != nullptr) return 0;
        if (subtreeOnly && !InSubtree(*var, root)) return 0;
        // An agent that does not move forward would keep the walk going.
        if (Snmp().snmp_oid_compare(var->name, var->name_length, next.data(), next.size()) <= 0)
            return KX_SNMPFILE_SNMP_ERROR;
        Value value = ValueOf(*var);
        out.push_back({OidText(var->name, var->name_length), value.type, std::move(value.text)});
        next.assign(var->name, var->name + var->name_length);
    }
    return 0;
}

std::string PeerName(std::string_view address, int port) {
    std::string peer(address);
    if (port > 0 && peer.find(':') == std::string::npos) peer += ":" + std::to_string(port);
    return peer;
}

struct Arguments {
    const char *address, *oid, *operation, *community;
    int port, maxRecords, version, timeoutMs, retries, flags;
};

int Read(const Arguments &a, KXSnmpVar **records) {
    const std::optional<Operation> operation = OperationOf(a.operation);
    const std::optional<std::vector<oid>> name = ParseOid(a.oid);
    if (!operation || !name || *a.address == '\0' || (a.version != 0 && a.version != 1))
        return KX_SNMPFILE_BAD_ARGUMENT;
    const int totalMs = a.timeoutMs > 0 ? a.timeoutMs : kDefaultTimeoutMs;
    const int retries = a.retries > 0 ? a.retries : 0;
    // The time-out is the whole wait for one answer, shared by the tries.
    const Request request{PeerName(a.address, a.port), a.community != nullptr ? a.community : "public",
                          a.version == 0 ? SNMP_VERSION_1 : SNMP_VERSION_2c,
                          static_cast<long>(totalMs) * 1000 / (retries + 1), retries};
    const Session session = OpenSession(request);
    if (!session) return KX_SNMPFILE_NO_SESSION;
    std::vector<Record> got;
    const int status = *operation == Operation::Walk
                           ? Walk(session.get(), *name, (a.flags & KX_SNMPFILE_WALK_SUBTREE) != 0, a.maxRecords, got)
                           : ReadOne(session.get(), *operation, *name, got);
    if (status != 0) return status;
    if (got.empty()) return 0;
    *records = BuildBlock(got);
    return *records != nullptr ? static_cast<int>(got.size()) : KX_SNMPFILE_NO_MEMORY;
}

}  // namespace
}  // namespace snmpfile

extern "C" int KXSnmpFileGetValue(KXSnmpVar **records, const char *address, const char *oid, const char *operation,
                                  const char *community, int port, int maxRecords, int version, int timeoutMs,
                                  int retries, int flags) {
    if (records == nullptr) return KX_SNMPFILE_BAD_ARGUMENT;
    *records = nullptr;
    if (address == nullptr || oid == nullptr) return KX_SNMPFILE_BAD_ARGUMENT;
    try {
        return snmpfile::Read({address, oid, operation, community, port, maxRecords, version, timeoutMs, retries, flags},
                              records);
    } catch (const std::bad_alloc &) {
        return KX_SNMPFILE_NO_MEMORY;
    }
}
