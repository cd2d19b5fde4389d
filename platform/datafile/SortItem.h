/// One record on its way through a sort: the bytes of its key, then those of its values.
///
///   bytes 0-1   size of the key         or 0xFFFF, and then
///   bytes 2-3   size of the values      bytes 2-9 size of the key, 10-17 size of the values
///   the key, the values
///
/// Sizes are in the machine's byte order: items never leave the process. Keys are such that their
/// order is that of their bytes and none is the start of another, so that two of them either differ
/// within the shorter one or are equal. Behind every buffer that holds items lie slack bytes, which
/// may be read and written and mean nothing.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "base/zvb_bytes.h"

struct SortItem {
  const unsigned char* key;
  std::size_t keySize;
  const unsigned char* values;
  std::size_t valuesSize;

  [[nodiscard]] const unsigned char* end() const noexcept { return values + valuesSize; }
};

namespace sortItem {

inline constexpr std::size_t shortHead = 4;
inline constexpr std::size_t longHead = 18;
inline constexpr std::size_t shortLimit = 0xFFFF;  ///< sizes in a short head are below this
inline constexpr std::size_t slack = 64;           ///< bytes behind the end of every buffer

/// Stores a number in the machine's byte order, at any address.
template <typename Number>
void put(unsigned char* bytes, Number number) noexcept {
  std::memcpy(bytes, &number, sizeof number);
}

template <typename Number>
Number get(const unsigned char* bytes) noexcept {
  Number number;
  std::memcpy(&number, bytes, sizeof number);
  return number;
}

/// Copies bytes between buffers that have slack behind them, which lets the usual sizes be copied
/// in large pieces and without asking for the exact one.
inline void copy(unsigned char* target, const unsigned char* source, std::size_t size) noexcept {
  constexpr std::size_t piece = 32;
  constexpr std::size_t many = 8 * piece;
  if (size > many) {
    std::memcpy(target, source, size);
    return;
  }
  for (std::size_t done = 0; done < size; done += piece) {
    std::memcpy(target + done, source + done, piece);
  }
}

/// The size of the head of an item whose parts have at most these sizes.
inline std::size_t headSize(std::size_t mostKey, std::size_t mostValues) noexcept {
  return mostKey < shortLimit && mostValues < shortLimit ? shortHead : longHead;
}

inline void writeHead(unsigned char* item, std::size_t headSize, std::size_t keySize,
                      std::size_t valuesSize) noexcept {
  if (headSize == shortHead) {
    put(item, static_cast<std::uint16_t>(keySize));
    put(item + 2, static_cast<std::uint16_t>(valuesSize));
  } else {
    put(item, std::uint16_t{shortLimit});
    put(item + 2, std::uint64_t{keySize});
    put(item + 10, std::uint64_t{valuesSize});
  }
}

inline SortItem read(const unsigned char* item) noexcept {
  const std::size_t shortKey = get<std::uint16_t>(item);
  if (shortKey != shortLimit) [[likely]] {
    const unsigned char* key = item + shortHead;
    return {key, shortKey, key + shortKey, get<std::uint16_t>(item + 2)};
  }
  const auto keySize = static_cast<std::size_t>(get<std::uint64_t>(item + 2));
  const unsigned char* key = item + longHead;
  return {key, keySize, key + keySize, static_cast<std::size_t>(get<std::uint64_t>(item + 10))};
}

/// Whether the item lies within `available` bytes, whatever those are; its head may lie in slack.
inline bool fits(const unsigned char* item, std::size_t available) noexcept {
  const bool isShort = get<std::uint16_t>(item) != shortLimit;
  const std::size_t head = isShort ? shortHead : longHead;
  if (available < head) {
    return false;
  }
  available -= head;
  const std::uint64_t keySize = isShort ? get<std::uint16_t>(item) : get<std::uint64_t>(item + 2);
  const std::uint64_t valuesSize =
      isShort ? get<std::uint16_t>(item + 2) : get<std::uint64_t>(item + 10);
  return keySize <= available && valuesSize <= available - keySize;
}

}  // namespace sortItem

/// Twelve bytes of a key as numbers that compare like them; bytes behind its end count as 0.
struct KeyPrefix {
  static constexpr std::size_t size = 12;

  std::uint64_t high;
  std::uint32_t low;

  bool operator==(const KeyPrefix&) const noexcept = default;

  /// Those from byte `from` of the key on.
  static KeyPrefix of(const unsigned char* key, std::size_t keySize, std::size_t from) noexcept {
    const std::size_t left = keySize > from ? keySize - from : 0;
    if (left >= size) [[likely]] {
      return {zvbHighestFirst(sortItem::get<std::uint64_t>(key + from)),
              highestFirst(sortItem::get<std::uint32_t>(key + from + 8))};
    }
    unsigned char padded[size] = {};
    std::memcpy(padded, key + keySize - left, left);
    return of(padded, size, 0);
  }

 private:
  static std::uint32_t highestFirst(std::uint32_t word) noexcept {
    return std::endian::native == std::endian::big
               ? word
               : static_cast<std::uint32_t>(zvbReverseBytes(word) >> 32U);
  }
};

/// Below 0, 0 or above 0 in the order of two keys that are known to agree before byte `from`.
inline int compareKeys(const SortItem& left, const SortItem& right, std::size_t from) noexcept {
  const std::size_t size = left.keySize < right.keySize ? left.keySize : right.keySize;
  return size <= from ? 0 : std::memcmp(left.key + from, right.key + from, size - from);
}
