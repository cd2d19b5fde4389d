/// What the two sides of a sort know of one another without waiting: how far it is, and whether it
/// is to stop.
///
/// Thread rule: the caller's thread calls report() and sets the phase and the records; everything
/// else may be called from the thread that does the work.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>

#include "datafile/ZvDatafileSortProgress.h"

class SortMonitor {
 public:
  SortMonitor(ZvDatafileSortCallback callback, void* context) noexcept
      : callback_(callback), context_(context) {}

  /// The work is done on the caller's thread: it has to report as well.
  void workOnCallersThread() noexcept { worksOnCallersThread_ = true; }

  void enter(ZvDatafileSortPhase phase) noexcept { phase_ = phase; }
  /// Tells the host how far the sort is, unless it was told a moment ago.
  void report() noexcept;
  /// Tells it in any case.
  void reportNow() noexcept;

  /// To be asked between pieces of work of a few milliseconds. False when there is no use in going
  /// on.
  [[nodiscard]] bool goesOn() noexcept {
    if (worksOnCallersThread_) {
      report();
    }
    return !stopped_.load(std::memory_order_relaxed);
  }
  void stop() noexcept { stopped_.store(true, std::memory_order_relaxed); }
  [[nodiscard]] bool isCancelled() const noexcept {
    return cancelled_.load(std::memory_order_relaxed);
  }

  // The caller's side.
  std::int64_t recordsAdded = 0;
  std::int64_t recordsDelivered = 0;
  // The working side.
  std::atomic<std::int64_t> spilledBytes = 0;
  std::atomic<std::int64_t> workFileBytes = 0;
  std::atomic<std::int64_t> blocksSpilled = 0;
  std::atomic<std::int64_t> runsSpilled = 0;
  std::atomic<std::int64_t> runsMerged = 0;

 private:
  using Clock = std::chrono::steady_clock;

  ZvDatafileSortCallback callback_;
  void* context_;
  ZvDatafileSortPhase phase_ = zvDatafileSortAdding;
  bool worksOnCallersThread_ = false;
  Clock::time_point lastReport_;
  std::atomic<bool> stopped_ = false;
  std::atomic<bool> cancelled_ = false;
};
