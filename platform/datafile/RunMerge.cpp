#include "datafile/RunMerge.h"

#include <new>
#include <utility>

#include "datafile/messages.h"

namespace {

/// Of the items that come next from an arena, this one is fetched into the cache, and the entry
/// that far ahead. Many runs side by side are more streams than the processor foresees by itself.
constexpr std::ptrdiff_t itemsAhead = 2;
constexpr std::ptrdiff_t entriesAhead = 16;
/// Most items lie within as many lines of the cache.
constexpr int linesOfItem = 3;
constexpr int lineSize = 64;

void fetch(const void* bytes, int lines) noexcept {
  for (int line = 0; line < lines; ++line) {
    __builtin_prefetch(static_cast<const unsigned char*>(bytes) + std::ptrdiff_t{line} * lineSize);
  }
}

}  // namespace

bool RunMerge::reserve(std::size_t count) noexcept {
  count_ = 0;
  runs_.reset(new (std::nothrow) Run[count]);
  losers_.reset(new (std::nothrow) Head[count + 1]);
  return runs_ != nullptr && losers_ != nullptr;
}

void RunMerge::add(const SortArena& arena) noexcept {
  Run& run = runs_[count_++];
  run.next = arena.entries().data();
  run.end = run.next + arena.entries().size();
  run.arena = arena.bytes();
}

bool RunMerge::add(const SpilledRun& spilled, const SortSettings& settings, const SortPlan& plan,
                   ZvbString* error) noexcept {
  std::unique_ptr<RunReader> reader(new (std::nothrow) RunReader);
  if (reader == nullptr) {
    *error = DATAFILE_MESSAGE(outOfMemory, "(sort reader)");
    return false;
  }
  if (!reader->start(spilled, settings, plan, error)) {
    return false;
  }
  runs_[count_++].reader = std::move(reader);
  return true;
}

bool RunMerge::start(ZvbString* error) noexcept {
  for (std::size_t i = 0; i < count_; ++i) {
    if (!step(runs_[i], error)) {
      return false;
    }
  }
  if (count_ != 0) {
    top_ = play(1);
  }
  return true;
}

/// Makes the run's next item its head. False when it could not be read.
bool RunMerge::step(Run& run, ZvbString* error) noexcept {
  if (run.reader != nullptr) {
    run.item = run.reader->next(error);
    if (run.item == nullptr) [[unlikely]] {
      return error->isEmpty();
    }
    const SortItem item = sortItem::read(run.item);
    run.prefix = KeyPrefix::of(item.key, item.keySize, 0);
    fetch(item.end() + lineSize, linesOfItem - 1);  // the next item begins in a line that is there
    return true;
  }
  if (run.next == run.end) [[unlikely]] {
    run.item = nullptr;
    return true;
  }
  run.item = run.arena + run.next->place();
  run.prefix = run.next->prefix();
  if (run.end - run.next > itemsAhead) {
    fetch(run.arena + run.next[itemsAhead].place(), linesOfItem);
    fetch(run.next + entriesAhead, 1);
  }
  ++run.next;
  return true;
}

/// A run that has ended has a head behind all others: no key begins with this byte.
RunMerge::Head RunMerge::headOf(std::size_t run) const noexcept {
  const auto number = static_cast<std::uint32_t>(run);
  if (runs_[run].item == nullptr) [[unlikely]] {
    return {~std::uint64_t{0}, 0, number};
  }
  return {runs_[run].prefix.high, runs_[run].prefix.low, number};
}

bool RunMerge::isBeforeInRest(const Head& left, const Head& right) const noexcept {
  if (left.low != right.low) {
    return left.low < right.low;
  }
  const unsigned char* leftItem = runs_[left.run].item;
  const unsigned char* rightItem = runs_[right.run].item;
  if (leftItem != nullptr && rightItem != nullptr) {
    const int order =
        compareKeys(sortItem::read(leftItem), sortItem::read(rightItem), KeyPrefix::size);
    if (order != 0) {
      return order < 0;
    }
  }
  return left.run < right.run;
}

/// Lets the new head of the top's run climb from its leaf.
void RunMerge::replay(Head head) noexcept {
  for (std::size_t node = (count_ + head.run) / 2; node != 0; node /= 2) {
    Head& loser = losers_[node];
    if (isBefore(loser, head)) {
      std::swap(loser, head);
    }
  }
  top_ = head;
}

/// Plays out all below a node, leaves the losers there, and returns the winner. The leaf of run i
/// is node count_ + i.
RunMerge::Head RunMerge::play(std::size_t node) noexcept {
  if (node >= count_) {
    return headOf(node - count_);
  }
  Head winner = play(2 * node);
  Head loser = play(2 * node + 1);
  if (isBefore(loser, winner)) {
    std::swap(winner, loser);
  }
  losers_[node] = loser;
  return winner;
}
