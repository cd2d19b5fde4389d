/// The sorted runs of one sort, oldest first: spilled ones in work files, then those in memory.
///
/// Older records are in older runs, and only neighbours are merged, so that "the earlier run first"
/// keeps equal keys in the order in which their records came. Spilled runs are merged as soon as as
/// many of one level lie side by side as can be merged at once: few files are open however long the
/// sort is, and every record is written once per level.
///
/// Thread rule: used by whichever thread does the sort's work, one at a time.
#pragma once

#include <cstdint>
#include <memory>

#include "base/ZvbArray.h"
#include "base/ZvbString.h"
#include "datafile/RunFile.h"
#include "datafile/RunMerge.h"
#include "datafile/SortArena.h"
#include "datafile/SortQueue.h"

/// Items on their way to the caller, back to back.
struct SortBatch {
  std::unique_ptr<unsigned char[]> bytes;
  std::size_t capacity = 0;
  std::size_t size = 0;
  SortBatch* nextInLine = nullptr;
};

class SortRuns {
 public:
  SortRuns(const SortSettings& settings, const SortPlan& plan, SortMonitor* monitor) noexcept
      : settings_(settings),
        plan_(plan),
        monitor_(monitor),
        files_(settings, monitor),
        writer_(settings, plan, &files_, monitor) {}
  SortRuns(const SortRuns&) = delete;
  SortRuns& operator=(const SortRuns&) = delete;

  /// Where work files may be made. False when memory is short.
  [[nodiscard]] bool setDirectories(const ZvbString& list) noexcept {
    return files_.setDirectories(list);
  }

  /// Takes over a sorted arena as the newest run.
  void keep(std::unique_ptr<SortArena> arena) noexcept { arenas_.put(std::move(arena)); }
  [[nodiscard]] std::size_t runsInMemory() const noexcept { return arenas_.size(); }

  /// Makes the buffer for writing work files while there is memory for it.
  [[nodiscard]] bool prepareToSpill() noexcept;

  // The operations below return false with the reason in error(), and when the monitor says that
  // there is no use in going on.

  /// Writes the oldest `count` runs in memory to a work file as one, and hands their arenas over.
  [[nodiscard]] bool spill(std::size_t count, SortQueue<SortArena>* freed) noexcept;
  /// Merges spilled runs until the rest can be merged at once.
  [[nodiscard]] bool reduce() noexcept;

  /// Begins to merge all runs; may be called again to begin anew.
  [[nodiscard]] bool startDelivery() noexcept;
  /// Fills an empty batch with the next records; *isLast tells that there are no more behind it.
  [[nodiscard]] bool fill(SortBatch* batch, bool* isLast) noexcept;

  [[nodiscard]] const ZvbString& error() const noexcept { return error_; }

 private:
  bool fail(ZvbString text) noexcept;
  [[nodiscard]] bool mergeLevels() noexcept;
  [[nodiscard]] std::size_t shortestNeighbours(std::size_t count) const noexcept;
  [[nodiscard]] bool mergeSpilled(std::size_t first, std::size_t count) noexcept;
  [[nodiscard]] bool write(RunMerge* merge, SpilledRun* run) noexcept;
  [[nodiscard]] std::size_t runsAtOnce() const noexcept;
  [[nodiscard]] bool put(const unsigned char* item, std::size_t size,
                         SortBatch* batch) const noexcept;
  [[nodiscard]] bool isRepeated(const SortItem& item) noexcept;
  [[nodiscard]] bool remember(const SortItem& item) noexcept;

  const SortSettings& settings_;
  const SortPlan& plan_;
  SortMonitor* monitor_;
  WorkFiles files_;
  RunWriter writer_;
  ZvbArray<SpilledRun> spilled_;
  SortQueue<SortArena> arenas_;
  std::size_t largestSpilled_ = 0;  // bytes of the largest item in a work file
  RunMerge delivery_;
  ZvbString error_;

  // The key delivered last, kept when equal keys are to be dropped.
  std::unique_ptr<unsigned char[]> lastKey_;
  std::size_t lastKeyCapacity_ = 0;
  std::size_t lastKeySize_ = 0;
  bool hasLastKey_ = false;
};
