/// The course of one sort, on one thread or on two.
///
/// The caller's thread fills an arena with items and puts it in line. The work is done in pieces,
/// by a second thread beside the caller or by the caller itself when it has to wait: an arena in
/// line is sorted and becomes a run in memory; when memory is used up, the oldest of these runs are
/// merged into a work file and their arenas are free again. When all records are in, the runs are
/// merged once more, and what comes out is handed over in batches of bytes that the caller decodes
/// while the next one is made.
///
///   caller:  fill arena -> line_ ............... wait for an arena ... take batch <- ready_
///   worker:  line_ -> sort -> keep -> spill -> arenas back      fill batch <- empty_
///
/// Only encoded bytes pass between the threads; what both see is guarded by mutex_ or is in the
/// monitor. The first failure ends the sort: each later operation fails with its text.
/// Thread rule: the public operations are the caller's thread's.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>

#include "base/ZvbString.h"
#include "datafile/ArenaPool.h"
#include "datafile/SortMonitor.h"
#include "datafile/SortQueue.h"
#include "datafile/SortRuns.h"
#include "datafile/SortSettings.h"

class SortEngine {
 public:
  SortEngine(const SortSettings& settings, ZvDatafileSortCallback callback, void* context) noexcept;
  SortEngine(const SortEngine&) = delete;
  SortEngine& operator=(const SortEngine&) = delete;
  ~SortEngine();

  /// Where work files may be made. Then starts the second thread, if there is to be one; where none
  /// can be had, the caller's does the work. False with the reason in *error.
  [[nodiscard]] bool start(const ZvbString& directoryList, ZvbString* error) noexcept;

  // The operations below fail with the reason in errorText().

  /// Room for an item of up to `itemSize` bytes; null on failure.
  [[nodiscard]] unsigned char* roomFor(std::size_t itemSize) noexcept {
    if (itemSize > largestItem_) [[unlikely]] {
      leaveMemoryFor(itemSize);
    }
    if (arena_ != nullptr && arena_->hasRoom(itemSize)) [[likely]] {
      return arena_->next();
    }
    return changeArena(itemSize) ? arena_->next() : nullptr;
  }
  /// Counts the item written there.
  void added(const SortItem& item) noexcept {
    arena_->add(item);
    ++monitor_.recordsAdded;
  }
  /// No more items come: puts them in order.
  [[nodiscard]] bool sort() noexcept;

  /// Stands before the first record; may be called again.
  [[nodiscard]] bool startDelivery() noexcept;
  /// The next item, the caller's to change until the next call; null at the end or on failure.
  [[nodiscard]] unsigned char* next() noexcept {
    if (batch_ != nullptr && batchRead_ < batch_->size) [[likely]] {
      return takeFromBatch();
    }
    return nextBatch() ? takeFromBatch() : nullptr;
  }

  /// Ends the sort with a reason of the caller's side.
  void failWith(ZvbString text) noexcept;
  [[nodiscard]] bool hasFailed() noexcept;
  [[nodiscard]] ZvbString errorText() noexcept;

 private:
  using Lock = std::unique_lock<std::mutex>;

  // The caller's side
  void leaveMemoryFor(std::size_t itemSize) noexcept;
  [[nodiscard]] bool changeArena(std::size_t itemSize) noexcept;
  void putInLine() noexcept;
  void returnBatch() noexcept;
  [[nodiscard]] bool nextBatch() noexcept;
  [[nodiscard]] unsigned char* takeFromBatch() noexcept {
    unsigned char* const item = batch_->bytes.get() + batchRead_;
    batchRead_ += static_cast<std::size_t>(sortItem::read(item).end() - item);
    ++monitor_.recordsDelivered;
    return item;
  }
  template <typename Condition>
  [[nodiscard]] bool waitFor(Lock& lock, const Condition& isMet) noexcept;
  [[nodiscard]] bool makeBatches() noexcept;

  // The working side
  void work() noexcept;
  [[nodiscard]] bool doPiece(Lock& lock) noexcept;
  [[nodiscard]] bool needsSpilling() const noexcept;
  void sortNext(Lock& lock) noexcept;
  void spill(Lock& lock) noexcept;
  void finishRuns(Lock& lock) noexcept;
  void restart(Lock& lock) noexcept;
  void fillBatch(Lock& lock) noexcept;
  void failAs(const SortRuns& runs) noexcept;
  void fail(ZvbString text) noexcept;
  void failIfCancelled() noexcept;

  const SortSettings settings_;
  const SortPlan plan_;
  SortMonitor monitor_;

  // The caller's
  std::unique_ptr<SortArena> arena_;  // being filled
  bool isPreparedToSpill_ = false;
  std::size_t largestItem_;           // bytes for which there is memory as planned, or left by now
  std::unique_ptr<SortBatch> batch_;  // being read
  std::size_t batchRead_ = 0;         // bytes of it

  // The working side's
  SortRuns runs_;

  std::mutex mutex_;  // guards what follows
  std::condition_variable forWorker_;
  std::condition_variable forCaller_;
  ArenaPool pool_;
  SortQueue<SortArena> line_;  // filled, to be sorted
  SortQueue<SortBatch> empty_;
  SortQueue<SortBatch> ready_;
  bool largeBatchIsOut_ = false;  // one beyond the usual size, which has no other beside it
  ZvbString error_;
  std::size_t awaited_ = 0;  // bytes of the item for which the caller waits; 0: it does not
  bool failed_ = false;
  bool memoryWasShort_ = false;  // the caller has had to wait for an arena
  bool allAdded_ = false;
  bool runsAreReady_ = false;
  bool delivers_ = false;
  bool restarts_ = false;
  bool allDelivered_ = false;
  bool closes_ = false;

  std::thread worker_;  // none when the caller does the work
};
