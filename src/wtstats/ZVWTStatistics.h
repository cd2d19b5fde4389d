/// The cursor over a table's statistics: two columns of texts, one row for each statistic.
///
/// It is filled once and then depends on nothing.
/// Thread rule: one thread at a time.
#pragma once

#include "base/ZvbArray.h"
#include "base/ZvbString.h"
#include "base/ZvbStringCursor.h"

class ZVWTStatistics final : public ZvbStringCursor {
 public:
  ZVWTStatistics() noexcept = default;
  ZVWTStatistics(const ZVWTStatistics&) = delete;
  ZVWTStatistics& operator=(const ZVWTStatistics&) = delete;

  /// Adds a row. False when memory is short.
  [[nodiscard]] bool add(const char* name, const ZvbString& value) noexcept;
  [[nodiscard]] bool add(const char* name, std::int64_t value) noexcept;

  bool isValid() noexcept override { return true; }
  ZvbString columnName(int index) noexcept override;
  int columnCount() noexcept override { return 2; }
  ZvbString value(int index) noexcept override;
  ZvbString errorMessage() noexcept override { return {}; }
  bool rowCount(std::int64_t* count) noexcept override;
  int next() noexcept override;
  void release() noexcept override { delete this; }
  bool rewind() noexcept override;

 private:
  struct Statistic {
    ZvbString name;
    ZvbString value;
  };

  [[nodiscard]] std::int64_t size() const noexcept {
    return static_cast<std::int64_t>(statistics_.size());
  }

  ZvbArray<Statistic> statistics_;
  std::int64_t currentRow_ = -1;  // -1 before the first row, size() behind the last one
};
