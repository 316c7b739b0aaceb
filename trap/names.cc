// Trap file names: the unique identifier, the split before the states, the
// comparison of two arrivals and the parser that cuts a name into pieces.
#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>

#include "companion/libKXUtils.h"
#include "companion/libKXmbcs.h"
#include "companion/libparser.h"
#include "core/text.h"
#include "kx_trap.h"
#include "trap/trap_internal.h"

namespace kx::trap {
namespace {

constexpr int kShortestComparedPrefix = 19;  // shorter parts before the states are never the same trap
constexpr int kOwnLengthUpTo = 17;           // a given length this short is replaced by the name's length
constexpr int kAgentAddressParts = 4;

using core::HeapCopy;

// The pieces of a name, cut in place: every position is an index into text.
class NameCutter {
public:
    explicit NameCutter(char *text) : text_(text), size_(std::strlen(text)) {}

    char *At() const { return text_ + at_; }
    bool AtEnd() const { return at_ >= size_; }
    void Step() { at_ += AtEnd() ? 0 : 1; }
    void SkipDigits() {
        int position = static_cast<int>(at_);
        UeberleseZeichen(text_, &position, "0123456789", 10);
        at_ = static_cast<std::size_t>(position);
    }
    // Reads the digits here as a length, limited to what the name holds.
    std::size_t ReadLength() {
        const std::size_t from = at_;
        SkipDigits();
        std::size_t length = 0;
        for (std::size_t i = from; i < at_ && length <= size_; ++i)
            length = length * 10 + static_cast<std::size_t>(text_[i] - '0');
        return length;
    }
    void Skip(std::size_t count) { at_ = std::min(size_, at_ + count); }
    // Ends the piece here at the next stop character (or the end) and steps behind it.
    void EndPieceAt(const char *stops) {
        at_ += std::strcspn(text_ + at_, stops);
        EndHere();
    }
    void EndHere() {
        if (!AtEnd()) text_[at_++] = '\0';
    }

private:
    char *text_;
    std::size_t size_;
    std::size_t at_ = 0;
};

char *TakeMibFile(NameCutter &cut) {
    cut.Step();  // the "l"
    const std::size_t length = cut.ReadLength();
    cut.Step();  // the "n"
    const std::string_view name(cut.At(), std::min(length, std::strlen(cut.At())));
    cut.Skip(length);
    const std::string file = std::string(name) + "." + GTDetermineMIBSuffix(name.data(), static_cast<int>(name.size()));
    return HeapCopy(file);
}

struct Wanted {
    char **agentAddress, **server, **states;
};

// States, agent address and server from the rest of a name.
void CutRest(const char *rest, const Wanted &want) {
    const char *dot = _mbsrchr(rest, '.');
    if (dot == nullptr) return;
    const std::string_view beforeDot(rest, static_cast<std::size_t>(dot - rest));
    const std::size_t lastUnderscore = beforeDot.rfind('_');
    if (lastUnderscore == std::string_view::npos) return;
    if (want.states) *want.states = HeapCopy(beforeDot.substr(lastUnderscore + 1));
    if (!want.agentAddress && !want.server) return;
    std::size_t at = 0;
    for (int found = 0; found < kAgentAddressParts; ++found) {
        const std::size_t underscore = beforeDot.find('_', at);
        if (underscore == std::string_view::npos) return;
        at = underscore + 1;
    }
    if (at >= lastUnderscore) return;
    if (want.agentAddress) {
        std::string address(beforeDot.substr(0, at - 1));
        for (char &ch : address) ch = ch == '_' ? '.' : ch;
        *want.agentAddress = HeapCopy(address);
    }
    const std::string_view server = beforeDot.substr(at, lastUnderscore - at);
    if (want.server && beforeDot.substr(at, 5) != "0000_") *want.server = HeapCopy(server);
}

}  // namespace
}  // namespace kx::trap

extern "C" {

char *GTGetUniqueIdentifier(const char *name) { return name == nullptr ? nullptr : _mbsrchr(name, '.'); }

int GTSplitTrapFileName(const char *name, char **uniqueId) {
    char *dot = GTGetUniqueIdentifier(name);
    if (uniqueId != nullptr) *uniqueId = dot;
    if (dot == nullptr) return -1;
    int position = static_cast<int>(dot - name);
    PositioniereAufZeichenRueckwaerts(name, &position, "_", 1, 0);
    return position;
}

int GTIsSameTrapAndServer(int length1, const char *uniqueId1, const char *name1, const char *name2,
                          char **uniqueId2) {
    char *own1 = nullptr, *own2 = nullptr;
    const int length2 = GTSplitTrapFileName(name2, &own2);
    if (uniqueId2 != nullptr) *uniqueId2 = own2;
    if (name1 == nullptr) return 1;
    if (uniqueId1 == nullptr) {
        length1 = GTSplitTrapFileName(name1, &own1);
        uniqueId1 = own1;
    } else if (length1 <= kx::trap::kOwnLengthUpTo) {
        length1 = static_cast<int>(std::strlen(name1));
    }
    if (uniqueId1 == nullptr || own2 == nullptr || _mbsicmp(uniqueId1, own2) == 0) return 1;
    if (length1 != length2 || length1 < kx::trap::kShortestComparedPrefix) return 1;
    return strnicmp(name1 + 1, name2 + 1, static_cast<std::size_t>(length1 - 2));
}

char *GTDetermineActTrapInformation(const char *path, char **mibFile, char **enterprise, char **generic,
                                    char **specific, char **rest, char **agentAddress, char **server,
                                    char **states) {
    if (path == nullptr) return nullptr;
    char *copy = kx::core::HeapCopy(KXUtilsBasename(path, 0));
    if (copy == nullptr) return nullptr;
    kx::trap::NameCutter cut(copy);
    cut.Step();  // the mark
    if (enterprise) *enterprise = cut.At();
    cut.SkipDigits();
    const bool tagged = *cut.At() == 'l';
    if (tagged) {
        char *tag = cut.At();
        char *file = kx::trap::TakeMibFile(cut);
        *tag = '\0';
        if (mibFile) *mibFile = file;
        else std::free(file);
    } else if (mibFile) {
        *mibFile = nullptr;
    }
    cut.EndHere();  // the separator
    if (generic) *generic = cut.At();
    cut.EndPieceAt("_");
    if (specific) *specific = cut.At();
    cut.EndPieceAt(std::strchr(cut.At(), '_') != nullptr ? "_" : ".");
    if (rest) *rest = cut.At();
    if (agentAddress || server || states) kx::trap::CutRest(cut.At(), {agentAddress, server, states});
    return copy;
}

}  // extern "C"
