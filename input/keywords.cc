// The keyword table: the well-known entry names and the globals that hold
// their indices in the current list.
#include <iterator>
#include <string_view>

#include "input/keywords.h"

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
    {"Server", &iServer},
    {"CGIDirectory", &iCGIDirectory},
    {"RootDirectory", &iRootDirectory},
    {"Application", &iApplication},
    {"Ersetzungsanfang", &iErsetzungsAnfang},
    {"Ersetzungsende", &iErsetzungsEnde},
    {"ImagePath", &iImagePath},
    {"RootPath", &iRootPath},
    {"CGIPath", &iCGIPath},
    {"AppSuffix", &iAppSuffix},
};

extern const int SchluesselworteAnzahl = static_cast<int>(std::size(Schluesselworte));

}  // extern "C"

static_assert(std::size(Schluesselworte) == 10);

namespace kx::request {

void RecordKeyword(std::string_view name, int index) {
    if (name.empty()) return;
    for (const Schluesselwort &row : Schluesselworte) {
        // The first byte first: every declared entry passes here, and most
        // names begin unlike every keyword.
        if (row.Wort[0] == name[0] && name == row.Wort) {
            *row.Index = index;
            return;
        }
    }
}

}  // namespace kx::request
