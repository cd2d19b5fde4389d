/// What a verb reads: a table, or some of its rows and columns.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/ZvURI.h"
#include "base/ZvWorkTableURI.h"
#include "tables/ReadOptions.h"

namespace zvwttool {

class Source {
 public:
  /// A column as URIs tell it, see ZvURI.h.
  struct Column {
    ZvbString name;
    ZvbString second;
    std::int32_t type = 0;

    /// Unless it is a constant.
    [[nodiscard]] const ZvbString& nameInTable() const { return second.isEmpty() ? name : second; }
  };

  /// What is wrong with the URI that the options give, or with other options beside it; empty when
  /// nothing is. Looks at no file.
  [[nodiscard]] static std::string contradiction(const SourceOptions& options);

  /// True when the options give nothing but a URI.
  [[nodiscard]] static bool isUriAlone(const SourceOptions& options);

  /// Looks at the table.
  Source(ZvWorkTableManager& manager, const SourceOptions& options);

  /// For data to be taken out: a URI that names no columns of a table that has some is refused.
  void requireColumns() const;
  /// What a new table is to be made of: the same, and no two of the columns may have one name.
  void requireDifferentNames() const;
  /// Remarks which columns the table has not: the library reads constants in place of them.
  void remarkMissingColumns() const;

  /// The URI of the source, and that of other rows of its table with the same columns.
  [[nodiscard]] ZvbString uri() const;
  [[nodiscard]] ZvbString uri(const RowRange& rows) const;
  /// The URI of the source with more columns of its table behind its own.
  [[nodiscard]] ZvbString uriWith(const std::vector<std::string>& moreColumns) const;

  [[nodiscard]] const ZvbString& table() const { return table_; }
  [[nodiscard]] const std::vector<Column>& columns() const { return columns_; }
  [[nodiscard]] const std::vector<std::string>& columnsOfTable() const { return columnsOfTable_; }
  [[nodiscard]] bool hasColumn(const ZvbString& name) const;
  /// Whether a column of the source is to be one of the table's, and the table has it not.
  [[nodiscard]] bool isMissing(const Column& column) const;
  /// True when the columns are the table's, in their order and under their names.
  [[nodiscard]] bool isOfAllColumns() const { return isOfAllColumns_; }
  [[nodiscard]] bool isOfAllRows() const { return !hasRange_; }
  /// The rows of the source, none of them beyond the table's end.
  [[nodiscard]] RowRange rows() const;
  [[nodiscard]] std::int64_t rowsOfTable() const { return rowsOfTable_; }

 private:
  /// A name that two of the columns have; empty when there is none.
  [[nodiscard]] std::string repeatedName() const;

  using Columns = std::vector<Column>;

  static Columns ownColumns(ZvWorkTableFile& table);
  static Columns namedColumns(const ZvURI& uri);
  static std::vector<std::string> namesOf(const Columns& columns);
  /// Adds the columns to the URI, which it takes over.
  [[nodiscard]] ZvbString build(ZvWorkTableURI* started) const;
  void select(const std::string& list);

  ZvbString table_;
  Columns columns_;
  std::vector<std::string> columnsOfTable_;
  bool isOfAllColumns_ = false;
  bool hasRange_ = false;
  RowRange range_;  // as it was given
  std::int64_t rowsOfTable_ = 0;
};

}  // namespace zvwttool
