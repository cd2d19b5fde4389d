/// The texts of single values: what a field means as a type, and how a value is written.
#pragma once

#include <cstdint>
#include <string_view>

#include "base/ZvbDatavar.h"
#include "base/ZvbDate.h"
#include "base/ZvbReal.h"
#include "base/zvb_type.h"

namespace zvwttool {

/// The tool's word for a type, such as "int".
[[nodiscard]] const char* typeWord(zvbType type);

/// Puts what `text` means as a value of the type into *value. False when it means none: unlike the
/// library's own conversion, an integer loses no fraction here, and a date no part of a
/// millisecond.
[[nodiscard]] bool readField(std::string_view text, zvbType type, ZvbDatavar* value);

/// Writes a date as `YYYY-MM-DD`, followed by `THH:MM:SS.mmm` when there is a time of day; its size
/// in bytes, 0 when the date has no text.
[[nodiscard]] std::size_t writeDate(const ZvbDate& date, char (&text)[ZvbDate::textCapacity]);

/// The exported text of one value after another.
class ValueText {
 public:
  /// The text of a value that is not null, valid until the next call and while the value is
  /// unchanged. Empty for every type but string means that the value has no text.
  [[nodiscard]] std::string_view of(const ZvbDatavar& value);

 private:
  [[nodiscard]] std::string_view ofInteger(std::int64_t number);

  char date_[ZvbDate::textCapacity] = {};
  char number_[ZvbReal::textCapacity] = {};
};

}  // namespace zvwttool
