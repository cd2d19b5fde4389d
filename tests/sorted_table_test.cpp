/// Tables with sort keys: what their files hold, what they refuse, and what a failure leaves.

#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <thread>

#include "datafile/messages.h"
#include "support/FileCalls.h"
#include "support/ShortMemory.h"
#include "support/SortModel.h"
#include "support/ThisProcess.h"
#include "support/ThisSystem.h"
#include "zvwt.h"

namespace {

using Lines = std::vector<std::string>;

class SortedTable : public TableTest {
 protected:
  TableHandle createSorted(const std::vector<Column>& columns, const KeySettings& keys,
                           std::int64_t maxElementSize = 0) {
    TableHandle table(manager->createTable(static_cast<int>(columns.size()),
                                           static_cast<int>(keys.size()), maxElementSize, &error));
    EXPECT_NE(table, nullptr) << error.asCstr();
    for (std::size_t i = 0; i < columns.size(); ++i) {
      EXPECT_TRUE(table->defineColumn(static_cast<int>(i), columns[i].name, columns[i].type,
                                      columns[i].width));
    }
    for (std::size_t i = 0; i < keys.size(); ++i) {
      EXPECT_EQ(0, table->setSortColumn(static_cast<std::int32_t>(i), keys[i].column,
                                        keys[i].descending, keys[i].value));
    }
    return table;
  }

  static void writeAll(ZvWorkTableFile& table, const std::vector<Record>& records) {
    for (const Record& record : records) {
      ASSERT_TRUE(table.writeRow(record.data())) << table.getErrorMessage().asCstr();
    }
    EXPECT_EQ(static_cast<std::int64_t>(records.size()), table.getRowCount());
  }

  /// Of one integer and one text column, sorted by the first.
  TableHandle createNumbers(std::int64_t maxElementSize = 0) {
    return createSorted({{"n", zvbTypeInteger}, {"s", zvbTypeString}}, {{.column = 0}},
                        maxElementSize);
  }
  static bool writeNumber(ZvWorkTableFile& table, std::int64_t number, std::size_t size = 1) {
    return write(table, row({number, std::string(size, 's')}));
  }

  /// What its only table has in its element files: rows, then where they begin.
  static std::string elementBytes(const TemporaryDirectory& at) {
    std::string bytes;
    for (const std::string& name : at.names()) {
      if (name.starts_with("zvwte")) {
        bytes += TemporaryDirectory::read(at.file(name));
      }
    }
    return bytes;
  }
};

/// Texts longer than their column are sorted as they are and stored cut, and what cannot be
/// converted is stored as a null of its column's type.
TEST_F(SortedTable, HasTheBytesOfATableWrittenInOrder) {
  const std::vector<Column> columns = {{"b", zvbTypeBoolean}, {"i", zvbTypeInteger},
                                       {"r", zvbTypeReal},    {"s", zvbTypeString, 20},
                                       {"d", zvbTypeDate},    {"id", zvbTypeInteger}};
  Types types;
  for (const Column& column : columns) {
    types.push_back(column.type);
  }
  HardValues values(1);
  for (std::uint32_t plan = 0; plan < 20; ++plan) {
    const KeySettings keys = {{plan % 5, values.coin(), values.below(4)},
                              {values.below(5), values.coin(), values.below(4)}};
    std::vector<Record> records(400, Record(6));
    for (std::size_t i = 0; i < records.size(); ++i) {
      for (std::size_t column = 0; column < 5; ++column) {
        records[i][column] = values.value(types[column]);
      }
      records[i][5].assign(static_cast<std::int64_t>(i));
    }
    const TableHandle sorted = createSorted(columns, keys);
    sorted->setSortOptionA(plan % 2 == 0 ? 65536 : 0);
    writeAll(*sorted, records);
    ASSERT_TRUE(sorted->close()) << sorted->getErrorMessage().asCstr();
    EXPECT_EQ(400, sorted->getRowCount());
    const std::string bytes = elementBytes(directory);
    ASSERT_TRUE(manager->deleteTable(sorted->getName(), &error));

    const TableHandle plain = create(columns);
    writeAll(*plain, modelSort(records, types, keys));
    ASSERT_TRUE(plain->close());
    ASSERT_TRUE(elementBytes(directory) == bytes) << "plan " << plan;
    ASSERT_TRUE(manager->deleteTable(plain->getName(), &error));
  }
}

TEST_F(SortedTable, IsAnOrdinaryTableOfAnyNumberOfElements) {
  Lines expected;
  TableHandle table = createNumbers(1000);
  for (std::int64_t i = 0; i < 500; ++i) {
    ASSERT_TRUE(writeNumber(*table, 499 - i)) << table->getErrorMessage().asCstr();
    expected.push_back(std::to_string(i) + "|s");
  }
  const ZvbString name = table->getName();
  table.reset();  // closes it
  ZvwtTableSizes sizes;
  ASSERT_TRUE(zvwtGetTableSizes(manager.get(), name, &sizes, &error)) << error.asCstr();
  EXPECT_EQ(500, sizes.rowCount);
  EXPECT_LT(5, sizes.elementCount);
  EXPECT_EQ(expected, readTable(name.asCstr()));
  const RowRange range{300, 50};
  EXPECT_EQ(Lines(expected.begin() + 300, expected.begin() + 350),
            readTable(name.asCstr(), &range));
  EXPECT_EQ(Lines(expected.rbegin(), expected.rend()), readTable(name.asCstr(), nullptr, true));

  table = createNumbers();  // a copy into a sorted table
  ASSERT_EQ(0, table->setSortColumn(0, 0, true, 0));
  ASSERT_TRUE(manager->copyIntoTable(table.get(), manager.get(), name, &error)) << error.asCstr();
  EXPECT_EQ(Lines(expected.rbegin(), expected.rend()), readAll(*table));
}

TEST_F(SortedTable, NeedsNeitherRowsNorKeysThatAreSet) {
  const TableHandle empty = createNumbers();
  EXPECT_EQ(0, empty->setSortOptionA(1));  // looked at by the first row only
  ASSERT_TRUE(empty->close()) << empty->getErrorMessage().asCstr();
  EXPECT_EQ(0, empty->getRowCount());
  EXPECT_EQ(Lines(), readTable(empty->getName().asCstr()));

  const TableHandle table(manager->createTable(1, 3, 0, &error));
  ASSERT_TRUE(table->defineColumn(0, "n", zvbTypeInteger, 0));
  for (const std::int32_t key : {-1, 3, std::numeric_limits<std::int32_t>::max()}) {
    EXPECT_EQ(0, table->setSortColumn(key, 9, true, 99));
  }
  for (const std::int64_t number : {10, 9}) {
    ASSERT_TRUE(write(*table, row({number}))) << table->getErrorMessage().asCstr();
  }
  EXPECT_EQ(0, table->setSortColumn(0, 0, true, 0));  // too late
  EXPECT_TRUE(table->close());
  EXPECT_EQ(Lines({"9", "10"}), readTable(table->getName().asCstr()));

  const TableHandle plain = create({{"n", zvbTypeInteger}});
  EXPECT_EQ(0, plain->setSortColumn(0, 0, true, 0));
  EXPECT_EQ(0, plain->setSortOptionA(1));
  EXPECT_EQ(0, plain->setSortOptionB(1));
  EXPECT_TRUE(write(*plain, row({std::int64_t{1}})) && write(*plain, row({std::int64_t{2}})));
  EXPECT_TRUE(plain->close());
  EXPECT_EQ(Lines({"1", "2"}), readTable(plain->getName().asCstr()));

  const std::size_t files = directory.names().size();
  EXPECT_EQ(nullptr, TableHandle(manager->createTable(1, -1, 0, &error)));
  EXPECT_EQ(datafileMessage::outOfMemory, messageId(error)) << error.asCstr();
  EXPECT_EQ(files, directory.names().size());
}

TEST_F(SortedTable, RefusesWrongKeysWithTheFirstRowAndTakesThemCorrected) {
  struct Case {
    KeySetting key;
    std::uint64_t memory;
    int id;
    const char* named;
  };
  for (const Case& wrong :
       {Case{{.column = 77}, 0, datafileMessage::keyColumnRefused, "77"},
        Case{{.column = 0, .value = 55}, 0, datafileMessage::keyValueRefused, "55"},
        Case{{.column = 0}, 65535, datafileMessage::settingRefused, "65535"}}) {
    const TableHandle table = createNumbers();
    table->setSortColumn(0, wrong.key.column, true, wrong.key.value);
    table->setSortOptionA(wrong.memory);
    for (int attempt = 0; attempt < 2; ++attempt) {
      EXPECT_FALSE(writeNumber(*table, 1));
      const ZvbString text = table->getErrorMessage();
      EXPECT_EQ(wrong.id, messageId(text)) << text.asCstr();
      EXPECT_NE(nullptr, std::strstr(text.asCstr(), wrong.named)) << text.asCstr();
    }
    EXPECT_EQ(0, table->getRowCount());
    table->setSortColumn(0, 0, true, 0);
    table->setSortOptionA(65536);
    EXPECT_TRUE(writeNumber(*table, 1) && writeNumber(*table, 2));
    EXPECT_TRUE(table->close()) << table->getErrorMessage().asCstr();
    EXPECT_EQ(Lines({"2|s", "1|s"}), readTable(table->getName().asCstr()));
  }
}

TEST_F(SortedTable, ThatFailsIsRemovedAndKeepsItsReason) {
  const ZvDatafileSortCallback cancel = [](const ZvDatafileSortProgress*, void*) { return false; };
  constexpr int diskRefused = 1044;
  for (const int fault :
       {diskRefused, datafileMessage::workLimitPassed, datafileMessage::cancelled}) {
    const std::size_t files = openFiles().size();
    ASSERT_TRUE(zvwtSetSortProgress(
        manager.get(), fault == datafileMessage::cancelled ? cancel : nullptr, nullptr, &error));
    TableHandle table = createNumbers();
    table->setSortOptionA(fault == diskRefused ? 0 : 65536);
    table->setSortOptionB(fault == datafileMessage::workLimitPassed ? 200'000 : 0);
    for (std::int64_t i = 0; i < 4000 && writeNumber(*table, -i, 100); ++i) {
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(400));  // a report is due
    {
      const SizeLimit fullDisk(fault == diskRefused ? 10000
                                                    : std::numeric_limits<std::int64_t>::max());
      EXPECT_FALSE(table->close());
    }
    EXPECT_TRUE(directory.names().empty() || isWindows);  // its work files have names there
    EXPECT_EQ(fault, messageId(table->getErrorMessage())) << table->getErrorMessage().asCstr();
    table.reset();
    EXPECT_TRUE(directory.names().empty());
    EXPECT_EQ(files, openFiles().size());
  }
}

TEST_F(SortedTable, TakesItsManagersSettings) {
  EXPECT_TRUE(manager->getLastError().isEmpty());
  EXPECT_TRUE(manager->sortAndSize2(true)) << manager->getLastError().asCstr();
  EXPECT_FALSE(manager->sortAndSize0(5));
  const std::string reason = manager->getLastError().asCstr();
  EXPECT_EQ(datafileMessage::settingRefused, messageId(reason.c_str())) << reason;
  EXPECT_TRUE(manager->sortAndSize0(65536) && manager->sortAndSize1(false) &&
              manager->sortAndSize3(false) && manager->sortAndSize4(2) &&
              manager->sortAndSize6(4096) && manager->sortAndSize7(false));
  EXPECT_EQ(reason, manager->getLastError().asCstr());
  EXPECT_FALSE(manager->sortAndSize4(1));
  EXPECT_NE(reason, manager->getLastError().asCstr());

  ASSERT_TRUE(manager->sortAndSize5(50'000));
  TableHandle table = createSorted({{"s", zvbTypeString}}, {{.column = 0}});
  for (const char* text : {"b", "A", "B", "a"}) {
    EXPECT_TRUE(write(*table, row({std::string(text)})));
  }
  EXPECT_TRUE(table->close());
  EXPECT_EQ(Lines({"A", "a", "b", "B"}), readTable(table->getName().asCstr()));
  table = createNumbers();
  for (std::int64_t i = 0; i < 4000 && writeNumber(*table, -i, 100); ++i) {
  }
  EXPECT_FALSE(table->close());
  EXPECT_EQ(datafileMessage::workLimitPassed, messageId(table->getErrorMessage()));
}

/// Sorts that spill and merge, with and without a thread beside.
TEST_F(SortedTable, SaysSoWhenMemoryIsShort) {
  std::vector<Record> records(600, Record(2));
  Lines expected;
  for (std::size_t i = 0; i < records.size(); ++i) {
    records[i][0].assign(static_cast<std::int64_t>(599 - i));
    records[i][1].assign(std::string(400, 's').c_str());
    expected.push_back(std::to_string(i) + '|' + std::string(400, 's'));
  }
  for (const int together : {1, 2}) {
    bool met = true;
    for (int allocation = 0; met; ++allocation) {
      manager = makeManager(directory.path());
      const std::size_t files = openFiles().size();
      TableHandle table;
      bool done = false;
      {
        const ShortMemory shortMemory(allocation, together);
        done = manager->sortAndSize1(allocation % 2 == 0) && manager->sortAndSize4(2);
        error = manager->getLastError();
        if (done) {
          table.reset(manager->createTable(2, 1, 0, &error));
        }
        done = table != nullptr && table->defineColumn(0, "n", zvbTypeInteger, 0) &&
               table->defineColumn(1, "s", zvbTypeString, 0) && table->setSortOptionA(65536) == 0;
        for (std::size_t i = 0; i < records.size() && done; ++i) {
          done = table->writeRow(records[i].data());
        }
        done = done && table->close();
        met = shortMemory.met();
      }
      SCOPED_TRACE(allocation);
      if (done) {
        EXPECT_TRUE(expected == readTable(table->getName().asCstr()));
        EXPECT_TRUE(manager->deleteTable(table->getName(), &error));
      } else {
        const ZvbString reason = table != nullptr ? table->getErrorMessage() : error;
        EXPECT_TRUE(met);
        constexpr int writeRefused = 1044;  // all that is said of a file without a buffer
        const bool told = messageId(reason) == writeRefused ||
                          messageId(reason) == datafileMessage::outOfMemory ||
                          std::strstr(reason.asCstr(), "out of memory") != nullptr;
        EXPECT_TRUE(told) << reason.asCstr();
      }
      table.reset();
      EXPECT_TRUE(directory.names().empty());
      EXPECT_EQ(files, openFiles().size());
      ASSERT_GT(10'000, allocation);
    }
  }
}

}  // namespace
