/// The sort of DuckDB, in builds that were given its library (ZVWT_WITH_DUCKDB).
#pragma once

#include <memory>
#include <string>

#include "RowSort.h"

struct DuckdbSortSettings {
  const char* memoryLimit;  ///< as DuckDB writes it; null for its own, most of the machine's memory
  int threads;              ///< the caller's counts
};

class DuckdbSort : public RowSort {
 public:
  DuckdbSort(const std::string& directory, const DuckdbSortSettings& settings);

  void store(const Rows& rows, SortOrder order) override;
  void read(const RowTaker& take) override;
  [[nodiscard]] std::int64_t storedBytes() const override;
  void remove() override;
  [[nodiscard]] bool isStable() const override { return false; }

 private:
  std::string path_;
  std::string temporaryDirectory_;
  DuckdbSortSettings settings_;
};
