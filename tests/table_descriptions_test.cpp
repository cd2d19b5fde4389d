/// What tables say of themselves: statistics, and rows as an XML document.

#include <gtest/gtest.h>

#include "support/ShortMemory.h"
#include "support/TableFixture.h"

namespace {

using Lines = std::vector<std::string>;
using zvwt::Statistics;

class Descriptions : public TableTest {
 protected:
  static Lines readAll(ZvbStringCursor& cursor) {
    Lines rows;
    while (cursor.next() == zvbCursorRow) {
      rows.push_back(std::string(cursor.value(0).asCstr()) + '=' + cursor.value(1).asCstr());
    }
    return rows;
  }

  std::string makeSample() {
    return makeTable({{"a", zvbTypeInteger}, {"x<y", zvbTypeString}},
                     {row({std::int64_t{0}, std::string("zero")}),
                      row({std::int64_t{1}, std::string("a<b & 'c'>\"")}), row({{}, {}})},
                     10);
  }

  /// The document between its head and its tail.
  static std::string rowsOf(const ZvbString& document) {
    const std::string text = document.asCstr();
    const std::string head = "<constructor-arg index='2'><list>";
    const std::string tail = "</list></constructor-arg></bean></beans>";
    const std::size_t begin = text.find(head);
    EXPECT_NE(std::string::npos, begin) << text;
    EXPECT_TRUE(text.ends_with(tail)) << text;
    return text.substr(begin + head.size(), text.size() - tail.size() - begin - head.size());
  }
};

TEST_F(Descriptions, StatisticsAreACursorOfTheirOwn) {
  TableHandle table = openUri("zvwt:" + makeSample() + "?col=a&col=a&col=a");
  const Statistics statistics(table->getStatistics());
  ASSERT_NE(nullptr, statistics);
  table.reset();
  EXPECT_STREQ("", statistics->value(0).asCstr());
  const Lines rows = {"AccessKey=", "Columns=3", "ElementSize=10",
                      "Elements=3", "Rows=3",    "Version=1.0"};
  EXPECT_EQ(rows, readAll(*statistics));
  EXPECT_EQ(zvbCursorEnd, statistics->next());
  EXPECT_STREQ("", statistics->value(0).asCstr());
  EXPECT_TRUE(statistics->rewind());
  EXPECT_EQ(rows, readAll(*statistics));
  std::int64_t count = 0;
  EXPECT_TRUE(statistics->isValid() && statistics->rowCount(&count));
  EXPECT_EQ(6, count);
  EXPECT_EQ(2, statistics->columnCount());
  EXPECT_STREQ("Statistic", statistics->columnName(0).asCstr());
  EXPECT_STREQ("Value", statistics->columnName(1).asCstr());
  for (const int index : {-1, 2}) {
    EXPECT_STREQ("", statistics->columnName(index).asCstr());
    EXPECT_STREQ("", statistics->value(index).asCstr());
  }
  EXPECT_STREQ("", statistics->errorMessage().asCstr());
}

TEST_F(Descriptions, StatisticsOfAnEmptyTableAndWithoutMemory) {
  const TableHandle table = create({{"a", zvbTypeInteger}});
  const Statistics before(table->getStatistics());
  for (int allocation = 0; allocation < 2; ++allocation) {
    Statistics none;
    {
      const ShortMemory shortMemory(allocation, 1);
      none.reset(table->getStatistics());
    }
    EXPECT_EQ(nullptr, none);
    EXPECT_NE(nullptr,
              std::strstr(table->getErrorMessage().asCstr(), "(work table statistics container)"));
  }
  EXPECT_TRUE(write(*table, row({std::int64_t{1}})));
  EXPECT_EQ(
      (Lines{"AccessKey=", "Columns=1", "ElementSize=0", "Elements=0", "Rows=0", "Version=1.0"}),
      readAll(*before));
}

TEST_F(Descriptions, XmlIsOneDocumentOfBeans) {
  const std::string name = makeSample();
  ZvbString document("left over");
  bool end = true;
  ASSERT_TRUE(open(name)->asXml(0, 2, &document, &end));
  EXPECT_FALSE(end);
  EXPECT_EQ(
      "<?xml version='1.0' encoding='UTF-8'?><beans "
      "xmlns='http://www.springframework.org/schema/beans' "
      "xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' "
      "xmlns:aop='http://www.springframework.org/schema/aop' "
      "xsi:schemaLocation='http://www.springframework.org/schema/beans "
      "http://www.springframework.org/schema/beans/spring-beans-3.0.xsd "
      "http://www.springframework.org/schema/aop "
      "http://www.springframework.org/schema/aop/spring-aop-3.0.xsd'>"
      "<bean id='Table' factory-bean='TableFactoryBean' factory-method='createInstance'>"
      "<constructor-arg index='0'><value>" +
          name +
          "</value></constructor-arg><constructor-arg index='1'><list><value>a</value>"
          "<value>x<y</value></list></constructor-arg><constructor-arg index='2'><list>"
          "<list><value>0</value><value>zero</value></list>"
          "<list><value>1</value><value>a&lt;b &amp; &apos;c&apos;>\"</value></list>"
          "</list></constructor-arg></bean></beans>",
      std::string(document.asCstr()));
}

TEST_F(Descriptions, XmlTakesRowsFromWhereTheReaderStands) {
  const std::string name = makeCountingTable(5);
  ZvbString document;
  bool end = false;
  const std::string last = "<list><value>4</value></list>";
  const std::string lastTwo = "<list><value>3</value></list>" + last;
  const RowRange fromThree{3, -1};
  ASSERT_TRUE(open(name, &fromThree)->asXml(3, -1, &document, nullptr));
  EXPECT_EQ(lastTwo, rowsOf(document));
  const TableHandle table = open(name, &fromThree);
  EXPECT_TRUE(table->asXml(0, 99, &document, &end));
  EXPECT_EQ(lastTwo, rowsOf(document));
  EXPECT_TRUE(end);
  EXPECT_TRUE(table->asXml(0, 0, &document, &end));
  EXPECT_EQ("", rowsOf(document));
  EXPECT_FALSE(end);
  EXPECT_TRUE(open(name)->asXml(9, -1, &document, nullptr));
  EXPECT_EQ("", rowsOf(document));
  EXPECT_TRUE(
      openUri("zvwt:" + name + "?rows=4,1&col=k,7,2&col=number")->asXml(0, 1, &document, &end));
  EXPECT_EQ("<list><value>7</value></list>", rowsOf(document));
  EXPECT_TRUE(openUri("zvwt:" + name + "?rows=4,1")->asXml(0, 1, &document, &end));
  EXPECT_EQ("<list><value></value></list>", rowsOf(document));
}

TEST_F(Descriptions, XmlSaysWhenRowsAreMissing) {
  const std::string name = makeCountingTable(5);
  ZvbString document;
  const TableHandle table = open(name);
  EXPECT_FALSE(table->asXml(0, 6, &document, nullptr));
  EXPECT_NE(nullptr, std::strstr(table->getErrorMessage().asCstr(), "(table as XML)"));
  EXPECT_FALSE(document.isEmpty());
  for (const std::string& file : directory.names()) {
    if (file.starts_with("zvwte_")) {
      std::filesystem::resize_file(directory.file(file), 20);
    }
  }
  const TableHandle damaged = open(name);
  bool end = true;
  EXPECT_TRUE(damaged->asXml(0, 5, &document, &end));
  EXPECT_FALSE(end);
  EXPECT_EQ(1301, messageId(damaged->getErrorMessage()));
  EXPECT_EQ("<list><value>0</value></list><list><value>1</value></list>", rowsOf(document));
  const TableHandle written = create({{"a", zvbTypeInteger}});
  for (int allocation = 0; allocation < 2; ++allocation) {
    ZvbString fresh;
    bool done = true;
    {
      const ShortMemory shortMemory(allocation, 2);
      done = written->asXml(0, 0, &fresh, &end);
    }
    EXPECT_FALSE(done);
    EXPECT_EQ(29, messageId(written->getErrorMessage()));
  }
}

}  // namespace
