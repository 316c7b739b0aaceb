#include "input/eingabe/value_appender.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>

namespace kx::input {
namespace {

// An entry's values never grow beyond what its int fields can carry.
constexpr std::size_t kMaxValueBytes = INT_MAX;
constexpr int kMaxValueCount = INT_MAX;
constexpr std::size_t kFirstCapacity = 64;

}  // namespace

// A mark not yet taken, or one of another block: one walk over the values
// measures them and puts WertPosition on a value, where later appends keep it.
ValueAppender::Mark &ValueAppender::MarkOf(EingabeElement &entry) {
    Mark &mark = marks_[&entry];
    if (mark.wert != nullptr && mark.wert == entry.Wert && mark.count == entry.WertGesetzt) return mark;
    std::size_t end = 0;
    bool onValue = false;
    for (int i = 0; entry.Wert != nullptr && i < entry.WertGesetzt; ++i) {
        onValue = onValue || static_cast<long long>(end) == entry.WertPosition;
        end += std::strlen(entry.Wert + end) + 1;
    }
    // The start of the first value to come counts as a value, too.
    if (!onValue && static_cast<long long>(end) != entry.WertPosition) entry.WertPosition = 0;
    mark = Mark{entry.Wert, entry.WertGesetzt, end, end};
    return mark;
}

bool ValueAppender::Append(EingabeElement &entry, std::string_view bytes, int count) {
    Mark &mark = MarkOf(entry);
    if (mark.end > kMaxValueBytes - bytes.size() || mark.count > kMaxValueCount - count) return false;
    const std::size_t needed = mark.end + bytes.size();
    if (needed > mark.capacity || entry.Wert == nullptr) {
        const std::size_t capacity = std::max({needed, 2 * mark.capacity, kFirstCapacity});
        auto *grown = static_cast<char *>(std::realloc(entry.Wert, capacity));
        if (grown == nullptr) return false;
        entry.Wert = grown;
        mark.capacity = capacity;
    }
    if (!bytes.empty()) std::memcpy(entry.Wert + mark.end, bytes.data(), bytes.size());
    mark.end = needed;
    entry.WertGesetzt += count;
    mark.wert = entry.Wert;
    mark.count = entry.WertGesetzt;
    return true;
}

}  // namespace kx::input
