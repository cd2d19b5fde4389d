/// Locks live in a table under their ids, and all that is known of a lock is read and changed under
/// the mutex of its part of the table. A call touches nothing else once it has left that mutex, so
/// a lock can be destroyed while its last holder is still on its way out of the release.
///
/// A release hands the lock to the longest waiter directly; it is never free in between, and a
/// newcomer cannot overtake. A mutex per lock beside the table's would let locks of one part work
/// side by side, but it would double the cost of a free lock.
#include "lock/zv_lock.h"

#include <array>
#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <new>
#include <unordered_map>

namespace {

enum class Outcome { waiting, obtained, destroyed };

/// One waiting thread; lives on its stack.
struct Waiter {
  std::condition_variable called;
  Outcome outcome = Outcome::waiting;
  Waiter* next = nullptr;

  /// With the table's mutex held: once it is free the waiter may be gone.
  void call(Outcome result) noexcept {
    outcome = result;
    called.notify_one();
  }
};

struct LockState {
  bool isHeld = false;
  Waiter* first = nullptr;
  Waiter* last = nullptr;

  void enqueue(Waiter* waiter) noexcept {
    (first == nullptr ? first : last->next) = waiter;
    last = waiter;
  }
  Waiter* dequeue() noexcept {
    Waiter* const waiter = first;
    if (waiter != nullptr) {
      first = waiter->next;
    }
    return waiter;
  }
};

/// The locks whose ids leave the same remainder; on a cache line of its own.
struct alignas(64) LockTablePart {
  std::mutex mutex;
  std::unordered_map<zvLockHandle, LockState> locks;

  LockState* find(zvLockHandle id) noexcept {
    const auto found = locks.find(id);
    return found != locks.end() ? &found->second : nullptr;
  }
};

using LockTable = std::array<LockTablePart, 16>;

/// Never destroyed: threads may use locks until the process has ended.
LockTable& lockTable() noexcept {
  alignas(LockTable) static std::byte storage[sizeof(LockTable)];
  static auto* const table = ::new (storage) LockTable();
  return *table;
}

LockTablePart& partOf(zvLockHandle id) noexcept {
  LockTable& table = lockTable();
  return table[id % table.size()];
}

std::atomic<zvLockHandle> lastId{0};

}  // namespace

zvLockHandle zvLockCreate(int, int) noexcept {
  const zvLockHandle id = ++lastId;
  LockTablePart& part = partOf(id);
  const std::lock_guard guard(part.mutex);
  try {
    part.locks.try_emplace(id);
    return id;
  } catch (const std::bad_alloc&) {
    return 0;
  }
}

bool zvLockGet(zvLockHandle lock, int, int) noexcept {
  LockTablePart& part = partOf(lock);
  std::unique_lock guard(part.mutex);
  LockState* const state = part.find(lock);
  if (state == nullptr) {
    return false;
  }
  if (!state->isHeld) {
    state->isHeld = true;
    return true;
  }
  Waiter waiter;
  state->enqueue(&waiter);
  waiter.called.wait(guard, [&] { return waiter.outcome != Outcome::waiting; });
  return waiter.outcome == Outcome::obtained;
}

void zvLockRelease(zvLockHandle lock) noexcept {
  LockTablePart& part = partOf(lock);
  const std::lock_guard guard(part.mutex);
  LockState* const state = part.find(lock);
  if (state == nullptr) {
    return;
  }
  Waiter* const waiter = state->dequeue();
  if (waiter != nullptr) {
    waiter->call(Outcome::obtained);
  } else {
    state->isHeld = false;
  }
}

void zvLockDestroy(zvLockHandle lock) noexcept {
  LockTablePart& part = partOf(lock);
  const std::lock_guard guard(part.mutex);
  LockState* const state = part.find(lock);
  if (state == nullptr) {
    return;
  }
  while (Waiter* const waiter = state->dequeue()) {
    waiter->call(Outcome::destroyed);
  }
  part.locks.erase(lock);
}
