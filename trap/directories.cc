// The trap store's process-wide state, and where the trap files and the
// server-list database are: "./snmptrapd.ini" or the console's defaults.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "companion/libparser.h"
#include "kx_trap.h"
#include "trap/trap_internal.h"

extern "C" {

char TrapsDirectory[1024];
char DBDirectory[1024];
int32_t TrapfilesCount;
char **TrapfilesOutput;

const FwdValRow FwdVal[] = {
    {"eventlogstate", 0},
    {"pagerstate", 1},
    {"mailstate", 2},
    {"broadcaststate", 3},
    {"execstate", 4},
    {"stationstate", 5},
    {"popupstate", 6},
    {"log", 7},
    {"alarmack", 8},
};
int32_t FwdCount = sizeof FwdVal / sizeof FwdVal[0];

}  // extern "C"

namespace kx::trap {
namespace {

constexpr char kSettingsFile[] = "./snmptrapd.ini";
constexpr char kDefaultTrapsDirectory[] = "../../../htdocs/Korvanetix/SnmpTrap/uid/1/Traps";
constexpr char kDefaultDBDirectory[] = "../../../htdocs/Korvanetix/PeerScan/uid/1/hwinv.dba";
constexpr std::size_t kLineLimit = sizeof TrapsDirectory - 1;  // a line is read in 1023-byte pieces
constexpr int kLinesRead = 2;

struct Key {
    std::string_view name;
    char *buffer;
};
const Key kKeys[] = {
    {"TrapsDirectory", TrapsDirectory},
    {"DBDirectory", DBDirectory},
};

// Copies value into buffer without the blanks and line ends behind it.
void SetValue(char *buffer, std::string_view value) {
    while (!value.empty() && std::strchr(" \t\r\n", value.back()) != nullptr) value.remove_suffix(1);
    value = value.substr(0, kLineLimit);
    std::memcpy(buffer, value.data(), value.size());
    buffer[value.size()] = '\0';
}

void ApplyLine(std::string_view line) {
    line = line.substr(0, line.find('\0'));  // the line is a C text: it ends at a NUL
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos) return;
    std::string_view value = line.substr(equals + 1);
    while (!value.empty() && (value.front() == ' ' || value.front() == '\t')) value.remove_prefix(1);
    for (const Key &key : kKeys) {
        if (line.size() >= key.name.size() &&
            strnicmp(line.data(), key.name.data(), key.name.size()) == 0) {
            SetValue(key.buffer, value);
            return;
        }
    }
}

}  // namespace

void ApplyDirectorySettings(std::string_view content) {
    // A line is what one read of at most 1023 bytes up to a line feed gives.
    for (int line = 0; line < kLinesRead && !content.empty(); ++line) {
        const std::size_t feed = content.substr(0, kLineLimit).find('\n');
        const std::size_t length = feed == std::string_view::npos ? std::min(kLineLimit, content.size()) : feed + 1;
        ApplyLine(content.substr(0, length));
        content.remove_prefix(length);
    }
}

const char *DirectoryOrDefault(const char *directory) {
    if (directory != nullptr) return directory;
    KXDetermineDirectories();
    return TrapsDirectory;
}

long long LeadingNumber(const char *text) {
    if (text == nullptr) return 0;
    while (*text == ' ' || (*text >= '\t' && *text <= '\r')) ++text;
    const bool negative = *text == '-';
    if (*text == '-' || *text == '+') ++text;
    long long value = 0;
    for (; *text >= '0' && *text <= '9' && value < 1000000000000000LL; ++text) value = value * 10 + (*text - '0');
    return negative ? -value : value;
}

}  // namespace kx::trap

extern "C" int KXDetermineDirectories(void) {
    if (TrapsDirectory[0] != '\0' || DBDirectory[0] != '\0') return 0;
    if (std::FILE *file = std::fopen(kx::trap::kSettingsFile, "rb")) {
        char content[2 * sizeof TrapsDirectory];
        const std::size_t size = std::fread(content, 1, sizeof content, file);
        std::fclose(file);
        kx::trap::ApplyDirectorySettings(std::string_view(content, size));
    }
    if (TrapsDirectory[0] != '\0' || DBDirectory[0] != '\0') return 0;
    std::memcpy(TrapsDirectory, kx::trap::kDefaultTrapsDirectory, sizeof kx::trap::kDefaultTrapsDirectory);
    std::memcpy(DBDirectory, kx::trap::kDefaultDBDirectory, sizeof kx::trap::kDefaultDBDirectory);
    return 0;
}
