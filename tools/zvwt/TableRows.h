/// The rows of a table, or of a range of it, in either direction.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Commands.h"
#include "Handles.h"
#include "Source.h"

namespace zvwttool {

class TableRows {
 public:
  struct Column {
    std::string name;
    zvbType type;
  };

  /// Opens the table. The manager outlives the rows.
  TableRows(ZvWorkTableManager& manager, const ReadOptions& options);

  [[nodiscard]] const std::vector<Column>& columns() const { return columns_; }

  /// Reads the next row into value(); false at the end.
  [[nodiscard]] bool next();
  [[nodiscard]] const ZvbDatavar& value(std::size_t column) const { return values_[column]; }
  /// The rows that next() has not read yet as an XML document of the library's.
  [[nodiscard]] ZvbString readAsXml();
  [[nodiscard]] const Source& source() const { return source_; }
  /// Rows of the range that next() has not read yet.
  [[nodiscard]] std::int64_t remaining() const { return remaining_; }

 private:
  void describeColumns();
  void passOver(std::int64_t rows);
  void readRow();

  Source source_;
  TableHandle table_;
  std::vector<Column> columns_;
  std::vector<ZvbDatavar> values_;
  std::int64_t remaining_ = 0;
};

}  // namespace zvwttool
