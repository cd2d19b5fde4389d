/// Reversing the bytes of numbers that were written in the other byte order.
#pragma once

#include <cstdint>

constexpr std::uint64_t zvbReverseBytes(std::uint64_t word) noexcept {
  word = ((word & 0x00FF00FF00FF00FFU) << 8U) | ((word >> 8U) & 0x00FF00FF00FF00FFU);
  word = ((word & 0x0000FFFF0000FFFFU) << 16U) | ((word >> 16U) & 0x0000FFFF0000FFFFU);
  return (word << 32U) | (word >> 32U);
}
