// The first bytes that make a definition argument a definition text in
// memory rather than an application name (the set programs see as
// KX_DEFINITION_MARKERS).
#ifndef KX_CORE_MARKERS_H
#define KX_CORE_MARKERS_H

#include <string_view>

#include "kx_list.h"

namespace kx::core {

inline constexpr std::string_view kDefinitionMarkers = KX_DEFINITION_MARKERS;

// False for the NUL byte, which ends a text rather than starting one.
inline bool IsDefinitionMarker(char first) {
    return first != '\0' && kDefinitionMarkers.find(first) != std::string_view::npos;
}

}  // namespace kx::core

#endif
