/// The catalogue file: its bytes, its versions and byte orders, damage, columns, the object's life.

#include <gtest/gtest.h>

#include <algorithm>

#include "support/Bytes.h"
#include "support/TableFixture.h"
#include "wtfile/ZVWTFileImpl.h"

namespace {

using Lines = std::vector<std::string>;

class TableCatalogue : public TableTest {
 protected:
  /// A table of two columns and, in two elements, three rows.
  std::string makeSample() {
    return makeTable(
        {{"id", zvbTypeInteger}, {"name", zvbTypeString, 20}},
        {row({std::int64_t{1}, std::string("one")}), row({std::int64_t{2}, std::string("two")}),
         row({std::int64_t{3}, std::string("three")})},
        20);
  }

  Bytes catalogue(const std::string& name) { return Bytes(directory.file(name)); }

  std::vector<std::string> filesWith(const std::string& prefix) {
    std::vector<std::string> found = directory.names();
    std::erase_if(found, [&](const std::string& file) { return !file.starts_with(prefix); });
    return found;
  }

  /// What all files of the directory hold.
  std::vector<std::string> contents() {
    std::vector<std::string> all;
    for (const std::string& file : directory.names()) {
      all.push_back(file + ":" + TemporaryDirectory::read(directory.file(file)));
    }
    return all;
  }

  /// The number of the failure to open, 0 for none.
  int openingFails(const std::string& name) { return open(name) == nullptr ? messageId(error) : 0; }

  /// Appends rows to a table as the manager does.
  ZvbString append(const std::string& name, const std::vector<Row>& rows) {
    TempDirectories directories;
    EXPECT_TRUE(directories.split(directory.path().c_str(), np_dir_listsep));
    ZVWTFileImpl table(directories, nullptr);
    if (!table.open(name.c_str(), false, nullptr, false)) {
      return table.getErrorMessage();
    }
    for (const Row& cells : rows) {
      if (!write(table, cells)) {
        return table.getErrorMessage();
      }
    }
    return table.close() ? ZvbString() : table.getErrorMessage();
  }

  const Lines sampleRows = {"1|one", "2|two", "3|three"};
  const std::vector<Row> moreRows = {row({std::int64_t{4}, std::string("a longer text")})};
};

TEST_F(TableCatalogue, HasTheDocumentedBytes) {
  const std::string name = makeSample();
  const Bytes bytes = catalogue(name);
  EXPECT_EQ(1, bytes.get<std::uint16_t>(0));
  EXPECT_EQ(100, bytes.get<std::int16_t>(2));
  EXPECT_EQ(32, bytes.get<std::uint16_t>(4));
  EXPECT_EQ(1, bytes.get<std::uint16_t>(6));
  EXPECT_EQ(2U, bytes.get<std::uint32_t>(8));
  EXPECT_EQ(2U, bytes.get<std::uint32_t>(12));
  EXPECT_EQ(20, bytes.get<std::int64_t>(16));
  EXPECT_EQ(3, bytes.get<std::int64_t>(24));
  EXPECT_EQ(0, bytes.get<char>(32));
  const std::string idColumn = inMemory(std::uint16_t{16}, std::uint16_t{3}, 3, 0, 0) + "id";
  const std::string nameColumn = inMemory(std::uint16_t{16}, std::uint16_t{5}, 5, 20, 6) + "name";
  EXPECT_EQ(idColumn + '\0' + nameColumn + '\0', bytes.content().substr(33, 40));
  EXPECT_EQ(16U, bytes.get<std::uint32_t>(73));
  EXPECT_EQ(23U, bytes.get<std::uint16_t>(77));
  EXPECT_EQ(24U, bytes.get<std::uint16_t>(79));
  EXPECT_EQ(2, bytes.get<std::int64_t>(81));
  EXPECT_EQ("zvwte_", bytes.content().substr(89, 6));
  EXPECT_EQ("zvwtei_", bytes.content().substr(89 + 23, 7));
  EXPECT_EQ(73U + 2 * (16 + 23 + 24), bytes.size());

  const Bytes empty = catalogue(makeCountingTable(0));
  EXPECT_EQ(33U + 16 + 7, empty.size());
  EXPECT_EQ(0U, empty.get<std::uint32_t>(12));
}

TEST_F(TableCatalogue, IsReadInVersionsBelowTwo) {
  const std::string name = makeSample();
  for (const int version : {0, 1, 99, 100, 101, 199}) {
    catalogue(name).set(2, static_cast<std::int16_t>(version)).save();
    EXPECT_EQ(sampleRows, readTable(name)) << version;
  }
  for (const int version : {200, 299, 32767}) {
    catalogue(name).set(2, static_cast<std::int16_t>(version)).save();
    const auto before = contents();
    EXPECT_EQ(1785, openingFails(name)) << version;
    EXPECT_EQ(1785, messageId(append(name, moreRows)));
    EXPECT_EQ(before, contents());
  }
  catalogue(name).set<std::int16_t>(2, 150).save();
  EXPECT_STREQ("", append(name, moreRows).asCstr());
  EXPECT_EQ(100, catalogue(name).get<std::int16_t>(2));
}

TEST_F(TableCatalogue, IsReadWithLongerHeads) {
  const std::string name = makeSample();
  // From the back, so that the offsets in front stay what they are.
  catalogue(name)
      .set<std::uint32_t>(73, 20)
      .insert(73 + 16, "more")
      .set<std::uint16_t>(33, 17)
      .insert(33 + 16, "m")
      .set<std::uint16_t>(4, 40)
      .insert(32, "12345678")
      .save();
  EXPECT_EQ(sampleRows, readTable(name));
}

TEST_F(TableCatalogue, IsReadInTheOtherByteOrderButNotAppendedTo) {
  const std::string name = makeSample();
  Bytes bytes = catalogue(name);
  for (const std::size_t element : {73U, 73U + 63}) {
    bytes.reverse(element, 4)
        .reverse(element + 4, 2)
        .reverse(element + 6, 2)
        .reverse(element + 8, 8);
  }
  for (const std::size_t column : {33U, 52U}) {
    bytes.reverse(column, 2).reverse(column + 2, 2);
    bytes.reverse(column + 4, 4).reverse(column + 8, 4).reverse(column + 12, 4);
  }
  bytes.reverse(0, 2).reverse(2, 2).reverse(4, 2).reverse(6, 2);
  bytes.reverse(8, 4).reverse(12, 4).reverse(16, 8).reverse(24, 8).save();
  for (const std::string& file : filesWith("zvwtei_")) {
    Bytes index(directory.file(file));
    for (std::size_t entry = 0; entry < index.size(); entry += 8) {
      index.reverse(entry, 8);
    }
    index.save();
  }
  for (const std::string& file : filesWith("zvwte_")) {
    Bytes data(directory.file(file));
    for (std::size_t i = 0; i < data.size(); i += 9 + 2 + data.get<unsigned char>(i + 10)) {
      data.reverse(i + 1, 8);
    }
    data.save();
  }
  EXPECT_EQ(sampleRows, readTable(name));
  EXPECT_EQ(Lines(sampleRows.rbegin(), sampleRows.rend()), readTable(name, nullptr, true));
  const RowRange lastTwo{1, 2};
  EXPECT_EQ((Lines{"2|two", "3|three"}), readTable(name, &lastTwo));

  const auto before = contents();
  const ZvbString refusal = append(name, moreRows);
  EXPECT_EQ(1353, messageId(refusal));
  EXPECT_NE(nullptr, std::strstr(refusal.asCstr(), name.c_str()));
  EXPECT_EQ(before, contents());
}

TEST_F(TableCatalogue, IsAnErrorWhenDamagedInAKnownPlace) {
  const std::string name = makeSample();
  const Bytes whole = catalogue(name);
  const auto damaged = [&](const Bytes& bytes) {
    bytes.save();
    const auto before = contents();
    const int id = openingFails(name);
    EXPECT_EQ(id, messageId(append(name, moreRows)));
    EXPECT_EQ(before, contents());
    return id;
  };
  EXPECT_EQ(1773, damaged(Bytes(whole).cut(0)));
  EXPECT_EQ(1773, damaged(Bytes(whole).cut(31)));
  EXPECT_EQ(1787, damaged(Bytes(whole).set<std::uint16_t>(6, 60000)));
  EXPECT_EQ(1301, damaged(Bytes(whole).set<std::uint32_t>(8, 0xFFFFFFFF)));
  EXPECT_EQ(1301, damaged(Bytes(whole).set<std::uint32_t>(12, 0xFFFFFFFF)));
  EXPECT_EQ(1301, damaged(Bytes(whole).set<std::uint32_t>(12, 3)));
  EXPECT_EQ(1301, damaged(Bytes(whole).set<std::int64_t>(24, -1)));
  EXPECT_EQ(1301, damaged(Bytes(whole).set<std::int64_t>(24, 4)));
  EXPECT_EQ(1301, damaged(Bytes(whole).set<std::uint32_t>(37, 0x7FFFFFFF)));
  EXPECT_EQ(1301, damaged(Bytes(whole).cut(40)));
  EXPECT_EQ(1786, damaged(Bytes(whole).set<std::uint32_t>(73, 15)));
  EXPECT_EQ(1301, damaged(Bytes(whole).set<std::int64_t>(81, -2)));
  EXPECT_EQ(1301, damaged(Bytes(whole).set<std::uint16_t>(77, 65535)));
  EXPECT_EQ(1301, damaged(Bytes(whole).cut(whole.size() - 1)));
}

TEST_F(TableCatalogue, KeepsAnAccessKeyOfAnySizeWhenAppendedTo) {
  const std::string name = makeSample();
  catalogue(name).set<std::uint16_t>(6, 65535).insert(32, std::string(65534, 'k')).save();
  EXPECT_EQ(sampleRows, readTable(name));
  EXPECT_STREQ("", append(name, moreRows).asCstr());
  EXPECT_EQ(4U, readTable(name).size());
  EXPECT_EQ(65535, catalogue(name).get<std::uint16_t>(6));
}

// ---- Columns

TEST_F(TableCatalogue, DefinesColumnsOnceByName) {
  const TableHandle table = create({{"a", zvbTypeInteger}, {"b", zvbTypeString, 7}});
  EXPECT_FALSE(table->defineColumn(2, "c", zvbTypeInteger, 0));
  EXPECT_EQ(1420, messageId(table->getErrorMessage()));
  EXPECT_FALSE(table->defineColumn(1, "A", zvbTypeInteger, 0));
  EXPECT_EQ(1666, messageId(table->getErrorMessage()));
  EXPECT_TRUE(table->defineColumn(1, "B", static_cast<zvbType>(9), 8));

  ZvbString name;
  zvbType type{};
  int width = 0;
  int maxLength = 0;
  EXPECT_TRUE(table->getColumnDefinition(1, &name, &type, &width, &maxLength));
  EXPECT_STREQ("B", name.asCstr());
  EXPECT_EQ(9U, type);
  EXPECT_EQ(8, width);
  EXPECT_FALSE(table->getColumnDefinition(-1, &name, &type, &width, &maxLength));
  EXPECT_FALSE(table->getColumnDefinition(2, &name, &type, &width, &maxLength));
  EXPECT_EQ(1420, messageId(table->getErrorMessage()));
}

TEST_F(TableCatalogue, GivesColumnsBackAfterOpening) {
  const TableHandle table = open(makeSample());
  ZvbString name;
  zvbType type{};
  int width = 0;
  int maxLength = 0;
  ASSERT_TRUE(table->getColumnDefinition(1, &name, &type, &width, &maxLength));
  EXPECT_STREQ("name", name.asCstr());
  EXPECT_EQ(zvbTypeString, type);
  EXPECT_EQ(20, width);
  EXPECT_EQ(6, maxLength);
  EXPECT_EQ(2, table->getColumnCount());
  EXPECT_EQ(3, table->getRowCount());
}

TEST_F(TableCatalogue, RefusesANegativeColumnCount) {
  EXPECT_EQ(nullptr, manager->createTable(-1, 0, &error));
  EXPECT_EQ(29, messageId(error));
  EXPECT_TRUE(directory.names().empty());
}

// ---- The object's life

TEST_F(TableCatalogue, OfATableThatSawAnErrorIsRemovedByItsCreator) {
  TableHandle table = create({{"a", zvbTypeInteger}});
  EXPECT_TRUE(write(*table, row({std::int64_t{1}})));
  EXPECT_FALSE(table->defineColumn(5, "b", zvbTypeInteger, 0));
  EXPECT_TRUE(table->close());
  EXPECT_EQ(3U, directory.names().size());
  table.reset();
  EXPECT_TRUE(directory.names().empty());
}

TEST_F(TableCatalogue, OfATableIsWrittenByReleaseToo) {
  TableHandle table = create({{"a", zvbTypeInteger}});
  EXPECT_TRUE(write(*table, row({std::int64_t{1}})));
  const std::string name = table->getName().asCstr();
  EXPECT_EQ(1773, openingFails(name));
  table.reset();
  EXPECT_EQ(Lines{"1"}, readTable(name));
}

// ---- Appending

TEST_F(TableCatalogue, GrowsByAppendedRows) {
  const std::string name = makeSample();
  EXPECT_STREQ("", append(name, {}).asCstr());
  EXPECT_EQ(sampleRows, readTable(name));
  EXPECT_EQ(2U, filesWith("zvwte_").size());
  EXPECT_STREQ("", append(name, moreRows).asCstr());
  EXPECT_STREQ("", append(name, moreRows).asCstr());
  EXPECT_EQ(3U, filesWith("zvwte_").size());  // the last element was full
  EXPECT_EQ((Lines{"1|one", "2|two", "3|three", "4|a longer text", "4|a longer text"}),
            readTable(name));
  EXPECT_EQ((Lines{"4|a longer text", "4|a longer text", "3|three", "2|two", "1|one"}),
            readTable(name, nullptr, true));
}

TEST_F(TableCatalogue, HasOneAppenderAtATime) {
  const std::string name = makeSample();
  TempDirectories directories;
  ASSERT_TRUE(directories.split(directory.path().c_str(), np_dir_listsep));
  ZVWTFileImpl first(directories, nullptr);
  ASSERT_TRUE(first.open(name.c_str(), false, nullptr, false));
  EXPECT_EQ(1353, messageId(append(name, moreRows)));
  EXPECT_EQ(sampleRows, readTable(name));
  EXPECT_TRUE(first.close());
  EXPECT_STREQ("", append(name, moreRows).asCstr());
}

TEST_F(TableCatalogue, CutsOffWhatAKilledAppenderLeft) {
  const std::string name =
      makeTable({{"s", zvbTypeString}}, {row({std::string("a")}), row({std::string("bc")})});
  const std::string data = directory.file(filesWith("zvwte_").front());
  const std::string index = directory.file(filesWith("zvwtei_").front());
  const std::vector<std::pair<std::string, std::string>> leftovers = {
      {"\x05\x09torn", ""},
      {"", inMemory(std::int64_t{9})},
      {std::string("\x05\x02x\0\x05", 5), inMemory(std::int64_t{9}) + std::string("\x0d\0\0", 3)},
      {std::string(100000, 'x'), "y"}};
  std::int64_t rows = 2;
  for (const auto& [dataTail, indexTail] : leftovers) {
    Bytes(data).insert(Bytes(data).size(), dataTail).save();
    Bytes(index).insert(Bytes(index).size(), indexTail).save();
    EXPECT_STREQ("", append(name, {row({std::string("new")})}).asCstr());
    ++rows;
    EXPECT_EQ(static_cast<std::size_t>(8 * rows), Bytes(index).size());
    const Lines lines = readTable(name);
    EXPECT_EQ(static_cast<std::size_t>(rows), lines.size());
    EXPECT_EQ("new", lines.back());
  }
}

TEST_F(TableCatalogue, RefusesAppendingBehindMissingRows) {
  const std::string name = makeCountingTable(5);
  for (const char* prefix : {"zvwte_", "zvwtei_"}) {
    const Bytes whole(directory.file(filesWith(prefix).front()));
    Bytes(whole).cut(whole.size() - 1).save();
    const auto before = contents();
    const ZvbString refusal = append(name, {row({std::int64_t{9}})});
    EXPECT_EQ(1301, messageId(refusal));
    EXPECT_NE(nullptr, std::strstr(refusal.asCstr(), "\"row offset\""));
    EXPECT_EQ(before, contents());
    whole.save();
  }
  EXPECT_EQ(5U, readTable(name).size());
}

}  // namespace
