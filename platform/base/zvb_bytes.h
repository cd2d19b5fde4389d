/// The order of the bytes of numbers.
#pragma once

#include <bit>
#include <cstdint>

constexpr std::uint64_t zvbReverseBytes(std::uint64_t word) noexcept {
  word = ((word & 0x00FF00FF00FF00FFU) << 8U) | ((word >> 8U) & 0x00FF00FF00FF00FFU);
  word = ((word & 0x0000FFFF0000FFFFU) << 16U) | ((word >> 16U) & 0x0000FFFF0000FFFFU);
  return (word << 32U) | (word >> 32U);
}

/// A number whose bytes in memory are those of `word` with the highest, or the lowest, first.
constexpr std::uint64_t zvbHighestFirst(std::uint64_t word) noexcept {
  return std::endian::native == std::endian::big ? word : zvbReverseBytes(word);
}
constexpr std::uint64_t zvbLowestFirst(std::uint64_t word) noexcept {
  return std::endian::native == std::endian::little ? word : zvbReverseBytes(word);
}
