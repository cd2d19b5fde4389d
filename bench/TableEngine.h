/// Tables of this library.
#pragma once

#include <cstdint>
#include <string>

#include "Measuring.h"
#include "RowEngine.h"

struct TableEngineSettings {
  std::int64_t memory = 0;  ///< of one sort, in bytes
  bool secondThread = false;
};

class TableEngine : public RowEngine {
 public:
  TableEngine(const std::string& directory, const TableEngineSettings& settings);
  ~TableEngine() override;

  void store(const Rows& rows, SortOrder order) override;
  void read(const RowTaker& take) override;
  [[nodiscard]] std::uint64_t checksum() override;
  [[nodiscard]] std::int64_t storedBytes() const override;
  [[nodiscard]] std::int64_t spilledBytes() const override { return spilledBytes_; }
  void remove() override;
  [[nodiscard]] bool isStable() const override { return true; }

  /// Begins a table; store() is this, writeRow for each row, and close.
  [[nodiscard]] Table create(SortOrder order);
  /// Opens the table that was stored, with `count` columns of these numbers; -1: all.
  [[nodiscard]] Table open(int count = -1, const int* numbers = nullptr, bool backwards = false);
  [[nodiscard]] ZvWorkTableManager& manager() { return *manager_; }

 private:
  static bool keepProgress(const ZvDatafileSortProgress* progress, void* context);

  TableEngineSettings settings_;
  Manager manager_;
  ZvbString name_;  // of the table stored, or empty
  std::int64_t spilledBytes_ = 0;
};
