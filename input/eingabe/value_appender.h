// Appending values to entries of the input list in amortised constant time.
#ifndef KX_INPUT_EINGABE_VALUE_APPENDER_H
#define KX_INPUT_EINGABE_VALUE_APPENDER_H

#include <cstddef>
#include <string_view>
#include <unordered_map>

#include "kx_input.h"

namespace kx::input {

// Remembers, per entry, where its values end and how large its block is, and
// grows the block geometrically, so that n appends to one entry cost O(n)
// bytes copied in all instead of O(n^2): a request may repeat one indexed
// name a hundred thousand times. Only the first append to an entry walks its
// values. Meant for one run of assignments over a list whose entries do not
// move; an entry whose Wert is replaced meanwhile is recognised by its Wert
// and count, or told with Forget.
class ValueAppender {
public:
    // Adds count values (bytes: each value with its NUL) after the entry's
    // present ones. WertPosition stays when it stands at the start of a value,
    // otherwise it goes back to the first. False, and the entry unchanged,
    // when the entry would outgrow its int limits or memory runs out.
    bool Append(EingabeElement &entry, std::string_view bytes, int count);
    void Forget(const EingabeElement &entry) { marks_.erase(&entry); }

private:
    struct Mark {
        const char *wert = nullptr;  // the block this mark describes
        int count = 0;               // WertGesetzt when it was last seen
        std::size_t end = 0;         // bytes of the values
        std::size_t capacity = 0;    // bytes of the block
    };
    Mark &MarkOf(EingabeElement &entry);

    std::unordered_map<const EingabeElement *, Mark> marks_;
};

}  // namespace kx::input

#endif
