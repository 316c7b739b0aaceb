#include "core/name_index.h"

#include <cstring>

#include "core/entry.h"

namespace kx::core {
namespace {

// Shorter lists are walked: building the index would cost more.
constexpr int kIndexedFrom = 16;

// So are the first lookups in a list not yet indexed: an operation that
// looks up a few names (a page of one cycle row) walks the list a few times
// instead of indexing every name of a long list; indexing it costs about as
// much as a thousand walks.
constexpr int kWalkedLookups = 32;

}  // namespace

int NameIndex::Find(const EingabeElement *list, int count, std::string_view name) {
    if (list == nullptr || count < kIndexedFrom) return FindEntry(list, count, name);
    if (names_.empty() && walked_ < kWalkedLookups) {
        ++walked_;
        return FindEntry(list, count, name);
    }
    Follow(list, count);
    auto hit = first_.find(name);
    if (hit != first_.end() && Holds(list, hit->second, name)) return hit->second;
    if (hit == first_.end()) return count;
    // The entry changed behind the index: index the list as it is now.
    Rebuild(list, count);
    hit = first_.find(name);
    if (hit != first_.end() && Holds(list, hit->second, name)) return hit->second;
    return FindEntry(list, count, name);
}

// Appended entries are added; a list that shrank or whose first or last
// indexed entry is another one now is indexed anew. A list that moved with
// its entries (grown by realloc) keeps its index.
void NameIndex::Follow(const EingabeElement *list, int count) {
    const auto indexed = static_cast<int>(names_.size());
    if (count < indexed ||
        (indexed > 0 && (list[0].Name != names_.front() || list[indexed - 1].Name != names_.back()))) {
        Rebuild(list, count);
        return;
    }
    for (int i = indexed; i < count; ++i) {
        const EingabeElement &entry = list[i];
        names_.push_back(entry.Name);
        if (entry.Name != nullptr) first_.try_emplace(std::string(entry.Name, entry.NameLaenge), i);
    }
}

void NameIndex::Rebuild(const EingabeElement *list, int count) {
    names_.clear();
    first_.clear();
    Follow(list, count);
}

bool NameIndex::Holds(const EingabeElement *list, int index, std::string_view name) const {
    const EingabeElement &entry = list[index];
    return entry.Name == names_[static_cast<std::size_t>(index)] && entry.NameLaenge == name.size() &&
           std::memcmp(entry.Name, name.data(), name.size()) == 0;
}

}  // namespace kx::core
