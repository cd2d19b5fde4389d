/// A decimal number: sign, coefficient of up to 38 decimal digits, decimal exponent; or null.
///
/// The value is coefficient * 10^exponent. Its packed form, three unsigned 64-bit words, is what
/// tables store:
///
///   word 0   bit 63 null, bit 62 sign (1 is negative), bits 0-31 the exponent in two's complement,
///            all other bits 0
///   word 1   the low half of the coefficient
///   word 2   the high half of the coefficient
///
/// Numbers made here keep no trailing zeros in the coefficient, and zero has sign and exponent 0.
/// A packed form with unknown bits or a coefficient of more than 38 digits reads as null.
/// Nothing throws or allocates. Thread rule: as for any value.
#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

#include "base/zvb_export.h"

class ZVB_API ZvbReal {
 public:
  static constexpr int maximumDigits = 38;
  static constexpr unsigned packedSize = 24;  ///< bytes
  /// Room in bytes for the text of any number, terminator included.
  static constexpr std::size_t textCapacity = 96;
  static constexpr std::size_t orderedSize = 22;  ///< bytes, at most

  /// A null number.
  ZvbReal() noexcept = default;
  ZvbReal(const ZvbReal& other) noexcept = default;
  ZvbReal& operator=(const ZvbReal& other) noexcept = default;
  virtual ~ZvbReal() = default;

  [[nodiscard]] static ZvbReal fromInt64(std::int64_t number) noexcept;
  /// The shortest decimal that reads back as the same double; sets *failed, and gives null, for
  /// infinities and NaN.
  [[nodiscard]] static ZvbReal fromDouble(double number, bool* failed) noexcept;
  /// Reads `[+-]digits[.digits][(e|E)[+-]digits]`, blanks, tabs and line ends around it ignored.
  /// Sets *failed, and gives null, for any other text, for more than 38 significant digits and for
  /// an exponent that does not fit 32 bits: nothing is rounded.
  [[nodiscard]] static ZvbReal fromText(std::string_view text, bool* failed) noexcept;
  /// From the packed form; `swap` when the words were written in the other byte order.
  [[nodiscard]] static ZvbReal fromFD(const std::uint64_t (&words)[3], bool swap) noexcept {
    return swap ? fromSwappedFD(words) : fromWords(words[0], words[1], words[2]);
  }
  /// From words that asFD has filled, which are not looked at again.
  [[nodiscard]] static ZvbReal fromKnownFD(const std::uint64_t (&words)[3]) noexcept {
    ZvbReal real;
    real.words_[0] = words[0];
    real.words_[1] = words[1];
    real.words_[2] = words[2];
    return real;
  }

  /// Fills the packed form.
  void asFD(std::uint64_t (*words)[3]) const noexcept {
    // Word by word, which lets the compiler keep them in registers.
    (*words)[0] = words_[0];
    (*words)[1] = words_[1];
    (*words)[2] = words_[2];
  }
  [[nodiscard]] bool isNull() const noexcept { return (words_[0] & nullBit) != 0; }
  [[nodiscard]] bool isZero() const noexcept {
    return !isNull() && words_[1] == 0 && words_[2] == 0;
  }
  [[nodiscard]] bool isNegative() const noexcept { return (words_[0] & signBit) != 0; }

  /// The number cut toward zero; sets *failed when it is null or outside 64 bits.
  [[nodiscard]] std::int64_t asInt64(bool* failed) const noexcept;
  /// The nearest double; sets *failed when it is null or beyond the range of a double.
  [[nodiscard]] double asDouble(bool* failed) const noexcept;
  /// Writes the number without terminator in plain decimal notation, such as "-12.5" or "1200", or
  /// with an exponent, such as "1.5e-60", when the plain form takes more than 40 places. Returns
  /// the number of bytes, fewer than textCapacity; 0 for null.
  std::size_t toText(char (&text)[textCapacity]) const noexcept;

  /// Writes bytes whose order, byte by byte, is that of the numbers, whatever their scale; equal
  /// numbers have equal bytes, and none are the start of another's. Returns their number, at most
  /// orderedSize; not for null.
  std::size_t toOrderedBytes(unsigned char* bytes) const noexcept;
  /// The number of such bytes by the first of them.
  [[nodiscard]] static std::size_t orderedSizeOf(unsigned char first) noexcept;

  /// Below 0, 0 or above 0 in the order of the numbers, whatever their scale; null comes first.
  [[nodiscard]] int compare(const ZvbReal& other) const noexcept;

 private:
  [[nodiscard]] static ZvbReal fromSwappedFD(const std::uint64_t (&words)[3]) noexcept;
  /// Zero loses its sign and exponent.
  [[nodiscard]] static ZvbReal fromWords(std::uint64_t head, std::uint64_t low,
                                         std::uint64_t high) noexcept {
    ZvbReal real;
    if ((head & ~numberBits) == 0 && (high < limitHigh || (high == limitHigh && low < limitLow))) {
      real.words_[0] = (low | high) == 0 ? 0 : head;
      real.words_[1] = low;
      real.words_[2] = high;
    }
    return real;
  }
  [[nodiscard]] std::int32_t exponent() const noexcept {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(words_[0]));
  }

  static constexpr std::uint64_t nullBit = std::uint64_t{1} << 63;
  static constexpr std::uint64_t signBit = std::uint64_t{1} << 62;
  static constexpr std::uint64_t numberBits = signBit | 0xFFFFFFFF;
  // the two halves of 10^38, above all coefficients
  static constexpr std::uint64_t limitHigh = 0x4B3B4CA85A86C47A;
  static constexpr std::uint64_t limitLow = 0x098A224000000000;

  std::uint64_t words_[3] = {nullBit, 0, 0};  // the packed form
};
