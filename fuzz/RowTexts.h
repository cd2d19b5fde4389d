/// Rows as texts, so that they can be compared and shown.
#pragma once

#include <bit>
#include <string>
#include <vector>

#include "Input.h"
#include "ZvwtHandles.h"

/// A value as text, with the type of what is no null. The days of a date tell more than its text.
inline std::string shown(const ZvbDatavar& value) {
  if (value.isNull()) {
    return "null";
  }
  std::string text = zvbTypeToString(value.type());
  if (value.type() == zvbTypeDate) {
    bool failed = false;
    text += " " + std::to_string(std::bit_cast<std::uint64_t>(value.asDouble(&failed)));
  }
  return text + " " + value.asString().asCstr();
}

/// Up to `limit` rows from where reading stands. `*atEnd` tells whether the end was reached.
inline std::vector<std::string> readRows(ZvWorkTableFile& table, std::size_t limit, bool* atEnd) {
  const auto columns = static_cast<std::size_t>(table.getColumnCount());
  std::vector<ZvbDatavar> values(columns + 1);
  std::vector<std::string> rows;
  *atEnd = false;
  while (rows.size() < limit && table.readRow(values.data(), atEnd)) {
    std::string line;
    for (std::size_t i = 0; i < columns; ++i) {
      line += shown(values[i]) + "|";
    }
    rows.push_back(line);
  }
  return rows;
}

/// All rows of a table that is known to be whole.
inline std::vector<std::string> readAllRows(ZvWorkTableFile& table) {
  constexpr std::size_t limit = 100000;
  bool atEnd = false;
  std::vector<std::string> rows = readRows(table, limit, &atEnd);
  FUZZ_CHECK(atEnd, table.getErrorMessage().asCstr());
  return rows;
}
