/// What people see of a long sort, and how they stop it.
#pragma once

#include <cstdint>
#include <optional>

#include "process/Progress.h"
#include "zvwt.h"

namespace zvwttool {

/// Follows the sort of one table: shows how far it is, and cancels it once a signal has come.
class SortProgress {
 public:
  SortProgress() = default;
  SortProgress(const SortProgress&) = delete;
  SortProgress& operator=(const SortProgress&) = delete;
  ~SortProgress();

  /// Follows the table of the manager's whose first row is written next; both the manager and this
  /// outlive it. `expectedRows` is how many there will be, -1 when whoever writes them shows how
  /// far that is.
  void follow(ZvWorkTableManager* manager, std::int64_t expectedRows);
  /// Ends the sort as soon as it looks: nobody wants its result any more.
  void cancel() { isCancelled_ = true; }
  [[nodiscard]] bool isCancelled() const { return isCancelled_; }

 private:
  static bool report(const ZvDatafileSortProgress* progress, void* context) noexcept;
  void beginPhase(const ZvDatafileSortProgress& progress) noexcept;
  void show(const ZvDatafileSortProgress& progress) noexcept;

  ZvWorkTableManager* manager_ = nullptr;  // null while no table is followed
  std::int64_t expectedRows_ = -1;
  std::optional<ZvDatafileSortPhase> phase_;  // that shown_ is of
  std::optional<Progress> shown_;
  std::int64_t spilledBefore_ = 0;  // bytes, when the merging began
  bool isCancelled_ = false;
};

}  // namespace zvwttool
