/// What the numbers of a catalogue can be, for those who read it.
#pragma once

#include <cstdint>
#include <limits>

/// The most that an index, with 8 bytes for each, can have entries for.
constexpr std::int64_t maximumRowCount = std::numeric_limits<std::int64_t>::max() / 8;

/// True of a place in the catalogue that an append which was killed may have written without the
/// fixed part that belongs to it. What lies in one page with the fixed part reaches the file
/// together with it.
constexpr bool mayBeTorn(std::int64_t offset) noexcept { return offset > 4096; }
