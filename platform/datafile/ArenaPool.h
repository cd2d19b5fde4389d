/// The memory of the arenas of one sort, handed out up to its limit and used again.
///
/// The first arenas are small, so that a small sort takes little; full-sized ones are kept when
/// they come back. Thread rule: one thread at a time.
#pragma once

#include <cstddef>
#include <memory>

#include "datafile/SortArena.h"
#include "datafile/SortQueue.h"
#include "datafile/SortSettings.h"

class ArenaPool {
 public:
  explicit ArenaPool(const SortPlan& plan) noexcept;

  /// How many full arenas the limit allows.
  [[nodiscard]] std::size_t arenaCount() const noexcept { return limit_ / fullSize_; }
  /// Bytes that can be had without anything being given back.
  [[nodiscard]] std::size_t available() const noexcept {
    return handedOut_ < limit_ ? limit_ - handedOut_ : 0;
  }
  /// True when more is in use than may be since the limit was lowered.
  [[nodiscard]] bool isOverLimit() const noexcept { return handedOut_ > limit_; }
  /// Leaves memory to others: the limit becomes that of the plan less `bytes`.
  void leave(std::size_t bytes) noexcept;

  /// True when an arena for an item of `itemSize` bytes can be had now. One that is larger than the
  /// limit is handed out when no other one is.
  [[nodiscard]] bool canTake(std::size_t itemSize) const noexcept {
    return handedOut_ == 0 || sizeOfNext(itemSize) <= available();
  }
  /// An empty arena with room for the item; null when it cannot be taken or the system has no
  /// memory to give, not even for a small one.
  [[nodiscard]] std::unique_ptr<SortArena> take(std::size_t itemSize) noexcept;
  void giveBack(std::unique_ptr<SortArena> arena) noexcept;

  [[nodiscard]] bool isAllIdle() const noexcept { return handedOut_ == 0; }
  void dropIdle() noexcept;

 private:
  [[nodiscard]] std::size_t sizeOfNext(std::size_t itemSize) const noexcept;
  [[nodiscard]] std::unique_ptr<SortArena> makeArena(std::size_t itemSize) noexcept;

  std::size_t planned_;
  std::size_t limit_;
  std::size_t fullSize_;
  std::size_t nextSize_;
  std::size_t handedOut_ = 0;  // bytes of arenas in use
  SortQueue<SortArena> idle_;  // full-sized
};
