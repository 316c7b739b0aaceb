#include "core/name_index.h"

#include <algorithm>
#include <bit>
#include <climits>
#include <cstdint>
#include <cstring>

#include "core/alloc.h"
#include "core/entry.h"

namespace kx::core {
namespace {

// Shorter lists are walked: building the index would cost more.
constexpr int kIndexedFrom = 16;

// So are the first lookups in a list not yet indexed: an operation that
// looks up a few names (a page of one cycle row) walks the list a few times
// instead of indexing every name of a long list, whose scattered names miss
// the cache when they are hashed. The names of a short list stay in the
// cache: indexing it costs about as much as eight walks, and a page or a
// definition looks up dozens of names, so it is indexed after a few walks.
constexpr int kWalkedLookups = 32;
constexpr int kShortList = 1024;
constexpr int kWalkedLookupsInShortList = 2;

int WalkedLookups(int count) { return count <= kShortList ? kWalkedLookupsInShortList : kWalkedLookups; }

// The table starts with this many slots and is at most half full, so a
// probe ends at a free slot after a step or two.
constexpr std::size_t kFirstSlots = 64;
constexpr uint8_t kFree = 0;
// Room for the names of a definition's entries and of those a page adds.
constexpr int kFirstNames = 128;

// A taken slot's byte: the hash's top seven bits with the high bit set, so
// that it is never kFree and differs from another name's byte 127 times in 128.
uint8_t TagOf(uint32_t hash) { return static_cast<uint8_t>((hash >> 25) | 0x80); }

uint64_t Load8(const char *at) {
    uint64_t word = 0;
    std::memcpy(&word, at, 8);
    return word;
}

uint64_t Load4(const char *at) {
    uint32_t word = 0;
    std::memcpy(&word, at, 4);
    return word;
}

// The first and the last eight bytes of a name (overlapping in a shorter
// one; four and four below eight bytes, three single bytes below four), and
// of a longer name every sixteen bytes before them, mixed by
// multiplications; the last steps take every input bit to the low bits,
// which place the slot. Names are short: a lookup must cost less than a
// cache miss, not resist chosen collisions.
uint32_t HashOf(std::string_view name) {
    constexpr uint64_t kFirst = 0x9E3779B97F4A7C15u, kSecond = 0xBF58476D1CE4E5B9u;
    const char *at = name.data();
    const std::size_t size = name.size();
    uint64_t hash = size, front = 0, back = 0;
    if (size > 16) {
        const char *last = at + size - 16;
        for (; at < last; at += 16) hash = std::rotl((hash ^ Load8(at)) * kFirst ^ Load8(at + 8) * kSecond, 23);
        front = Load8(last);
        back = Load8(last + 8);
    } else if (size >= 8) {
        front = Load8(at);
        back = Load8(at + size - 8);
    } else if (size >= 4) {
        front = Load4(at);
        back = Load4(at + size - 4);
    } else if (size > 0) {
        const auto byte = [&](std::size_t i) { return uint64_t{static_cast<unsigned char>(at[i])}; };
        front = byte(0) | byte(size / 2) << 8 | byte(size - 1) << 16;
    }
    hash ^= front * kFirst ^ std::rotl(back * kSecond, 32);
    hash ^= hash >> 29;
    hash *= kFirst;
    hash ^= hash >> 32;
    return static_cast<uint32_t>(hash);
}

std::string_view NameOf(const EingabeElement &entry) { return {entry.Name, entry.NameLaenge}; }

}  // namespace

int NameIndex::Find(const EingabeElement *list, int count, std::string_view name) {
    if (list == nullptr || count < kIndexedFrom) return FindEntry(list, count, name);
    if (indexed_ == 0 && walked_ < WalkedLookups(count)) {
        ++walked_;
        return FindEntry(list, count, name);
    }
    // Without memory for the table the list is walked.
    if (!Unchanged(list, count) && !Follow(list, count)) return FindEntry(list, count, name);
    const uint32_t hash = HashOf(name);
    int index = count;
    Lookup found = Probe(list, name, hash, &index);
    if (found == Lookup::Changed) {
        // An entry changed behind the index: index the list as it is now.
        if (!Rebuild(list, count)) return FindEntry(list, count, name);
        found = Probe(list, name, hash, &index);
    }
    if (found == Lookup::Hit) return index;
    if (found == Lookup::Miss) return count;
    return FindEntry(list, count, name);
}

// Appended entries are added; a list that shrank or whose first or last
// indexed entry is another one now is indexed anew. A list that moved with
// its entries (grown by realloc) keeps its index. False when memory ran out.
bool NameIndex::Follow(const EingabeElement *list, int count) {
    if (count < indexed_ ||
        (indexed_ > 0 && (list[0].Name != IndexedName(0) || list[indexed_ - 1].Name != IndexedName(indexed_ - 1))))
        return Rebuild(list, count);
    if (count == indexed_) return true;
    if (!Reserve(count)) return false;
    for (int i = indexed_; i < count; ++i) {
        const EingabeElement &entry = list[i];
        names_[static_cast<std::size_t>(i)] = entry.Name;
        if (entry.Name != nullptr) Insert(list, HashOf(NameOf(entry)), i);
    }
    indexed_ = count;
    return true;
}

bool NameIndex::Rebuild(const EingabeElement *list, int count) {
    if (slots_ != nullptr) std::fill_n(tags_, mask_ + 1, kFree);
    indexed_ = 0;
    used_ = 0;
    return Follow(list, count);
}

// Room for the names of entries entries, with the table at most half full. A
// grown table takes the slots over by their stored hashes: no name is hashed
// again.
bool NameIndex::Reserve(int entries) {
    if (entries > room_) {
        const int room = std::max({entries, 2 * room_, kFirstNames});
        auto *names = static_cast<const char **>(Reallocate(names_.get(), sizeof(const char *) * static_cast<std::size_t>(room)));
        if (names == nullptr) return false;
        static_cast<void>(names_.release());
        names_.reset(names);
        room_ = room;
    }
    const std::size_t slots = slots_ != nullptr ? mask_ + 1 : 0;
    const auto needed = static_cast<std::size_t>(used_ + (entries - indexed_));
    if (2 * needed <= slots) return true;
    const std::size_t grown = std::max(kFirstSlots, std::bit_ceil(2 * needed));
    std::unique_ptr<Slot[], Release> fresh(static_cast<Slot *>(Allocate(grown * (sizeof(Slot) + 1))));
    if (fresh == nullptr) return false;
    auto *tags = reinterpret_cast<uint8_t *>(fresh.get() + grown);
    std::fill_n(tags, grown, kFree);
    const std::size_t mask = grown - 1;
    for (std::size_t i = 0; i < slots; ++i) {
        if (tags_[i] == kFree) continue;
        std::size_t at = slots_[i].hash & mask;
        while (tags[at] != kFree) at = (at + 1) & mask;
        fresh[at] = slots_[i];
        tags[at] = tags_[i];
    }
    slots_.swap(fresh);
    tags_ = tags;
    mask_ = mask;
    return true;
}

// Entries are indexed in list order: a name already in the table keeps the
// earlier entry, as FindEntry would find it.
void NameIndex::Insert(const EingabeElement *list, uint32_t hash, int index) {
    const std::string_view name = NameOf(list[index]);
    const uint8_t tag = TagOf(hash);
    for (std::size_t at = hash & mask_;; at = (at + 1) & mask_) {
        if (tags_[at] == kFree) {
            slots_[at] = Slot{hash, index};
            tags_[at] = tag;
            ++used_;
            return;
        }
        if (tags_[at] != tag || slots_[at].hash != hash) continue;
        const int earlier = slots_[at].index;
        if (list[earlier].Name == IndexedName(earlier) && NameOf(list[earlier]) == name) return;
    }
}

// A hit is an entry that still has the Name it was indexed with and that
// name; an entry with another Name now means the list changed.
NameIndex::Lookup NameIndex::Probe(const EingabeElement *list, std::string_view name, uint32_t hash,
                                   int *index) const {
    const uint8_t tag = TagOf(hash);
    for (std::size_t at = hash & mask_;; at = (at + 1) & mask_) {
        if (tags_[at] == kFree) return Lookup::Miss;
        if (tags_[at] != tag || slots_[at].hash != hash) continue;
        const int found = slots_[at].index;
        const EingabeElement &entry = list[found];
        if (entry.Name != IndexedName(found)) return Lookup::Changed;
        if (NameOf(entry) == name) {
            *index = found;
            return Lookup::Hit;
        }
    }
}

}  // namespace kx::core
