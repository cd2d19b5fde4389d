/// Disks that are full and rows that are damaged: what was accepted before stays.

#include <gtest/gtest.h>

#include <filesystem>

#include "support/Bytes.h"
#include "support/FileCalls.h"
#include "support/TableFixture.h"
#include "support/ThisSystem.h"
#include "wtfile/ZVWTFileImpl.h"

namespace {

using Lines = std::vector<std::string>;

class TableFaults : public TableTest {
 protected:
  TableFaults() { EXPECT_TRUE(directories.split(directory.path().c_str(), np_dir_listsep)); }

  static Row text(std::size_t size) { return row({std::string(size, 'x')}); }

  /// A table of 20 rows of 10,000 bytes in a column of texts.
  std::string makeFull(std::int64_t maxElementSize = 0) {
    return makeTable({{"s", zvbTypeString}}, std::vector<Row>(20, text(10000)), maxElementSize);
  }

  std::vector<std::size_t> sizes(const std::string& name) {
    std::vector<std::size_t> found;
    for (const std::string& line : readTable(name)) {
      found.push_back(line.size());
    }
    return found;
  }

  TempDirectories directories;
};

TEST_F(TableFaults, ARowRefusedByAFullDiskLeavesTheTableAsItWas) {
  TableHandle table = create({{"s", zvbTypeString}});
  {
    const SizeLimit limit(210000);
    for (int i = 0; i < 20; ++i) {
      ASSERT_TRUE(write(*table, text(10000)));
    }
    EXPECT_FALSE(write(*table, text(300000)));
    EXPECT_EQ(1044, messageId(table->getErrorMessage()));
    EXPECT_FALSE(write(*table, text(300000)));
    EXPECT_TRUE(write(*table, text(1)));
    EXPECT_EQ(21, table->getRowCount());
    EXPECT_TRUE(table->close()) << table->getErrorMessage().asCstr();
  }
  std::vector<std::size_t> expected(20, 10000);
  expected.push_back(1);
  EXPECT_EQ(expected, sizes(table->getName().asCstr()));
}

TEST_F(TableFaults, AnAppendRefusedByAFullDiskKeepsTheRowsThatWereThere) {
  const std::string name = makeFull();
  const SizeLimit limit(210000);
  ZVWTFileImpl table(directories, nullptr);
  ASSERT_TRUE(table.open(name.c_str(), false, nullptr, false));
  EXPECT_FALSE(write(table, text(300000)));
  EXPECT_TRUE(table.close()) << table.getErrorMessage().asCstr();
  EXPECT_EQ(std::vector<std::size_t>(20, 10000), sizes(name));
}

TEST_F(TableFaults, AnAppendThatTheDiskCannotHoldKeepsWhatFits) {
  struct Case {
    int rows;
    std::int64_t limit;
  };
  for (const Case& fault : {Case{100000, 300000}, {100000, 700000}, {300, 4000}}) {
    const std::string target = makeCountingTable(400);
    const std::string source = makeCountingTable(fault.rows);
    {
      const SizeLimit limit(fault.limit);
      EXPECT_FALSE(manager->appendTable(target.c_str(), source.c_str(), &error));
      EXPECT_EQ(1044, messageId(error)) << error.asCstr();
    }
    const Lines rows = readTable(target);
    ASSERT_GE(rows.size(), 400U) << rows[0];
    EXPECT_LT(rows.size(), 400U + static_cast<std::size_t>(fault.rows));
    for (std::size_t i = 0; i < rows.size(); ++i) {
      ASSERT_EQ(std::to_string(i < 400 ? i : i - 400), rows[i]);
    }
    EXPECT_TRUE(manager->appendTable(target.c_str(), source.c_str(), &error)) << error.asCstr();
    EXPECT_EQ(rows.size() + static_cast<std::size_t>(fault.rows), readTable(target).size());
  }
}

/// Rows of 2 bytes have more index than data: the disk ends in the index, at the old rows' end.
TEST_F(TableFaults, AnAppendWhoseIndexIsRefusedKeepsTheRowsThatWereThere) {
  const std::vector<Column> columns = {{"b", zvbTypeBoolean}};
  const std::string target = makeTable(columns, std::vector<Row>(512, row({true})));
  for (const int rows : {1000, 100000}) {
    const std::string source =
        makeTable(columns, std::vector<Row>(static_cast<std::size_t>(rows), row({false})));
    const SizeLimit limit(4096);
    EXPECT_FALSE(manager->appendTable(target.c_str(), source.c_str(), &error));
    EXPECT_EQ(Lines(512, "true"), readTable(target));
  }
}

TEST_F(TableFaults, AnAppendWhoseCatalogueWouldBeRefusedDoesNotBegin) {
  if (isWindows) {
    GTEST_SKIP() << "there a catalogue that does not grow finds room";
  }
  const std::string name = makeCountingTable(3);
  const SizeLimit limit(100);
  EXPECT_FALSE(manager->appendTable(name.c_str(), name.c_str(), &error));
  EXPECT_EQ(1353, messageId(error)) << error.asCstr();
  EXPECT_EQ(Lines({"0", "1", "2"}), readTable(name));
}

TEST_F(TableFaults, AFullElementThatCannotBeClosedTakesItsLastRowBack) {
  const std::string name = makeFull(300000);
  ZVWTFileImpl table(directories, nullptr);
  ASSERT_TRUE(table.open(name.c_str(), false, nullptr, false));
  for (int i = 0; i < 9; ++i) {
    ASSERT_TRUE(write(table, text(10000)));
  }
  std::vector<std::size_t> expected(29, 10000);
  {
    const SizeLimit limit(300100);
    EXPECT_FALSE(write(table, text(10000)));
    EXPECT_EQ(1045, messageId(table.getErrorMessage()));
    EXPECT_FALSE(write(table, text(10000)));
    EXPECT_EQ(29, table.getRowCount());
  }
  EXPECT_TRUE(write(table, text(20000)));
  EXPECT_TRUE(write(table, text(5)));
  EXPECT_TRUE(table.close()) << table.getErrorMessage().asCstr();
  expected.push_back(20000);
  expected.push_back(5);
  EXPECT_EQ(expected, sizes(name));
}

TEST_F(TableFaults, ACloseThatFailsTellsTheCauseAndRemovesTheTable) {
  for (const bool reopen : {false, true}) {
    ZVWTFileImpl table(directories, nullptr);
    ASSERT_TRUE(table.create(1, 0, 0));
    ASSERT_TRUE(table.defineColumn(0, "s", zvbTypeString, 0));
    EXPECT_TRUE(write(table, text(5000)));
    const SizeLimit limit(3000);
    EXPECT_FALSE(reopen ? table.openFromURI("", false) : table.close());
    EXPECT_EQ(1045, messageId(table.getErrorMessage())) << table.getErrorMessage().asCstr();
    EXPECT_TRUE(directory.names().empty());
    EXPECT_TRUE(table.removeFiles());
  }
}

TEST_F(TableFaults, ADamagedRowCostsOnlyItself) {
  const std::string name =
      makeTable({{"a", zvbTypeInteger}, {"b", zvbTypeInteger}},
                {row({std::int64_t{0}, std::int64_t{10}}), row({std::int64_t{1}, std::int64_t{11}}),
                 row({std::int64_t{2}, std::int64_t{12}})});
  for (const std::string& file : directory.names()) {
    if (file.starts_with("zvwte_")) {
      Bytes(directory.file(file)).set<unsigned char>(18, 7).save();
    }
  }
  for (const bool backwards : {false, true}) {
    for (const int columns : {1, 2}) {
      const int numbers[] = {0, 1};
      const TableHandle table(
          manager->openTable(name.c_str(), columns, numbers, nullptr, backwards, &error));
      ZvbDatavar values[2];
      bool end = false;
      std::vector<std::string> seen;
      for (int i = 0; i < 3; ++i) {
        seen.push_back(table->readRow(values, &end) ? shown(values[0]) : "damaged");
      }
      EXPECT_EQ(1301, messageId(table->getErrorMessage()));
      EXPECT_EQ(backwards ? (Lines{"2", "damaged", "0"}) : (Lines{"0", "damaged", "2"}), seen);
      EXPECT_FALSE(table->readRow(values, &end));
      EXPECT_TRUE(end);
    }
  }
}

/// A process that is killed while it rewrites a long catalogue leaves some pages old, some new. The
/// first of the two becomes a long one with the append.
TEST_F(TableFaults, ACatalogueThatWasRewrittenInPartKeepsTheRowsThatWereThere) {
  constexpr std::size_t page = 4096;
  for (const int columnCount : {148, 350}) {
    std::vector<std::string> names;
    std::vector<Column> columns;
    for (int i = 0; i < columnCount; ++i) {
      names.push_back("column" + std::to_string(i));
    }
    for (const std::string& name : names) {
      columns.push_back({name.c_str(), zvbTypeString});
    }
    const Row cells(columns.size(), std::string("x"));
    const std::string target = makeTable(columns, std::vector<Row>(200, cells), 30000);
    const std::string source = makeTable(columns, std::vector<Row>(100, cells));
    const std::string path = directory.file(target);
    const std::string before = Bytes(path).content();
    ASSERT_TRUE(manager->appendTable(target.c_str(), source.c_str(), &error)) << error.asCstr();
    const std::string after = Bytes(path).content();
    ASSERT_EQ(columnCount > 200, before.size() > page);
    ASSERT_LT(page, after.size());
    const Lines all = readTable(target);
    const Lines old(all.begin(), all.begin() + 200);
    const auto put = [&](const std::string& header, std::size_t written) {
      const std::string rest = written < before.size() ? before.substr(written) : "";
      Bytes(path).cut(0).insert(0, header + after.substr(32, written - 32) + rest).save();
    };
    for (std::size_t end = page; end < after.size() + 37; end += end < 2 * page ? page : 37) {
      put(before.substr(0, 32), std::min(end, after.size()));
      ASSERT_EQ(old, readTable(target)) << end;
    }
    ASSERT_TRUE(manager->appendTable(target.c_str(), source.c_str(), &error)) << error.asCstr();
    EXPECT_EQ(all, readTable(target));
    put(std::string(32, '\0'), page);
    EXPECT_EQ(nullptr, open(target));
    EXPECT_EQ(1773, messageId(error));
  }
}

/// Rows follow each other, so an index is needed only by who does not read all of them in order.
TEST_F(TableFaults, AnElementWithoutAnIndexIsReadInOrderOnly) {
  const std::string name = makeTable(
      {{"a", zvbTypeInteger}, {"b", zvbTypeString}},
      {row({std::int64_t{0}, std::string("x")}), row({std::int64_t{1}, std::string(300, 'y')}),
       row({std::int64_t{2}, std::string("z")})});
  const std::string index = directory.names().back();
  ASSERT_TRUE(index.starts_with("zvwtei_")) << index;
  Bytes catalogue(directory.file(name));
  catalogue.set<std::uint16_t>(catalogue.size() - 24 - 23 - 16 + 6, 0).cut(catalogue.size() - 24);
  catalogue.save();
  std::filesystem::remove(directory.file(index));

  EXPECT_EQ((Lines{"0|x", "1|" + std::string(300, 'y'), "2|z"}), readTable(name));
  const std::string uri = "zvwt:" + name;
  EXPECT_EQ((Lines{"0", "1", "2"}), readUri(uri + "?col=a"));
  EXPECT_EQ((Lines{"7", "7", "7"}), readUri(uri + "?col=k,7,2"));
  const RowRange last{.firstRow = 2, .rowCount = 1};
  for (const Lines& lines : {readTable(name, &last), readTable(name, nullptr, true)}) {
    ASSERT_EQ(1U, lines.size());
    EXPECT_TRUE(lines[0].starts_with("failed: 336")) << lines[0];
  }
}

}  // namespace
