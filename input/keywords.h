// Recording the entries that bear the names of the keyword table.
#ifndef KX_INPUT_KEYWORDS_H
#define KX_INPUT_KEYWORDS_H

#include <string_view>

#include "kx_input.h"

namespace kx::request {

// When name is one of the keywords (exact, case-sensitive), its index global
// becomes index.
void RecordKeyword(std::string_view name, int index);

}  // namespace kx::request

#endif
