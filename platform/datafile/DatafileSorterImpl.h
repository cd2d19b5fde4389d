/// The object behind ZvDatafileSorter: the values of the current record, and the sort that they go
/// into and come from.
#pragma once

#include <cstdint>
#include <memory>

#include "datafile/RecordCodec.h"
#include "datafile/SortEngine.h"
#include "datafile/ZvDatafileSorter.h"

/// What a manager gives its sorters to begin with.
struct SorterSetup {
  SortSettings settings;
  ZvDatafileSortCallback callback = nullptr;
  void* context = nullptr;
  ZvbString directoryList;
  const zvbType* columnTypes = nullptr;
  std::size_t columnCount = 0;
};

class DatafileSorterImpl final : public ZvDatafileSorter {
 public:
  /// Null when memory is short. Copies all of the setup.
  [[nodiscard]] static std::unique_ptr<DatafileSorterImpl> make(const SorterSetup& setup) noexcept;
  DatafileSorterImpl(const DatafileSorterImpl&) = delete;
  DatafileSorterImpl& operator=(const DatafileSorterImpl&) = delete;
  ~DatafileSorterImpl() = default;

  std::int32_t setSortColumn(std::int32_t key, std::uint32_t column, bool flag,
                             std::uint64_t value) noexcept override;
  std::int32_t setSortOptionA(std::uint64_t value) noexcept override;
  std::int32_t setSortOptionB(std::uint64_t value) noexcept override;
  std::int32_t addRecord(std::int32_t reserved) noexcept override;
  ZvbString getErrorMessage() noexcept override { return error_; }
  ZvbDatavar* value(std::int32_t column) noexcept override;
  std::int32_t nextRecord(std::int32_t reserved) noexcept override;
  void release() noexcept override { delete this; }
  std::int32_t setSortColumnCount(std::int32_t count) noexcept override;
  std::int32_t firstRecord(std::int32_t reserved) noexcept override;
  std::int32_t sort() noexcept override;
  std::int32_t addRecordOf(const ZvbDatavar* const* values) noexcept override;

 private:
  enum class Phase : std::uint8_t { describing, adding, sorted, delivering };

  explicit DatafileSorterImpl(const SorterSetup& setup) noexcept
      : settings_(setup.settings),
        managerMemory_(setup.settings.memory),
        managerWorkFileLimit_(setup.settings.workFileLimit),
        callback_(setup.callback),
        context_(setup.context),
        directoryList_(setup.directoryList) {}

  std::int32_t fail(ZvbString text) noexcept;
  std::int32_t failAsEngine() noexcept;
  std::int32_t refuse(const char* operation) noexcept;
  [[nodiscard]] bool makeValues() noexcept;
  [[nodiscard]] bool startAdding() noexcept;

  SortSettings settings_;
  std::int64_t managerMemory_;         // bytes, where option A says nothing
  std::int64_t managerWorkFileLimit_;  // likewise option B
  ZvDatafileSortCallback callback_;
  void* context_;
  ZvbString directoryList_;
  ZvbString error_;
  Phase phase_ = Phase::describing;
  RecordCodec codec_;
  std::unique_ptr<ZvbDatavar[]> values_;
  std::unique_ptr<const ZvbDatavar*[]> addresses_;  // of the values
  std::unique_ptr<SortKey[]> keys_;                 // until the codec has them
  std::int32_t keyCount_ = 0;
  std::unique_ptr<SortEngine> engine_;  // from the first record on
};
