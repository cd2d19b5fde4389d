/// The bytes of a record's key: those of each of its columns, one after another.
///
///   marker    0 a null that comes first, 1 a value, 2 a null that comes last; nothing follows
///             a null
///   boolean   1 byte
///   integer   8 bytes, the highest first, the sign bit turned around
///   date      8 bytes, the bits of its double in an order of their own; -0 counts as 0
///   real      see ZvbReal::toOrderedBytes
///   text      its bytes, or those of zvbFoldText without case, and a zero byte
///
/// What follows the marker has all bits turned around for a descending key.
/// Thread rule: may be called from any thread.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/ZvbDatavar.h"

/// A column of the key, and how it is ordered.
struct SortKey {
  std::uint32_t column = 0;
  bool descending = false;
  bool ignoreCase = false;
  bool nullsLast = false;
};

namespace sortKey {

/// The most bytes of a key column that is no text, marker included.
inline constexpr std::size_t largestFixed = 1 + ZvbReal::orderedSize;

/// The most bytes of a text of so many bytes.
inline std::size_t largestText(std::size_t textSize, bool ignoreCase) noexcept {
  return 2 + (ignoreCase ? 2 * textSize : textSize);
}

/// Writes the bytes of a value that has been converted to its column's type, or is null, or cannot
/// be converted (`isForeign`) and counts as null. Behind the most bytes that it takes there are
/// sortItem::slack bytes of room. Returns the end of what was written.
unsigned char* write(const SortKey& key, zvbType type, const ZvbDatavar& value, bool isForeign,
                     unsigned char* bytes) noexcept;

/// True when the value can be had back from its bytes, if it is no null and was not foreign.
bool keepsValue(const SortKey& key, zvbType type) noexcept;

/// Passes over the bytes of a value, and assigns the value to `target` unless that is null; it must
/// be one that is kept. The bytes of a descending text are turned around for that, once and for
/// all. Returns the end of the bytes, or null when they are none of a value or memory is short for
/// it.
unsigned char* read(const SortKey& key, zvbType type, unsigned char* bytes,
                    const unsigned char* end, ZvbDatavar* target) noexcept;

}  // namespace sortKey
