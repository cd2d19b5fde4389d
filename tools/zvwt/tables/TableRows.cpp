#include "tables/TableRows.h"

#include <algorithm>
#include <limits>

#include "tables/TableFailure.h"

namespace zvwttool {

namespace {

std::vector<ConditionParts> readConditions(const std::vector<std::string>& texts,
                                           const Source& source) {
  std::vector<ConditionParts> conditions;
  for (const std::string& text : texts) {
    conditions.push_back(readCondition(text, source.columnsOfTable()));
  }
  return conditions;
}

}  // namespace

// Read backwards, the library begins at the table's last row whatever the range's row count says:
// the rows above the range are passed over here.
TableRows::TableRows(ZvWorkTableManager& manager, const ReadOptions& options)
    : source_(manager, options.source) {
  source_.remarkMissingColumns();
  const AllParts conditions = readConditions(options.conditions, source_);
  table_ = open(manager, source_, conditions, options.backwards);
  columns_ = columnsOf(*table_);
  values_.resize(columns_.size());
  prepareConditions(conditions);
  const RowRange rows = source_.rows();
  remaining_ = rows.rowCount;
  if (options.backwards && remaining_ > 0) {
    passOver(table_->getRowCount() - rows.firstRow - rows.rowCount);
  }
}

TableHandle TableRows::open(ZvWorkTableManager& manager, const Source& source,
                            const AllParts& conditions, bool backwards) {
  std::vector<std::string> columns;
  for (const ConditionParts& condition : conditions) {
    columns.push_back(condition.column);
  }
  return openTable(manager, source.uriWith(columns), backwards);
}

/// The columns behind the source's own are those of the conditions, in their order.
void TableRows::prepareConditions(const AllParts& conditions) {
  const std::size_t own = columns_.size() - conditions.size();
  for (std::size_t i = 0; i < conditions.size(); ++i) {
    conditions_.emplace_back(conditions[i], columns_[own + i].type);
  }
  columns_.resize(own);
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

bool TableRows::isWanted() {
  const ZvbDatavar* value = values_.data() + columns_.size();
  return std::all_of(conditions_.begin(), conditions_.end(),
                     [&value](Condition& condition) { return condition.holdsFor(*value++); });
}

bool TableRows::nextWanted() {
  while (next()) {
    if (isWanted()) {
      return true;
    }
  }
  return false;
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
    throw readingFailure(source_.table().asCstr(), reason);
  }
  return document;
}

void TableRows::readRow() {
  bool endOfTable = false;
  if (table_->readRow(values_.data(), &endOfTable)) {
    return;
  }
  const std::string table = source_.table().asCstr();
  if (endOfTable) {
    throw Failure(ExitCode::damaged, table + ": the table has fewer rows than its catalogue says" +
                                         adviceToCheck(table));
  }
  throw readingFailure(table, table_->getErrorMessage());
}

}  // namespace zvwttool
