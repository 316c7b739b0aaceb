// Reading and confining the paths of the file and program conversions.
#include "convert/paths.h"

#include <sys/stat.h>

#include <cstdlib>
#include <cstring>

#include "convert/convert_internal.h"

namespace kx::convert {
namespace {

// "%00" and "%u0000" decode to a NUL, which would end the path early.
bool HoldsEncodedNul(std::string_view text) {
    for (std::size_t at = text.find('%'); at != std::string_view::npos; at = text.find('%', at + 1)) {
        const std::string_view rest = text.substr(at + 1);
        if (rest.substr(0, 2) == "00" || rest.substr(0, 5) == "u0000" || rest.substr(0, 5) == "U0000") return true;
    }
    return false;
}

std::optional<std::string> RealPath(const std::string &path) {
    char *resolved = realpath(path.c_str(), nullptr);
    if (resolved == nullptr) return std::nullopt;
    std::string result{resolved};
    std::free(resolved);
    return result;
}

bool Inside(const std::string &path, const std::string &root) {
    if (root == "/") return true;
    return path == root || (path.size() > root.size() && path.compare(0, root.size(), root) == 0 &&
                            path[root.size()] == '/');
}

// The path's components without empty and "." ones; nullopt on a "..".
std::optional<std::string> Normalised(std::string_view path) {
    std::string joined;
    for (std::string_view part : Split(path, "/")) {
        if (part == "..") return std::nullopt;
        if (part.empty() || part == ".") continue;
        joined.append("/").append(part);
    }
    return joined;
}

}  // namespace

std::optional<std::string> DecodedValue(const char *value) {
    if (value == nullptr || HoldsEncodedNul(value)) return std::nullopt;
    return Decoded(value);
}

std::optional<std::string> EvaluatedOrDecoded(std::string_view argument, int cycleIndex, const char *encode) {
    std::string evaluated = Evaluated(argument, cycleIndex, encode);
    if (evaluated != argument) return evaluated;
    if (HoldsEncodedNul(argument)) return std::nullopt;
    return Decoded(argument);
}

std::optional<std::string> Confined(std::string_view path) {
    if (path.empty() || path.find('\0') != std::string_view::npos) return std::nullopt;
    const std::optional<std::string> root = RealPath(".");
    const std::optional<std::string> tail = Normalised(path);
    if (!root || !tail) return std::nullopt;
    const std::string full = path.front() == '/' ? *tail : *root + *tail;
    if (tail->empty()) return path.front() != '/' || *root == "/" ? root : std::nullopt;
    const std::size_t slash = full.rfind('/');
    const std::optional<std::string> folder = RealPath(slash == 0 ? "/" : full.substr(0, slash));
    if (!folder) return std::nullopt;
    std::string candidate = (*folder == "/" ? "" : *folder) + full.substr(slash);
    if (!Inside(candidate, *root)) return std::nullopt;
    struct stat info;
    if (lstat(candidate.c_str(), &info) == 0 && S_ISLNK(info.st_mode)) {
        const std::optional<std::string> target = RealPath(candidate);
        if (!target || !Inside(*target, *root)) return std::nullopt;
    }
    return candidate;
}

std::optional<std::string> ConfinedValue(const char *value) {
    const std::optional<std::string> decoded = DecodedValue(value);
    return decoded ? Confined(*decoded) : std::nullopt;
}

}  // namespace kx::convert
