// Sort tables: one record per item of n parallel joined lists, sorted by
// the caller, and further lists put into the same order (CreateSortTable,
// FreeSortTable, SortText).
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "core/text.h"
#include "kx_profile.h"
#include "profile/profile_internal.h"

namespace kx::profile {
namespace {

// A list copy split in place, read element by element.
struct SplitCopy {
    char *text;
    std::size_t size;    // bytes of the copy, separators included
    std::size_t offset;  // the current element
};

void FreeCopies(std::vector<SplitCopy> &copies) {
    for (SplitCopy &copy : copies) std::free(copy.text);
}

SortTableEntry *NewItem(std::vector<SplitCopy> &copies, int position, int first, int second) {
    auto *item = static_cast<SortTableEntry *>(std::calloc(1, sizeof(SortTableEntry)));
    if (item == nullptr) return nullptr;
    item->Values = static_cast<char **>(std::calloc(copies.size(), sizeof(char *)));
    if (item->Values == nullptr) {
        std::free(item);
        return nullptr;
    }
    *item = {first, static_cast<int>(copies.size()), item->Values, position, second};
    for (std::size_t i = 0; i < copies.size(); ++i) {
        SplitCopy &copy = copies[i];
        // A shorter list gives its final NUL, the empty text, past its end.
        const std::size_t at = std::min(copy.offset, copy.size);
        item->Values[i] = copy.text + at;
        copy.offset = at + std::strlen(copy.text + at) + 1;
    }
    return item;
}

int Build(const char **lists, int n, const char *separator, SortTableEntry ***table, int first, int second) {
    std::vector<SplitCopy> copies;
    int items = 0;
    for (int i = 0; i < n; ++i) {
        const char *list = lists[i] != nullptr ? lists[i] : "";
        char *text = kx::core::HeapCopy(list);
        if (text == nullptr) return FreeCopies(copies), 0;
        items = ErmittleTextElemente(text, separator, nullptr, nullptr);
        copies.push_back({text, std::strlen(list), 0});
    }
    if (items < 1) return FreeCopies(copies), 0;
    const auto itemCount = static_cast<std::size_t>(items);
    auto **array = static_cast<SortTableEntry **>(std::calloc(itemCount, sizeof(SortTableEntry *)));
    for (int j = 0; array != nullptr && j < items; ++j) {
        array[j] = NewItem(copies, j, first, second);
        if (array[j] == nullptr) {
            if (j == 0) FreeCopies(copies), std::free(array);  // item 0 would own the copies
            else FreeSortTable(j, array);
            return 0;
        }
    }
    if (array == nullptr) return FreeCopies(copies), 0;
    *table = array;
    return items;
}

}  // namespace
}  // namespace kx::profile

extern "C" {

int CreateSortTable(const char **lists, int n, const char *separator, SortTableEntry ***table, int first,
                    int second) {
    return kx::profile::Guard(0, [&]() -> int {
        if (table != nullptr) *table = nullptr;
        if (lists == nullptr || separator == nullptr || table == nullptr || n < 1) return 0;
        return kx::profile::Build(lists, n, separator, table, first, second);
    });
}

int FreeSortTable(int count, SortTableEntry **table) {
    if (table == nullptr || count < 1) return 0;
    for (int j = 0; j < count; ++j) {
        SortTableEntry *item = table[j];
        if (item == nullptr) continue;
        if (item->Position == 0)
            for (int i = 0; i < item->ListCount; ++i) std::free(item->Values[i]);
        std::free(item->Values);
        std::free(item);
    }
    std::free(table);
    return 0;
}

char *SortText(char *list, const char *separator, SortTableEntry **table, int count) {
    return kx::profile::Guard(static_cast<char *>(nullptr), [&]() -> char * {
        if (list == nullptr) return nullptr;
        const std::string glue = separator != nullptr ? separator : "";
        int *lengths = nullptr;
        const int elements = ErmittleTextElemente(list, glue.c_str(), nullptr, &lengths);
        std::vector<std::size_t> offsets;
        for (std::size_t offset = 0, e = 0; lengths != nullptr && e < static_cast<std::size_t>(elements); ++e) {
            offsets.push_back(offset);
            offset += static_cast<std::size_t>(lengths[e]) + glue.size();
        }
        std::string sorted;
        for (int k = 0; table != nullptr && k < count; ++k) {
            const int position = table[k] != nullptr ? table[k]->Position : -1;
            // A position outside the list adds nothing.
            if (position < 0 || static_cast<std::size_t>(position) >= offsets.size()) continue;
            sorted.append(list + offsets[static_cast<std::size_t>(position)]).append(glue);
        }
        if (!sorted.empty()) sorted.pop_back();
        std::free(list);
        std::free(lengths);
        return kx::core::HeapCopy(sorted);
    });
}

}  // extern "C"
