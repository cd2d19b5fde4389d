/// Rows through table objects: written, read forwards, backwards and in ranges, over many elements.

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "support/TableFixture.h"

namespace {

using Lines = std::vector<std::string>;
using TableRows = TableTest;

TEST_F(TableRows, KeepEveryTypeAndNull) {
  const std::vector<Column> columns = {{"b", zvbTypeBoolean},
                                       {"i", zvbTypeInteger},
                                       {"r", zvbTypeReal},
                                       {"s", zvbTypeString},
                                       {"d", zvbTypeDate}};
  const std::vector<Row> rows = {
      row({true, std::int64_t{42}, std::string("1.5e3"), std::string("h\xC3\xA9"),
           std::string("2024-02-29 13:45:10.25")}),
      row({{}, {}, {}, {}, {}}),
      row({std::string("no"), std::string(" -7 "), 0.1, std::string(), 0.5}),
      row({std::string("?"), std::string("?"), std::string("?"), false, std::string("?")}),
      row({0.0, 1e300, std::int64_t{-1}, std::nan(""), std::int64_t{1}})};
  const Lines expected = {"true|42|1500|h\xC3\xA9|2024-02-29T13:45:10.250",
                          "null|null|null|null|null", "false|-7|0.1||1970-01-01T12:00:00.000",
                          "null|null|null|false|null",
                          "false|null|-1|null|1970-01-02T00:00:00.000"};
  const std::string name = makeTable(columns, rows);
  EXPECT_EQ(expected, readTable(name));
  EXPECT_EQ(Lines(expected.rbegin(), expected.rend()), readTable(name, nullptr, true));
}

TEST_F(TableRows, AreTheSameInEveryRangeDirectionAndElementSize) {
  constexpr int rowCount = 23;  // of 9 bytes
  for (const std::int64_t maxElementSize : {-1, 0, 1, 9, 20, 40, 1000}) {
    const std::string name = makeCountingTable(rowCount, maxElementSize);
    for (std::int64_t first = 0; first <= rowCount + 1; ++first) {
      for (const std::int64_t count : {-1, 0, 1, 5, rowCount, 1000}) {
        const RowRange range{first, count};
        Lines forwards;
        const std::int64_t end =
            count == -1 ? rowCount : std::min<std::int64_t>(rowCount, first + count);
        for (std::int64_t i = first; i < end; ++i) {
          forwards.push_back(std::to_string(i));
        }
        ASSERT_EQ(forwards, readTable(name, &range))
            << maxElementSize << " " << first << " " << count;
        Lines backwards;
        for (std::int64_t i = rowCount - 1; i >= first; --i) {
          backwards.push_back(std::to_string(i));
        }
        ASSERT_EQ(backwards, readTable(name, &range, true)) << maxElementSize << " " << first;
      }
    }
    EXPECT_TRUE(manager->deleteTable(name.c_str(), &error));
  }
}

TEST_F(TableRows, ComeOnceFromATableOfOneRowOrNone) {
  for (const std::int64_t maxElementSize : {0, 1}) {
    const std::string one = makeCountingTable(1, maxElementSize);
    EXPECT_EQ(Lines{"0"}, readTable(one));
    EXPECT_EQ(Lines{"0"}, readTable(one, nullptr, true));
  }
  const std::string none = makeCountingTable(0);
  EXPECT_EQ(Lines{}, readTable(none));
  EXPECT_EQ(Lines{}, readTable(none, nullptr, true));
  TemporaryDirectory empty;
  manager = makeManager(empty.path());
  const std::string alone = makeCountingTable(0);
  EXPECT_EQ(Lines{alone}, empty.names());
}

TEST_F(TableRows, CanBeCountedWithoutReadingAColumn) {
  const std::string name = makeCountingTable(10, 30);
  for (const bool backwards : {false, true}) {
    const TableHandle table(manager->openTable(name.c_str(), 0, static_cast<const int*>(nullptr),
                                               nullptr, backwards, &error));
    ASSERT_NE(nullptr, table) << error.asCstr();
    EXPECT_EQ(0, table->getColumnCount());
    EXPECT_EQ(10, table->getRowCount());
    EXPECT_EQ(Lines(10), readAll(*table));
  }
}

TEST_F(TableRows, MayHaveNoColumnsAtAll) {
  const TableHandle table = create({});
  ZvbDatavar unused;
  for (int i = 0; i < 3; ++i) {
    EXPECT_TRUE(table->writeRow(&unused));
  }
  EXPECT_TRUE(table->close());
  EXPECT_EQ(Lines(3), readTable(table->getName().asCstr()));
  EXPECT_EQ(Lines(3), readTable(table->getName().asCstr(), nullptr, true));
}

TEST_F(TableRows, FillElementsJustPastTheirLimit) {
  const std::string name = makeCountingTable(100, 100);
  std::size_t elements = 0;
  for (const std::string& file : directory.names()) {
    if (file.starts_with("zvwte_")) {
      ++elements;
      EXPECT_LE(std::filesystem::file_size(directory.file(file)), 108U);
    }
  }
  EXPECT_EQ(9U, elements);  // of 12 rows of 9 bytes
  EXPECT_EQ(100U, readTable(name).size());
}

TEST_F(TableRows, OfManyKindsReadBackAsWritten) {
  for (unsigned seed = 0; seed < 20; ++seed) {
    std::mt19937 random(seed);
    const int columnCount = 1 + static_cast<int>(random() % 6);
    std::vector<Column> columns;
    std::vector<std::string> names;
    for (int i = 0; i < columnCount; ++i) {
      names.push_back("c" + std::to_string(i));
    }
    for (const std::string& one : names) {
      columns.push_back({one.c_str(), random() % 2 == 0 ? zvbTypeInteger : zvbTypeString});
    }
    std::vector<Row> rows(random() % 200);
    Lines expected;
    for (Row& cells : rows) {
      std::string line;
      for (const Column& column : columns) {
        if (random() % 5 == 0) {
          cells.emplace_back();
        } else if (column.type == zvbTypeInteger) {
          cells.emplace_back(static_cast<std::int64_t>(random()) - 1000000);
        } else {
          // Now and then a text longer than what the file layer shows at once.
          const unsigned longest = random() % 50 == 0 ? 200000 : 60;
          cells.emplace_back(
              std::string(random() % longest, static_cast<char>('a' + random() % 26)));
        }
        ZvbDatavar value;
        assignCell(&value, cells.back());
        line += (&column == columns.data() ? "" : "|") + shown(value);
      }
      expected.push_back(line);
    }
    const std::string name = makeTable(columns, rows, random() % 3 == 0 ? 0 : random() % 5000);
    ASSERT_EQ(expected, readTable(name)) << seed;
    std::reverse(expected.begin(), expected.end());
    ASSERT_EQ(expected, readTable(name, nullptr, true)) << seed;
  }
}

TEST_F(TableRows, AreRefusedInTheWrongMode) {
  const std::string name = makeCountingTable(3);
  ZvbDatavar value;
  bool end = true;
  const TableHandle written = create({{"a", zvbTypeInteger}});
  EXPECT_FALSE(written->readRow(&value, &end));
  EXPECT_FALSE(end);
  EXPECT_EQ(1793, messageId(written->getErrorMessage()));

  const TableHandle read = open(name);
  EXPECT_TRUE(read->readRow(&value, &end));
  EXPECT_FALSE(read->writeRow(&value));
  EXPECT_EQ(1768, messageId(read->getErrorMessage()));
  EXPECT_EQ((Lines{"1", "2"}), readAll(*read));

  EXPECT_TRUE(read->close());
  EXPECT_FALSE(read->writeRow(&value));
  EXPECT_EQ(1768, messageId(read->getErrorMessage()));
  EXPECT_FALSE(read->readRow(&value, &end));
  EXPECT_FALSE(end);
  EXPECT_EQ(1793, messageId(read->getErrorMessage()));
  EXPECT_EQ((Lines{"0", "1", "2"}), readTable(name));
}

TEST_F(TableRows, RefuseANegativeRange) {
  const std::string name = makeCountingTable(3);
  const RowRange before{-5, 1};
  EXPECT_EQ(nullptr, open(name, &before));
  EXPECT_EQ(1788, messageId(error));
  EXPECT_NE(nullptr, std::strstr(error.asCstr(), "-5"));
  const RowRange negative{0, -2};
  EXPECT_EQ(nullptr, open(name, &negative));
  EXPECT_EQ(1789, messageId(error));
  const RowRange endless{1, std::numeric_limits<std::int64_t>::max()};
  EXPECT_EQ((Lines{"1", "2"}), readTable(name, &endless));
}

TEST_F(TableRows, KeepTheCallersVariantsAndBuffers) {
  const std::string name = makeTable({{"a", zvbTypeString}, {"b", zvbTypeString}},
                                     {row({std::string("x"), {}}), row({{}, std::string("y")})});
  const TableHandle table = open(name);
  ZvbDatavar first;
  ZvbDatavar second;
  ZvbDatavar* const apart[] = {&second, &first};
  bool end = false;
  ASSERT_TRUE(table->readRow(apart, &end));
  EXPECT_EQ("null", shown(first));
  EXPECT_EQ("x", shown(second));
  ZvbDatavar others[2];
  ASSERT_TRUE(table->readRow(others, &end));
  EXPECT_EQ("null", shown(others[0]));
  EXPECT_EQ("y", shown(others[1]));
}

}  // namespace
