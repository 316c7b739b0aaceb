// The keyword table: the well-known entry names and the globals that hold
// their indices in the current list.
#include <array>
#include <cstdint>
#include <iterator>
#include <string_view>

#include "input/keywords.h"

namespace {

// The words, one home for the exported table and for the test below.
constexpr std::string_view kWords[] = {
    "Server", "CGIDirectory", "RootDirectory", "Application", "Ersetzungsanfang",
    "Ersetzungsende", "ImagePath", "RootPath", "CGIPath", "AppSuffix",
};

}  // namespace

extern "C" {

int iServer = -1;
int iCGIDirectory = -1;
int iRootDirectory = -1;
int iApplication = -1;
int iErsetzungsAnfang = -1;
int iErsetzungsEnde = -1;
int iImagePath = -1;
int iRootPath = -1;
int iCGIPath = -1;
int iAppSuffix = -1;

Schluesselwort Schluesselworte[] = {
    {kWords[0].data(), &iServer},
    {kWords[1].data(), &iCGIDirectory},
    {kWords[2].data(), &iRootDirectory},
    {kWords[3].data(), &iApplication},
    {kWords[4].data(), &iErsetzungsAnfang},
    {kWords[5].data(), &iErsetzungsEnde},
    {kWords[6].data(), &iImagePath},
    {kWords[7].data(), &iRootPath},
    {kWords[8].data(), &iCGIPath},
    {kWords[9].data(), &iAppSuffix},
};

extern const int SchluesselworteAnzahl = static_cast<int>(std::size(Schluesselworte));

}  // extern "C"

static_assert(std::size(Schluesselworte) == 10 && std::size(kWords) == std::size(Schluesselworte));

namespace kx::request {
namespace {

// Bit n of the row of a byte: a keyword of n bytes begins with that byte.
// Every declared entry passes RecordKeyword, and one test turns nearly
// every name that is no keyword away.
constexpr std::size_t kLongestWord = 31;
using Shapes = std::array<uint32_t, 256>;

constexpr Shapes ShapesOf() {
    Shapes shapes{};
    for (const std::string_view word : kWords) shapes[static_cast<unsigned char>(word[0])] |= uint32_t{1} << word.size();
    return shapes;
}
constexpr Shapes kShapes = ShapesOf();

constexpr bool AllShort() {
    for (const std::string_view word : kWords)
        if (word.empty() || word.size() > kLongestWord) return false;
    return true;
}
static_assert(AllShort());

bool MayBeKeyword(std::string_view name) {
    return name.size() <= kLongestWord &&
           (kShapes[static_cast<unsigned char>(name[0])] >> name.size() & 1u) != 0;
}

}  // namespace

void RecordKeyword(std::string_view name, int index) {
    if (name.empty() || !MayBeKeyword(name)) return;
    for (const Schluesselwort &row : Schluesselworte) {
        if (name == row.Wort) {
            *row.Index = index;
            return;
        }
    }
}

}  // namespace kx::request
