#include "support/trap_console.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

namespace kx::test {
namespace {

std::string ReadAll(const std::string &path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// BER: a tag, its length and the contents.
std::string Tlv(unsigned char tag, const std::string &contents) {
    std::string length;
    if (contents.size() < 128) {
        length.push_back(static_cast<char>(contents.size()));
    } else {
        for (size_t n = contents.size(); n > 0; n >>= 8) length.insert(length.begin(), static_cast<char>(n & 0xff));
        length.insert(length.begin(), static_cast<char>(0x80 | length.size()));
    }
    return std::string(1, static_cast<char>(tag)) + length + contents;
}

std::string Integer(unsigned tag, unsigned long value) {
    std::string bytes;
    do {
        bytes.insert(bytes.begin(), static_cast<char>(value & 0xff));
        value >>= 8;
    } while (value > 0);
    if (static_cast<unsigned char>(bytes[0]) & 0x80) bytes.insert(bytes.begin(), '\0');
    return Tlv(static_cast<unsigned char>(tag), bytes);
}

std::string Oid(std::string_view dotted) {
    std::vector<unsigned long> arcs;
    for (size_t at = dotted.starts_with('.') ? 1 : 0; at <= dotted.size();) {
        const size_t dot = std::min(dotted.find('.', at), dotted.size());
        arcs.push_back(std::stoul(std::string(dotted.substr(at, dot - at))));
        at = dot + 1;
    }
    std::string bytes(1, static_cast<char>(arcs[0] * 40 + arcs[1]));
    for (size_t i = 2; i < arcs.size(); ++i) {
        std::string arc(1, static_cast<char>(arcs[i] & 0x7f));
        for (unsigned long rest = arcs[i] >> 7; rest > 0; rest >>= 7)
            arc.insert(arc.begin(), static_cast<char>(0x80 | (rest & 0x7f)));
        bytes += arc;
    }
    return Tlv(0x06, bytes);
}

}  // namespace

TrapReceiver::TrapReceiver(const std::string &site) : site_(site), port_(FreePort(SOCK_DGRAM)) {
    // snmptrapd names its version in its log once it listens.
    if (port_ != 0)
        server_.Start({std::string(KX_SOURCE_DIR) + "/tools/trap-receiver.sh", site_, std::to_string(port_)}, [this] {
            return ReadAll(site_ + "/run/snmptrapd.log").find("NET-SNMP version") != std::string::npos;
        });
}

int TrapReceiver::Accepted() const {
    std::istringstream log(ReadAll(site_ + "/run/snmptrapd.log"));
    int count = 0;
    for (std::string line; std::getline(log, line);) count += line.starts_with("received ");
    return count;
}

std::vector<std::string> StoredTraps(const std::string &site) {
    std::vector<std::string> names;
    static const std::regex trapName("[tT][0-9]+.*_[0-9]+_[0-9]+.*[.][0-9]+");
    for (const auto &entry : std::filesystem::directory_iterator(site + "/traps"))
        if (std::regex_match(entry.path().filename().string(), trapName)) names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

bool TrapReceiver::WaitForTraps(size_t count, std::chrono::seconds limit) const {
    return WaitFor([&] { return Traps().size() >= count; }, limit);
}

bool SendTrap(int port, std::string_view trapOid, std::string_view variableOid, std::string_view value) {
    const std::string bindings = Tlv(0x30, Tlv(0x30, Oid("1.3.6.1.2.1.1.3.0") + Integer(0x43, 100)) +
                                               Tlv(0x30, Oid("1.3.6.1.6.3.1.1.4.1.0") + Oid(trapOid)) +
                                               Tlv(0x30, Oid(variableOid) + Tlv(0x04, std::string(value))));
    const std::string pdu = Tlv(0xa7, Integer(0x02, 1) + Integer(0x02, 0) + Integer(0x02, 0) + bindings);
    const std::string message = Tlv(0x30, Integer(0x02, 1) + Tlv(0x04, "public") + pdu);
    const int fd = socket(AF_INET, SOCK_DGRAM, 0);
    sockaddr_in address = Loopback(port);
    const ssize_t sent = sendto(fd, message.data(), message.size(), 0, reinterpret_cast<sockaddr *>(&address),
                                sizeof address);
    close(fd);
    return sent == static_cast<ssize_t>(message.size());
}

std::string BrowserDom(const std::string &url, int budgetMs) {
    std::string profile = (std::filesystem::temp_directory_path() / "kx-browser-XXXXXX").string();
    if (mkdtemp(profile.data()) == nullptr) return {};
    const std::string command = "chromium --headless --no-sandbox --disable-gpu --disable-background-networking "
                                "--user-data-dir=" + profile + " --virtual-time-budget=" +
                                std::to_string(budgetMs) + " --dump-dom '" + url + "' 2>/dev/null";
    FILE *pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) return {};
    std::string dom;
    char buffer[4096];
    for (size_t n; (n = fread(buffer, 1, sizeof buffer, pipe)) > 0;) dom.append(buffer, n);
    pclose(pipe);
    std::filesystem::remove_all(profile);
    return dom;
}

}  // namespace kx::test
