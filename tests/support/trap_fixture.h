// The MIB and traps that the trap text test, the comparison with snmptt and
// the trap text benchmark share: nine TRAP-TYPEs with summaries, arguments
// and severities, an enumeration, a MAC address, a host name and a gauge.
#ifndef KX_TESTS_SUPPORT_TRAP_FIXTURE_H
#define KX_TESTS_SUPPORT_TRAP_FIXTURE_H

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "companion/libSnmpFile.h"
#include "support/server_process.h"

namespace kx::fixture {

constexpr const char *kEnterprise = "1.3.6.1.4.1.99999";

// The MIB: tests/support/KXTEST.mib.
inline std::string Mib() {
    std::ifstream file(std::string(KX_SOURCE_DIR) + "/tests/support/KXTEST.mib");
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
}


// One variable: OID below the enterprise, type word, value bytes and the
// value as snmptrapd hands it to snmptt.
struct Variable {
    std::string oid, type, value, received;
};

struct Trap {
    int specific;
    std::vector<Variable> variables;
};

inline Variable Name(const std::string &v) { return {"1.1.0", "OCTETSTRING", v, '"' + v + '"'}; }
inline Variable Status(int v) { return {"1.2.0", "INTEGER", std::to_string(v), std::to_string(v)}; }
inline Variable Temperature(int v) { return {"1.3.0", "INTEGER", std::to_string(v), std::to_string(v)}; }

// The traps, each with the text it gets here and the one snmptt gives.
inline std::vector<Trap> Traps() {
    return {
        {1, {Name("FAN1"), Status(3)}},
        {2, {Name("FAN2"), Status(2)}},
        {2, {Name("FAN3"), Status(7)}},
        {3, {Temperature(71)}},
        {4, {{"1.4.0", "OCTETSTRING", std::string("\x00\x19\x99\x0A\x0B\x0C", 6), "\"00 19 99 0A 0B 0C\""}}},
        {5, {{"1.5.0", "GAUGE", "91", "91"}, Name("sda")}},
        {6, {{"2.10.1.0", "OCTETSTRING", "srv01.example.com", "\"srv01.example.com\""}}},
        {6, {{"2.10.1.0", "OCTETSTRING", "10.1.2.3", "\"10.1.2.3\""}}},
        {7, {Name("FAN1")}},
        {8, {Name("FAN1")}},
        {9, {Name("FAN1"), Temperature(40)}},
    };
}

// The trap file of a trap: the header (uptime, enterprise and agent), then
// its variables.
inline std::string TrapFileText(const Trap &trap) {
    std::vector<std::string> oids{"1.3.6.1.2.1.1.3.0", kEnterprise};
    std::vector<KXSnmpVar> records{{nullptr, const_cast<char *>("TIMETICKS"), const_cast<char *>("100")},
                                   {nullptr, const_cast<char *>("IPADDRESS"), const_cast<char *>("127.0.0.1")}};
    std::vector<size_t> lengths{3, 9};
    for (const Variable &v : trap.variables) oids.push_back(std::string(kEnterprise) + "." + v.oid);
    for (std::size_t i = 0; i < oids.size(); ++i) {
        if (i >= 2) {
            const Variable &v = trap.variables[i - 2];
            records.push_back({nullptr, const_cast<char *>(v.type.c_str()), const_cast<char *>(v.value.data())});
            lengths.push_back(v.value.size());
        }
        records[i].Oid = const_cast<char *>(oids[i].c_str());
    }
    size_t length = 0;
    char *text = KXSnmpFileFormatText(records.data(), lengths.data(), static_cast<int>(records.size()), &length);
    std::string file(text != nullptr ? text : "", length);
    std::free(text);
    return file;
}

// The trap as snmptrapd hands it to snmptt's spool (the time line first).
inline std::string SpoolText(const Trap &trap) {
    std::string text = "1700000000\nlocalhost\nUDP: [127.0.0.1]:40000->[127.0.0.1]:162\n"
                       ".1.3.6.1.2.1.1.3.0 0:0:00:01.00\n.1.3.6.1.6.3.1.1.4.1.0 ." +
                       std::string(kEnterprise) + ".0." + std::to_string(trap.specific) + "\n";
    for (const Variable &v : trap.variables) text += "." + std::string(kEnterprise) + "." + v.oid + " " + v.received + "\n";
    return text + ".1.3.6.1.6.3.1.1.4.3.0 ." + kEnterprise + "\n";
}

// snmptt in daemon mode over a directory of its own: the fixture MIB
// converted with snmpttconvertmib, a spool directory, a log of one line
// "@@ <text>" per trap. The process is started and stopped here.
class Snmptt {
public:
    explicit Snmptt(const std::string &directory) : dir_(directory) {
        std::filesystem::create_directories(dir_ + "/smi");
        std::filesystem::create_directories(dir_ + "/spool");
        // The SMI roots for net-snmp's own tools (Debian ships no IETF MIBs).
        std::filesystem::copy_file(std::string(KX_SOURCE_DIR) + "/tests/support/SNMPv2-SMI.txt", dir_ + "/smi/SNMPv2-SMI.txt");
        Write(dir_ + "/KXTEST.mib", Mib());
        // The converter asks net-snmp's tools, which find the SMI roots through MIBDIRS.
        const std::string convert = "cd '" + dir_ + "' && MIBDIRS='" + dir_ + "/smi:" + dir_ +
                                    "' snmpttconvertmib --in=KXTEST.mib --out=kxtest.conf >convert.log 2>&1";
        converted_ = std::system(convert.c_str()) == 0;
        Write(dir_ + "/snmptt.ini",
              "[General]\nmode = daemon\ndns_enable = 0\nnet_snmp_perl_enable = 0\n"
              "[DaemonMode]\ndaemon_fork = 0\ndaemon_uid =\npid_file = " + dir_ + "/snmptt.pid\n"
              "spool_directory = " + dir_ + "/spool/\nsleep = 1\nuse_trap_time = 0\nkeep_unlogged_traps = 0\n"
              "[Logging]\nstdout_enable = 0\nlog_enable = 1\nlog_format = @@ $Fz\nlog_file = " + dir_ +
              "/snmptt.log\nlog_system_enable = 0\nsyslog_enable = 0\nsyslog_system_enable = 0\n"
              "unknown_trap_log_enable = 0\n[TrapFiles]\nsnmptt_conf_files = <<END\n" + dir_ + "/kxtest.conf\nEND\n");
    }
    bool converted() const { return converted_; }

    // Spool files are taken in name order.
    void Spool(int sequence, const Trap &trap) const {
        char name[32];
        std::snprintf(name, sizeof name, "#snmptt-trap-%08d", sequence);
        Write(dir_ + "/spool/" + name, SpoolText(trap));
    }

    bool Start() { return server_.Start({"snmptt", "--daemon", "--ini=" + dir_ + "/snmptt.ini"}); }

    // The texts logged so far, once there are count of them or the time ran out.
    std::vector<std::string> Texts(std::size_t count, std::chrono::seconds limit) const {
        std::vector<std::string> texts;
        kx::test::WaitFor([&] {
            texts.clear();
            std::ifstream log(dir_ + "/snmptt.log");
            for (std::string line; std::getline(log, line);)
                if (const auto at = line.find("@@ "); at != std::string::npos) texts.push_back(line.substr(at + 3));
            return texts.size() >= count;
        }, limit);
        return texts;
    }

    void Stop() { server_.Stop(); }

private:
    static void Write(const std::string &path, const std::string &text) { std::ofstream(path) << text; }
    std::string dir_;
    bool converted_ = false;
    kx::test::ServerProcess server_;
};

}  // namespace kx::fixture

#endif
