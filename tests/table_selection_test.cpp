/// What a reader gets of a table's columns: by names, numbers and URIs, renamed and with constants;
/// and the URI that stands for what was opened.

#include <gtest/gtest.h>

#include <random>

#include "support/TableFixture.h"

namespace {

using Lines = std::vector<std::string>;

std::string encoded(const std::string& text) {
  std::string uri;
  for (const char byte : text) {
    char escape[4];
    std::snprintf(escape, sizeof escape, "%%%02X", static_cast<unsigned char>(byte));
    uri += escape;
  }
  return uri;
}

class SelectionTest : public TableTest {
 protected:
  /// Columns a, b and c; rows 1|one|1.5 and 2|two|2.5.
  std::string makeSample() {
    return makeTable({{"a", zvbTypeInteger}, {"b", zvbTypeString, 40}, {"c", zvbTypeReal}},
                     {row({std::int64_t{1}, std::string("one"), 1.5}),
                      row({std::int64_t{2}, std::string("two"), 2.5})});
  }

  TableHandle openNames(const std::string& table, const std::vector<ZvbString>& names,
                        const RowRange* range = nullptr) {
    return TableHandle(manager->openTable(table.c_str(), static_cast<int>(names.size()),
                                          names.data(), range, false, &error));
  }

  TableHandle openNumbers(const std::string& table, const std::vector<int>& numbers) {
    return TableHandle(manager->openTable(table.c_str(), static_cast<int>(numbers.size()),
                                          numbers.data(), nullptr, false, &error));
  }

  /// "name type width maxLength" of a column of the reader's row.
  static std::string described(ZvWorkTableFile& table, int index) {
    ZvbString name;
    zvbType type{};
    int width = 0;
    int maxLength = 0;
    EXPECT_TRUE(table.getColumnDefinition(index, &name, &type, &width, &maxLength));
    return std::string(name.asCstr()) + ' ' + zvbTypeToString(type) + ' ' + std::to_string(width) +
           ' ' + std::to_string(maxLength);
  }

  static Lines describedAll(ZvWorkTableFile& table) {
    Lines columns;
    for (int i = 0; i < table.getColumnCount(); ++i) {
      columns.push_back(described(table, i));
    }
    return columns;
  }

  static std::string uriOf(ZvWorkTableFile& table) { return table.getURI(false).asCstr(); }
};

TEST_F(SelectionTest, DeliversColumnsInTheReadersOrderAndAsOftenAsAsked) {
  const std::string table = makeSample();
  EXPECT_EQ((Lines{"one|1", "two|2"}), readUri("zvwt:" + table + "?col=b&col=A"));
  EXPECT_EQ((Lines{"2|2|2.5|2|two|2", "1|1|1.5|1|one|1"}),
            readUri("zvwt:" + table + "?col=a&col=a&col=c&col=a&col=b&col=a", true));
  EXPECT_EQ((Lines{"one|1", "two|2"}), readOpened(openNames(table, {"B", "a"})));
  EXPECT_EQ((Lines{"1.5|1", "2.5|2"}), readOpened(openNumbers(table, {2, 0})));
  EXPECT_EQ((Lines{"1|1.5|one", "2|2.5|two"}), readOpened(openNumbers(table, {0, 2, 1})));
  const RowRange second{1, 5};
  EXPECT_EQ(Lines{"2.5"}, readOpened(openNames(table, {"c"}, &second)));
  EXPECT_EQ((Lines{"", ""}), readUri("zvwt:" + table));
  EXPECT_EQ((Lines{"", ""}), readOpened(openNames(table, {})));
}

TEST_F(SelectionTest, RenamesColumns) {
  const std::string table = makeSample();
  const TableHandle reader = openUri("zvwt:" + table + "?col=x,b&col=b,a&col=C,c&col=b");
  ASSERT_NE(nullptr, reader) << error.asCstr();
  EXPECT_EQ((Lines{"x string 40 4", "b integer 0 0", "c real 0 0", "b string 40 4"}),
            describedAll(*reader));
  EXPECT_EQ((Lines{"one|1|1.5|one", "two|2|2.5|two"}), readAll(*reader));
  EXPECT_FALSE(reader->getColumnDefinition(4, nullptr, nullptr, nullptr, nullptr));
}

TEST_F(SelectionTest, DeliversConstantsForEveryRow) {
  const std::string table = makeSample();
  const std::string day = "2024-02-29T00:00:00.000";
  const TableHandle reader = openUri(
      "zvwt:" + table + "?col=t,yes,1&col=n,42,2&col=r,4.50,3&col=s,%C3%A4bc,4&col=b&col=d," +
      encoded(day) + ",5&col=z,,3&col=y,,9&col=a,7,8&col=bad,x,2&col=no,%20&col=none");
  ASSERT_NE(nullptr, reader) << error.asCstr();
  EXPECT_EQ((Lines{"t boolean 0 0", "n integer 0 0", "r real 0 0", "s string 3 3", "b string 40 4",
                   "d date 0 0", "z real 0 0", "y string 0 0", "a string 1 1", "bad integer 0 0",
                   "no string 1 1", "none string 0 0"}),
            describedAll(*reader));
  ZvbDatavar values[12];
  bool end = false;
  ASSERT_TRUE(reader->readRow(values, &end));
  EXPECT_EQ(zvbTypeInteger, values[1].type());
  EXPECT_EQ(zvbTypeReal, values[6].type());
  EXPECT_EQ(zvbTypeInteger, values[9].type());
  const std::string around = "true|42|4.5|\u00E4bc|";
  const std::string behind = '|' + day + "|null|null|7|null| |null";
  EXPECT_EQ(Lines{around + "two" + behind}, readAll(*reader));
  EXPECT_EQ((Lines{around + "two" + behind, around + "one" + behind}),
            readUri(uriOf(*reader), true));
}

TEST_F(SelectionTest, ConstantsAloneComeAsOftenAsTheRangeHasRows) {
  const std::string table = makeCountingTable(30, 40);
  EXPECT_EQ((Lines{"7", "7", "7"}), readUri("zvwt:" + table + "?rows=11,3&col=k,7,2"));
  EXPECT_EQ(Lines(12, "7"), readUri("zvwt:" + table + "?rows=18,-1&col=k,7,2", true));
  EXPECT_EQ((Lines{"null|3", "null|4"}),
            readUri("zvwt:" + table + "?rows=3,2&col=missing&col=number"));
  const RowRange range{3, 2};
  EXPECT_EQ((Lines{"3|null", "4|null"}),
            readOpened(openNames(table, {"number", "missing"}, &range)));
}

TEST_F(SelectionTest, RefusesWhatItCannotSelect) {
  const std::string table = makeTable(
      {{"a", zvbTypeInteger}, {"b", zvbTypeInteger}, {"c", zvbTypeInteger}}, {row({{}, {}, {}})});
  const auto expectMessage = [this](const TableHandle& opened, int id, const char* argument) {
    EXPECT_EQ(nullptr, opened);
    EXPECT_EQ(id, messageId(error)) << error.asCstr();
    EXPECT_NE(nullptr, std::strstr(error.asCstr(), argument)) << error.asCstr();
  };
  expectMessage(openNumbers(table, {1, 1}), 1792, "number 1 ");
  expectMessage(openNumbers(table, {0, 7, 9, 0}), 1791, "number 7:");
  expectMessage(openNumbers(table, {0, -1}), 1791, "number -1:");
  const int* none = nullptr;
  const ZvbString* noNames = nullptr;
  expectMessage(TableHandle(manager->openTable(table.c_str(), -2, none, nullptr, false, &error)),
                29, "(column mapping array)");
  expectMessage(TableHandle(manager->openTable(table.c_str(), -2, noNames, nullptr, false, &error)),
                29, "(column mapping array)");
  expectMessage(openUri("http://host/" + table), 1790, "\"http\"");
  expectMessage(openUri("zvwt:zvwt_none?col=a"), 1353, "zvwt_none");
  expectMessage(openUri("zvwt:" + table + "?rows=-4,1"), 1788, "-4");
  expectMessage(openUri("zvwt:" + table + "?rows=1,-4"), 1789, "-4");
  expectMessage(openUri("zvwt:" + table + "?col=%"), 1784, "header");
  expectMessage(openUri("zvwt:..%2F" + table), 1784, "header");
  EXPECT_EQ(Lines{"null|null|null"}, readTable(table));
}

// ---- The URI of an opened table

TEST_F(SelectionTest, TheUriTellsTheRangeAndTheColumns) {
  const std::string table = makeSample();
  const std::string all = "col=a&col=b&col=c";
  EXPECT_EQ("zvwt:" + table + '?' + all, uriOf(*openUri(table)));
  EXPECT_EQ("zvwt:" + table + '?' + all, uriOf(*openNumbers(table, {0, 1, 2})));
  EXPECT_EQ("zvwt:" + table + '?' + all, uriOf(*openNames(table, {"A", "B", "C"})));
  EXPECT_EQ("zvwt:" + table + '?' + all, uriOf(*openUri("zvwt:" + table + "?col=a,A&col=B&col=c")));
  EXPECT_EQ("zvwt:" + table + "?col=c&col=a", uriOf(*openNumbers(table, {2, 0})));
  EXPECT_EQ("zvwt:" + table, uriOf(*openNames(table, {})));
  const RowRange upTo{0, 1};
  const RowRange from{1, -1};
  const RowRange whole{0, -1};
  EXPECT_EQ("zvwt:" + table + "?rows=0,1&" + all, uriOf(*open(table, &upTo)));
  EXPECT_EQ("zvwt:" + table + "?rows=1,-1&" + all, uriOf(*open(table, &from)));
  EXPECT_EQ("zvwt:" + table + '?' + all, uriOf(*open(table, &whole)));

  const TableHandle created = create({{"x y", zvbTypeInteger}, {"z", zvbTypeInteger}});
  const std::string name = created->getName().asCstr();
  EXPECT_EQ("zvwt:" + name, uriOf(*created));
  EXPECT_EQ("zvwt:" + name + "?col=x%20y&col=z", created->getURI(true).asCstr());
  EXPECT_STREQ("", created->getErrorMessage().asCstr());
}

/// Distinct names, values and renamings of all kinds, each chosen as the seed says.
class RandomSelection {
 public:
  explicit RandomSelection(unsigned seed) : random_(seed) {}

  std::size_t below(std::size_t limit) { return random_() % limit; }

  std::string text() {
    static const std::vector<std::string> pieces = {
        ",", "&", "%", "=", "?",    "%2C", " ", "\n",     "a",      "42",        "'",
        "/", ":", "#", "+", "\xFF", "-",   ".", "\u00E4", "\u20AC", "\U0001F600"};
    std::string made;
    for (std::size_t left = 1 + below(8); left > 0; --left) {
      made += pieces[below(pieces.size())];
    }
    return made;
  }

  /// A column of a URI: one of the table's, renamed or not, a constant, or one that is missing.
  std::string uriColumn(const Lines& names, const std::string& newName) {
    static const Lines values = {"",          "42",         "true",
                                 "-1.50",     "2024-02-29", "1999-12-31 23:59:59.123456",
                                 "text, & %", "\u00E4"};
    const std::string& name = names[below(names.size())];
    const std::string& value = values[below(values.size())];
    switch (below(4)) {
      case 0:
        return encoded(name);
      case 1:
        return encoded(newName) + ',' + encoded(name);
      case 2:
        return encoded(newName) + ',' + encoded(value) + ',' + std::to_string(1 + below(7));
      default:
        return encoded(newName) + ',' + encoded(value);
    }
  }

 private:
  std::mt19937 random_;
};

TEST_F(SelectionTest, TheUriOpensTheSameColumnsAndRowsAgain) {
  for (unsigned seed = 0; seed < 200; ++seed) {
    RandomSelection random(seed);
    Lines names;
    std::vector<Column> columns;
    for (std::size_t i = 0; i < 1 + random.below(4); ++i) {
      names.push_back(std::to_string(i) + random.text());
    }
    Row cells;
    for (const std::string& name : names) {
      columns.push_back({name.c_str(), zvbTypeString});
      cells.emplace_back(random.text());
    }
    const std::string table = makeTable(columns, {cells, cells, cells}, 20);
    std::string uri = "zvwt:" + table;
    if (random.below(2) == 0) {
      uri += "?rows=" + std::to_string(random.below(4)) + ',' +
             std::to_string(static_cast<int>(random.below(4)) - 1);
    }
    for (std::size_t i = 0, count = random.below(7); i < count; ++i) {
      uri += (uri.find('?') == std::string::npos ? "?col=" : "&col=") +
             random.uriColumn(names, "new" + std::to_string(i) + random.text());
    }
    const TableHandle first = openUri(uri);
    ASSERT_NE(nullptr, first) << uri << ": " << error.asCstr();
    const TableHandle second = openUri(uriOf(*first));
    ASSERT_NE(nullptr, second) << uriOf(*first) << ": " << error.asCstr();
    EXPECT_EQ(uriOf(*first), uriOf(*second));
    EXPECT_EQ(describedAll(*first), describedAll(*second)) << uri;
    EXPECT_EQ(readAll(*first), readAll(*second)) << uri;
    EXPECT_EQ(readUri(uri, true), readUri(uriOf(*second), true)) << uri;
  }
}

}  // namespace
