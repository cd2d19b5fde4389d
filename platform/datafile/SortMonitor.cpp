#include "datafile/SortMonitor.h"

namespace {

constexpr std::chrono::milliseconds betweenReports{20};

}  // namespace

void SortMonitor::report() noexcept {
  if (callback_ != nullptr && Clock::now() - lastReport_ >= betweenReports) {
    reportNow();
  }
}

void SortMonitor::reportNow() noexcept {
  if (callback_ == nullptr || isCancelled()) {
    return;
  }
  const ZvDatafileSortProgress progress = {.phase = phase_,
                                           .recordsAdded = recordsAdded,
                                           .recordsDelivered = recordsDelivered,
                                           .spilledBytes = spilledBytes,
                                           .workFileBytes = workFileBytes,
                                           .blocksSpilled = blocksSpilled,
                                           .runsSpilled = runsSpilled,
                                           .runsMerged = runsMerged};
  if (!callback_(&progress, context_)) {
    cancelled_ = true;
    stop();
  }
  lastReport_ = Clock::now();
}
