#include "datafile/ArenaPool.h"

#include <algorithm>
#include <utility>

#include "base/zvb_memory.h"

namespace {

constexpr std::size_t firstSize = std::size_t{256} << 10;
constexpr std::size_t growth = 8;

}  // namespace

ArenaPool::ArenaPool(const SortPlan& plan) noexcept
    : planned_(plan.arenaMemory),
      limit_(plan.arenaMemory),
      fullSize_(plan.arenaSize),
      nextSize_(std::min(firstSize, plan.arenaSize)) {}

void ArenaPool::leave(std::size_t bytes) noexcept {
  limit_ = std::min(limit_, planned_ - std::min(bytes, planned_));
}

/// A rest that is no full arena is used if it is not too small to be worth a run of its own.
std::size_t ArenaPool::sizeOfNext(std::size_t itemSize) const noexcept {
  const std::size_t rest = available();
  const bool usesRest = rest < nextSize_ && rest >= fullSize_ / 4 && zvbLargeSize(rest) == rest;
  return zvbLargeSize(std::max(usesRest ? rest : nextSize_, SortArena::sizeFor(itemSize)));
}

std::unique_ptr<SortArena> ArenaPool::take(std::size_t itemSize) noexcept {
  if (!canTake(itemSize)) {
    return nullptr;
  }
  std::unique_ptr<SortArena> arena;
  if (sizeOfNext(itemSize) == fullSize_) {
    arena = idle_.take();
  } else {
    dropIdle();
  }
  if (arena == nullptr) {
    arena = makeArena(itemSize);
  }
  if (arena != nullptr) {
    handedOut_ += arena->size();
  } else {
    limit_ = handedOut_;  // what is in use is all that the system gives
  }
  return arena;
}

/// Where the system has no memory for a large arena, smaller ones are made from then on.
std::unique_ptr<SortArena> ArenaPool::makeArena(std::size_t itemSize) noexcept {
  for (;;) {
    std::unique_ptr<SortArena> arena = SortArena::make(sizeOfNext(itemSize));
    if (arena != nullptr) {
      nextSize_ = std::min(growth * nextSize_, fullSize_);
      return arena;
    }
    if (nextSize_ <= firstSize) {
      return nullptr;
    }
    nextSize_ = zvbLargeSize(std::max(nextSize_ / 2, firstSize));
    fullSize_ = nextSize_;
    dropIdle();
  }
}

void ArenaPool::giveBack(std::unique_ptr<SortArena> arena) noexcept {
  handedOut_ -= arena->size();
  if (arena->size() == fullSize_) {
    arena->clear();
    idle_.put(std::move(arena));
  }
}

void ArenaPool::dropIdle() noexcept {
  while (idle_.take() != nullptr) {
  }
}
