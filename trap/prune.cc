// Trap file listings and pruning the store by age and by number of files.
#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <string_view>
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

// The unique identifier in a trap file's name, from its dot; empty when it
// has none.
std::string_view IdentifierOf(const char *path) {
    const char *dot = GTGetUniqueIdentifier(KXUtilsBasename(path, 0));
    return dot != nullptr ? std::string_view(dot) : std::string_view();
}

// The arrival time in a trap file's name: its unique identifier as an unsigned decimal number.
unsigned int ArrivalTime(const char *path, bool &found) {
    const std::string_view identifier = IdentifierOf(path);
    found = !identifier.empty();
    return found ? static_cast<unsigned int>(std::strtoul(identifier.data() + 1, nullptr, 10)) : 0;
}

// The listed files oldest first, and where each trap's names begin among
// them. A directory read while another process renames a trap may return the
// trap under its old and its new name; both carry the same identifier and
// count as one trap, or the newest trap beyond the maximum would be deleted
// in its place. Files without an identifier are traps of their own.
struct TrapsByAge {
    struct Listed {
        TrapTimePair pair;
        std::string_view identifier;
    };
    std::vector<Listed> files;
    std::vector<std::size_t> starts;  // then files.size()

    explicit TrapsByAge(const TrapFiles &listing) : files(static_cast<std::size_t>(listing.Count())) {
        for (int i = 0; i < listing.Count(); ++i) {
            bool found = false;
            files[static_cast<std::size_t>(i)] = {{i, ArrivalTime(listing[i], found)}, IdentifierOf(listing[i])};
        }
        // Equal times in any order; one trap's names next to each other.
        std::sort(files.begin(), files.end(), [](const Listed &a, const Listed &b) {
            const int byTime = KXProcessTrapMaxNumSortNumericAscending(&a.pair, &b.pair);
            return byTime != 0 ? byTime < 0 : a.identifier < b.identifier;
        });
        for (std::size_t i = 0; i < files.size(); ++i)
            if (i == 0 || files[i].identifier.empty() || files[i].identifier != files[i - 1].identifier)
                starts.push_back(i);
        starts.push_back(files.size());
    }
    std::size_t Count() const { return starts.size() - 1; }
};

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
    const kx::trap::TrapsByAge traps(files);
    const long long surplus = static_cast<long long>(traps.Count()) - std::max(maximum, 0LL);
    for (long long trap = 0; trap < surplus; ++trap) {
        const auto t = static_cast<std::size_t>(trap);
        for (std::size_t i = traps.starts[t]; i < traps.starts[t + 1]; ++i) files.Delete(traps.files[i].pair.Index);
    }
    return 0;
}

}  // extern "C"
