/// Tables of DuckDB, in builds that were given its library (ZVWT_WITH_DUCKDB).
#pragma once

#include <memory>
#include <string>

#include "RowEngine.h"

/// How rows are given to DuckDB's appender.
enum class DuckdbAppending { wholeChunks, singleRows };

struct DuckdbEngineSettings {
  const char* memoryLimit;  ///< as DuckDB writes it; null for its own, most of the machine's memory
  int threads;              ///< the caller's counts
  DuckdbAppending appending = DuckdbAppending::wholeChunks;
};

class DuckdbEngine : public RowEngine {
 public:
  DuckdbEngine(const std::string& directory, const DuckdbEngineSettings& settings);

  void store(const Rows& rows, SortOrder order) override;
  void read(const RowTaker& take) override;
  [[nodiscard]] std::uint64_t checksum() override;
  [[nodiscard]] std::int64_t storedBytes() const override;
  void remove() override;
  [[nodiscard]] bool isStable() const override { return false; }

 private:
  template <typename Take>
  void readRows(const Take& take) const;

  std::string path_;
  std::string temporaryDirectory_;
  DuckdbEngineSettings settings_;
};
