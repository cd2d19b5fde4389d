/// The type of a value: what a column is declared with and what a variant says it holds.
#pragma once

#include <cstdint>

#include "base/zvb_export.h"

/// Any other value is handled as zvbTypeString wherever a type has to be mapped.
enum zvbType : std::uint32_t {
  zvbTypeBoolean = 1,
  zvbTypeInteger = 2,  ///< 64 bits, signed
  zvbTypeReal = 3,     ///< a decimal, ZvbReal
  zvbTypeString = 4,
  zvbTypeDate = 5,  ///< ZvbDate
};

/// The name that people read, such as "integer"; "string" for every type not listed above.
/// The text is static. May be called from any thread.
[[nodiscard]] ZVB_API const char* zvbTypeToString(zvbType type) noexcept;
