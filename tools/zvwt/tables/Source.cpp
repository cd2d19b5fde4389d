#include "tables/Source.h"

#include <algorithm>
#include <new>
#include <string_view>

#include "process/Diagnostics.h"
#include "process/Failure.h"
#include "tables/ColumnNames.h"
#include "tables/Handles.h"
#include "tables/TableColumns.h"
#include "tables/TableFailure.h"
#include "text/DisplayText.h"
#include "text/NearName.h"

namespace zvwttool {
namespace {

using ReadUri = zvwt::Uri;

ReadUri readUri(const std::string& text) { return ReadUri(getURIFromURIString(text.c_str())); }

}  // namespace

std::string Source::contradiction(const SourceOptions& options) {
  const ReadUri uri = readUri(options.table);
  constexpr std::string_view start = "zvwt:";
  if (uri == nullptr && sameName(options.table.substr(0, start.size()).c_str(), start.data())) {
    return quotedName(options.table) +
           " is malformed: the form is zvwt:NAME[?rows=FIRST,COUNT][&col=NAME[,SECOND[,TYPE]]]...";
  }
  if (uri == nullptr) {
    return "";
  }
  if (!sameName(uri->getScheme(), "zvwt")) {
    return quotedName(options.table) +
           " is neither a table's name nor a URI that begins with zvwt:";
  }
  if (uri->getColumnCount() > 0 && !options.select.empty()) {
    return "the URI selects columns, so there is nothing for --select to do";
  }
  RowRange range;
  if (uri->getRowRange(&range.firstRow, &range.rowCount) && options.range.has_value()) {
    return "the URI has a range of rows, so there is nothing for --rows to do";
  }
  return "";
}

bool Source::isUriAlone(const SourceOptions& options) {
  return readUri(options.table) != nullptr && options.select.empty() && !options.range.has_value();
}

Source::Source(ZvWorkTableManager& manager, const SourceOptions& options) {
  const ReadUri uri = readUri(options.table);
  table_ = uri != nullptr ? uri->getPath() : ZvbString(options.table.c_str());
  hasRange_ = uri != nullptr && uri->getRowRange(&range_.firstRow, &range_.rowCount);
  if (options.range.has_value()) {
    hasRange_ = true;
    range_ = *options.range;
  }
  constexpr int allColumns = -1;
  const ZvbString* noNames = nullptr;
  ZvbString text;
  const TableHandle table(manager.openTable(table_, allColumns, noNames, &range_, false, &text));
  if (table == nullptr) {
    throw openingFailure(manager, table_.asCstr(), text, adviceToCheck(table_.asCstr()));
  }
  rowsOfTable_ = table->getRowCount();
  const Columns known = ownColumns(*table);
  columnsOfTable_ = namesOf(known);
  if (options.select.empty()) {
    columns_ = uri != nullptr ? namedColumns(*uri) : known;
  }
  for (const std::string& list : options.select) {
    select(list);
  }
  isOfAllColumns_ =
      std::equal(columns_.begin(), columns_.end(), known.begin(), known.end(),
                 [](const Column& column, const Column& own) {
                   return column.type == 0 && sameName(column.name, own.name) &&
                          (column.second.isEmpty() || sameName(column.second, own.name));
                 });
}

Source::Columns Source::ownColumns(ZvWorkTableFile& table) {
  Columns columns;
  for (const TableColumn& column : columnsOf(table)) {
    columns.push_back({.name = column.name.c_str(), .second = {}, .type = 0});
  }
  return columns;
}

Source::Columns Source::namedColumns(const ZvURI& uri) {
  Columns columns(static_cast<std::size_t>(uri.getColumnCount()));
  for (std::size_t i = 0; i < columns.size(); ++i) {
    Column& column = columns[i];
    (void)uri.getColumn(static_cast<int>(i), &column.name, &column.second, &column.type);
  }
  return columns;
}

std::vector<std::string> Source::namesOf(const Columns& columns) {
  std::vector<std::string> names;
  for (const Column& column : columns) {
    names.emplace_back(column.name.asCstr());
  }
  return names;
}

bool Source::hasColumn(const ZvbString& name) const { return hasName(columnsOfTable_, name); }

/// Takes a list of columns, each by its name or as NEW=NAME. A name of the table's may contain
/// equals signs.
void Source::select(const std::string& list) {
  for (std::size_t begin = 0; begin <= list.size();) {
    const std::size_t end = std::min(list.find(',', begin), list.size());
    const std::string item = list.substr(begin, end - begin);
    const std::size_t equals = hasColumn(item.c_str()) ? std::string::npos : item.find('=');
    const std::string name = equals == std::string::npos ? item : item.substr(equals + 1);
    if (!hasColumn(name.c_str())) {
      throw Failure(ExitCode::usage, "the table has no column " + quotedName(name) +
                                         didYouMean(name, columnsOfTable_));
    }
    columns_.push_back(
        equals == std::string::npos
            ? Column{.name = name.c_str(), .second = {}, .type = 0}
            : Column{.name = item.substr(0, equals).c_str(), .second = name.c_str(), .type = 0});
    begin = end + 1;
  }
}

bool Source::isMissing(const Column& column) const {
  return column.type == 0 && !hasColumn(column.nameInTable());
}

void Source::requireColumns() const {
  if (columns_.empty() && !columnsOfTable_.empty()) {
    throw Failure(ExitCode::usage,
                  "the URI names no columns: name each by col=NAME, or give --select");
  }
}

void Source::remarkMissingColumns() const {
  for (const Column& column : columns_) {
    if (isMissing(column)) {
      const std::string name = column.nameInTable().asCstr();
      remark("the table has no column " + quotedName(name) + didYouMean(name, columnsOfTable_));
    }
  }
}

void Source::requireDifferentNames() const {
  requireColumns();
  const std::string repeated = repeatedName();
  if (!repeated.empty()) {
    throw Failure(ExitCode::usage, "two columns would have the name " + quotedName(repeated));
  }
}

std::string Source::repeatedName() const {
  std::vector<const ZvbString*> names;
  for (const Column& column : columns_) {
    names.push_back(&column.name);
  }
  std::sort(names.begin(), names.end(), [](const ZvbString* left, const ZvbString* right) {
    return left->compare(*right, false) < 0;
  });
  const auto repeated = std::adjacent_find(
      names.begin(), names.end(),
      [](const ZvbString* left, const ZvbString* right) { return sameName(*left, *right); });
  return repeated == names.end() ? "" : (*repeated)->asCstr();
}

RowRange Source::rows() const {
  const std::int64_t first = std::min(range_.firstRow, rowsOfTable_);
  const std::int64_t rest = rowsOfTable_ - first;
  return {first, range_.rowCount < 0 ? rest : std::min(range_.rowCount, rest)};
}

ZvbString Source::uri() const {
  return hasRange_ ? uri(range_) : build(getWorkTableURIFromComponents(table_));
}

ZvbString Source::uri(const RowRange& rows) const {
  return build(getWorkTableURIFromComponents(table_, rows.firstRow, rows.rowCount));
}

ZvbString Source::uriWith(const std::vector<std::string>& moreColumns) const {
  Source wider = *this;
  for (const std::string& name : moreColumns) {
    wider.columns_.push_back({.name = name.c_str(), .second = {}, .type = 0});
  }
  return wider.uri();
}

ZvbString Source::build(ZvWorkTableURI* started) const {
  const zvwt::TableUri uri(started);
  bool complete = uri != nullptr;
  for (std::size_t i = 0; i < columns_.size() && complete; ++i) {
    ZvbString unused;
    complete = uri->appendColumn(columns_[i].name, columns_[i].second, columns_[i].type, &unused);
  }
  ZvbString text = complete ? uri->toString() : ZvbString::outOfMemory();
  return text.memoryShort() ? throw std::bad_alloc() : text;
}

}  // namespace zvwttool
