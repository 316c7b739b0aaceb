// Helpers the conversion handlers share: reading numbers, evaluating and
// decoding argument texts, splitting lists and handing results out.
#ifndef KX_CONVERT_INTERNAL_H
#define KX_CONVERT_INTERNAL_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "core/evaluation.h"
#include "core/number.h"
#include "core/text.h"

namespace kx::convert {

// Rows of ConvertTable (its count, known at compile time).
inline constexpr std::size_t kConvertTableSize = 51;

// The text a conversion yields when it has no sound result.
inline constexpr std::string_view kNotAvailable = "n.a.";
// Longest result of "_format," and "_substring,".
inline constexpr std::size_t kShortResultLimit = 127;
// Longest result of "_strchange," and "_dividelist,".
inline constexpr std::size_t kLongResultLimit = 1023;

// The value as text: a NULL value reads as the empty text.
std::string_view ValueText(const char *value);

// "%d" of number, as a new heap text (NULL when memory runs out).
char *PrintInt(int32_t number);

// The shared text helpers, and the evaluation of argument texts (MatchIt).
using core::Cut;
using core::CutAt;
using core::Decoded;
using core::Evaluated;
using core::HeapCopy;
using core::ReadInt;
using core::Split;

}  // namespace kx::convert

#endif
