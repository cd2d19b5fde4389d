/// A date with an optional time of day, or null.
///
/// Held as a double: days since 1970-01-01 in the proleptic Gregorian calendar, the fraction being
/// the time of day; no time zone. NaN is null. The double is kept bit for bit; texts show
/// milliseconds, rounded to the nearest. Texts exist for the years 1 to 9999.
/// Nothing throws. Thread rule: as for any value.
#pragma once

#include <cstdint>
#include <limits>
#include <string_view>

#include "base/ZvbString.h"
#include "base/zvb_export.h"

class ZVB_API ZvbDate {
 public:
  /// Room in bytes for the text of any date, terminator included.
  static constexpr std::size_t textCapacity = 32;

  /// A null date.
  ZvbDate() noexcept = default;

  [[nodiscard]] static ZvbDate fromDays(double days) noexcept {
    ZvbDate date;
    date.days_ = days;
    return date;
  }
  /// Reads `YYYY-MM-DD`, optionally followed by `T` or a blank and `HH:MM[:SS[.fraction]]`, blanks
  /// around it ignored. Sets *failed, and gives null, for any other text and for a day or time that
  /// does not exist.
  [[nodiscard]] static ZvbDate fromText(std::string_view text, bool* failed) noexcept;

  [[nodiscard]] bool isNull() const noexcept { return days_ != days_; }
  /// Days since 1970-01-01; NaN for null.
  [[nodiscard]] double days() const noexcept { return days_; }

  /// With `forPeople` "2024-02-29", or "2024-02-29 13:45:10.250" when there is a time of day;
  /// without it always the exact form "2024-02-29T13:45:10.250". Both read back. A null string for
  /// a null date and for one outside the years 1 to 9999.
  [[nodiscard]] ZvbString asString(bool forPeople) const noexcept;
  /// The same without a string: writes the text unterminated and returns its size in bytes, 0 when
  /// there is no text.
  std::size_t toText(char (&text)[textCapacity], bool forPeople) const noexcept;

 private:
  double days_ = std::numeric_limits<double>::quiet_NaN();
};
