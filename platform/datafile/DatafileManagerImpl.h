/// The object behind ZvDatafileManager.
#pragma once

#include <cstdint>
#include <memory>

#include "base/ZvbString.h"
#include "datafile/SettingRanges.h"
#include "datafile/SortSettings.h"
#include "datafile/ZvDatafileManager.h"

class DatafileManagerImpl final : public ZvDatafileManager {
 public:
  explicit DatafileManagerImpl(const ZvbString& directoryList) noexcept
      : directoryList_(directoryList) {}
  DatafileManagerImpl(const DatafileManagerImpl&) = delete;
  DatafileManagerImpl& operator=(const DatafileManagerImpl&) = delete;
  ~DatafileManagerImpl() = default;

  bool sortAndSize0(std::int64_t value) noexcept override;
  bool sortAndSize1(bool value) noexcept override;
  bool sortAndSize2(bool value) noexcept override;
  bool sortAndSize3(bool value) noexcept override;
  bool sortAndSize4(std::int32_t value) noexcept override;
  bool sortAndSize5(std::int64_t value) noexcept override;
  bool sortAndSize6(std::int64_t value) noexcept override;
  bool sortAndSize7(bool value) noexcept override;
  ZvDatafileSorter* createSorter(std::uint32_t options) noexcept override;
  ZvbString getErrorMessage() noexcept override { return error_; }
  void release() noexcept override { delete this; }
  bool defineColumn(std::int32_t column, zvbType type, std::int32_t size) noexcept override;
  bool setColumnCount(std::int32_t count) noexcept override;
  void setProgress(ZvDatafileSortCallback callback, void* context) noexcept override;

  [[nodiscard]] bool memoryShort() const noexcept { return directoryList_.memoryShort(); }

 private:
  bool fail(ZvbString text) noexcept;
  bool check(const char* setting, std::int64_t value, const SettingRange& range) noexcept;

  ZvbString directoryList_;
  ZvbString error_;
  SortSettings settings_;
  ZvDatafileSortCallback callback_ = nullptr;
  void* context_ = nullptr;
  std::unique_ptr<zvbType[]> columnTypes_;
  std::int32_t columnCount_ = 0;
};
