/// Numbers in files: fixed-width fields in this machine's byte order or the other one.
#pragma once

#include <concepts>
#include <cstdint>
#include <cstring>

template <std::integral Number>
constexpr Number reversedBytes(Number number) noexcept {
  static_assert(sizeof(Number) == 2 || sizeof(Number) == 4 || sizeof(Number) == 8);
  if constexpr (sizeof(Number) == 2) {
    return static_cast<Number>(__builtin_bswap16(static_cast<std::uint16_t>(number)));
  } else if constexpr (sizeof(Number) == 4) {
    return static_cast<Number>(__builtin_bswap32(static_cast<std::uint32_t>(number)));
  } else {
    return static_cast<Number>(__builtin_bswap64(static_cast<std::uint64_t>(number)));
  }
}

/// Reads a field; `swap` when it was written in the other byte order.
template <std::integral Number>
Number loadField(const unsigned char* bytes, bool swap) noexcept {
  Number number;
  std::memcpy(&number, bytes, sizeof number);
  return swap ? reversedBytes(number) : number;
}

/// Writes a field in this machine's byte order.
template <std::integral Number>
void storeField(unsigned char* bytes, Number number) noexcept {
  std::memcpy(bytes, &number, sizeof number);
}
