#include "base/zvb_scan.h"

#include <charconv>
#include <cstddef>
#include <system_error>

namespace {

constexpr std::int64_t largestExponent = 1'000'000'000'000;

bool takeSign(std::string_view* text) noexcept {
  const bool isNegative = text->starts_with('-');
  if (isNegative || text->starts_with('+')) {
    text->remove_prefix(1);
  }
  return isNegative;
}

std::string_view takeDigits(std::string_view* text) noexcept {
  std::size_t size = 0;
  while (size < text->size() && zvbIsDigit((*text)[size])) {
    ++size;
  }
  const std::string_view digits = text->substr(0, size);
  text->remove_prefix(size);
  return digits;
}

bool takeExponent(std::string_view* text, std::int64_t* exponent) noexcept {
  const bool isNegative = takeSign(text);
  const std::string_view digits = takeDigits(text);
  std::int64_t value = 0;
  for (const char digit : digits) {
    value = value * 10 + (digit - '0');
    if (value > largestExponent) {
      value = largestExponent;
    }
  }
  *exponent = isNegative ? -value : value;
  return !digits.empty();
}

/// The power of ten just above the number: 12.5 has 2, 0.0125 has -1. For zero it means nothing.
std::int64_t magnitude(const ZvbNumberText& number) noexcept {
  const std::size_t inWhole = number.whole.find_first_not_of('0');
  if (inWhole != std::string_view::npos) {
    return number.exponent + static_cast<std::int64_t>(number.whole.size() - inWhole);
  }
  const std::size_t zeros = number.fraction.find_first_not_of('0');
  return number.exponent - static_cast<std::int64_t>(zeros);
}

}  // namespace

std::string_view zvbTrim(std::string_view text) noexcept {
  constexpr std::string_view blanks = " \t\r\n";
  const std::size_t first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos) {
    return {};
  }
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

bool zvbScanNumber(std::string_view text, ZvbNumberText* number) noexcept {
  *number = {};
  number->isNegative = takeSign(&text);
  number->whole = takeDigits(&text);
  if (number->whole.empty()) {
    return false;
  }
  if (text.starts_with('.')) {
    text.remove_prefix(1);
    number->fraction = takeDigits(&text);
    if (number->fraction.empty()) {
      return false;
    }
  }
  if (text.starts_with('e') || text.starts_with('E')) {
    text.remove_prefix(1);
    if (!takeExponent(&text, &number->exponent)) {
      return false;
    }
  }
  return text.empty();
}

bool zvbScanDouble(std::string_view text, double* number) noexcept {
  ZvbNumberText pieces;
  if (!zvbScanNumber(text, &pieces)) {
    return false;
  }
  if (text.starts_with('+')) {
    text.remove_prefix(1);
  }
  double value = 0;
  const std::from_chars_result result =
      std::from_chars(text.data(), text.data() + text.size(), value);
  if (result.ec == std::errc::result_out_of_range) {
    if (magnitude(pieces) > 0) {
      return false;
    }
    value = 0;
  }
  *number = value;
  return true;
}
