#include "SortProgress.h"

#include "Diagnostics.h"
#include "InterruptGuard.h"

namespace zvwttool {
namespace {

ZvbString statusText(std::int64_t rows, std::int64_t ofRows, const char* done) noexcept {
  const auto count = static_cast<long long>(rows);
  const auto all = static_cast<long long>(ofRows);
  return all <= 0
             ? zvbStringFormat("sorting: %lld rows %s", count, done)
             : zvbStringFormat("sorting: %lld %% of %lld rows %s", count * 100 / all, all, done);
}

}  // namespace

SortProgress::~SortProgress() {
  if (manager_ != nullptr) {
    ZvbString unused;
    (void)zvwtSetSortProgress(manager_, nullptr, nullptr, &unused);
  }
}

bool SortProgress::follow(ZvWorkTableManager* manager, std::int64_t expectedRows,
                          std::string* error) {
  ZvbString text;
  if (!zvwtSetSortProgress(manager, report, this, &text)) {
    *error = text.asCstr();
    return false;
  }
  manager_ = manager;
  expectedRows_ = expectedRows;
  return true;
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

void SortProgress::show(const ZvDatafileSortProgress& progress) const noexcept {
  switch (progress.phase) {
    case zvDatafileSortAdding:
      showStatus(statusText(progress.recordsAdded, expectedRows_, "read").asView());
      break;
    case zvDatafileSortMerging:
      showStatus(statusText(progress.recordsAdded, -1, "read, merging").asView());
      break;
    case zvDatafileSortDelivering:
      showStatus(statusText(progress.recordsDelivered, progress.recordsAdded, "stored").asView());
      break;
  }
}

}  // namespace zvwttool
