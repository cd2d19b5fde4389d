/// What a sort has been told, and what follows from it for its memory.
#pragma once

#include <cstddef>
#include <cstdint>

struct SortSettings {
  std::int64_t memory = std::int64_t{64} << 20;  ///< bytes
  bool secondThread = true;
  bool ignoreCase = false;
  bool spread = true;
  std::int32_t runsMergedAtOnce = 128;
  std::int64_t workFileLimit = 0;                    ///< bytes; 0 is none
  std::int64_t readBuffer = std::int64_t{64} << 10;  ///< bytes per run
  bool checksums = true;
  bool mayUseWorkFiles = true;
  bool keepEqual = true;
};

inline constexpr std::int64_t smallestSortMemory = std::int64_t{64} << 10;

/// How the memory of one sort is shared out. While records come in, the arenas take their part, and
/// the rest serves the merging of spilled runs beside them; when they go out, the same rest serves
/// the last merge.
///
///   memory >= arenas + runsAtOnce * blockSize + writeBuffer + batchCount * batchSize
struct SortPlan {
  static constexpr std::size_t batchCount = 3;

  std::size_t arenaSize;     ///< bytes of one arena
  std::size_t arenaMemory;   ///< bytes of all arenas together
  std::size_t blockSize;     ///< bytes of a block of a work file, which is read at once
  std::size_t writeBuffer;   ///< bytes written at once, a multiple of blockSize
  std::size_t batchSize;     ///< bytes of records handed to the caller at once
  std::size_t mergeBuffers;  ///< bytes for the blocks of the runs that are merged at once
  std::size_t runsAtOnce;    ///< spilled runs that are merged at once, at most

  explicit SortPlan(const SortSettings& settings) noexcept;

  /// The runs that can be merged at once when the largest record among them has so many bytes.
  [[nodiscard]] std::size_t runsOfRecords(std::size_t largestRecord) const noexcept;
  /// Bytes that the arenas have to leave for records of that size: two of them at least have to be
  /// read at once, and one be handed over.
  [[nodiscard]] std::size_t leftForRecords(std::size_t largestRecord) const noexcept;
};
