// Walking the values of an input-list entry without leaving them.
#ifndef KX_CORE_VALUE_CURSOR_H
#define KX_CORE_VALUE_CURSOR_H

#include <cstddef>
#include <cstring>

#include "kx_input.h"

namespace kx::core {

// The bytes of the first WertGesetzt values of an entry, each with its NUL:
// the bytes an append keeps. Unlike ValuesSpan, an entry whose Wert holds no
// counted value keeps none of it.
inline size_t ValueBytes(const EingabeElement &entry) {
    if (entry.Wert == nullptr) return 0;
    size_t offset = 0;
    for (int i = 0; i < entry.WertGesetzt; ++i) offset += std::strlen(entry.Wert + offset) + 1;
    return offset;
}

// Steps an entry's WertPosition from value to value. A step that would lead
// past the last of its WertGesetzt values is refused, so WertPosition always
// stays on one of them.
class ValueCursor {
public:
    explicit ValueCursor(EingabeElement &entry) : entry_(entry) { Locate(); }

    // The current value; null when the entry has no Wert or WertPosition lies
    // outside its values. Inside them it is CurrentText (core/entry.h); outside
    // it is null rather than "", because the comparisons tell no value from
    // an empty one.
    const char *Current() const {
        if (entry_.Wert == nullptr || entry_.WertPosition < 0) return nullptr;
        if (index_ < 0 && static_cast<size_t>(entry_.WertPosition) >= bytes_) return nullptr;
        return entry_.Wert + entry_.WertPosition;
    }

    // True when WertPosition stands at the start of one of the values.
    bool OnValue() const { return index_ >= 0; }

    // Moves to the next value; false (and no move) when there is none.
    bool Step() {
        if (index_ < 0 || index_ + 1 >= entry_.WertGesetzt) return false;
        entry_.WertPosition += static_cast<int>(std::strlen(entry_.Wert + entry_.WertPosition)) + 1;
        ++index_;
        return true;
    }

private:
    // Finds which value WertPosition stands on (-1 when it is not the start of one).
    void Locate() {
        if (entry_.Wert == nullptr) return;
        size_t offset = 0;
        for (int i = 0; i < entry_.WertGesetzt; ++i) {
            if (static_cast<long long>(offset) == entry_.WertPosition) index_ = i;
            offset += std::strlen(entry_.Wert + offset) + 1;
        }
        bytes_ = offset;
    }

    EingabeElement &entry_;
    int index_ = -1;
    size_t bytes_ = 0;
};

}  // namespace kx::core

#endif
