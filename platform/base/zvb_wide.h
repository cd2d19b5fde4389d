/// Unsigned arithmetic on 128 bits, as far as decimals and sorting need it; the one place to serve
/// a compiler that has no such type. Internal to the platform libraries; may be called from any
/// thread.
#pragma once

#include <compare>
#include <cstdint>

struct ZvbWide {
  std::uint64_t high = 0;
  std::uint64_t low = 0;

  constexpr bool operator==(const ZvbWide&) const noexcept = default;
  constexpr std::strong_ordering operator<=>(const ZvbWide& other) const noexcept {
    return high == other.high ? low <=> other.low : high <=> other.high;
  }
};

__extension__ using ZvbNative128 = unsigned __int128;

constexpr ZvbNative128 zvbToNative(ZvbWide number) noexcept {
  return (ZvbNative128{number.high} << 64U) | number.low;
}

constexpr ZvbWide zvbFromNative(ZvbNative128 number) noexcept {
  return {static_cast<std::uint64_t>(number >> 64U), static_cast<std::uint64_t>(number)};
}

/// number * factor + addend, which must be less than 2^128.
constexpr ZvbWide zvbMultiplyAdd(ZvbWide number, std::uint64_t factor,
                                 std::uint64_t addend) noexcept {
  return zvbFromNative(zvbToNative(number) * factor + addend);
}

struct ZvbQuotient {
  ZvbWide quotient;
  std::uint64_t remainder;
};

constexpr ZvbQuotient zvbDivide(ZvbWide number, std::uint64_t divisor) noexcept {
  const ZvbNative128 quotient = zvbToNative(number) / divisor;
  const auto remainder = static_cast<std::uint64_t>(zvbToNative(number) - quotient * divisor);
  return {zvbFromNative(quotient), remainder};
}
