// Trap file names: the parser, the split and the comparison of two names
// (the input and the input with its first half and second half swapped)
// never read past a name, and every piece lies inside the returned copy.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "kx_trap.h"

namespace {

void CheckInside(const char *piece, const char *copy, std::size_t size) {
    if (piece != nullptr && (piece < copy || piece > copy + size)) std::abort();
}

void Parse(const std::string &name) {
    char *mib = nullptr, *enterprise = nullptr, *generic = nullptr, *specific = nullptr, *rest = nullptr;
    char *agent = nullptr, *server = nullptr, *states = nullptr;
    char *copy = GTDetermineActTrapInformation(name.c_str(), &mib, &enterprise, &generic, &specific, &rest, &agent,
                                               &server, &states);
    if (copy == nullptr) std::abort();
    const std::size_t size = std::strlen(name.c_str());
    for (const char *piece : {enterprise, generic, specific, rest}) CheckInside(piece, copy, size);
    for (char *text : {mib, agent, server, states}) {
        if (text != nullptr && std::strlen(text) > size + 4) std::abort();
        std::free(text);
    }
    std::free(copy);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const std::string name(reinterpret_cast<const char *>(data), size);
    Parse(name);
    const std::string other = name.substr(size / 2) + name.substr(0, size / 2);
    char *id = nullptr;
    const int length = GTSplitTrapFileName(name.c_str(), &id);
    if (length > static_cast<int>(size) || (id != nullptr && GTGetUniqueIdentifier(name.c_str()) != id)) std::abort();
    GTIsSameTrapAndServer(length, id, name.c_str(), other.c_str(), &id);
    GTIsSameTrapAndServer(0, nullptr, name.c_str(), name.c_str(), nullptr);
    return 0;
}
