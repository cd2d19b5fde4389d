#include "TableRows.h"

#include <limits>

namespace zvwttool {

// Read backwards, the library begins at the table's last row whatever the range's row count says:
// the rows above the range are passed over here.
TableRows::TableRows(ZvWorkTableManager& manager, const ReadOptions& options)
    : source_(manager, options.source),
      table_(openTable(manager, source_.uri(), options.backwards)) {
  describeColumns();
  const RowRange rows = source_.rows();
  remaining_ = rows.rowCount;
  if (options.backwards && remaining_ > 0) {
    passOver(table_->getRowCount() - rows.firstRow - rows.rowCount);
  }
}

void TableRows::describeColumns() {
  const int count = table_->getColumnCount();
  for (int column = 0; column < count; ++column) {
    ZvbString name;
    zvbType type = zvbTypeString;
    int width = 0;
    int maxLength = 0;
    if (!table_->getColumnDefinition(column, &name, &type, &width, &maxLength)) {
      throw libraryFailure(table_->getErrorMessage());
    }
    columns_.push_back({name.asCstr(), type});
  }
  values_.resize(columns_.size());
}

void TableRows::passOver(std::int64_t rows) {
  for (std::int64_t row = 0; row < rows; ++row) {
    readRow();
  }
}

bool TableRows::next() {
  if (remaining_ == 0) {
    return false;
  }
  readRow();
  --remaining_;
  return true;
}

ZvbString TableRows::readAsXml() {
  constexpr std::int64_t mostRows = std::numeric_limits<int>::max();
  if (remaining_ > mostRows) {
    throw Failure(ExitCode::usage, "more rows than one XML document can have");
  }
  ZvbString document;
  bool endOfTable = false;
  const bool made = table_->asXml(0, static_cast<int>(remaining_), &document, &endOfTable);
  const ZvbString reason = table_->getErrorMessage();  // also of a row that could not be read
  if (!made || !reason.isEmpty()) {
    throw libraryFailure(reason);
  }
  return document;
}

void TableRows::readRow() {
  bool endOfTable = false;
  if (table_->readRow(values_.data(), &endOfTable)) {
    return;
  }
  if (endOfTable) {
    throw Failure(ExitCode::damaged, "the table has fewer rows than its catalogue says");
  }
  throw libraryFailure(table_->getErrorMessage());
}

}  // namespace zvwttool
