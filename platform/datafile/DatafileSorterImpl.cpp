#include "datafile/DatafileSorterImpl.h"

#include <limits>
#include <new>
#include <utility>

#include "datafile/SettingRanges.h"
#include "datafile/messages.h"

namespace {

constexpr std::uint64_t ignoreCaseBit = 1;
constexpr std::uint64_t nullsLastBit = 2;

}  // namespace

std::unique_ptr<DatafileSorterImpl> DatafileSorterImpl::make(const SorterSetup& setup) noexcept {
  std::unique_ptr<DatafileSorterImpl> sorter(new (std::nothrow) DatafileSorterImpl(setup));
  if (sorter == nullptr || sorter->directoryList_.memoryShort() ||
      !sorter->codec_.setColumns(setup.columnTypes, setup.columnCount)) {
    return nullptr;
  }
  return sorter->makeValues() && sorter->setSortColumnCount(1) == zvDatafileSuccess
             ? std::move(sorter)
             : nullptr;
}

bool DatafileSorterImpl::makeValues() noexcept {
  const std::size_t count = codec_.columnCount();
  values_.reset(new (std::nothrow) ZvbDatavar[count]);
  addresses_.reset(new (std::nothrow) const ZvbDatavar*[count]);
  if (values_ == nullptr || addresses_ == nullptr) {
    return false;
  }
  for (std::size_t i = 0; i < count; ++i) {
    addresses_[i] = &values_[i];
  }
  return true;
}

std::int32_t DatafileSorterImpl::fail(ZvbString text) noexcept {
  error_ = std::move(text);
  return zvDatafileFailed;
}

std::int32_t DatafileSorterImpl::failAsEngine() noexcept { return fail(engine_->errorText()); }

std::int32_t DatafileSorterImpl::refuse(const char* operation) noexcept {
  if (engine_ != nullptr && engine_->hasFailed()) {
    return failAsEngine();
  }
  return fail(DATAFILE_MESSAGE(notPossibleNow, operation));
}

// ---- Describing the sort

std::int32_t DatafileSorterImpl::setSortColumnCount(std::int32_t count) noexcept {
  if (phase_ != Phase::describing) {
    return refuse("Setting the number of keys");
  }
  if (count < 1) {
    return fail(DATAFILE_MESSAGE(keyCountRefused, int{count}));
  }
  std::unique_ptr<SortKey[]> keys(new (std::nothrow) SortKey[static_cast<std::size_t>(count)]);
  if (keys == nullptr) {
    return fail(DATAFILE_MESSAGE(outOfMemory, "(sort keys)"));
  }
  for (std::int32_t i = 0; i < count; ++i) {
    keys[static_cast<std::size_t>(i)].ignoreCase = settings_.ignoreCase;
  }
  keys_ = std::move(keys);
  keyCount_ = count;
  return zvDatafileSuccess;
}

std::int32_t DatafileSorterImpl::setSortColumn(std::int32_t key, std::uint32_t column, bool flag,
                                               std::uint64_t value) noexcept {
  if (phase_ != Phase::describing) {
    return refuse("Setting a key");
  }
  if (key < 0 || key >= keyCount_) {
    return fail(DATAFILE_MESSAGE(noSuchKey, int{key}));
  }
  if (column >= codec_.columnCount()) {
    return fail(DATAFILE_MESSAGE(keyColumnRefused, int{key}, std::int64_t{column},
                                 static_cast<int>(codec_.columnCount())));
  }
  if ((value & ~(ignoreCaseBit | nullsLastBit)) != 0) {
    return fail(DATAFILE_MESSAGE(keyValueRefused, int{key}, static_cast<std::int64_t>(value)));
  }
  keys_[static_cast<std::size_t>(key)] = {
      .column = column,
      .descending = flag,
      .ignoreCase = settings_.ignoreCase || (value & ignoreCaseBit) != 0,
      .nullsLast = (value & nullsLastBit) != 0};
  return zvDatafileSuccess;
}

std::int32_t DatafileSorterImpl::setSortOptionA(std::uint64_t value) noexcept {
  if (phase_ != Phase::describing) {
    return refuse("Setting option A");
  }
  const auto memory = static_cast<std::int64_t>(value);
  if (!settingRange::memory.takes(memory)) {
    return fail(
        DATAFILE_MESSAGE(settingRefused, "option A (memory)", memory, settingRange::memory.text));
  }
  settings_.memory = memory == 0 ? managerMemory_ : memory;
  return zvDatafileSuccess;
}

std::int32_t DatafileSorterImpl::setSortOptionB(std::uint64_t value) noexcept {
  if (phase_ != Phase::describing) {
    return refuse("Setting option B");
  }
  const auto limit = static_cast<std::int64_t>(value);
  if (!settingRange::workFileLimit.takes(limit)) {
    return fail(DATAFILE_MESSAGE(settingRefused, "option B (work file limit)", limit,
                                 settingRange::workFileLimit.text));
  }
  settings_.workFileLimit = limit == 0 ? managerWorkFileLimit_ : limit;
  return zvDatafileSuccess;
}

// ---- Records

ZvbDatavar* DatafileSorterImpl::value(std::int32_t column) noexcept {
  const bool exists = column >= 0 && static_cast<std::size_t>(column) < codec_.columnCount();
  return exists ? &values_[static_cast<std::size_t>(column)] : nullptr;
}

bool DatafileSorterImpl::startAdding() noexcept {
  if (codec_.columnCount() == 0) {
    (void)fail(DATAFILE_MESSAGE(keyColumnRefused, 0, std::int64_t{0}, 0));
    return false;
  }
  engine_.reset(new (std::nothrow) SortEngine(settings_, callback_, context_));
  if (engine_ == nullptr || !engine_->start(directoryList_, &error_)) {
    if (engine_ == nullptr) {
      (void)fail(DATAFILE_MESSAGE(outOfMemory, "(sort)"));
    }
    engine_.reset();
    return false;
  }
  phase_ = Phase::adding;
  if (!codec_.setKeys(std::move(keys_), static_cast<std::size_t>(keyCount_))) {
    engine_->failWith(DATAFILE_MESSAGE(outOfMemory, "(sort keys)"));
    (void)failAsEngine();
    return false;
  }
  return true;
}

std::int32_t DatafileSorterImpl::addRecord(std::int32_t /*reserved*/) noexcept {
  return addRecordOf(addresses_.get());
}

std::int32_t DatafileSorterImpl::addRecordOf(const ZvbDatavar* const* values) noexcept {
  if (phase_ != Phase::adding) [[unlikely]] {
    if (phase_ != Phase::describing) {
      return refuse("Adding a record");
    }
    if (!startAdding()) {
      return zvDatafileFailed;
    }
  }
  RecordCodec::Sizes most;
  if (!codec_.prepare(values, values_.get(), &most)) [[unlikely]] {
    return fail(DATAFILE_MESSAGE(outOfMemory, "(column value)"));
  }
  unsigned char* const item =
      engine_->roomFor(sortItem::headSize(most.key, most.values) + most.key + most.values);
  if (item == nullptr) [[unlikely]] {
    return failAsEngine();
  }
  engine_->added(codec_.encode(most, item));
  return zvDatafileSuccess;
}

std::int32_t DatafileSorterImpl::sort() noexcept {
  if (phase_ == Phase::sorted || phase_ == Phase::delivering) {
    return refuse("Sorting");
  }
  if (engine_ != nullptr && !engine_->sort()) {
    return failAsEngine();
  }
  phase_ = Phase::sorted;
  return zvDatafileSuccess;
}

std::int32_t DatafileSorterImpl::firstRecord(std::int32_t reserved) noexcept {
  if (phase_ != Phase::sorted && phase_ != Phase::delivering) {
    return refuse("Delivering records");
  }
  if (engine_ != nullptr && !engine_->startDelivery()) {
    return failAsEngine();
  }
  phase_ = Phase::delivering;
  return nextRecord(reserved);
}

std::int32_t DatafileSorterImpl::nextRecord(std::int32_t /*reserved*/) noexcept {
  if (phase_ != Phase::delivering) [[unlikely]] {
    return refuse("Delivering records");
  }
  if (engine_ == nullptr) {
    return zvDatafileNoMoreRecords;
  }
  unsigned char* const item = engine_->next();
  if (item == nullptr) [[unlikely]] {
    return engine_->hasFailed() ? failAsEngine() : zvDatafileNoMoreRecords;
  }
  const RecordCodec::Decoded decoded = codec_.decode(item, values_.get());
  if (decoded != RecordCodec::Decoded::done) [[unlikely]] {
    engine_->failWith(decoded == RecordCodec::Decoded::memoryShort
                          ? DATAFILE_MESSAGE(outOfMemory, "(column value)")
                          : DATAFILE_MESSAGE(workFileDamaged));
    return failAsEngine();
  }
  return zvDatafileSuccess;
}
