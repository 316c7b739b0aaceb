// The page engine's trap MIB index (built when a request's definition is
// read) and name lists of any kind read into the caller's variables.
#include <cstdlib>
#include <cstring>
#include <string>

#include "companion/libKXUtils.h"
#include "core/text.h"
#include "input/request_internal.h"
#include "kx_input.h"
#include "kx_profile.h"
#include "kx_trap.h"
#include "trap/mib_index.h"

extern "C" {
int32_t EingabeTrapMIBs = 0;
char *_TrapMIBs = nullptr;
char **TrapMIBs = nullptr;
int32_t TrapMIBsCount = 0;
}

namespace kx::trap {
namespace {

constexpr char kListName[] = "TrapMibs";
constexpr char kListFallback[] = "./TrapMibs";

// The contents of fileName in the application's directory (a malloc'd text), or nullptr.
char *ReadApplicationFile(EingabeElement *list, int count, const char *fileName) {
    char path[KX_PATH_SIZE];
    CreateApplicationFilePath(list, count, path, nullptr, fileName);
    return UtilsReadFile(path, nullptr, nullptr, 0);
}

}  // namespace
}  // namespace kx::trap

extern "C" {

int CreateTrapMibs(EingabeElement *inputList, int inputCount) {
    if (inputList == nullptr) return -2;
    if (EingabeTrapMIBs != 0) return 0;
    char *contents = kx::trap::ReadApplicationFile(inputList, inputCount, kx::trap::kListName);
    if (contents == nullptr) contents = UtilsReadFile(kx::trap::kListFallback, nullptr, nullptr, 0);
    const kx::trap::MibIndex index{TrapMIBs, nullptr, TrapMIBsCount, _TrapMIBs};
    if (contents != nullptr) kx::trap::TakeListedNames(index, contents);
    std::free(contents);
    kx::trap::AddTrapDefiningMibs(index, kx::trap::MibDirectory(), kx::request::Separator());
    EingabeTrapMIBs = 1;
    return 0;
}

int ItIsATrapMIB(const char *name) { return kx::trap::FindMibName(name, TrapMIBs, TrapMIBsCount); }

int CreateSpecialMibs(EingabeElement *inputList, int inputCount, const char *fileName, char **contents,
                      char **copy, int *count, char ***names) {
    kx::core::HeapText read(kx::trap::ReadApplicationFile(inputList, inputCount, fileName));
    if (!read) return -1;
    MacheLetztesElementZumText(read.Get());
    kx::core::HeapText cut(kx::core::HeapCopy(read.View()));
    if (!cut) return -1;
    int *lengths = nullptr;
    const int found = ErmittleTextElemente(cut.Get(), " ", nullptr, &lengths);
    auto **pointers = static_cast<char **>(std::malloc(static_cast<std::size_t>(found) * sizeof(char *)));
    if (pointers == nullptr || lengths == nullptr) return std::free(lengths), std::free(pointers), -1;
    char *element = cut.Get();
    for (int i = 0; i < found; element += lengths[i] + 1, ++i) pointers[i] = element;
    std::free(lengths);
    if (count != nullptr) *count = found;
    // The names point into the copy: without the copy they cannot be handed out.
    if (names != nullptr && copy != nullptr) *names = pointers;
    else std::free(pointers);
    if (copy != nullptr) *copy = cut.Release();
    if (contents != nullptr) *contents = read.Release();
    return 0;
}

int ItIsASpecialMIB(const char *name, int count, char **names) {
    return kx::trap::FindMibName(name, names, count);
}

}  // extern "C"
