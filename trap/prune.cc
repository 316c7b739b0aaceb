// Trap file listings and pruning the store by age and by number of files.
#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <vector>

#include "companion/libKXUtils.h"
#include "core/text.h"
#include "kx_trap.h"
#include "trap/trap_internal.h"

namespace kx::trap {
namespace {

constexpr long long kSecondsPerDay = 86400;

// The listing of pruning: GTGetTrapFiles' array, released on every path.
class TrapFiles {
public:
    TrapFiles(const char *directory, const char *prefix) {
        char *directories[] = {const_cast<char *>(DirectoryOrDefault(directory))};
        count_ = GTGetTrapFiles(1, directories, &list_, prefix);
    }
    ~TrapFiles() { GTFreeRessources(count_, list_); }
    TrapFiles(const TrapFiles &) = delete;
    TrapFiles &operator=(const TrapFiles &) = delete;
    int Count() const { return count_; }
    const char *operator[](int i) const { return list_[i]; }

    // Re-finds the file (another process may have renamed it) and deletes it.
    void Delete(int i) {
        list_[i] = GTDetermineTrapFile(list_[i], nullptr);
        KXUtilsDeleteFile(list_[i]);
    }

private:
    char **list_ = nullptr;
    int count_ = 0;
};

// The arrival time in a trap file's name: its unique identifier as an unsigned decimal number.
unsigned int ArrivalTime(const char *path, bool &found) {
    const char *dot = GTGetUniqueIdentifier(KXUtilsBasename(path, 0));
    found = dot != nullptr;
    return found ? static_cast<unsigned int>(std::strtoul(dot + 1, nullptr, 10)) : 0;
}

// The number given to a pruning operation, or nothing (false).
bool NumberOf(const char *dbFile, const char *table, const char *conditionOrValue, long long &number) {
    const core::HeapText fromDatabase(table != nullptr ? KXGetDBValue(dbFile, table, conditionOrValue) : nullptr);
    const char *text = table != nullptr ? fromDatabase.Get() : conditionOrValue;
    number = LeadingNumber(text);
    return text != nullptr;
}

}  // namespace
}  // namespace kx::trap

extern "C" {

int GTGetTrapFiles(int directoryCount, char **directories, char ***list, const char *prefix) {
    if (list == nullptr) return 0;
    *list = nullptr;
    char **found = nullptr;
    const int count = CreateFileList(&found, directories, directoryCount,
                                     kx::trap::TrapFileExpression(prefix).c_str(), 1, 1);
    // One copy per name: the caller frees each name and then the list.
    if (count > 0) *list = static_cast<char **>(std::calloc(static_cast<std::size_t>(count), sizeof(char *)));
    for (int i = 0; *list != nullptr && i < count; ++i) {
        (*list)[i] = kx::core::HeapCopy(found[i]);
        if ((*list)[i] == nullptr) {
            GTFreeRessources(i, *list);
            *list = nullptr;
        }
    }
    std::free(found);  // one block, the names inside it
    return *list != nullptr ? count : 0;
}

void GTFreeRessources(int count, char **list) {
    if (count < 1 || list == nullptr) return;
    for (int i = 0; i < count; ++i) std::free(list[i]);
    std::free(list);
}

int SortNumericDescending(unsigned int a, unsigned int b) { return a == b ? 0 : a > b ? 1 : -1; }

int KXProcessTrapMaxNumSortNumericAscending(const void *pa, const void *pb) {
    return SortNumericDescending(static_cast<const TrapTimePair *>(pa)->Time,
                                 static_cast<const TrapTimePair *>(pb)->Time);
}

int KXProcessTrapAgeDelete(const char *dbFile, const char *table, const char *conditionOrValue,
                           const char *directory, const char *prefix) {
    long long days = 0;
    if (!kx::trap::NumberOf(dbFile, table, conditionOrValue, days)) return 0;
    const long long threshold = days * kx::trap::kSecondsPerDay;
    kx::trap::TrapFiles files(directory, prefix);
    const long long now = static_cast<long long>(std::time(nullptr));
    for (int i = 0; i < files.Count(); ++i) {
        bool found = false;
        const unsigned int arrived = kx::trap::ArrivalTime(files[i], found);
        if (found && now - static_cast<long long>(arrived) > threshold) files.Delete(i);
    }
    return 0;
}

int KXProcessTrapMaxNumDelete(const char *dbFile, const char *table, const char *conditionOrValue,
                              const char *directory, const char *prefix) {
    long long maximum = 0;
    if (!kx::trap::NumberOf(dbFile, table, conditionOrValue, maximum)) return 0;
    kx::trap::TrapFiles files(directory, prefix);
    if (files.Count() <= maximum) return 0;
    std::vector<TrapTimePair> pairs(static_cast<std::size_t>(files.Count()));
    for (int i = 0; i < files.Count(); ++i) {
        bool found = false;
        pairs[static_cast<std::size_t>(i)] = {i, kx::trap::ArrivalTime(files[i], found)};
    }
    std::qsort(pairs.data(), pairs.size(), sizeof(TrapTimePair), KXProcessTrapMaxNumSortNumericAscending);
    const long long surplus = files.Count() - std::max(maximum, 0LL);
    for (long long i = 0; i < surplus; ++i) files.Delete(pairs[static_cast<std::size_t>(i)].Index);
    return 0;
}

}  // extern "C"
