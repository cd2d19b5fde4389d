#include "base/ZvbReal.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

#include "base/zvb_bytes.h"
#include "base/zvb_scan.h"
#include "base/zvb_wide.h"

namespace {

/// How the bytes of toOrderedBytes begin.
constexpr unsigned char orderedNegative = 0;
constexpr unsigned char orderedZero = 1;
constexpr unsigned char orderedPositive = 2;

/// Digits that every 64-bit word holds.
constexpr int wordDigits = 19;
/// The plain notation of a number takes at most this many digits, zeros beside the coefficient
/// included.
constexpr std::int64_t plainPlaces = 40;

constexpr auto powersOfTen = [] {
  std::array<ZvbWide, ZvbReal::maximumDigits + 1> powers = {};
  powers[0] = {0, 1};
  for (std::size_t power = 1; power < powers.size(); ++power) {
    powers[power] = zvbMultiplyAdd(powers[power - 1], 10, 0);
  }
  return powers;
}();

constexpr std::uint64_t powerOfTen(int power) noexcept {  // power is at most wordDigits
  return powersOfTen[static_cast<std::size_t>(power)].low;
}

/// number * 10^power, which must be less than 2^128.
ZvbWide scaleUp(ZvbWide number, std::int64_t power) noexcept {
  for (; power > wordDigits; power -= wordDigits) {
    number = zvbMultiplyAdd(number, powerOfTen(wordDigits), 0);
  }
  return zvbMultiplyAdd(number, powerOfTen(static_cast<int>(power)), 0);
}

/// number / 10^power, cut to an integer; power is at most twice wordDigits.
ZvbWide scaleDown(ZvbWide number, std::int64_t power) noexcept {
  for (; power > wordDigits; power -= wordDigits) {
    number = zvbDivide(number, powerOfTen(wordDigits)).quotient;
  }
  return zvbDivide(number, powerOfTen(static_cast<int>(power))).quotient;
}

/// The number of decimal digits; 1 for zero.
int countDigits(ZvbWide number) noexcept {
  number.low |= 1U;  // spares zero a case; no power of ten above 1 lies between
  const int bits =
      number.high != 0 ? 128 - std::countl_zero(number.high) : 64 - std::countl_zero(number.low);
  const int atLeast = (bits * 1233) >> 12;  // 1233 / 4096 is a little less than log10(2)
  return atLeast + (number >= powersOfTen[static_cast<std::size_t>(atLeast)] ? 1 : 0);
}

/// A coefficient as text, without trailing zeros.
struct Digits {
  char text[2 * wordDigits];
  std::int64_t size = 0;
  std::int64_t trailingZeros = 0;  // those left out
};

/// Writes the digits of a coefficient of more than 64 bits; their number.
std::int64_t writeWideDigits(ZvbWide coefficient, char* text) noexcept {
  const int size = countDigits(coefficient);
  char* end = text + size;
  while (end != text) {
    const ZvbQuotient part = zvbDivide(coefficient, powerOfTen(wordDigits));
    std::uint64_t word = part.remainder;
    for (int left = wordDigits; left != 0 && end != text; --left, word /= 10) {
      *--end = static_cast<char>('0' + word % 10);
    }
    coefficient = part.quotient;
  }
  return size;
}

Digits writeDigits(ZvbWide coefficient) noexcept {
  Digits digits;
  char* text = digits.text;
  digits.size = coefficient.high != 0
                    ? writeWideDigits(coefficient, text)
                    : std::to_chars(text, text + sizeof digits.text, coefficient.low).ptr - text;
  while (digits.size > 1 && digits.text[digits.size - 1] == '0') {
    --digits.size;
    ++digits.trailingZeros;
  }
  return digits;
}

/// Appends to a buffer that is known to be large enough.
class Writer {
 public:
  explicit Writer(char* start) noexcept : start_(start), next_(start) {}

  void put(char byte) noexcept { *next_++ = byte; }
  void put(const char* text, std::int64_t size) noexcept {
    std::memcpy(next_, text, static_cast<std::size_t>(size));
    next_ += size;
  }
  void zeros(std::int64_t count) noexcept {
    std::memset(next_, '0', static_cast<std::size_t>(count));
    next_ += count;
  }
  void number(std::int64_t value) noexcept {
    next_ =
        std::to_chars(next_, next_ + std::numeric_limits<std::int64_t>::digits10 + 2, value).ptr;
  }
  [[nodiscard]] std::size_t size() const noexcept {
    return static_cast<std::size_t>(next_ - start_);
  }

 private:
  char* start_;
  char* next_;
};

void writePlain(const Digits& digits, std::int64_t exponent, Writer* writer) noexcept {
  if (exponent >= 0) {
    writer->put(digits.text, digits.size);
    writer->zeros(exponent);
    return;
  }
  const std::int64_t whole = digits.size + exponent;  // digits before the point
  if (whole > 0) {
    writer->put(digits.text, whole);
    writer->put('.');
    writer->put(digits.text + whole, -exponent);
    return;
  }
  writer->put("0.", 2);
  writer->zeros(-whole);
  writer->put(digits.text, digits.size);
}

void writeScientific(const Digits& digits, std::int64_t exponent, Writer* writer) noexcept {
  writer->put(digits.text[0]);
  if (digits.size > 1) {
    writer->put('.');
    writer->put(digits.text + 1, digits.size - 1);
  }
  writer->put('e');
  writer->number(exponent + digits.size - 1);
}

std::int64_t countPlainPlaces(const Digits& digits, std::int64_t exponent) noexcept {
  return exponent >= 0 ? digits.size + exponent : std::max(digits.size, 1 - exponent);
}

/// Compares numbers above zero.
std::strong_ordering compareSizes(ZvbWide left, std::int64_t leftExponent, ZvbWide right,
                                  std::int64_t rightExponent) noexcept {
  if (leftExponent == rightExponent) {
    return left <=> right;
  }
  const int leftDigits = countDigits(left);
  const int rightDigits = countDigits(right);
  if (leftDigits + leftExponent != rightDigits + rightExponent) {
    return leftDigits + leftExponent <=> rightDigits + rightExponent;
  }
  return leftDigits < rightDigits ? scaleUp(left, rightDigits - leftDigits) <=> right
                                  : left <=> scaleUp(right, leftDigits - rightDigits);
}

/// The digits of a number without the zeros before and after them, and the power of ten that the
/// last of them counts.
struct Significant {
  std::string_view whole;
  std::string_view fraction;
  std::int64_t exponent;

  [[nodiscard]] std::size_t size() const noexcept { return whole.size() + fraction.size(); }
};

void dropLeadingZeros(std::string_view* digits) noexcept {
  digits->remove_prefix(std::min(digits->find_first_not_of('0'), digits->size()));
}

std::int64_t dropTrailingZeros(std::string_view* digits) noexcept {
  const std::size_t size = digits->size();
  digits->remove_suffix(size - (digits->find_last_not_of('0') + 1));
  return static_cast<std::int64_t>(size - digits->size());
}

Significant significantDigits(const ZvbNumberText& number) noexcept {
  Significant digits = {number.whole, number.fraction, number.exponent};
  digits.exponent -= static_cast<std::int64_t>(digits.fraction.size());
  dropLeadingZeros(&digits.whole);
  if (digits.whole.empty()) {
    dropLeadingZeros(&digits.fraction);
  }
  digits.exponent += dropTrailingZeros(&digits.fraction);
  if (digits.fraction.empty()) {
    digits.exponent += dropTrailingZeros(&digits.whole);
  }
  return digits;
}

/// Reads digits into a coefficient, as many at once as a word holds.
ZvbWide addDigits(ZvbWide coefficient, std::string_view text) noexcept {
  while (!text.empty()) {
    const std::string_view part = text.substr(0, wordDigits);
    std::uint64_t word = 0;
    for (const char digit : part) {
      word = word * 10 + static_cast<std::uint64_t>(digit - '0');
    }
    coefficient = zvbMultiplyAdd(coefficient, powerOfTen(static_cast<int>(part.size())), word);
    text.remove_prefix(part.size());
  }
  return coefficient;
}

}  // namespace

ZvbReal ZvbReal::fromInt64(std::int64_t number) noexcept {
  const bool isNegative = number < 0;
  auto coefficient = static_cast<std::uint64_t>(number);
  if (isNegative) {
    coefficient = 0 - coefficient;
  }
  std::int32_t exponent = 0;
  while (coefficient != 0 && coefficient % 10 == 0) {
    coefficient /= 10;
    ++exponent;
  }
  return fromWords(static_cast<std::uint32_t>(exponent) | (isNegative ? signBit : 0), coefficient,
                   0);
}

ZvbReal ZvbReal::fromDouble(double number, bool* failed) noexcept {
  constexpr double exactIntegers = 0x1p53;
  if (std::abs(number) < exactIntegers && number == std::trunc(number)) {
    return fromInt64(static_cast<std::int64_t>(number));
  }
  char text[32];
  const std::to_chars_result result =
      std::to_chars(text, text + sizeof text, number, std::chars_format::scientific);
  return fromText({text, static_cast<std::size_t>(result.ptr - text)}, failed);
}

ZvbReal ZvbReal::fromText(std::string_view text, bool* failed) noexcept {
  ZvbNumberText number;
  if (!zvbScanNumber(zvbTrim(text), &number)) {
    *failed = true;
    return {};
  }
  const Significant digits = significantDigits(number);
  if (digits.size() == 0) {
    return fromWords(0, 0, 0);
  }
  const auto exponent = static_cast<std::int32_t>(digits.exponent);
  if (digits.size() > maximumDigits || exponent != digits.exponent) {
    *failed = true;
    return {};
  }
  const ZvbWide coefficient = addDigits(addDigits({}, digits.whole), digits.fraction);
  const std::uint64_t sign = number.isNegative ? signBit : 0;
  return fromWords(sign | static_cast<std::uint32_t>(exponent), coefficient.low, coefficient.high);
}

ZvbReal ZvbReal::fromSwappedFD(const std::uint64_t (&words)[3]) noexcept {
  return fromWords(zvbReverseBytes(words[0]), zvbReverseBytes(words[1]), zvbReverseBytes(words[2]));
}

std::int64_t ZvbReal::asInt64(bool* failed) const noexcept {
  if (isZero()) {
    return 0;
  }
  const ZvbWide coefficient = {words_[2], words_[1]};
  const std::int64_t wholeDigits = std::int64_t{exponent()} + countDigits(coefficient);
  if (isNull() || wholeDigits > wordDigits) {
    *failed = true;
    return 0;
  }
  if (wholeDigits <= 0) {
    return 0;
  }
  const ZvbWide whole = exponent() >= 0 ? scaleUp(coefficient, exponent())
                                        : scaleDown(coefficient, -std::int64_t{exponent()});
  constexpr std::uint64_t most = std::numeric_limits<std::int64_t>::max();
  if (whole.low > most + (isNegative() ? 1 : 0)) {
    *failed = true;
    return 0;
  }
  return static_cast<std::int64_t>(isNegative() ? 0 - whole.low : whole.low);
}

double ZvbReal::asDouble(bool* failed) const noexcept {
  char text[textCapacity];
  double number = 0;
  if (!zvbScanDouble({text, toText(text)}, &number)) {
    *failed = true;
  }
  return number;
}

std::size_t ZvbReal::toText(char (&text)[textCapacity]) const noexcept {
  if (isNull()) {
    return 0;
  }
  const Digits digits = writeDigits({words_[2], words_[1]});
  const std::int64_t scale = exponent() + digits.trailingZeros;
  Writer writer(text);
  if (isNegative()) {
    writer.put('-');
  }
  if (countPlainPlaces(digits, scale) <= plainPlaces) {
    writePlain(digits, scale, &writer);
  } else {
    writeScientific(digits, scale, &writer);
  }
  return writer.size();
}

int ZvbReal::compare(const ZvbReal& other) const noexcept {
  const auto rank = [](const ZvbReal& real) {
    return real.isNull() ? -2 : real.isZero() ? 0 : real.isNegative() ? -1 : 1;
  };
  const int order = rank(*this);
  if (order != rank(other) || order == 0 || isNull()) {
    return order - rank(other);
  }
  const std::strong_ordering sizes = compareSizes(
      {words_[2], words_[1]}, exponent(), {other.words_[2], other.words_[1]}, other.exponent());
  return std::is_eq(sizes) ? 0 : std::is_gt(sizes) == (order > 0) ? 1 : -1;
}

/// A byte for the sign, then of a number that is not 0 the place of its first digit (5 bytes) and
/// its coefficient with 38 digits (16 bytes), both with the highest byte first and, below 0, all
/// bits turned around.
std::size_t ZvbReal::toOrderedBytes(unsigned char* bytes) const noexcept {
  if (isZero()) {
    bytes[0] = orderedZero;
    return 1;
  }
  const ZvbWide coefficient = {words_[2], words_[1]};
  const int digits = countDigits(coefficient);
  const ZvbWide scaled = scaleUp(coefficient, maximumDigits - digits);
  constexpr std::int64_t bias = std::int64_t{1} << 39;
  const auto place = static_cast<std::uint64_t>(bias + exponent() + digits);
  bytes[0] = isNegative() ? orderedNegative : orderedPositive;
  const unsigned char flip = isNegative() ? 0xFF : 0;
  const auto put = [flip](unsigned char* to, std::uint64_t word, int size) {
    for (int i = 0; i < size; ++i) {
      to[i] = static_cast<unsigned char>((word >> (8 * (size - 1 - i))) ^ flip);
    }
  };
  put(bytes + 1, place, 5);
  put(bytes + 6, scaled.high, 8);
  put(bytes + 14, scaled.low, 8);
  return orderedSize;
}

std::size_t ZvbReal::orderedSizeOf(unsigned char first) noexcept {
  return first == orderedZero ? 1 : orderedSize;
}
