#include "datafile/SortRuns.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

#include "datafile/messages.h"

namespace {

/// Bytes of items written between two questions whether to go on.
constexpr std::size_t bytesAtOnce = std::size_t{1} << 20;

}  // namespace

bool SortRuns::fail(ZvbString text) noexcept {
  error_ = std::move(text);
  return false;
}

// ---- Spilling and merging

bool SortRuns::prepareToSpill() noexcept { return writer_.makeBuffer() || fail(writer_.error()); }

bool SortRuns::spill(std::size_t count, SortQueue<SortArena>* freed) noexcept {
  RunMerge merge;
  if (!merge.reserve(count)) {
    return fail(DATAFILE_MESSAGE(outOfMemory, "(sort runs)"));
  }
  const SortArena* arena = arenas_.first();
  for (std::size_t i = 0; i < count; ++i, arena = arena->nextInLine) {
    merge.add(*arena);
  }
  SpilledRun run;
  if (!write(&merge, &run)) {
    return false;
  }
  ++monitor_->runsSpilled;
  if (!spilled_.append(std::move(run))) {
    return fail(DATAFILE_MESSAGE(outOfMemory, "(sort runs)"));
  }
  for (std::size_t i = 0; i < count; ++i) {
    freed->put(arenas_.take());
  }
  return mergeLevels();
}

/// Writes all items of a merge that has its runs to a new work file.
bool SortRuns::write(RunMerge* merge, SpilledRun* run) noexcept {
  if (!merge->start(&error_)) {
    return false;
  }
  if (!writer_.start(run)) {
    return fail(writer_.error());
  }
  std::size_t unasked = bytesAtOnce;
  while (merge->item() != nullptr) {
    const unsigned char* const item = merge->item();
    const auto size = static_cast<std::size_t>(sortItem::read(item).end() - item);
    unasked += size;
    if (unasked >= bytesAtOnce) {
      if (!monitor_->goesOn()) {
        return false;
      }
      unasked = 0;
    }
    if (!writer_.append(item, size)) {
      return fail(writer_.error());
    }
    if (!merge->advance(&error_)) {
      return false;
    }
  }
  if (!writer_.finish()) {
    return fail(writer_.error());
  }
  largestSpilled_ = std::max(largestSpilled_, run->largestItem);
  return true;
}

std::size_t SortRuns::runsAtOnce() const noexcept { return plan_.runsOfRecords(largestSpilled_); }

/// Merges the newest spilled runs as long as enough of them have one level.
bool SortRuns::mergeLevels() noexcept {
  for (;;) {
    const std::size_t atOnce = runsAtOnce();
    const std::size_t count = spilled_.size();
    std::size_t alike = 0;
    while (alike < count && spilled_[count - 1 - alike].level == spilled_[count - 1].level) {
      ++alike;
    }
    if (alike < atOnce) {
      return true;
    }
    if (!mergeSpilled(count - atOnce, atOnce)) {
      return false;
    }
  }
}

/// Merges the neighbours that are the least work, so that no long run is written again and again.
bool SortRuns::reduce() noexcept {
  for (;;) {
    const std::size_t atOnce = runsAtOnce();
    if (spilled_.size() <= atOnce) {
      return true;
    }
    const std::size_t count = std::min(atOnce, spilled_.size() - atOnce + 1);
    if (!mergeSpilled(shortestNeighbours(count), count)) {
      return false;
    }
  }
}

/// Where the `count` spilled runs side by side begin that have the fewest bytes.
std::size_t SortRuns::shortestNeighbours(std::size_t count) const noexcept {
  std::int64_t bytes = 0;
  std::int64_t fewest = std::numeric_limits<std::int64_t>::max();
  std::size_t best = 0;
  for (std::size_t i = 0; i < spilled_.size(); ++i) {
    bytes += spilled_[i].file.size();
    bytes -= i < count ? 0 : spilled_[i - count].file.size();
    if (i + 1 >= count && bytes < fewest) {
      fewest = bytes;
      best = i + 1 - count;
    }
  }
  return best;
}

/// Merges the `count` spilled runs from `first` on into one, which takes their place.
bool SortRuns::mergeSpilled(std::size_t first, std::size_t count) noexcept {
  RunMerge merge;
  if (!merge.reserve(count)) {
    return fail(DATAFILE_MESSAGE(outOfMemory, "(sort runs)"));
  }
  SpilledRun merged;
  for (std::size_t i = first; i < first + count; ++i) {
    if (!merge.add(spilled_[i], settings_, plan_, &error_)) {
      return false;
    }
    merged.level = std::max(merged.level, spilled_[i].level + 1);
  }
  if (!write(&merge, &merged)) {
    return false;
  }
  monitor_->runsMerged += static_cast<std::int64_t>(count);
  spilled_[first] = std::move(merged);
  std::move(spilled_.begin() + first + count, spilled_.end(), spilled_.begin() + first + 1);
  spilled_.truncate(spilled_.size() - (count - 1));
  return true;
}

// ---- Delivering

bool SortRuns::startDelivery() noexcept {
  hasLastKey_ = false;
  if (!delivery_.reserve(spilled_.size() + arenas_.size())) {
    return fail(DATAFILE_MESSAGE(outOfMemory, "(sort runs)"));
  }
  for (const SpilledRun& run : spilled_) {
    if (!delivery_.add(run, settings_, plan_, &error_)) {
      return false;
    }
  }
  for (const SortArena* arena = arenas_.first(); arena != nullptr; arena = arena->nextInLine) {
    delivery_.add(*arena);
  }
  return delivery_.start(&error_);
}

bool SortRuns::fill(SortBatch* batch, bool* isLast) noexcept {
  batch->size = 0;
  *isLast = false;
  if (!monitor_->goesOn()) {
    return false;
  }
  for (const unsigned char* bytes = delivery_.item(); bytes != nullptr; bytes = delivery_.item()) {
    const SortItem item = sortItem::read(bytes);
    const auto size = static_cast<std::size_t>(item.end() - bytes);
    if (settings_.keepEqual || !isRepeated(item)) {
      if (batch->size != 0 && size > batch->capacity - batch->size) {
        return true;
      }
      if (!put(bytes, size, batch) || !(settings_.keepEqual || remember(item))) {
        return fail(DATAFILE_MESSAGE(outOfMemory, "(sort batch)"));
      }
    }
    if (!delivery_.advance(&error_)) {
      return false;
    }
  }
  *isLast = true;
  return true;
}

/// Adds an item to the batch, which is made larger for one that is larger than any batch.
bool SortRuns::put(const unsigned char* item, std::size_t size, SortBatch* batch) const noexcept {
  const std::size_t wanted = std::max(plan_.batchSize, size);
  if (batch->size == 0 && batch->capacity != wanted) {
    batch->capacity = 0;
    batch->bytes.reset();
    batch->bytes.reset(new (std::nothrow) unsigned char[wanted + sortItem::slack]);
    if (batch->bytes == nullptr) {
      return false;
    }
    batch->capacity = wanted;
  }
  sortItem::copy(batch->bytes.get() + batch->size, item, size);
  batch->size += size;
  return true;
}

bool SortRuns::isRepeated(const SortItem& item) noexcept {
  return hasLastKey_ && item.keySize == lastKeySize_ &&
         std::memcmp(item.key, lastKey_.get(), lastKeySize_) == 0;
}

bool SortRuns::remember(const SortItem& item) noexcept {
  if (item.keySize > lastKeyCapacity_) {
    lastKeyCapacity_ = 0;
    lastKey_.reset(new (std::nothrow) unsigned char[2 * item.keySize]);
    if (lastKey_ == nullptr) {
      return false;
    }
    lastKeyCapacity_ = 2 * item.keySize;
  }
  std::memcpy(lastKey_.get(), item.key, item.keySize);
  lastKeySize_ = item.keySize;
  hasLastKey_ = true;
  return true;
}
