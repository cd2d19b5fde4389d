/// The rows of a table, or of a range of it, in either direction.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Commands.h"
#include "CsvReader.h"
#include "Handles.h"
#include "Source.h"

namespace zvwttool {

class TableRows {
 public:
  struct Column {
    std::string name;
    zvbType type;
  };

  /// Opens the table. False with the reason in *error. The manager outlives the rows.
  [[nodiscard]] bool open(ZvWorkTableManager& manager, const ReadOptions& options,
                          std::string* error);
  [[nodiscard]] const std::vector<Column>& columns() const { return columns_; }

  /// Reads the next row into value(). On failure the reason is in *error.
  [[nodiscard]] ReadResult next(std::string* error);
  [[nodiscard]] const ZvbDatavar& value(std::size_t column) const { return values_[column]; }
  /// Puts the rows that next() has not read yet into an XML document of the library's. On failure
  /// the reason is in *error.
  [[nodiscard]] bool readAsXml(ZvbString* document, std::string* error);
  [[nodiscard]] const Source& source() const { return source_; }
  /// Rows of the range that next() has not read yet.
  [[nodiscard]] std::int64_t remaining() const { return remaining_; }

 private:
  [[nodiscard]] bool openTable(ZvWorkTableManager& manager, const ReadOptions& options,
                               std::string* error);
  [[nodiscard]] bool describeColumns(std::string* error);
  [[nodiscard]] bool limitToRange(const ReadOptions& options, std::string* error);
  [[nodiscard]] bool readRow(std::string* error);

  Source source_;
  TableHandle table_;
  std::vector<Column> columns_;
  std::vector<ZvbDatavar> values_;
  std::int64_t remaining_ = 0;
};

}  // namespace zvwttool
