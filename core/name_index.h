// Finding list entries by name without a walk over the list: an index of the
// names of one list, kept by the code that looks up many names in the same
// list during one operation (a page being rendered, a definition being
// read). The list may grow or move behind the index: it follows appended
// entries, is rebuilt when the list moves or shrinks, and every hit is checked
// against the entry before it is returned.
//
// The index is one flat table of slots (open addressing, linear probing):
// each slot holds an entry's index and the hash of its name, and a byte per
// slot, in an array of its own, holds seven bits of that hash. Probes read
// the bytes: a name that is not in the list, the common question when entries
// are declared one by one, is answered from that small array, which stays in
// the cache on lists of 100,000 entries, and a slot is read only when its byte
// matches. Beside the table, the Name pointer each entry had when it was
// indexed tells a hit from an entry changed behind the index. A name is hashed
// once, when its entry is indexed; the table grows by doubling from the
// stored hashes.
#ifndef KX_CORE_NAME_INDEX_H
#define KX_CORE_NAME_INDEX_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string_view>

#include "kx_input.h"

namespace kx::core {

class NameIndex {
public:
    // Index of the first entry whose name is exactly name; count when none
    // (the same answer as FindEntry).
    int Find(const EingabeElement *list, int count, std::string_view name);

private:
    struct Slot {
        uint32_t hash;
        int32_t index;
    };
    struct Release {
        void operator()(void *block) const { std::free(block); }
    };

    enum class Lookup { Hit, Miss, Changed };

    // True when the list is the one indexed, as a page that declares
    // nothing between its lookups leaves it.
    bool Unchanged(const EingabeElement *list, int count) const {
        return count == indexed_ && list[0].Name == IndexedName(0) && list[count - 1].Name == IndexedName(count - 1);
    }
    bool Follow(const EingabeElement *list, int count);
    bool Rebuild(const EingabeElement *list, int count);
    bool Reserve(int entries);
    void Insert(const EingabeElement *list, uint32_t hash, int index);
    Lookup Probe(const EingabeElement *list, std::string_view name, uint32_t hash, int *index) const;
    const char *IndexedName(int index) const { return names_[static_cast<std::size_t>(index)]; }

    std::unique_ptr<Slot[], Release> slots_;  // one block: the slots, then one tag byte per slot
    uint8_t *tags_ = nullptr;                 // 0 for a free slot, else the slot's hash's tag
    std::size_t mask_ = 0;                    // slot count - 1; the count is a power of two
    // names_[i]: entry i's Name when it was indexed; only compared, never read.
    std::unique_ptr<const char *[], Release> names_;
    int room_ = 0;     // names_ holds this many
    int indexed_ = 0;  // entries 0 .. indexed_ - 1 are in the table
    int used_ = 0;     // slots taken (entries without a name or with a repeated one take none)
    int walked_ = 0;   // lookups answered by walking the list before indexing it
};

}  // namespace kx::core

#endif
