#include "datafile/SortSettings.h"

#include <algorithm>

#include "base/zvb_memory.h"

namespace {

constexpr std::size_t kilobyte = 1024;
constexpr std::size_t megabyte = 1024 * kilobyte;
/// Blocks begin at multiples of this.
constexpr std::size_t smallestBlock = 4 * kilobyte;
/// Sorting in pieces of this size stays near the processor's caches.
constexpr std::size_t largestArena = 20 * megabyte;
/// Fewer of them, and the two threads wait for one another.
constexpr std::size_t arenasAtLeast = 6;

constexpr std::size_t roundDown(std::size_t size, std::size_t unit) noexcept {
  return size / unit * unit;
}

}  // namespace

SortPlan::SortPlan(const SortSettings& settings) noexcept {
  const auto memory = static_cast<std::size_t>(settings.memory);
  const auto wantedRuns = static_cast<std::size_t>(settings.runsMergedAtOnce);
  // A small sort needs the larger part of its memory for merging, or it would merge two by two.
  const std::size_t forMerging = memory < megabyte ? memory / 2 : memory / 4;

  blockSize = std::clamp(roundDown(forMerging / (wantedRuns + 4), smallestBlock), smallestBlock,
                         static_cast<std::size_t>(settings.readBuffer));
  writeBuffer =
      roundDown(std::clamp(forMerging / 8, blockSize, std::max(blockSize, megabyte)), blockSize);
  batchSize = std::clamp(forMerging / 32, kilobyte, 256 * kilobyte);
  const std::size_t besides = writeBuffer + batchCount * batchSize;
  runsAtOnce = std::clamp((forMerging - besides) / blockSize, std::size_t{2}, wantedRuns);
  mergeBuffers = runsAtOnce * blockSize;
  arenaMemory = memory - mergeBuffers - besides;
  arenaSize = std::min(largestArena, arenaMemory / arenasAtLeast);
  while (zvbLargeSize(arenaSize) * arenasAtLeast > arenaMemory) {
    arenaSize -= arenaSize / 16;  // until whole large pages fit
  }
  arenaSize = zvbLargeSize(arenaSize);
}

std::size_t SortPlan::leftForRecords(std::size_t largestRecord) const noexcept {
  const std::size_t readers = std::max(2 * largestRecord, mergeBuffers) - mergeBuffers;
  return readers + std::max(largestRecord, batchSize) - batchSize;
}

std::size_t SortPlan::runsOfRecords(std::size_t largestRecord) const noexcept {
  return std::clamp(mergeBuffers / std::max(blockSize, largestRecord), std::size_t{2}, runsAtOnce);
}
