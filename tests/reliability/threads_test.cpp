/// Managers, tables and cursors on many threads at once, each of which knows exactly what it has to
/// find. Made for ThreadSanitizer, which sees what a wrong answer does not show.

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <mutex>
#include <random>
#include <thread>

#include "base/zvb_assert.h"
#include "base/zvb_config.h"
#include "base/zvb_cursor.h"
#include "datafile/messages.h"
#include "support/TableFixture.h"
#include "support/TestEffort.h"
#include "support/ThisProcess.h"
#include "wtelem/messages.h"

namespace {

constexpr std::int64_t sourceRows = 7;

/// The value of row `number` wherever a number is stored beside a text.
std::string textOf(std::int64_t number) { return "row " + std::to_string(number); }

/// Rows read from a table of numbers, up to the first wrong one.
struct Reading {
  std::int64_t rows = 0;
  bool areExact = true;
  bool isComplete = false;
};

/// Row i has to hold the number that `expected` gives for i, and that number's text behind it.
template <typename Expected>
Reading read(ZvWorkTableFile& table, const Expected& expected) {
  ZvbDatavar values[2];
  Reading reading;
  while (reading.areExact && table.readRow(values, &reading.isComplete)) {
    bool failed = false;
    const std::int64_t number = expected(reading.rows++);
    reading.areExact = values[0].asInt64(&failed) == number && !failed &&
                       values[1].asString().compare(textOf(number).c_str(), true) == 0;
  }
  return reading;
}

auto countingFrom(std::int64_t first, std::int64_t step = 1) {
  return [first, step](std::int64_t row) { return first + row * step; };
}

/// Set by a thread that wants its own sort to be cancelled.
thread_local bool cancelsSorts = false;

/// What one thread has of its own: a way of making and reading tables with one manager that all
/// share.
class Hand {
 public:
  Hand(ZvWorkTableManager& shared, unsigned seed) : manager(shared), random_(seed) {}

  unsigned below(unsigned end) { return static_cast<unsigned>(random_()) % end; }

  /// Makes a table of as many rows, which count on from 0, in elements of about that many bytes.
  std::string make(std::int64_t rows, std::int64_t maxElementSize) {
    const TableHandle table(manager.createTable(2, maxElementSize, &error));
    EXPECT_TRUE(table != nullptr && define(*table) && fill(*table, rows, 1) && table->close())
        << error.asCstr();
    return table != nullptr ? table->getName().asCstr() : "";
  }

  static bool define(ZvWorkTableFile& table) {
    return table.defineColumn(0, "number", zvbTypeInteger, 0) &&
           table.defineColumn(1, "text", zvbTypeString, 0);
  }

  /// Writes the numbers below `rows`, those that are `stride` apart after each other.
  static bool fill(ZvWorkTableFile& table, std::int64_t rows, std::int64_t stride) {
    ZvbDatavar values[2];
    bool written = true;
    for (std::int64_t i = 0; i < rows && written; ++i) {
      const std::int64_t number = i * stride % rows;
      values[0].assign(number);
      values[1].assign(textOf(number).c_str());
      written = table.writeRow(values);
    }
    return written;
  }

  TableHandle open(const std::string& name, const RowRange* range = nullptr,
                   bool backwards = false) {
    return TableHandle(manager.openTable(name.c_str(), -1, static_cast<const int*>(nullptr), range,
                                         backwards, &error));
  }

  bool remove(const std::string& name) { return manager.deleteTable(name.c_str(), &error); }

  ZvWorkTableManager& manager;
  ZvbString error;

 private:
  std::minstd_rand random_;
};

class Threads : public TableTest {
 protected:
  using Work = void (Threads::*)(Hand&);

  Threads() : shared(own().make(0, 20000)), source(own().make(sourceRows, 0)) {
    for (std::string& name : shortLived) {
      name = own().make(300, 900);
    }
  }

  Hand own() { return Hand(*manager, 0); }

  /// Has `count` threads do the work again and again until the time is over.
  void employ(int count, Work work) {
    for (int i = 0; i < count; ++i) {
      workers_.emplace_back([this, work, seed = static_cast<unsigned>(workers_.size() + 1)] {
        Hand hand(*manager, seed);
        while (std::chrono::steady_clock::now() < end_ && !HasFailure()) {
          (this->*work)(hand);
        }
      });
    }
  }
  void employAll() {
    employ(1, &Threads::makeAndReadInParts);
    employ(3, &Threads::append);
    employ(1, &Threads::readShared);
    employ(1, &Threads::readWithoutKey);
    employ(2, &Threads::sort);
    employ(2, &Threads::changeSettings);
    employ(1, &Threads::copy);
    employ(1, &Threads::replaceShortLived);
    employ(2, &Threads::readShortLived);
    employ(1, &Threads::useCursors);
    employ(2, &Threads::count);
  }
  void waitForAll() {
    for (std::thread& worker : workers_) {
      worker.join();
    }
  }

  void makeAndReadInParts(Hand& hand);
  void append(Hand& hand);
  void readShared(Hand& hand);
  void readWithoutKey(Hand& hand);
  void sort(Hand& hand);
  void changeSettings(Hand& hand);
  void copy(Hand& hand);
  void replaceShortLived(Hand& hand);
  void readShortLived(Hand& hand);
  void useCursors(Hand& hand);
  void count(Hand& hand);

  std::string pickShortLived(Hand& hand) {
    const std::lock_guard guard(shortLivedLock);
    return shortLived[hand.below(shortLivedCount)];
  }

  const std::string shared;  // is appended to
  const std::string source;
  /// Names of tables that are deleted while others read them.
  static constexpr unsigned shortLivedCount = 3;
  std::string shortLived[shortLivedCount];
  std::mutex shortLivedLock;
  std::atomic<std::int64_t> appends{0};
  std::atomic<std::int64_t> sortReports{0};
  std::int64_t counted = 0;  // by whoever holds the key of that name
  std::atomic<std::int64_t> turns{0};

 private:
  const std::chrono::steady_clock::time_point end_ =
      std::chrono::steady_clock::now() + std::chrono::seconds(3) * testEffort();
  std::vector<std::thread> workers_;
};

void Threads::makeAndReadInParts(Hand& hand) {
  const std::int64_t rows = hand.below(400);
  const std::string name = hand.make(rows, hand.below(3) * 500);
  constexpr int most = 4;
  RowRange ranges[most];
  Reading readings[most];
  int parts = most;
  EXPECT_TRUE(hand.manager.partitionTable(name.c_str(), &parts, ranges, &hand.error));
  std::vector<std::thread> readers;
  for (int i = 0; i < parts; ++i) {
    readers.emplace_back([&, i] {
      Hand reader(hand.manager, 0);
      const TableHandle table = reader.open(name, &ranges[i]);
      readings[i] = read(*table, countingFrom(ranges[i].firstRow));
    });
  }
  std::int64_t total = 0;
  for (std::size_t i = 0; i < readers.size(); ++i) {
    readers[i].join();
    EXPECT_TRUE(readings[i].areExact && readings[i].isComplete);
    total += readings[i].rows;
  }
  EXPECT_EQ(rows, total);
  std::int64_t findings = -1;
  ZvwtTableSizes sizes;
  EXPECT_TRUE(
      zvwtCheckTable(&hand.manager, name.c_str(), nullptr, nullptr, &findings, &hand.error));
  EXPECT_EQ(0, findings);
  EXPECT_TRUE(zvwtGetTableSizes(&hand.manager, name.c_str(), &sizes, &hand.error));
  EXPECT_EQ(rows, sizes.rowCount);
  EXPECT_TRUE(hand.remove(name)) << hand.error.asCstr();
}

void Threads::append(Hand& hand) {
  const bool byUri = hand.below(2) == 0;
  const std::string from = byUri ? "zvwt:" + source + "?col=number&col=text" : source;
  EXPECT_TRUE(hand.manager.appendTable(shared.c_str(), from.c_str(), &hand.error))
      << hand.error.asCstr();
  ++appends;
  std::this_thread::sleep_for(std::chrono::milliseconds(1));  // or the table grows without end
}

std::int64_t sharedNumber(std::int64_t row) { return row % sourceRows; }

/// Its key keeps appenders away meanwhile, and is given back by another thread.
void Threads::readShared(Hand& hand) {
  ASSERT_TRUE(hand.manager.enqueue(shared.c_str(), &hand.error));
  const std::int64_t least = appends * sourceRows;
  const TableHandle table = hand.open(shared);
  ASSERT_NE(nullptr, table) << hand.error.asCstr();
  const Reading reading = read(*table, sharedNumber);
  std::thread([&] { hand.manager.dequeue(shared.c_str()); }).join();
  EXPECT_TRUE(reading.areExact && reading.isComplete && reading.rows % sourceRows == 0);
  EXPECT_EQ(table->getRowCount(), reading.rows);
  EXPECT_LE(least, reading.rows);
  const zvwt::Statistics statistics(table->getStatistics());
  std::string told;
  for (const auto line : zvwt::CursorRows(*statistics)) {
    told = line[0].compare("Rows", true) == 0 ? line[1].asCstr() : told;
  }
  EXPECT_EQ(std::to_string(reading.rows), told);
}

/// Who reads while others append may find the catalogue half written, but never a wrong row.
void Threads::readWithoutKey(Hand& hand) {
  const TableHandle table = hand.open(shared);
  EXPECT_TRUE(table != nullptr || messageId(hand.error) != 0);
  EXPECT_TRUE(table == nullptr || read(*table, sharedNumber).areExact);
}

/// Spills and merges, on its own thread or with another beside.
void Threads::sort(Hand& hand) {
  constexpr std::int64_t stride = 7919;  // a prime, so that every number comes once
  const std::int64_t rows = 1 + hand.below(5000);
  const bool descending = hand.below(2) == 0;
  cancelsSorts = hand.below(4) == 0;
  const TableHandle table(hand.manager.createTable(2, 1, hand.below(2) * 20000, &hand.error));
  ASSERT_TRUE(table != nullptr && Hand::define(*table)) << hand.error.asCstr();
  EXPECT_EQ(0, table->setSortColumn(0, 0, descending, 0));
  EXPECT_EQ(0, table->setSortOptionA(65536));
  const std::string name = table->getName().asCstr();
  if (Hand::fill(*table, rows, stride) && table->close()) {
    const TableHandle sorted = hand.open(name, nullptr, descending);
    ASSERT_NE(nullptr, sorted) << hand.error.asCstr();
    const Reading reading = read(*sorted, countingFrom(0));
    EXPECT_TRUE(reading.areExact && reading.isComplete);
    EXPECT_EQ(rows, reading.rows);
    EXPECT_TRUE(hand.remove(name)) << hand.error.asCstr();
  } else {
    const ZvbString reason = table->getErrorMessage();
    EXPECT_TRUE(cancelsSorts) << reason.asCstr();
    EXPECT_EQ(datafileMessage::cancelled, messageId(reason)) << reason.asCstr();
  }
}

void Threads::changeSettings(Hand& hand) {
  EXPECT_TRUE(hand.manager.sortAndSize0(65536 * (1 + hand.below(3))));
  EXPECT_TRUE(hand.manager.sortAndSize1(hand.below(2) == 0));
  EXPECT_TRUE(hand.manager.sortAndSize3(hand.below(2) == 0));
  EXPECT_TRUE(hand.manager.sortAndSize4(static_cast<int>(2 + hand.below(6))));
  EXPECT_TRUE(hand.manager.sortAndSize6(4096 << hand.below(3)));
  EXPECT_TRUE(hand.manager.sortAndSize7(hand.below(2) == 0));
  EXPECT_FALSE(hand.manager.sortAndSize4(hand.below(2) == 0 ? 1 : 257));
  EXPECT_EQ(datafileMessage::settingRefused, messageId(hand.manager.getLastError()));
  EXPECT_TRUE(zvwtSetSortProgress(
      &hand.manager,
      [](const ZvDatafileSortProgress*, void* reports) {
        ++*static_cast<std::atomic<std::int64_t>*>(reports);
        return !cancelsSorts;
      },
      &sortReports, &hand.error));
  ZvbConfigOptions* const options = zvbGetConfigOptions("");
  EXPECT_TRUE(options->set("BASE/TEMP", directory.path().c_str()));
  const ManagerHandle other(zvwtCreateManager("other", "", &hand.error));
  EXPECT_NE(nullptr, other);
  ZvbString value;
  EXPECT_TRUE(!options->get("BASE/TEMP", &value, 0) || directory.path() == value.asCstr());
  options->clear();
  zvbSetAssertHandler(nullptr);
}

void Threads::copy(Hand& hand) {
  const std::string from = "zvwt:" + source + "?rows=2,3&col=number&col=text";
  const char* const managers[] = {"", "test", "another"};
  TableHandle table(hand.manager.copyTable(0, managers[hand.below(3)], from.c_str(), &hand.error));
  ASSERT_NE(nullptr, table) << hand.error.asCstr();
  const std::string first = table->getName().asCstr();
  EXPECT_TRUE(table->close());
  table.reset(hand.manager.createTable(2, 30, &hand.error));
  ASSERT_NE(nullptr, table) << hand.error.asCstr();
  const ManagerHandle other(
      zvwtCreateManager("other", hand.manager.getDirectoryList(), &(hand.error = ZvbString())));
  EXPECT_TRUE(hand.manager.copyIntoTable(table.get(), other.get(), first.c_str(), &hand.error))
      << hand.error.asCstr();
  const Reading reading = read(*table, countingFrom(2));
  EXPECT_TRUE(reading.areExact && reading.isComplete);
  EXPECT_EQ(3, reading.rows);
  EXPECT_TRUE(hand.remove(first) && hand.remove(table->getName().asCstr()));
}

/// What is told of a table that another thread has deleted.
void expectGone(const ZvbString& error) {
  const int id = messageId(error);
  EXPECT_TRUE(id == message::openFailed || id == message::deleteFailed ||
              id == message::sourceNotRead)
      << error.asCstr();
}

void Threads::replaceShortLived(Hand& hand) {
  std::string name = hand.make(300, 900);
  {
    const std::lock_guard guard(shortLivedLock);
    name.swap(shortLived[hand.below(shortLivedCount)]);
  }
  // Two at once: one of them comes late, for the table or for one of its files.
  std::thread rival([&] {
    Hand other(hand.manager, 0);
    if (!other.remove(name)) {
      expectGone(other.error);
    }
  });
  if (!hand.remove(name)) {
    expectGone(hand.error);
  }
  rival.join();
  // Wine lets deleted files be opened as long as somebody reads them.
  EXPECT_TRUE(hand.open(name) == nullptr || runsUnderWine());
}

void Threads::readShortLived(Hand& hand) {
  const std::string name = pickShortLived(hand);
  const bool backwards = hand.below(2) == 0;
  const TableHandle table = hand.open(name, nullptr, backwards);
  if (table == nullptr) {
    return expectGone(hand.error);
  }
  const Reading reading = read(*table, backwards ? countingFrom(299, -1) : countingFrom(0));
  EXPECT_TRUE(reading.areExact);
  if (reading.isComplete) {
    EXPECT_EQ(300, reading.rows);
  } else {
    expectGone(table->getErrorMessage());
  }
  std::int64_t findings = 0;
  if (!zvwtCheckTable(&hand.manager, name.c_str(), nullptr, nullptr, &findings, &hand.error)) {
    expectGone(hand.error);
  }
  const TableHandle copied(hand.manager.copyTable(0, "", name.c_str(), &hand.error));
  if (copied == nullptr) {
    return expectGone(hand.error);
  }
  EXPECT_EQ(300, copied->getRowCount());
  EXPECT_TRUE(copied->close() && hand.remove(copied->getName().asCstr()));
}

void Threads::useCursors(Hand& hand) {
  constexpr std::int64_t rows = 50;
  const zvwt::Cursor cursor(zvwtCreateCursor(&hand.manager));
  cursor->addColumn("number", zvbTypeInteger);
  cursor->addColumn("text", zvbTypeString);
  ASSERT_TRUE(cursor->create()) << cursor->errorMessage().asCstr();
  ZvbDatavar value;
  for (std::int64_t i = 0; i < rows; ++i) {
    EXPECT_TRUE(cursor->newRow());
    value.assign(i);
    cursor->setValue(0, value);
    value.assign(textOf(i).c_str());
    cursor->setValue(1, value);
    EXPECT_TRUE(cursor->appendRow());
  }
  EXPECT_TRUE(cursor->endAppend());
  const zvwt::Cursor twin(zvwtCreateCursor(&hand.manager));
  EXPECT_TRUE(twin->copyFrom(cursor.get())) << twin->errorMessage().asCstr();
  const zvwt::StringCursor texts(zvwtCreateStringCursor(&hand.manager));
  EXPECT_TRUE(texts->setWorkTable(hand.open(twin->workTable(false)->getName().asCstr()).release()));
  texts->setRemoveOnClose(false);
  std::int64_t read = 0;
  while (twin->next() == zvbCursorRow && texts->next() == zvbCursorRow) {
    EXPECT_EQ(std::to_string(read), texts->value(0).asCstr());
    EXPECT_EQ(textOf(read++), twin->value(1).asString().asCstr());
  }
  EXPECT_EQ(rows, read);
}

/// A key makes plain memory safe.
void Threads::count(Hand& hand) {
  ASSERT_TRUE(hand.manager.enqueue("counted", &hand.error));
  ++counted;
  hand.manager.dequeue("counted");
  ++turns;
}

TEST_F(Threads, FindExactlyWhatTheyLookFor) {
  const std::size_t files = openFiles().size();
  employAll();
  waitForAll();
  EXPECT_EQ(turns, counted);
  EXPECT_LT(0, sortReports);
  const Reading reading = read(*open(shared), sharedNumber);
  EXPECT_TRUE(reading.areExact && reading.isComplete);
  EXPECT_EQ(appends * sourceRows, reading.rows);
  EXPECT_EQ(files, openFiles().size());
  for (const std::string& name : {shared, source, shortLived[0], shortLived[1], shortLived[2]}) {
    EXPECT_TRUE(manager->deleteTable(name.c_str(), &error)) << error.asCstr();
  }
  EXPECT_TRUE(directory.names().empty());
}

}  // namespace
