#include "tables/SortProgress.h"

#include "process/Failure.h"
#include "process/InterruptGuard.h"

namespace zvwttool {

SortProgress::~SortProgress() {
  if (manager_ != nullptr) {
    ZvbString unused;
    (void)zvwtSetSortProgress(manager_, nullptr, nullptr, &unused);
  }
}

void SortProgress::follow(ZvWorkTableManager* manager, std::int64_t expectedRows) {
  ZvbString text;
  if (!zvwtSetSortProgress(manager, report, this, &text)) {
    throw libraryFailure(text);
  }
  manager_ = manager;
  expectedRows_ = expectedRows;
}

bool SortProgress::report(const ZvDatafileSortProgress* progress, void* context) noexcept {
  auto* const self = static_cast<SortProgress*>(context);
  if (InterruptGuard::interrupted()) {
    self->cancel();
  }
  if (!self->isCancelled()) {
    self->show(*progress);
  }
  return !self->isCancelled();
}

void SortProgress::beginPhase(const ZvDatafileSortProgress& progress) noexcept {
  phase_ = progress.phase;
  shown_.reset();
  switch (progress.phase) {
    case zvDatafileSortAdding:
      if (expectedRows_ >= 0) {
        shown_.emplace("sorting: reading", ProgressUnit::rows, expectedRows_);
      }
      break;
    case zvDatafileSortMerging:
      spilledBefore_ = progress.spilledBytes;
      shown_.emplace("sorting: merging", ProgressUnit::bytes, -1);
      break;
    case zvDatafileSortDelivering:
      shown_.emplace("sorting: storing", ProgressUnit::rows, progress.recordsAdded);
      break;
  }
}

void SortProgress::show(const ZvDatafileSortProgress& progress) noexcept {
  if (phase_ != progress.phase) {
    beginPhase(progress);
  }
  if (!shown_.has_value()) {
    return;
  }
  switch (progress.phase) {
    case zvDatafileSortAdding:
      shown_->show(progress.recordsAdded);
      break;
    case zvDatafileSortMerging:
      shown_->show(progress.spilledBytes - spilledBefore_);
      break;
    case zvDatafileSortDelivering:
      shown_->show(progress.recordsDelivered);
      break;
  }
}

}  // namespace zvwttool
