// Count entries: the entry named like a list entry followed by
// "Internalcount" holds the group sizes of a nested list, one decimal number
// per value of the list.
#ifndef KX_TEMPLATE_COUNT_ENTRIES_H
#define KX_TEMPLATE_COUNT_ENTRIES_H

#include <string_view>

namespace kx::tmpl {

inline constexpr std::string_view Text_Internalcount = "Internalcount";

}  // namespace kx::tmpl

#endif
