#include "core/selection_form.h"

#include <algorithm>
#include <string>

#include "kx_input.h"

namespace kx::core {
namespace {

constexpr auto npos = std::string_view::npos;

// The text from first up to last; empty when last lies before first.
std::string_view Between(std::string_view text, size_t first, size_t last) {
    return last > first ? text.substr(first, last - first) : std::string_view();
}

// The first "[" that the start marker follows directly.
size_t BracketBeforeMarker(std::string_view text, std::string_view marker) {
    for (size_t at = text.find('['); at != npos; at = text.find('[', at + 1))
        if (text.substr(at + 1).starts_with(marker)) return at;
    return npos;
}

// The "]" pairing the "[" at open, looked for before the text's last "]"
// (the whole rest when that lies before open); npos when there is none.
size_t PairedClose(std::string_view text, size_t open, size_t lastClose) {
    const std::string bounded(lastClose > open ? text.substr(open, lastClose - open) : text.substr(open));
    const char *close = PairIt(bounded.c_str(), "[", "]");
    return close > bounded.c_str() ? open + static_cast<size_t>(close - bounded.c_str()) : npos;
}

}  // namespace

SelectionFault ReadSelectionForm(std::string_view text, std::string_view startMarker, SelectionSource source,
                                 SelectionParts &parts) {
    const bool placeholder = source == SelectionSource::kPlaceholder;
    const size_t lastClose = text.rfind(']');
    if (lastClose == npos) return SelectionFault::kNoClosingBracket;
    const size_t open = placeholder ? text.find('[') : BracketBeforeMarker(text, startMarker);
    if (open == npos) return SelectionFault::kNoKey;
    const size_t keyStart = placeholder ? text.find(startMarker, open + 1) : open + 1;
    const size_t keyOpen = keyStart == npos ? npos : text.find('[', keyStart);
    if (keyOpen == npos) return SelectionFault::kNoKey;
    const size_t keyClose = placeholder ? PairedClose(text, keyOpen, lastClose) : text.find(']', keyOpen + 1);
    if (keyClose == npos) return SelectionFault::kKeyNotClosed;
    parts.prefix = Between(text, std::min(startMarker.size(), text.size()), open);
    parts.key = Between(text, keyStart + startMarker.size(), keyOpen);
    parts.elements = Between(text, keyOpen + 1, keyClose);
    return SelectionFault::kNone;
}

}  // namespace kx::core
