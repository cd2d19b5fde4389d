/// Tables with sort keys: rows go to a sorter as they come and are stored when the table is closed.

#include <new>
#include <span>

#include "wtelem/messages.h"
#include "wtfile/ZVWTFileImpl.h"

// ---- Describing the sort

bool ZVWTFileImpl::allocateSortKeys(int count) noexcept {
  if (count > 0) {
    sortKeys_.reset(new (std::nothrow) TableSortKey[static_cast<std::size_t>(count)]);
  }
  if (sortKeys_ == nullptr) {
    return fail(WT_MESSAGE(outOfMemory, "(sort column definition array)"));
  }
  sortColumnCount_ = count;
  sortKeyCount_ = count;
  return true;
}

std::int32_t ZVWTFileImpl::setSortColumn(std::int32_t key, std::uint32_t column, bool flag,
                                         std::uint64_t value) noexcept {
  if (key >= 0 && key < sortKeyCount_) {
    sortKeys_[static_cast<std::size_t>(key)] = {column, flag, value};
  }
  return 0;
}

std::int32_t ZVWTFileImpl::setSortOptionA(std::uint64_t value) noexcept {
  sortOptionA_ = value;
  return 0;
}

std::int32_t ZVWTFileImpl::setSortOptionB(std::uint64_t value) noexcept {
  sortOptionB_ = value;
  return 0;
}

// ---- Rows on their way in

bool ZVWTFileImpl::failAsSorter() noexcept { return fail(sorter_->getErrorMessage()); }

bool ZVWTFileImpl::setUpSorter() noexcept {
  sorter_.reset();  // of a set-up that has failed
  const std::span<const ColumnDefinition> columns(state_.columns.get(),
                                                  static_cast<std::size_t>(state_.columnCount));
  ZvbString error;
  sorter_ = sorterSource_->makeSorter(columns, &error);
  if (sorter_ == nullptr) {
    return fail(std::move(error));
  }
  bool described = sorter_->setSortColumnCount(sortColumnCount_) == zvDatafileSuccess;
  for (int i = 0; described && i < sortColumnCount_; ++i) {
    const TableSortKey& key = sortKeys_[static_cast<std::size_t>(i)];
    described = sorter_->setSortColumn(i, key.column, key.flag, key.value) == zvDatafileSuccess;
  }
  described = described && sorter_->setSortOptionA(sortOptionA_) == zvDatafileSuccess &&
              sorter_->setSortOptionB(sortOptionB_) == zvDatafileSuccess;
  return described || failAsSorter();
}

bool ZVWTFileImpl::writeToSorter(const ZvbDatavar* const* values) noexcept {
  if (rowPosition_ == 0 && !setUpSorter()) {
    return false;
  }
  if (sorter_->addRecordOf(values) != zvDatafileSuccess) {
    return failAsSorter();
  }
  ++rowCount_;
  ++rowPosition_;
  return true;
}

// ---- Rows on their way out

bool ZVWTFileImpl::makeSortedVector() noexcept {
  if (sortedVector_ != nullptr) {
    return true;
  }
  const auto count = static_cast<std::size_t>(state_.columnCount);
  sortedVector_.reset(new (std::nothrow) const ZvbDatavar*[count]);
  if (sortedVector_ == nullptr) {
    return fail(WT_MESSAGE(outOfMemory, "(column value vector)"));
  }
  for (int i = 0; i < state_.columnCount; ++i) {
    sortedVector_[static_cast<std::size_t>(i)] = sorter_->value(i);
  }
  return true;
}

/// Stores the sorter's rows. From here on writeRow stores rows as they come.
bool ZVWTFileImpl::drainSorter() noexcept {
  sortColumnCount_ = 0;
  rowCount_ = 0;
  rowPosition_ = 0;
  if (sorter_->sort() != zvDatafileSuccess) {
    return failAsSorter();
  }
  std::int32_t status = sorter_->firstRecord(0);
  bool stored = true;
  while (status == zvDatafileSuccess && stored) {
    stored = writeRow(sortedVector_.get());
    if (stored) {
      status = sorter_->nextRecord(0);
    }
  }
  if (status != zvDatafileSuccess && status != zvDatafileNoMoreRecords) {
    stored = failAsSorter();
  }
  sorter_.reset();
  return stored;
}
