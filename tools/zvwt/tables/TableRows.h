/// The rows of a table, or of a range of it, in either direction.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tables/Condition.h"
#include "tables/Handles.h"
#include "tables/ReadOptions.h"
#include "tables/Source.h"
#include "tables/TableColumns.h"

namespace zvwttool {

class TableRows {
 public:
  using Column = TableColumn;

  /// Opens the table. The manager outlives the rows.
  TableRows(ZvWorkTableManager& manager, const ReadOptions& options);

  [[nodiscard]] const std::vector<Column>& columns() const { return columns_; }

  /// Reads the next row into value(); false at the end.
  [[nodiscard]] bool next();
  /// Whether the row that was read satisfies the conditions.
  [[nodiscard]] bool isWanted();
  /// Reads on to the next row that is wanted; false when there is none.
  [[nodiscard]] bool nextWanted();
  [[nodiscard]] const ZvbDatavar& value(std::size_t column) const { return values_[column]; }
  /// One for each column.
  [[nodiscard]] const ZvbDatavar* values() const { return values_.data(); }
  /// The rows that next() has not read yet as an XML document of the library's.
  [[nodiscard]] ZvbString readAsXml();
  [[nodiscard]] const Source& source() const { return source_; }
  [[nodiscard]] bool hasConditions() const { return !conditions_.empty(); }
  /// Rows of the range that next() has not read yet.
  [[nodiscard]] std::int64_t remaining() const { return remaining_; }

 private:
  using AllParts = std::vector<ConditionParts>;

  static TableHandle open(ZvWorkTableManager& manager, const Source& source,
                          const AllParts& conditions, bool backwards);
  void prepareConditions(const AllParts& conditions);
  void passOver(std::int64_t rows);
  void readRow();

  Source source_;
  TableHandle table_;
  std::vector<Column> columns_;
  std::vector<Condition> conditions_;
  std::vector<ZvbDatavar> values_;  // of the columns, and what the conditions are about
  std::int64_t remaining_ = 0;
};

}  // namespace zvwttool
