/// What the numbers of a catalogue can be, for those who read it.
#pragma once

#include <cstdint>
#include <limits>

/// The most that an index, with 8 bytes for each, can have entries for.
constexpr std::int64_t maximumRowCount = std::numeric_limits<std::int64_t>::max() / 8;

/// A catalogue of so many bytes is written in one piece, within a page: no process is killed in
/// between. Of a longer one, an append that was killed may have left the records new and the fixed
/// part old, which then says how many rows of the last element count.
constexpr bool isWrittenAtOnce(std::int64_t size) noexcept { return size < 4096; }
