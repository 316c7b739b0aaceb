// Value lists: merging new values into an entry ("Mibname" and another),
// joining them again, reshaping a block of table cells and sorting parallel
// lists through a sort table. Eight leading bytes choose the shape.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "fuzz_list.h"
#include "kx_profile.h"

namespace {

constexpr size_t kShapeBytes = 8;

EingabeElement *NewList(int &count) {
    const char *names[] = {"Mibname", "Other"};
    count = 2;
    auto *list = static_cast<EingabeElement *>(std::calloc(2, sizeof(EingabeElement)));
    for (int i = 0; i < count; ++i) {
        list[i].Name = strdup(names[i]);
        list[i].NameLaenge = static_cast<uint32_t>(std::strlen(names[i]));
        list[i].Art = 'j';
    }
    return list;
}

void Merge(const std::string &old, const std::string &added, const char *divider) {
    int count = 0;
    EingabeElement *list = NewList(count);
    for (const char *name : {"Mibname", "Other"}) {
        MergeElementValue(count, list, name, old.c_str(), divider);
        const int before = list[EingabewertIndex(name, list, count)].WertGesetzt;
        MergeElementValue(count, list, name, added.c_str(), divider);
        if (list[EingabewertIndex(name, list, count)].WertGesetzt < std::min(before, 1)) std::abort();
        std::free(ConvertToStream(count, list, name, divider));
    }
    kx::fuzz::FreeList(list, count);
}

void Sort(const std::string &first, const std::string &second, const char *divider) {
    const char *lists[] = {first.c_str(), second.c_str()};
    SortTableEntry **table = nullptr;
    const int items = CreateSortTable(lists, 2, divider, &table, 0, 0);
    std::stable_sort(table, table + items,
                     [](const SortTableEntry *l, const SortTableEntry *r) { return std::strcmp(l->Values[0], r->Values[0]) < 0; });
    char *sorted = SortText(strdup(second.c_str()), divider, table, items);
    if (sorted == nullptr || std::strlen(sorted) > second.size() + 1) std::abort();
    std::free(sorted);
    FreeSortTable(items, table);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size < kShapeBytes) return 0;
    const char divider[2] = {static_cast<char>(data[7] ? data[7] : ','), '\0'};
    const std::string text(reinterpret_cast<const char *>(data + kShapeBytes), size - kShapeBytes);
    const std::string first(text.c_str()), rest(text.substr(std::min(text.size(), first.size() + 1)));
    const std::string second(rest.c_str());
    Merge(first, second, divider);
    Sort(first, second, divider);

    const std::string cells = text + '\0';
    const int cellCount = static_cast<int>(std::count(text.begin(), text.end(), '\0')) + 1;
    const int removals[] = {0, 1, 3};
    const int8_t *shape = reinterpret_cast<const int8_t *>(data);
    char *joined = ConvertToStream2(cells.c_str(), cellCount, divider, shape[0] & 3, removals, shape[1], shape[2],
                                    shape[3], shape[4] & 15, shape[5] & 1 ? second.c_str() : nullptr, shape[6] & 1);
    std::free(joined);
    return 0;
}
