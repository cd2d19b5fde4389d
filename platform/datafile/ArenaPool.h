/// The memory of the arenas of one sort, handed out up to its limit and used again.
///
/// The first arenas are small, so that a small sort takes little; full-sized ones are kept when
/// they come back. Thread rule: one thread at a time.
#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>

#include "datafile/SortArena.h"
#include "datafile/SortQueue.h"
#include "datafile/SortSettings.h"

class ArenaPool {
 public:
  explicit ArenaPool(const SortPlan& plan) noexcept
      : limit_(plan.arenaMemory),
        fullSize_(plan.arenaSize),
        nextSize_(std::min(firstSize, plan.arenaSize)) {}

  /// How many full arenas the limit allows.
  [[nodiscard]] std::size_t arenaCount() const noexcept { return limit_ / fullSize_; }
  /// Bytes that can be had without anything being given back.
  [[nodiscard]] std::size_t available() const noexcept {
    return handedOut_ < limit_ ? limit_ - handedOut_ : 0;
  }
  /// True when an arena for an item of `itemSize` bytes can be had now. One that is larger than the
  /// limit is handed out when no other one is.
  [[nodiscard]] bool canTake(std::size_t itemSize) const noexcept {
    return handedOut_ == 0 || sizeOfNext(itemSize) <= available();
  }

  /// An empty arena with room for the item; null when it cannot be taken or the system has no
  /// memory to give.
  [[nodiscard]] std::unique_ptr<SortArena> take(std::size_t itemSize) noexcept {
    if (!canTake(itemSize)) {
      return nullptr;
    }
    const std::size_t size = sizeOfNext(itemSize);
    nextSize_ = std::min(growth * nextSize_, fullSize_);
    std::unique_ptr<SortArena> arena = size == fullSize_ ? idle_.take() : nullptr;
    if (arena == nullptr) {
      if (size > fullSize_) {
        dropIdle();
      }
      arena = SortArena::make(size);
    }
    if (arena != nullptr) {
      handedOut_ += arena->size();
    } else {
      // What is in use is all that the system gives: the sort gets along with that.
      limit_ = handedOut_;
    }
    return arena;
  }

  void giveBack(std::unique_ptr<SortArena> arena) noexcept {
    handedOut_ -= arena->size();
    if (arena->size() == fullSize_) {
      arena->clear();
      idle_.put(std::move(arena));
    }
  }
  [[nodiscard]] bool isAllIdle() const noexcept { return handedOut_ == 0; }
  void dropIdle() noexcept {
    while (idle_.take() != nullptr) {
    }
  }

 private:
  static constexpr std::size_t firstSize = std::size_t{256} << 10;
  static constexpr std::size_t growth = 8;

  /// A rest that is no full arena is used if it is not too small to be worth a run of its own.
  [[nodiscard]] std::size_t sizeOfNext(std::size_t itemSize) const noexcept {
    const std::size_t rest = available();
    const std::size_t usual = rest < nextSize_ && rest >= fullSize_ / 4 ? rest : nextSize_;
    return std::max(usual, SortArena::sizeFor(itemSize));
  }

  std::size_t limit_;
  std::size_t fullSize_;
  std::size_t nextSize_;
  std::size_t handedOut_ = 0;  // bytes of arenas in use
  SortQueue<SortArena> idle_;  // full-sized
};
