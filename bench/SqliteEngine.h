/// Tables of SQLite.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <string>

#include "RowEngine.h"

class SqliteEngine : public RowEngine {
 public:
  SqliteEngine(const std::string& directory, std::int64_t cacheBytes);

  void store(const Rows& rows, SortOrder order) override;
  void read(const RowTaker& take) override;
  [[nodiscard]] std::uint64_t checksum() override;
  [[nodiscard]] std::int64_t storedBytes() const override;
  void remove() override;
  [[nodiscard]] bool isStable() const override { return false; }

 private:
  struct Close {
    void operator()(sqlite3* database) const { sqlite3_close(database); }
  };
  using Database = std::unique_ptr<sqlite3, Close>;

  [[nodiscard]] Database open() const;
  template <typename Take>
  void readRows(const Take& take) const;

  std::string path_;
  std::string temporaryDirectory_;
  std::int64_t cacheBytes_;
};
