/// What the library's tables hold, kept in the simplest way: rows of variants in memory. The fuzz
/// target of calls compares the library with it.
#pragma once

#include <string>
#include <vector>

#include "RowTexts.h"

struct ModelColumn {
  std::string name;
  zvbType type = zvbTypeString;
  int width = 0;  // bytes; 0 or less: no limit
};

using ModelRow = std::vector<ZvbDatavar>;

struct ModelTable {
  std::string name;
  std::vector<ModelColumn> columns;
  std::vector<ModelRow> rows;
};

inline ZvbDatavar nullVariant() { return {}; }

template <typename Value>
ZvbDatavar variantOf(const Value& value) {
  ZvbDatavar variant;
  variant.assign(value);
  return variant;
}

inline ZvbDatavar storedText(const ZvbDatavar& value, int width) {
  const ZvbString text = value.asString();
  if (text.isNull() || width <= 0) {
    return variantOf(text);
  }
  const std::string whole = text.asCstr();
  const std::size_t size =
      zvbCutAtCharacter(whole.data(), whole.size(), static_cast<std::size_t>(width));
  return variantOf(whole.substr(0, size).c_str());
}

/// The value that a column makes of one that is written to it.
inline ZvbDatavar stored(const ZvbDatavar& value, const ModelColumn& column) {
  bool failed = false;
  switch (column.type) {
    case zvbTypeBoolean: {
      const bool boolean = value.asBool(&failed);
      return failed ? nullVariant() : variantOf(boolean);
    }
    case zvbTypeInteger: {
      const std::int64_t integer = value.asInt64(&failed);
      return failed ? nullVariant() : variantOf(integer);
    }
    case zvbTypeReal: {
      const ZvbReal real = value.asReal(&failed);
      return failed ? nullVariant() : variantOf(real);
    }
    case zvbTypeDate:
      return value.isNull() ? nullVariant() : variantOf(value.asDate());
    case zvbTypeString:
      break;
  }
  return value.isNull() ? nullVariant() : storedText(value, column.width);
}

inline ModelRow storedRow(const ModelRow& row, const std::vector<ModelColumn>& columns) {
  ModelRow result;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    result.push_back(stored(row[i], columns[i]));
  }
  return result;
}

inline std::string shownRow(const ModelRow& row) {
  std::string line;
  for (const ZvbDatavar& value : row) {
    line += shown(value) + "|";
  }
  return line;
}

/// A column of a reader's row: one of the table's, or a constant.
struct ModelSource {
  ModelColumn column;  // as the reader sees it
  int number = -1;     // of the table's column; -1: a constant
  ZvbDatavar constant;
};

/// One way to read a table.
struct ModelView {
  std::vector<ModelSource> sources;
  std::int64_t firstRow = 0;
  std::int64_t rowCount = -1;
  bool backwards = false;
};

inline ModelView wholeView(const ModelTable& table) {
  ModelView view;
  for (const ModelColumn& column : table.columns) {
    view.sources.push_back({column, static_cast<int>(view.sources.size()), {}});
  }
  return view;
}

inline ModelRow viewedRow(const ModelRow& row, const ModelView& view) {
  ModelRow result;
  for (const ModelSource& source : view.sources) {
    result.push_back(source.number < 0 ? source.constant
                                       : row[static_cast<std::size_t>(source.number)]);
  }
  return result;
}

/// The rows that a reader gets, in its order.
inline std::vector<ModelRow> viewedRows(const ModelTable& table, const ModelView& view) {
  const auto count = static_cast<std::int64_t>(table.rows.size());
  const bool isLimited = view.rowCount >= 0 && !view.backwards;
  const std::int64_t end = isLimited ? std::min(count, view.firstRow + view.rowCount) : count;
  std::vector<ModelRow> rows;
  for (std::int64_t i = view.firstRow; i < end; ++i) {
    rows.push_back(viewedRow(table.rows[static_cast<std::size_t>(i)], view));
  }
  if (view.backwards) {
    std::reverse(rows.begin(), rows.end());
  }
  return rows;
}
