/// What the tests of tables share: a manager over directories of its own, and short ways to make,
/// fill and read tables.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "ZvwtHandles.h"
#include "support/TemporaryDirectory.h"

using ManagerHandle = zvwt::Manager;
using TableHandle = zvwt::Table;

struct Column {
  const char* name;
  zvbType type;
  int width = 0;
};

/// One value as the tests write it down.
using Cell = std::variant<std::monostate, bool, std::int64_t, double, std::string>;
using Row = std::vector<Cell>;

inline Row row(std::initializer_list<Cell> cells) { return cells; }

inline void assignCell(ZvbDatavar* value, const Cell& cell) {
  if (const auto* boolean = std::get_if<bool>(&cell)) {
    value->assign(*boolean);
  } else if (const auto* integer = std::get_if<std::int64_t>(&cell)) {
    value->assign(*integer);
  } else if (const auto* binary = std::get_if<double>(&cell)) {
    value->assign(*binary);
  } else if (const auto* text = std::get_if<std::string>(&cell)) {
    value->assign(text->c_str());
  } else {
    value->setNull();
  }
}

/// A value as text, with nulls told apart from everything else.
inline std::string shown(const ZvbDatavar& value) {
  return value.isNull() ? "null" : value.asString().asCstr();
}

/// The rest of the rows, each as its values' texts joined by '|'; a last line "failed: ..." when
/// reading ended otherwise than at the end of the table.
inline std::vector<std::string> restOfRows(ZvWorkTableFile& table) {
  const auto columns = static_cast<std::size_t>(table.getColumnCount());
  std::vector<ZvbDatavar> values(columns + 1);
  std::vector<std::string> rows;
  bool end = false;
  while (table.readRow(values.data(), &end)) {
    std::string line;
    for (std::size_t i = 0; i < columns; ++i) {
      line += (i == 0 ? "" : "|") + shown(values[i]);
    }
    rows.push_back(line);
  }
  if (!end) {
    rows.push_back(std::string("failed: ") + table.getErrorMessage().asCstr());
  }
  return rows;
}

class TableTest : public testing::Test {
 protected:
  explicit TableTest(const std::filesystem::path& parent = std::filesystem::temp_directory_path())
      : directory(parent), manager(makeManager(directory.path())) {}

  ManagerHandle makeManager(const std::string& directories) {
    error.setNull();
    ManagerHandle made(zvwtCreateManager("test", directories.c_str(), &error));
    EXPECT_NE(made, nullptr) << error.asCstr();
    return made;
  }

  TableHandle create(const std::vector<Column>& columns, std::int64_t maxElementSize = 0) {
    TableHandle table(
        manager->createTable(static_cast<int>(columns.size()), maxElementSize, &error));
    EXPECT_NE(table, nullptr) << error.asCstr();
    for (int i = 0; i < static_cast<int>(columns.size()); ++i) {
      const Column& column = columns[static_cast<std::size_t>(i)];
      EXPECT_TRUE(table->defineColumn(i, column.name, column.type, column.width));
    }
    return table;
  }

  static bool write(ZvWorkTableFile& table, const Row& cells) {
    std::vector<ZvbDatavar> values(cells.size());
    for (std::size_t i = 0; i < cells.size(); ++i) {
      assignCell(&values[i], cells[i]);
    }
    return table.writeRow(values.data());
  }

  /// Makes, fills and closes a table; its name.
  std::string makeTable(const std::vector<Column>& columns, const std::vector<Row>& rows,
                        std::int64_t maxElementSize = 0) {
    const TableHandle table = create(columns, maxElementSize);
    for (const Row& cells : rows) {
      EXPECT_TRUE(write(*table, cells)) << table->getErrorMessage().asCstr();
    }
    EXPECT_TRUE(table->close()) << table->getErrorMessage().asCstr();
    return table->getName().asCstr();
  }

  /// A table of one integer column with the rows 0, 1, 2, ...
  std::string makeCountingTable(int rows, std::int64_t maxElementSize = 0) {
    std::vector<Row> cells;
    for (std::int64_t i = 0; i < rows; ++i) {
      cells.push_back(row({i}));
    }
    return makeTable({{"number", zvbTypeInteger}}, cells, maxElementSize);
  }

  TableHandle open(const std::string& name, const RowRange* range = nullptr,
                   bool backwards = false) {
    return TableHandle(manager->openTable(name.c_str(), -1, static_cast<const ZvbString*>(nullptr),
                                          range, backwards, &error));
  }

  /// Opens by a name or a URI.
  TableHandle openUri(const std::string& text, bool backwards = false) {
    return TableHandle(manager->openTable(text.c_str(), backwards, &error));
  }

  static std::vector<std::string> readAll(ZvWorkTableFile& table) { return restOfRows(table); }

  std::vector<std::string> readTable(const std::string& name, const RowRange* range = nullptr,
                                     bool backwards = false) {
    return readOpened(open(name, range, backwards));
  }

  std::vector<std::string> readUri(const std::string& text, bool backwards = false) {
    return readOpened(openUri(text, backwards));
  }

  std::vector<std::string> readOpened(const TableHandle& table) {
    return table == nullptr ? std::vector<std::string>{std::string("failed: ") + error.asCstr()}
                            : readAll(*table);
  }

  TemporaryDirectory directory;
  ZvbString error;
  ManagerHandle manager;
};

/// The number that an error text begins with.
inline int messageId(const ZvbString& text) { return std::atoi(text.asCstr()); }
