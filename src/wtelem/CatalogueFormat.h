/// What those who read a catalogue know of it. docs/file-format.md has its tables.
#pragma once

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <limits>

constexpr std::uint16_t byteOrderMark = 1;
constexpr int highestMajorVersion = 1;
constexpr int fixedHeaderSize = 32;  // bytes
constexpr int recordHeadSize = 16;   // bytes, of a column's or an element's definition

/// Zero bytes stand where a writer was killed after the records and before the fixed header.
constexpr bool isUnwritten(const unsigned char (&header)[fixedHeaderSize]) noexcept {
  return std::all_of(std::begin(header), std::end(header),
                     [](unsigned char byte) { return byte == 0; });
}

/// The most that an index, with 8 bytes for each, can have entries for.
constexpr std::int64_t maximumRowCount = std::numeric_limits<std::int64_t>::max() / 8;

/// A catalogue of so many bytes is written in one piece, within a page: no process is killed in
/// between. Of a longer one, an append that was killed may have left the records new and the fixed
/// part old, which then says how many rows of the last element count.
constexpr bool isWrittenAtOnce(std::int64_t size) noexcept { return size < 4096; }
