/// Sorting the items of an arena by means of small entries that stand for them.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/zvb_wide.h"
#include "datafile/SortItem.h"

/// An item by the first bytes of its key and its place in the arena: 16 bytes that compare as two
/// integers. Items lie in the arena in the order in which they came, so that the place decides
/// between equal keys and no two entries are equal.
struct SortEntry {
  std::uint64_t high;
  std::uint64_t low;  ///< the prefix's low part, then 32 bits of place

  static SortEntry of(const KeyPrefix& prefix, std::size_t place) noexcept {
    return {prefix.high, std::uint64_t{prefix.low} << 32U | static_cast<std::uint32_t>(place)};
  }

  [[nodiscard]] std::size_t place() const noexcept { return static_cast<std::uint32_t>(low); }
  [[nodiscard]] KeyPrefix prefix() const noexcept {
    return {high, static_cast<std::uint32_t>(low >> 32U)};
  }
  [[nodiscard]] bool samePrefix(const SortEntry& other) const noexcept {
    return high == other.high && low >> 32U == other.low >> 32U;
  }
  /// One comparison without a branch, so that sorting does not wait for guesses about the data.
  [[nodiscard]] bool isBefore(const SortEntry& other) const noexcept {
    return zvbToNative({high, low}) < zvbToNative({other.high, other.low});
  }
};

/// Sorts entries by the keys of their items in `arena`. Takes at most n log n steps, whatever the
/// keys are.
void sortEntries(SortEntry* first, SortEntry* last, const unsigned char* arena) noexcept;
