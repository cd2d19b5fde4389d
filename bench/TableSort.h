/// Sorted tables of this library.
#pragma once

#include <cstdint>
#include <string>

#include "Measuring.h"
#include "RowSort.h"

struct TableSortSettings {
  std::int64_t memory;  ///< of one sort, in bytes
  bool secondThread;
};

class TableSort : public RowSort {
 public:
  TableSort(const std::string& directory, const TableSortSettings& settings);
  ~TableSort() override;

  void store(const Rows& rows, SortOrder order) override;
  void read(const RowTaker& take) override;
  [[nodiscard]] std::int64_t storedBytes() const override;
  [[nodiscard]] std::int64_t spilledBytes() const override { return spilledBytes_; }
  void remove() override;
  [[nodiscard]] bool isStable() const override { return true; }

  /// Begins a table; store() is this, writeRow for each row, and close.
  [[nodiscard]] Table create(SortOrder order);
  [[nodiscard]] ZvWorkTableManager& manager() { return *manager_; }

 private:
  static bool keepProgress(const ZvDatafileSortProgress* progress, void* context);

  TableSortSettings settings_;
  Manager manager_;
  ZvbString name_;  // of the table stored, or empty
  std::int64_t spilledBytes_ = 0;
};
