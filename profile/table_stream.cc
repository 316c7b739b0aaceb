// Rebuilding a flat list of table cells (ConvertToStream2) and cutting
// identifier texts at a marker (AnalyzeLeafIDCheck, AnalyzeTrapNameCheck).
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "core/text.h"
#include "kx_profile.h"
#include "profile/profile_internal.h"

namespace kx::profile {
namespace {

struct Reshape {
    std::string_view divider;
    int removeCount;
    const int *removePositions;
    int64_t start, end, step;
    int groupSize;
    std::vector<int> markers;
    bool keep;
};

// The values block read one text at a time, and the joined result.
struct Reshaping {
    const char *next;
    int left;
    std::string out;
    bool empty = true;
    std::string last;  // the last value consumed, for fillers under keep

    std::string_view Take() {
        const std::string_view value(next);
        next += value.size() + 1;
        --left;
        last.assign(value);
        return value;
    }
    void Put(std::string_view value, std::string_view separator) {
        if (!empty) out.append(separator);
        out.append(value);
        empty = false;
    }
};

std::vector<int> MarkerNumbers(const char *markers, std::string_view divider) {
    std::vector<int> numbers;
    if (markers == nullptr) return numbers;
    const std::string_view text(markers);
    std::size_t start = 0;
    for (std::size_t hit; !divider.empty() && (hit = text.find(divider, start)) != std::string_view::npos;
         start = hit + divider.size())
        numbers.push_back(std::atoi(std::string(text.substr(start, hit - start)).c_str()));
    numbers.push_back(std::atoi(std::string(text.substr(start)).c_str()));
    return numbers;
}

// One group of columns; returns how many values it consumed.
int ProcessGroup(const Reshape &shape, Reshaping &state) {
    const int before = state.left;
    std::size_t pointer = 0;
    int m = shape.markers.empty() ? 0 : shape.markers.front();
    int r = 0;
    for (int col = 0; col < shape.groupSize && state.left > 0; ++col) {
        if (r < shape.removeCount && col == shape.removePositions[r]) {
            const std::string_view value = state.Take();
            if (shape.keep) --col;  // a dropped value is no column
            else state.Put(value, ",");
            ++r;
        } else if (shape.markers.empty()) {
            state.Put(state.Take(), shape.divider);
        } else if (pointer < shape.markers.size() && static_cast<std::size_t>(col) < shape.markers.size() &&
                   shape.markers[static_cast<std::size_t>(col)] == m) {
            state.Put(state.Take(), shape.divider);
            while (pointer < shape.markers.size() && shape.markers[pointer] == m) ++pointer;
            if (pointer < shape.markers.size()) m = shape.markers[pointer];
        } else {
            state.Put(shape.keep ? state.last : std::string(), shape.divider);
        }
    }
    return before - state.left;
}

std::string Rebuild(const char *values, int valueCount, const Reshape &shape) {
    Reshaping state{values, valueCount, {}, true, {}};
    const bool grouping = shape.removeCount > 0 || shape.groupSize > 0;
    int64_t g = shape.start;
    while (state.left > 0) {
        const int64_t i = valueCount - state.left;
        if (!grouping || i < g || i >= shape.end) {
            state.Put(state.Take(), shape.divider);
            continue;
        }
        // A group that takes no value would repeat for ever: the values
        // left are joined as they stand.
        if (ProcessGroup(shape, state) == 0) {
            while (state.left > 0) state.Put(state.Take(), shape.divider);
            break;
        }
        g += shape.step;
    }
    return state.out;
}

// Cuts text at the first marker at or after from; the byte behind it, or null.
char *CutAt(char *from, const char *marker) {
    char *hit = std::strstr(from, marker);
    if (hit == nullptr) return nullptr;
    *hit = '\0';
    return hit + std::strlen(marker);
}

}  // namespace
}  // namespace kx::profile

extern "C" {

char *ConvertToStream2(const char *values, int valueCount, const char *divider, int removeCount,
                       const int *removePositions, int start, int end, int step, int groupSize, const char *markers,
                       int keep) {
    return kx::profile::Guard(static_cast<char *>(nullptr), [&]() -> char * {
        using namespace kx::profile;
        if (values == nullptr || valueCount < 1) return nullptr;
        const std::string_view glue = divider != nullptr ? divider : "";
        const Reshape shape{glue, removePositions != nullptr ? removeCount : 0, removePositions, start, end, step,
                            groupSize, MarkerNumbers(markers, glue), keep != 0};
        return kx::core::HeapCopy(Rebuild(values, valueCount, shape));
    });
}

int AnalyzeLeafIDCheck(char *text, const char *marker, char **after, char **second) {
    if (after != nullptr) *after = nullptr;
    if (second != nullptr) *second = nullptr;
    if (text == nullptr || marker == nullptr || *marker == '\0') return 1;
    if (*text == '.') {
        char *behind = kx::profile::CutAt(text, marker);
        if (after != nullptr) *after = behind;
        return behind != nullptr ? 0 : 1;
    }
    char *middle = kx::profile::CutAt(text, marker);
    if (middle == nullptr) return 1;
    if (second != nullptr) *second = middle;
    char *behind = kx::profile::CutAt(middle, marker);
    if (after != nullptr) *after = behind;
    return behind != nullptr ? 0 : 1;
}

int AnalyzeTrapNameCheck(char *text, const char *marker, char **after) {
    if (after != nullptr) *after = nullptr;
    if (text == nullptr || marker == nullptr || *marker == '\0') return 1;
    char *behind = kx::profile::CutAt(text, marker);
    if (after != nullptr) *after = behind;
    return behind != nullptr ? 0 : 1;
}

}  // extern "C"
