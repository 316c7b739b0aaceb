// Putting the name of a trap's MIB into its file name, for traps whose MIB
// was not known when they arrived.
#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "companion/libKXUtils.h"
#include "companion/libKXmbcs.h"
#include "core/text.h"
#include "companion/libSnmpFile.h"
#include "kx_trap.h"
#include "trap/trap_internal.h"

namespace kx::trap {
namespace {

constexpr char kUnknownMib[] = "_Unknown.mib";
constexpr char kRefreshMarker[] = "StandardRefresh";
constexpr char kRefreshText[] = "Standard";

// Length of the mark and enterprise digits, and where the rest of the name starts behind an old tag.
void MeasureTag(std::string_view base, std::size_t &enterpriseEnd, std::size_t &restStart) {
    std::size_t at = base.empty() ? 0 : 1;
    while (at < base.size() && base[at] >= '0' && base[at] <= '9') ++at;
    enterpriseEnd = restStart = at;
    if (at >= base.size() || base[at] != 'l') return;
    std::size_t length = 0, digit = at + 1;
    for (; digit < base.size() && base[digit] >= '0' && base[digit] <= '9' && length <= base.size(); ++digit)
        length = length * 10 + static_cast<std::size_t>(base[digit] - '0');
    restStart = std::min(base.size(), digit + 1 + length);  // "n" and the old MIB name
}

// A trap to re-label: no MIB tag, or the tag of the unknown MIB.
bool WantsMib(const char *path) {
    char *mibFile = nullptr;
    const core::HeapText pieces(GTDetermineActTrapInformation(path, &mibFile, nullptr, nullptr, nullptr, nullptr,
                                                              nullptr, nullptr, nullptr));
    const core::HeapText owned(mibFile);
    return pieces && (mibFile == nullptr || _mbsicmp(mibFile, kUnknownMib) == 0);
}

// The MIB file that describes the trap of path now, or nullptr.
char *MibFileFor(const char *path) {
    char *generic = nullptr, *specific = nullptr;
    const core::HeapText pieces(GTDetermineActTrapInformation(path, nullptr, nullptr, &generic, &specific, nullptr,
                                                              nullptr, nullptr, nullptr));
    KXSnmpVar *records = nullptr;
    const int count = pieces ? KXSnmpFileRead(-1, path, &records, 0) : 0;
    std::string oid = count >= 2 && records[1].Oid != nullptr ? records[1].Oid : "";
    KXSnmpFileFreeResources(records);
    if (count < 2) return nullptr;
    // The trap's enterprise OID without its last two components.
    for (int cut = 0; cut < 2; ++cut) oid = oid.substr(0, std::min(oid.size(), oid.rfind('.')));
    GTCreateTrapMibs("./TrapMibs");
    char *mibFile = nullptr;
    if (GTGetTrapPointer(oid.c_str(), nullptr, specific, generic, "OID2Mib.ini", &mibFile, nullptr) != nullptr)
        return mibFile;
    std::free(mibFile);
    return nullptr;
}

void MarkRefresh(const std::string &directory) {
    const std::string marker = directory + "/" + kRefreshMarker;
    KXUtilsWriteMemoryToFile2(marker.c_str(), kRefreshText, 0);
    chmod(marker.c_str(), 0777);
}

}  // namespace
}  // namespace kx::trap

extern "C" {

int GTAdaptTrapFileName(const char *path, char *mibFileName) {
    if (path == nullptr || mibFileName == nullptr) return -1;
    if (KXUtilsFileExists(path) != 0) return -2;
    if (char *dot = _mbsrchr(mibFileName, '.')) *dot = '\0';
    const std::string_view base(KXUtilsBasename(path, 0));
    const std::string_view directory(path, static_cast<std::size_t>(base.data() - path));
    std::size_t enterpriseEnd = 0, restStart = 0;
    kx::trap::MeasureTag(base, enterpriseEnd, restStart);
    const std::string renamed = std::string(directory) + std::string(base.substr(0, enterpriseEnd)) + "l" +
                                std::to_string(std::strlen(mibFileName)) + "n" + mibFileName +
                                std::string(base.substr(restStart));
    return std::rename(path, renamed.c_str()) == 0 ? 0 : -1;
}

int KXAdaptTrapFileName(const char *directory) {
    const std::string folder = kx::trap::DirectoryOrDefault(directory);
    if (KXUtilsFileExists(folder.c_str()) != 0) return -1;
    char *directories[] = {const_cast<char *>(folder.c_str())};
    char **list = nullptr;
    const int count = GTGetTrapFiles(1, directories, &list, "[tT]");
    int renamed = 0;
    for (int i = 0; i < count; ++i) {
        if (!kx::trap::WantsMib(list[i])) continue;
        const kx::core::HeapText mibFile(kx::trap::MibFileFor(list[i]));
        if (mibFile && GTAdaptTrapFileName(list[i], mibFile.Get()) == 0) ++renamed;
    }
    GTFreeRessources(count, list);
    if (renamed > 0) kx::trap::MarkRefresh(folder);
    return renamed;
}

}  // extern "C"
