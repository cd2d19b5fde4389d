#include <gtest/gtest.h>

#include <algorithm>
#include <new>
#include <ranges>

#include "ZvwtHandles.h"
#include "support/ShortMemory.h"
#include "support/TableFixture.h"

namespace {

static_assert(std::ranges::input_range<zvwt::Rows>);
static_assert(!std::ranges::forward_range<zvwt::Rows>);
static_assert(std::ranges::input_range<zvwt::CursorRows<ZvWorkTableCursor>>);
static_assert(std::ranges::input_range<zvwt::CursorRows<ZvbStringCursor>>);

class ZvwtHandlesTest : public TableTest {
 protected:
  zvwt::Table openCounting(int rows, std::int64_t maxElementSize = 0) {
    name = makeCountingTable(rows, maxElementSize);
    return zvwt::Table(open(name).release());
  }

  /// What a loop over the rest delivers, with a line about how it ended.
  template <typename Range>
  static std::vector<std::string> loop(Range& rows) {
    std::vector<std::string> texts;
    for (const auto& row : rows) {
      texts.emplace_back(row[0].asString().asCstr());
    }
    texts.emplace_back(rows.complete() ? "complete" : "incomplete");
    return texts;
  }

  std::string name;
};

using Lines = std::vector<std::string>;

TEST_F(ZvwtHandlesTest, LoopsOverTables) {
  const zvwt::Table table = openCounting(3);
  zvwt::Rows rows(*table);
  EXPECT_FALSE(rows.complete());
  for (const std::span<const ZvbDatavar> row : rows) {
    EXPECT_EQ(row.size(), 1U);
    break;
  }
  EXPECT_FALSE(rows.complete());
  EXPECT_EQ(loop(rows), (Lines{"1", "2", "complete"}));
  EXPECT_EQ(loop(rows), Lines{"complete"});

  const TableHandle withoutColumns = openUri("zvwt:" + name);
  zvwt::Rows empty(*withoutColumns);
  EXPECT_EQ(std::ranges::count_if(empty, [](const auto& row) { return row.empty(); }), 3);
  EXPECT_TRUE(empty.complete());
}

TEST_F(ZvwtHandlesTest, LoopsOverCursors) {
  const zvwt::Cursor cursor(zvwtCreateCursor(manager.get()));
  ASSERT_TRUE(cursor->setWorkTable(openCounting(3).release()));
  zvwt::CursorRows rows(*cursor);
  EXPECT_FALSE(rows.complete());
  EXPECT_EQ((*rows.begin()).size(), 1);
  EXPECT_FALSE(rows.complete());
  EXPECT_EQ(loop(rows), (Lines{"1", "2", "complete"}));
  ASSERT_TRUE(cursor->rewind());
  EXPECT_EQ(loop(rows), (Lines{"0", "1", "2", "complete"}));
}

TEST_F(ZvwtHandlesTest, AFailureEndsALoopIncomplete) {
  const TableHandle written = create({{"number", zvbTypeInteger}});
  zvwt::Rows unreadable(*written);
  EXPECT_EQ(loop(unreadable), Lines{"incomplete"});
  EXPECT_EQ(messageId(written->getErrorMessage()), 1793);

  zvwt::Table table = openCounting(3, 1);  // a row fills an element
  zvwt::Rows rows(*table);
  EXPECT_EQ((*rows.begin())[0].asString().compare("0", true), 0);
  ASSERT_TRUE(manager->deleteTable(name.c_str(), &error)) << error.asCstr();
  EXPECT_EQ(loop(rows), Lines{"incomplete"});
  EXPECT_EQ(messageId(table->getErrorMessage()), 1353);

  const zvwt::StringCursor cursor(zvwtCreateStringCursor(manager.get()));
  zvwt::CursorRows cursorRows(*cursor);
  EXPECT_EQ(std::ranges::distance(cursorRows), 0);
  EXPECT_FALSE(cursorRows.complete());
  EXPECT_EQ(messageId(cursor->errorMessage()), 1797);
}

TEST_F(ZvwtHandlesTest, TheValuesOfARowAreAllocatedOnce) {
  const zvwt::Table table = openCounting(100);
  {
    const ShortMemory shortMemory;
    EXPECT_THROW(zvwt::Rows{*table}, std::bad_alloc);
  }
  zvwt::Rows rows(*table);
  ASSERT_EQ((*rows.begin()).size(), 1U);  // what the table itself allocates, it does now
  const std::int64_t before = countAllocations();
  EXPECT_EQ(std::ranges::distance(rows), 99);
  EXPECT_EQ(countAllocations(), before);
}

}  // namespace
