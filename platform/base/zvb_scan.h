/// Reading numbers from text, the same for every type that does so and under every locale.
/// Internal to the base library; may be called from any thread.
#pragma once

#include <cstdint>
#include <string_view>

constexpr bool zvbIsDigit(char byte) noexcept { return byte >= '0' && byte <= '9'; }

/// Without the blanks, tabs and line ends around it.
[[nodiscard]] std::string_view zvbTrim(std::string_view text) noexcept;

/// The pieces of `[+-]digits[.digits][(e|E)[+-]digits]`.
struct ZvbNumberText {
  bool isNegative = false;
  std::string_view whole;     // at least one digit
  std::string_view fraction;  // none without a point
  /// The written exponent; one beyond a million millions is taken for a million millions, which no
  /// number of digits in a text makes up for.
  std::int64_t exponent = 0;
};

/// False when the whole of `text`, without blanks around it, is no number.
[[nodiscard]] bool zvbScanNumber(std::string_view text, ZvbNumberText* number) noexcept;

/// The double nearest to the number that `text` is, without blanks around it; too small a number
/// gives 0. False, and *number as it was, when it is none or beyond the range of a double.
[[nodiscard]] bool zvbScanDouble(std::string_view text, double* number) noexcept;
