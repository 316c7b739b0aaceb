// Reading a number from a text the way the console's programs always have.
#ifndef KX_CORE_NUMBER_H
#define KX_CORE_NUMBER_H

#include <cstdint>
#include <string_view>

namespace kx::core {

// Reads a 32-bit number the way atoi does on the console's 32-bit platform:
// leading blanks, a sign and digits; anything else ends it; "" is 0; a
// number beyond the 32-bit range sticks at its limit (where atoi would be
// undefined).
int32_t ReadInt(std::string_view text);

}  // namespace kx::core

#endif
