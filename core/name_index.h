// Finding list entries by name without a walk over the list: an index of the
// names of one list, kept by the code that looks up many names in the same
// list during one operation (a page being rendered, a definition being
// read). The list may grow or move behind the index: it follows appended
// entries, is rebuilt when the list moves or shrinks, and every hit is checked
// against the entry before it is returned.
#ifndef KX_CORE_NAME_INDEX_H
#define KX_CORE_NAME_INDEX_H

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "kx_input.h"

namespace kx::core {

class NameIndex {
public:
    // Index of the first entry whose name is exactly name; count when none
    // (the same answer as FindEntry).
    int Find(const EingabeElement *list, int count, std::string_view name);

private:
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>{}(text); }
    };

    void Follow(const EingabeElement *list, int count);
    void Rebuild(const EingabeElement *list, int count);
    bool Holds(const EingabeElement *list, int index, std::string_view name) const;

    std::vector<const char *> names_;  // each indexed entry's Name, as indexed
    std::unordered_map<std::string, int, Hash, std::equal_to<>> first_;
    int walked_ = 0; // lookups answered by walking the list before indexing it
};

}  // namespace kx::core

#endif
