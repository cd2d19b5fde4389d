/// Several sorted runs, in memory and in work files, as one.
///
/// A tree of losers: each inner node keeps the head that lost the comparison there, so that the
/// next head of the winning run meets one opponent a level on its way up. With four runs:
///
///         top: b              the head of run 2 has won, against all
///         [1] c               lost the final against b
///       [2] d   [3] f         the losers of the first round: d against c, f against b
///      run 0,1   run 2,3      their heads: d, c | b, f
///
/// When b is taken and run 2 brings e: e meets f at node 3 and wins, meets c at node 1 and loses; c
/// is the new top and e stays. Equal keys come from the earlier run first, which keeps the order in
/// which the records came.
/// Thread rule: one thread at a time.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "base/ZvbString.h"
#include "datafile/RunFile.h"
#include "datafile/SortArena.h"

class RunMerge {
 public:
  /// Makes room for `count` runs, forgetting those it had. False when memory is short.
  [[nodiscard]] bool reserve(std::size_t count) noexcept;
  /// Adds a run behind those added so far; the arena is sorted, and both outlive the merge.
  void add(const SortArena& arena) noexcept;
  [[nodiscard]] bool add(const SpilledRun& spilled, const SortSettings& settings,
                         const SortPlan& plan, ZvbString* error) noexcept;
  /// Finds the first item. False with the reason in *error, which is empty before, here and below.
  [[nodiscard]] bool start(ZvbString* error) noexcept;

  /// The next item in order, or null behind the last one; valid until advance().
  [[nodiscard]] const unsigned char* item() const noexcept {
    return count_ == 0 ? nullptr : runs_[top_.run].item;
  }
  /// Moves on to the item after that. False with the reason in *error.
  [[nodiscard]] bool advance(ZvbString* error) noexcept {
    if (!step(runs_[top_.run], error)) [[unlikely]] {
      return false;
    }
    replay(headOf(top_.run));
    return true;
  }

 private:
  struct Run {
    const unsigned char* item = nullptr;  // null when the run has ended
    KeyPrefix prefix = {};
    // In memory:
    const SortEntry* next = nullptr;
    const SortEntry* end = nullptr;
    const unsigned char* arena = nullptr;
    // In a work file:
    std::unique_ptr<RunReader> reader;
  };

  /// The head of a run, as far as most comparisons need it.
  struct Head {
    std::uint64_t high;
    std::uint32_t low;
    std::uint32_t run;
  };

  [[nodiscard]] static bool step(Run& run, ZvbString* error) noexcept;
  [[nodiscard]] Head headOf(std::size_t run) const noexcept;
  [[nodiscard]] bool isBefore(const Head& left, const Head& right) const noexcept {
    return left.high != right.high ? left.high < right.high : isBeforeInRest(left, right);
  }
  [[nodiscard]] bool isBeforeInRest(const Head& left, const Head& right) const noexcept;
  void replay(Head head) noexcept;
  [[nodiscard]] Head play(std::size_t node) noexcept;

  std::unique_ptr<Run[]> runs_;
  std::unique_ptr<Head[]> losers_;  // by node, from 1 on
  std::size_t count_ = 0;
  Head top_ = {};
};
