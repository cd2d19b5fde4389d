#include "TableRows.h"

#include <limits>

namespace zvwttool {

bool TableRows::open(ZvWorkTableManager& manager, const ReadOptions& options, std::string* error) {
  return openTable(manager, options, error) && describeColumns(error) &&
         limitToRange(options, error);
}

bool TableRows::openTable(ZvWorkTableManager& manager, const ReadOptions& options,
                          std::string* error) {
  if (!source_.find(manager, options.source, error)) {
    return false;
  }
  ZvbString text;
  table_.reset(manager.openTable(source_.uri(), options.backwards, &text));
  if (table_ == nullptr) {
    *error = text.asCstr();
  }
  return table_ != nullptr;
}

bool TableRows::describeColumns(std::string* error) {
  const int count = table_->getColumnCount();
  for (int column = 0; column < count; ++column) {
    ZvbString name;
    zvbType type = zvbTypeString;
    int width = 0;
    int maxLength = 0;
    if (!table_->getColumnDefinition(column, &name, &type, &width, &maxLength)) {
      *error = table_->getErrorMessage().asCstr();
      return false;
    }
    columns_.push_back({name.asCstr(), type});
  }
  values_.resize(columns_.size());
  return true;
}

// Read backwards, the library begins at the table's last row whatever the range's row count says:
// the rows above the range are passed over here.
bool TableRows::limitToRange(const ReadOptions& options, std::string* error) {
  const RowRange rows = source_.rows();
  remaining_ = rows.rowCount;
  const std::int64_t behind = table_->getRowCount() - rows.firstRow - rows.rowCount;
  const std::int64_t above = options.backwards && remaining_ > 0 ? behind : 0;
  for (std::int64_t row = 0; row < above; ++row) {
    if (!readRow(error)) {
      return false;
    }
  }
  return true;
}

ReadResult TableRows::next(std::string* error) {
  if (remaining_ == 0) {
    return ReadResult::end;
  }
  if (!readRow(error)) {
    return ReadResult::failure;
  }
  --remaining_;
  return ReadResult::row;
}

bool TableRows::readAsXml(ZvbString* document, std::string* error) {
  constexpr std::int64_t mostRows = std::numeric_limits<int>::max();
  if (remaining_ > mostRows) {
    *error = "more rows than one XML document can have";
    return false;
  }
  bool endOfTable = false;
  const bool made = table_->asXml(0, static_cast<int>(remaining_), document, &endOfTable);
  const ZvbString reason = table_->getErrorMessage();  // also of a row that could not be read
  *error = reason.asCstr();
  return made && reason.isEmpty();
}

bool TableRows::readRow(std::string* error) {
  bool endOfTable = false;
  if (table_->readRow(values_.data(), &endOfTable)) {
    return true;
  }
  *error = endOfTable ? "the table has fewer rows than its catalogue says"
                      : table_->getErrorMessage().asCstr();
  return false;
}

}  // namespace zvwttool
