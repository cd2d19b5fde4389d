#include "datafile/SortEngine.h"

#include <algorithm>
#include <chrono>
#include <new>
#include <system_error>
#include <utility>

#include "base/zvb_signals.h"
#include "datafile/messages.h"

namespace {

/// How long the caller waits before it tells the host again how far the sort is.
constexpr std::chrono::milliseconds patience{20};

}  // namespace

SortEngine::SortEngine(const SortSettings& settings, ZvDatafileSortCallback callback,
                       void* context) noexcept
    : settings_(settings),
      plan_(settings),
      monitor_(callback, context),
      largestItem_(std::min(plan_.batchSize, plan_.mergeBuffers / 2)),
      runs_(settings_, plan_, &monitor_),
      pool_(plan_) {}

SortEngine::~SortEngine() {
  monitor_.stop();
  {
    const Lock lock(mutex_);
    closes_ = true;
  }
  forWorker_.notify_one();
  if (worker_.joinable()) {
    worker_.join();
  }
}

bool SortEngine::start(const ZvbString& directoryList, ZvbString* error) noexcept {
  if (!runs_.setDirectories(directoryList)) {
    *error = DATAFILE_MESSAGE(outOfMemory, "(sort directories)");
    return false;
  }
  if (settings_.secondThread) {
    const ZvbSignalsHeld held;
    try {
      worker_ = std::thread([this] { work(); });
    } catch (const std::exception&) {  // neither memory nor the system's leave
    }
  }
  if (!worker_.joinable()) {
    monitor_.workOnCallersThread();
  }
  return true;
}

bool SortEngine::hasFailed() noexcept {
  const Lock lock(mutex_);
  return failed_;
}

void SortEngine::failWith(ZvbString text) noexcept {
  batch_.reset();
  const Lock lock(mutex_);
  fail(std::move(text));
}

ZvbString SortEngine::errorText() noexcept {
  const Lock lock(mutex_);
  return error_;
}

/// Under the lock.
void SortEngine::fail(ZvbString text) noexcept {
  if (!failed_) {
    failed_ = true;
    error_ = std::move(text);
    monitor_.stop();
    forCaller_.notify_one();
  }
}

/// Under the lock.
void SortEngine::failIfCancelled() noexcept {
  if (monitor_.isCancelled()) {
    fail(DATAFILE_MESSAGE(cancelled));
  }
}

// ---- The caller's side

/// Waits, under the lock, until the condition is met, reporting meanwhile; without a second thread
/// does the work itself. False when the sort has failed.
template <typename Condition>
bool SortEngine::waitFor(Lock& lock, const Condition& isMet) noexcept {
  while (!failed_ && !isMet()) {
    if (!worker_.joinable()) {
      if (!doPiece(lock)) {  // nothing is left that could help
        fail(DATAFILE_MESSAGE(outOfMemory, "(sort memory)"));
      }
    } else {
      forWorker_.notify_one();
      forCaller_.wait_for(lock, patience, [&] { return failed_ || isMet(); });
    }
    lock.unlock();
    monitor_.report();
    lock.lock();
    failIfCancelled();
  }
  return !failed_;
}

/// A record larger than all before it: the arenas have to get along with less.
void SortEngine::leaveMemoryFor(std::size_t itemSize) noexcept {
  largestItem_ = itemSize;
  const Lock lock(mutex_);
  pool_.leave(plan_.leftForRecords(itemSize));
  memoryWasShort_ = memoryWasShort_ || pool_.isOverLimit();
}

bool SortEngine::changeArena(std::size_t itemSize) noexcept {
  monitor_.report();
  Lock lock(mutex_);
  failIfCancelled();
  if (arena_ != nullptr && settings_.mayUseWorkFiles && !isPreparedToSpill_) {
    isPreparedToSpill_ = runs_.prepareToSpill();  // before any work is in line
    if (!isPreparedToSpill_) {
      fail(runs_.error());
    }
  }
  putInLine();
  arena_ = failed_ ? nullptr : pool_.take(itemSize);
  while (arena_ == nullptr && !failed_) {
    if (!settings_.mayUseWorkFiles) {
      fail(DATAFILE_MESSAGE(memoryUsedUp, settings_.memory));
    } else if (pool_.isAllIdle()) {
      fail(DATAFILE_MESSAGE(outOfMemory, "(sort memory)"));
    } else {
      memoryWasShort_ = true;
      awaited_ = itemSize;
      if (waitFor(lock, [&] { return pool_.canTake(itemSize); })) {
        arena_ = pool_.take(itemSize);
      }
      awaited_ = 0;
    }
  }
  return arena_ != nullptr;
}

/// Under the lock.
void SortEngine::putInLine() noexcept {
  if (arena_ != nullptr) {
    line_.put(std::move(arena_));
    forWorker_.notify_one();
  }
}

bool SortEngine::sort() noexcept {
  monitor_.enter(zvDatafileSortMerging);
  monitor_.reportNow();
  Lock lock(mutex_);
  failIfCancelled();
  putInLine();
  allAdded_ = true;
  return waitFor(lock, [&] { return runsAreReady_; });
}

bool SortEngine::makeBatches() noexcept {
  for (std::size_t i = 0; i < SortPlan::batchCount; ++i) {
    std::unique_ptr<SortBatch> batch(new (std::nothrow) SortBatch);
    if (batch == nullptr) {
      fail(DATAFILE_MESSAGE(outOfMemory, "(sort batch)"));
      return false;
    }
    empty_.put(std::move(batch));
  }
  return true;
}

bool SortEngine::startDelivery() noexcept {
  monitor_.enter(zvDatafileSortDelivering);
  monitor_.recordsDelivered = 0;
  Lock lock(mutex_);
  if (failed_ || (!delivers_ && !makeBatches())) {
    return false;
  }
  returnBatch();
  while ((batch_ = ready_.take()) != nullptr) {
    returnBatch();
  }
  delivers_ = true;
  restarts_ = true;
  forWorker_.notify_one();
  return true;
}

/// Under the lock.
void SortEngine::returnBatch() noexcept {
  if (batch_ == nullptr) {
    return;
  }
  if (batch_->capacity > plan_.batchSize) {
    *batch_ = SortBatch();
    largeBatchIsOut_ = false;
  }
  empty_.put(std::move(batch_));
  forWorker_.notify_one();
}

bool SortEngine::nextBatch() noexcept {
  monitor_.report();
  Lock lock(mutex_);
  failIfCancelled();
  returnBatch();
  if (!waitFor(lock, [&] { return !ready_.isEmpty() || (allDelivered_ && !restarts_); })) {
    return false;
  }
  batch_ = ready_.take();
  batchRead_ = 0;
  if (batch_ != nullptr && batch_->size != 0) {
    return true;
  }
  lock.unlock();
  monitor_.reportNow();
  lock.lock();
  failIfCancelled();
  return false;
}

// ---- The working side; all under the lock, which is let go while a piece is done

void SortEngine::work() noexcept {
  Lock lock(mutex_);
  while (!closes_) {
    if (!doPiece(lock)) {
      forWorker_.wait(lock);
    }
  }
}

/// Does the next piece of work. False when there is none.
bool SortEngine::doPiece(Lock& lock) noexcept {
  if (failed_) {
    return false;
  }
  if (!line_.isEmpty()) {
    sortNext(lock);
  } else if (needsSpilling()) {
    spill(lock);
  } else if (allAdded_ && !runsAreReady_) {
    finishRuns(lock);
  } else if (delivers_ && restarts_) {
    restart(lock);
  } else if (delivers_ && !allDelivered_ && !empty_.isEmpty() && !largeBatchIsOut_) {
    fillBatch(lock);
  } else {
    return false;
  }
  forCaller_.notify_one();
  return true;
}

void SortEngine::failAs(const SortRuns& runs) noexcept {
  fail(monitor_.isCancelled() ? DATAFILE_MESSAGE(cancelled) : runs.error());
}

void SortEngine::sortNext(Lock& lock) noexcept {
  std::unique_ptr<SortArena> arena = line_.take();
  lock.unlock();
  arena->sort();
  lock.lock();
  runs_.keep(std::move(arena));
}

/// Once memory has been short, it is made free before the caller has to wait for it.
bool SortEngine::needsSpilling() const noexcept {
  if (runs_.runsInMemory() == 0 || runsAreReady_) {
    return false;
  }
  if (allAdded_) {
    return pool_.isOverLimit() && settings_.mayUseWorkFiles;
  }
  if (awaited_ != 0 && !pool_.canTake(awaited_)) {
    return true;
  }
  const std::size_t reserve = std::max<std::size_t>(pool_.arenaCount() / 4, 1);
  return memoryWasShort_ && worker_.joinable() && pool_.available() < reserve * plan_.arenaSize;
}

/// Beside the caller a part of the runs, so that it can go on soon; else all, which makes long
/// runs.
void SortEngine::spill(Lock& lock) noexcept {
  const std::size_t most = runs_.runsInMemory();
  const std::size_t part = std::max<std::size_t>(pool_.arenaCount() / 3, 1);
  const std::size_t count = worker_.joinable() ? std::min(part, most) : most;
  SortQueue<SortArena> freed;
  lock.unlock();
  const bool spilled = runs_.spill(count, &freed);
  lock.lock();
  while (std::unique_ptr<SortArena> arena = freed.take()) {
    pool_.giveBack(std::move(arena));
  }
  if (!spilled) {
    failAs(runs_);
  }
}

void SortEngine::finishRuns(Lock& lock) noexcept {
  pool_.dropIdle();
  lock.unlock();
  const bool reduced = runs_.reduce();
  lock.lock();
  if (!reduced) {
    failAs(runs_);
  }
  runsAreReady_ = true;
}

void SortEngine::restart(Lock& lock) noexcept {
  restarts_ = false;
  allDelivered_ = false;
  lock.unlock();
  const bool started = runs_.startDelivery();
  lock.lock();
  if (!started) {
    failAs(runs_);
  }
}

void SortEngine::fillBatch(Lock& lock) noexcept {
  std::unique_ptr<SortBatch> batch = empty_.take();
  bool isLast = false;
  lock.unlock();
  const bool filled = runs_.fill(batch.get(), &isLast);
  lock.lock();
  allDelivered_ = isLast;
  if (restarts_) {  // the caller has asked for a new beginning meanwhile
    *batch = SortBatch();
    empty_.put(std::move(batch));
  } else {
    largeBatchIsOut_ = batch->capacity > plan_.batchSize;
    ready_.put(std::move(batch));
  }
  if (!filled) {
    failAs(runs_);
  }
}
