/// Sorters: the order against a plain stable sort, every setting and option, work files that fail,
/// short memory and cancelled sorts.

#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <optional>
#include <thread>

#include "datafile/ZvDatafileManager.h"
#include "datafile/messages.h"
#include "fio/np_dir.h"
#include "support/FileCalls.h"
#include "support/OpenedFile.h"
#include "support/SortModel.h"
#include "support/ThisProcess.h"
#include "support/ThisSystem.h"

namespace {

using ManagerOwner = std::unique_ptr<ZvDatafileManager, zvwt::Release>;
using SorterOwner = std::unique_ptr<ZvDatafileSorter, zvwt::Release>;

constexpr std::int64_t kilobyte = 1024;
constexpr std::int64_t megabyte = 1024 * kilobyte;
constexpr std::uint32_t allOptions =
    zvDatafileTypedColumns | zvDatafileWorkFiles | zvDatafileKeepEqual;

ManagerOwner makeManager(const std::string& directories) {
  ZvbString error;
  ManagerOwner manager(zvDatafileManagerCreate(directories.c_str(), &error));
  EXPECT_NE(manager, nullptr) << error.asCstr();
  return manager;
}

SorterOwner makeSorter(ZvDatafileManager& manager, const Types& types, const KeySettings& keys,
                       std::uint32_t options = allOptions) {
  EXPECT_TRUE(manager.setColumnCount(static_cast<std::int32_t>(types.size())));
  for (std::size_t i = 0; i < types.size(); ++i) {
    EXPECT_TRUE(manager.defineColumn(static_cast<std::int32_t>(i), types[i], 4));
  }
  SorterOwner sorter(manager.createSorter(options));
  EXPECT_NE(sorter, nullptr) << manager.getErrorMessage().asCstr();
  EXPECT_EQ(0, sorter->setSortColumnCount(static_cast<std::int32_t>(keys.size())));
  for (std::size_t i = 0; i < keys.size(); ++i) {
    EXPECT_EQ(0, sorter->setSortColumn(static_cast<std::int32_t>(i), keys[i].column,
                                       keys[i].descending, keys[i].value));
  }
  return sorter;
}

// ---- Records of known values: a number, few distinct ones, an id that tells the number, a text

const Types numberTypes = {zvbTypeInteger, zvbTypeInteger, zvbTypeString};
constexpr std::size_t payloadSize = 100;

std::int64_t numberOf(std::int64_t id) { return id * 7919 % 1009; }
std::string payloadOf(std::int64_t id) {
  return std::string(payloadSize, static_cast<char>('a' + id % 26));
}

/// Adds the records of the ids from `first` on until all are in or one is refused.
std::int32_t addNumbers(ZvDatafileSorter& sorter, std::int64_t count, std::int64_t first = 0) {
  std::int32_t status = zvDatafileSuccess;
  for (std::int64_t id = first; id < first + count && status == zvDatafileSuccess; ++id) {
    sorter.value(0)->assign(numberOf(id));
    sorter.value(1)->assign(id);
    sorter.value(2)->assign(payloadOf(id).c_str());
    status = sorter.addRecord(0);
  }
  return status;
}

struct Delivery {
  std::int32_t status = zvDatafileSuccess;  // the one that ended it
  std::int64_t records = 0;
  bool right = true;  // all records of it are as they were given, and in order
};

Delivery deliverNumbers(ZvDatafileSorter& sorter, std::int64_t limit) {
  Delivery delivery;
  std::pair<std::int64_t, std::int64_t> last(-1, -1);
  delivery.status = sorter.firstRecord(0);
  while (delivery.status == zvDatafileSuccess && delivery.records < limit) {
    bool failed = false;
    const std::pair now(sorter.value(0)->asInt64(&failed), sorter.value(1)->asInt64(&failed));
    delivery.right = delivery.right && !failed && last < now && now.first == numberOf(now.second) &&
                     sorter.value(2)->asTextView() == payloadOf(now.second);
    last = now;
    ++delivery.records;
    delivery.status = sorter.nextRecord(0);
  }
  return delivery;
}

void expectNumbers(ZvDatafileSorter& sorter, std::int64_t count) {
  const Delivery delivery = deliverNumbers(sorter, count + 1);
  EXPECT_EQ(zvDatafileNoMoreRecords, delivery.status) << sorter.getErrorMessage().asCstr();
  EXPECT_EQ(count, delivery.records);
  EXPECT_TRUE(delivery.right);
}

/// Every operation fails with the text that the first failure left.
void expectSticky(ZvDatafileSorter& sorter, int id) {
  const std::string text = sorter.getErrorMessage().asCstr();
  EXPECT_EQ(id, messageId(sorter.getErrorMessage())) << text;
  for (const std::int32_t status :
       {sorter.addRecord(0), sorter.sort(), sorter.firstRecord(0), sorter.nextRecord(0)}) {
    EXPECT_NE(zvDatafileSuccess, status);
    EXPECT_NE(zvDatafileNoMoreRecords, status);
    EXPECT_EQ(text, sorter.getErrorMessage().asCstr());
  }
}

class Sorter : public testing::Test {
 protected:
  Sorter() : manager(makeManager(directory.path())) { manager->setProgress(&Sorter::report, this); }

  static bool report(const ZvDatafileSortProgress* now, void* context) {
    auto* test = static_cast<Sorter*>(context);
    test->progress.push_back(*now);
    return test->cancelIn != now->phase;
  }

  SorterOwner numbers(std::uint32_t options = allOptions) {
    return makeSorter(*manager, numberTypes, {{.column = 0}}, options);
  }

  /// Sorts so many numbers with the settings as they are; what was reported last.
  ZvDatafileSortProgress sortNumbers(std::int64_t count) {
    const SorterOwner sorter = numbers();
    EXPECT_EQ(0, addNumbers(*sorter, count)) << sorter->getErrorMessage().asCstr();
    EXPECT_EQ(0, sorter->sort()) << sorter->getErrorMessage().asCstr();
    expectNumbers(*sorter, count);
    return progress.back();
  }

  /// Adds, sorts and delivers until something fails, as it must.
  static void runIntoFailure(ZvDatafileSorter& sorter, std::int64_t count) {
    if (addNumbers(sorter, count) == 0 && sorter.sort() == 0) {
      EXPECT_NE(zvDatafileNoMoreRecords, deliverNumbers(sorter, count).status);
    }
  }

  static void add(ZvDatafileSorter& sorter, const Record& record) {
    for (std::size_t i = 0; i < record.size(); ++i) {
      *sorter.value(static_cast<std::int32_t>(i)) = record[i];
    }
    ASSERT_EQ(0, sorter.addRecord(0)) << sorter.getErrorMessage().asCstr();
  }

  static void expectDelivered(ZvDatafileSorter& sorter, const std::vector<Record>& expected,
                              const Types& types) {
    std::size_t i = 0;
    std::int32_t status = sorter.firstRecord(0);
    for (; status == zvDatafileSuccess && i < expected.size(); ++i, status = sorter.nextRecord(0)) {
      for (std::size_t column = 0; column < types.size(); ++column) {
        ASSERT_EQ(shownDelivered(expected[i][column], types[column]),
                  shownExactly(*sorter.value(static_cast<std::int32_t>(column))))
            << "record " << i << " column " << column;
      }
    }
    ASSERT_EQ(zvDatafileNoMoreRecords, status) << sorter.getErrorMessage().asCstr();
    ASSERT_EQ(expected.size(), i);
    ASSERT_EQ(zvDatafileNoMoreRecords, sorter.nextRecord(0));
  }

  void expectSorted(const std::vector<Record>& records, const Types& types,
                    const KeySettings& keys) {
    const SorterOwner sorter = makeSorter(*manager, types, keys);
    for (const Record& record : records) {
      add(*sorter, record);
    }
    ASSERT_EQ(0, sorter->sort()) << sorter->getErrorMessage().asCstr();
    const std::vector<Record> expected = modelSort(records, types, keys);
    expectDelivered(*sorter, expected, types);
    expectDelivered(*sorter, expected, types);  // anew
  }

  TemporaryDirectory directory;
  std::vector<ZvDatafileSortProgress> progress;
  std::optional<ZvDatafileSortPhase> cancelIn;
  ManagerOwner manager;
};

// ---- Order

class SorterMatrix : public Sorter, public testing::WithParamInterface<std::int64_t> {};

/// The last two columns, a text that makes records longer and the record's number, are no keys.
std::vector<Record> hardRecords(HardValues& values, const Types& types, std::int64_t count) {
  std::vector<Record> records(static_cast<std::size_t>(count), Record(types.size()));
  for (std::int64_t i = 0; i < count; ++i) {
    Record& record = records[static_cast<std::size_t>(i)];
    for (std::size_t column = 0; column + 2 < types.size(); ++column) {
      record[column] = values.value(types[column]);
    }
    record[types.size() - 2].assign(std::string(values.below(1000), 'p').c_str());
    record.back().assign(i);
  }
  return records;
}

TEST_P(SorterMatrix, GivesTheOrderOfAPlainStableSort) {
  HardValues values(static_cast<unsigned>(GetParam()));
  ASSERT_TRUE(manager->sortAndSize0(GetParam()));
  for (int plan = 0; plan < 40; ++plan) {
    const Types types = {allTypes[plan % 5], allTypes[values.below(5)], allTypes[values.below(5)],
                         zvbTypeString, zvbTypeInteger};
    KeySettings keys = {{0, plan / 5 % 2 != 0, static_cast<std::uint64_t>(plan) / 10}};
    while (keys.size() < 3 && values.coin()) {
      keys.push_back({values.below(3), values.coin(), values.below(4)});
    }
    const bool secondThread = values.coin();
    const std::int32_t runs = std::vector<std::int32_t>{2, 3, 16}[values.below(3)];
    ASSERT_TRUE(manager->sortAndSize1(secondThread));
    ASSERT_TRUE(manager->sortAndSize4(runs));
    ASSERT_TRUE(manager->sortAndSize6(values.coin() ? 4 * kilobyte : 64 * kilobyte));
    ASSERT_TRUE(manager->sortAndSize7(values.coin()));
    SCOPED_TRACE(testing::Message() << "plan " << plan << ", keys " << keys.size()
                                    << ", second thread " << secondThread << ", runs " << runs);
    expectSorted(hardRecords(values, types, 1200), types, keys);
    if (HasFatalFailure()) {
      return;
    }
    if (GetParam() == 64 * kilobyte) {
      EXPECT_LT(0, progress.back().runsSpilled);
      // Ten runs or more take three passes two by two, in which sixteen and more are merged.
      EXPECT_LE(runs == 2 ? 16 : 0, progress.back().runsMerged);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Memory, SorterMatrix,
                         testing::Values(64 * kilobyte, 256 * kilobyte, megabyte, 0));

TEST_F(Sorter, SortsWhatIsInOrderAlready) {
  ASSERT_TRUE(manager->sortAndSize0(64 * kilobyte));
  ASSERT_TRUE(manager->sortAndSize4(2));
  const Types types = {zvbTypeInteger, zvbTypeString, zvbTypeInteger};
  const std::string text(80, 't');
  for (const std::int64_t step : {1, 0, -1}) {
    std::vector<Record> records(6000, Record(3));
    for (std::int64_t i = 0; i < 6000; ++i) {
      Record& record = records[static_cast<std::size_t>(i)];
      record[0].assign(i * step);
      record[1].assign(text.c_str());
      record[2].assign(i);
    }
    expectSorted(records, types, {{.column = 0}, {.column = 1}});
    expectSorted(records, types, {{.column = 0, .descending = true}});
  }
}

TEST_F(Sorter, SortsRecordsLargerThanItsMemory) {
  const Types types = {zvbTypeString, zvbTypeInteger};
  for (const std::int64_t memory : {64 * kilobyte, megabyte}) {
    ASSERT_TRUE(manager->sortAndSize0(memory));
    std::vector<Record> records(300, Record(2));
    for (std::size_t i = 0; i < records.size(); ++i) {
      const std::size_t size = i == 100 ? 20'000'000 : i % 60 == 7 ? 300'000 : 1000;
      records[i][0].assign((std::string(size, 'x') + std::to_string(i % 3)).c_str());
      records[i][1].assign(static_cast<std::int64_t>(i));
    }
    expectSorted(records, types, {{.column = 0}});
  }
}

TEST_F(Sorter, SortsFewRecordsAndManyColumns) {
  const Types types = {zvbTypeInteger};
  expectSorted({}, types, {{.column = 0}});
  expectSorted({Record(1)}, types, {{.column = 0}});
  ASSERT_TRUE(manager->sortAndSize0(64 * kilobyte));
  const Types many(100'000, zvbTypeString);
  std::vector<Record> records(4, Record(many.size()));
  records[1].back().assign("b");
  records[2].back().assign("a");
  expectSorted(records, many, {{.column = 99'999, .value = 2}, {.column = 50'000}});
}

// ---- Descriptions and settings

TEST_F(Sorter, RefusesWrongKeysAndOptions) {
  SorterOwner sorter = numbers();
  const auto told = [&sorter](std::int32_t status) {
    return status == 0 ? 0 : messageId(sorter->getErrorMessage());
  };
  EXPECT_EQ(datafileMessage::keyColumnRefused, told(sorter->setSortColumn(0, 3, false, 0)));
  EXPECT_EQ(datafileMessage::keyValueRefused, told(sorter->setSortColumn(0, 0, false, 4)));
  EXPECT_EQ(datafileMessage::noSuchKey, told(sorter->setSortColumn(1, 0, false, 0)));
  EXPECT_EQ(datafileMessage::noSuchKey, told(sorter->setSortColumn(-1, 0, false, 0)));
  EXPECT_EQ(datafileMessage::keyCountRefused, told(sorter->setSortColumnCount(0)));
  EXPECT_EQ(datafileMessage::settingRefused, told(sorter->setSortOptionA(64 * kilobyte - 1)));
  EXPECT_EQ(0, told(sorter->setSortOptionA(64 * kilobyte)));
  EXPECT_EQ(datafileMessage::settingRefused, told(sorter->setSortOptionB(~std::uint64_t{0})));
  EXPECT_EQ(nullptr, sorter->value(3));
  EXPECT_EQ(nullptr, sorter->value(-1));
  ASSERT_EQ(0, addNumbers(*sorter, 2000)) << sorter->getErrorMessage().asCstr();
  ASSERT_EQ(0, sorter->sort());
  expectNumbers(*sorter, 2000);  // as if nothing wrong had been asked for
  EXPECT_EQ(datafileMessage::notPossibleNow, told(sorter->setSortColumnCount(1)));
  EXPECT_EQ(datafileMessage::notPossibleNow, told(sorter->setSortColumn(0, 0, false, 0)));
  EXPECT_EQ(datafileMessage::notPossibleNow, told(sorter->setSortOptionA(0)));
  EXPECT_EQ(datafileMessage::notPossibleNow, told(sorter->setSortOptionB(0)));
  expectNumbers(*sorter, 2000);

  for (const std::uint32_t options : {1U, 0x20000000U, allOptions | 2U}) {
    EXPECT_EQ(nullptr, SorterOwner(manager->createSorter(options)));
    EXPECT_EQ(datafileMessage::optionsRefused, messageId(manager->getErrorMessage()));
  }
  EXPECT_FALSE(manager->setColumnCount(-1));
  EXPECT_TRUE(manager->setColumnCount(2));
  EXPECT_FALSE(manager->defineColumn(2, zvbTypeInteger, 0));
  EXPECT_EQ(datafileMessage::noSuchColumn, messageId(manager->getErrorMessage()));
}

TEST_F(Sorter, RefusesSettingsOutsideTheirRange) {
  constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
  const auto take = [this](int setting, std::int64_t value) {
    switch (setting) {
      case 0:
        return manager->sortAndSize0(value);
      case 4:
        return manager->sortAndSize4(static_cast<std::int32_t>(value));
      case 5:
        return manager->sortAndSize5(value);
      default:
        return manager->sortAndSize6(value);
    }
  };
  struct Case {
    int setting;
    std::vector<std::int64_t> good;
    std::vector<std::int64_t> bad;
    std::vector<const char*> told;  // of the name and the range
  };
  for (const Case& of :
       {Case{0, {0, 65536, most}, {-1, 1, 65535}, {"emory", "65536"}},
        Case{4, {2, 256}, {-1, 0, 1, 257}, {"uns", "2", "256"}},
        Case{5, {0, 1, most}, {-1}, {"work file", "0"}},
        Case{6, {4096, 64 * megabyte}, {-1, 4095, 64 * megabyte + 1}, {"buffer", "4"}}}) {
    for (const std::int64_t value : of.good) {
      EXPECT_TRUE(take(of.setting, value)) << manager->getErrorMessage().asCstr();
    }
    for (const std::int64_t value : of.bad) {
      EXPECT_FALSE(take(of.setting, value)) << of.setting << ' ' << value;
      const std::string text = manager->getErrorMessage().asCstr();
      EXPECT_EQ(datafileMessage::settingRefused, messageId(text.c_str())) << text;
      for (const char* word : of.told) {
        EXPECT_NE(std::string::npos, text.find(word)) << word << " in " << text;
      }
    }
  }
}

/// A refused value in between changes nothing.
TEST_F(Sorter, IsShapedByMemoryRunsAndReadBuffer) {
  constexpr std::int64_t count = 60000;  // over 6 MB
  EXPECT_EQ(0, sortNumbers(count).runsSpilled);
  ASSERT_TRUE(manager->sortAndSize0(megabyte));
  ASSERT_FALSE(manager->sortAndSize0(1));
  ASSERT_TRUE(manager->sortAndSize6(4 * kilobyte));
  ASSERT_TRUE(manager->sortAndSize4(48));
  const ZvDatafileSortProgress smallBlocks = sortNumbers(count);
  EXPECT_LT(count * 100, smallBlocks.spilledBytes);
  EXPECT_EQ(0, smallBlocks.runsMerged);
  ASSERT_TRUE(manager->sortAndSize4(2));
  ASSERT_FALSE(manager->sortAndSize4(300));
  const ZvDatafileSortProgress twoByTwo = sortNumbers(count);
  EXPECT_LT(4, twoByTwo.runsMerged);
  EXPECT_LT(smallBlocks.spilledBytes, twoByTwo.spilledBytes);
  ASSERT_TRUE(manager->sortAndSize6(64 * kilobyte));
  EXPECT_LT(3 * sortNumbers(count).blocksSpilled, twoByTwo.blocksSpilled);
}

/// A thread that was joined can be listed for a moment longer.
bool threadsAreSoon(std::int64_t count) {
  for (int attempt = 0; attempt < 2000 && countThreads() != count; ++attempt) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return countThreads() == count;
}

TEST_F(Sorter, UsesASecondThreadWhenItMay) {
  ASSERT_TRUE(manager->sortAndSize0(64 * kilobyte));
  std::thread([] {}).join();  // a sanitizer starts one of its own beside the first
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  const std::int64_t before = countThreads();
  for (const bool second : {false, true}) {
    ASSERT_TRUE(manager->sortAndSize1(second));
    const SorterOwner sorter = numbers();
    ASSERT_EQ(0, addNumbers(*sorter, 10000));
    EXPECT_EQ(before + int{second}, countThreads());
    ASSERT_EQ(0, sorter->sort());
    expectNumbers(*sorter, 10000);
  }
  EXPECT_TRUE(threadsAreSoon(before));
}

TEST_F(Sorter, DoesWhatItsOptionsSay) {
  constexpr std::int64_t count = 6000;
  ASSERT_TRUE(manager->sortAndSize0(64 * kilobyte));
  const SorterOwner inMemory = numbers(allOptions & ~zvDatafileWorkFiles);
  runIntoFailure(*inMemory, count);
  expectSticky(*inMemory, datafileMessage::memoryUsedUp);
  EXPECT_EQ(0, progress.empty() ? 0 : progress.back().spilledBytes);

  const SorterOwner distinct = numbers(allOptions & ~zvDatafileKeepEqual);
  ASSERT_EQ(0, addNumbers(*distinct, count));
  ASSERT_EQ(0, distinct->sort());
  expectNumbers(*distinct, 1009);  // of ids that could all be the first of their number
  bool failed = false;
  for (std::int32_t status = distinct->firstRecord(0); status == 0;
       status = distinct->nextRecord(0)) {
    EXPECT_GT(1009, distinct->value(1)->asInt64(&failed));
  }

  const SorterOwner untyped = numbers(allOptions & ~zvDatafileTypedColumns);
  ASSERT_EQ(0, addNumbers(*untyped, count));
  ASSERT_EQ(0, untyped->sort());
  std::vector<std::string> texts;
  for (std::int32_t status = untyped->firstRecord(0); status == 0;
       status = untyped->nextRecord(0)) {
    texts.emplace_back(untyped->value(0)->asString().asCstr());
  }
  EXPECT_EQ(static_cast<std::size_t>(count), texts.size());
  EXPECT_TRUE(std::is_sorted(texts.begin(), texts.end()));
}

/// Wherever the second thread has just got to with what comes next.
TEST_F(Sorter, BeginsItsDeliveryAnewAtAnyPlace) {
  constexpr std::int64_t count = 10000;
  ASSERT_TRUE(manager->sortAndSize0(256 * kilobyte));
  for (const bool secondThread : {true, false}) {
    ASSERT_TRUE(manager->sortAndSize1(secondThread));
    const SorterOwner sorter = numbers();
    ASSERT_EQ(0, addNumbers(*sorter, count));
    ASSERT_EQ(0, sorter->sort());
    for (std::int64_t records = 0; records < 1500; records += 7) {
      const Delivery delivery = deliverNumbers(*sorter, records);
      ASSERT_EQ(zvDatafileSuccess, delivery.status) << sorter->getErrorMessage().asCstr();
      ASSERT_TRUE(delivery.right) << records;
    }
    expectNumbers(*sorter, count);
  }
}

TEST_F(Sorter, IsIndependentOfItsManagerAndOfOthers) {
  ASSERT_TRUE(manager->sortAndSize0(64 * kilobyte));
  SorterOwner first = numbers();
  ASSERT_TRUE(manager->sortAndSize5(1000));
  const SorterOwner limited = numbers();
  SorterOwner texts = makeSorter(*manager, {zvbTypeString}, {{.column = 0}});
  manager.reset();
  for (std::int64_t id = 0; id < 3000; ++id) {
    ASSERT_EQ(0, addNumbers(*first, 1, id));
  }
  runIntoFailure(*limited, 3000);
  expectSticky(*limited, datafileMessage::workLimitPassed);
  EXPECT_TRUE(first->getErrorMessage().isEmpty());
  texts.reset();
  ASSERT_EQ(0, first->sort()) << first->getErrorMessage().asCstr();
  expectNumbers(*first, 3000);
}

// ---- Work files

TEST_F(Sorter, KeepsItsWorkFilesOutOfSight) {
  for (const bool spills : {false, true}) {
    ASSERT_TRUE(manager->sortAndSize0(spills ? 64 * kilobyte : 0));
    const SorterOwner sorter = numbers();
    ASSERT_EQ(0, addNumbers(*sorter, 10000));
    ASSERT_EQ(0, sorter->sort());
    for (const std::string& name : directory.names()) {
      EXPECT_EQ(openStatus(directory.file(name), npFioRead), npFioInUse);
    }
    EXPECT_NE(spills, unseenFiles(directory.path()).empty());
    expectNumbers(*sorter, 10000);
  }
  EXPECT_TRUE(unseenFiles(directory.path()).empty());
}

TEST_F(Sorter, SpreadsItsWorkFilesOverTheDirectoriesThatExist) {
  const TemporaryDirectory other;
  for (const bool spread : {true, false}) {
    manager = makeManager(directory.file("missing") + np_dir_listsep + directory.path() +
                          np_dir_listsep + other.path());
    ASSERT_TRUE(manager->sortAndSize0(64 * kilobyte) && manager->sortAndSize3(spread));
    const SorterOwner sorter = numbers();
    ASSERT_EQ(0, addNumbers(*sorter, 10000)) << sorter->getErrorMessage().asCstr();
    ASSERT_EQ(0, sorter->sort());
    EXPECT_FALSE(unseenFiles(directory.path()).empty());
    EXPECT_EQ(spread, !unseenFiles(other.path()).empty());
    expectNumbers(*sorter, 10000);
  }
}

TEST_F(Sorter, TellsWhenItsWorkFilesCannotBeWritten) {
  for (const bool secondThread : {true, false}) {
    ASSERT_TRUE(manager->sortAndSize0(64 * kilobyte) && manager->sortAndSize1(secondThread));
    {
      const SorterOwner sorter = numbers();
      const SizeLimit fullDisk(10000);
      runIntoFailure(*sorter, 10000);
      expectSticky(*sorter, datafileMessage::workWriteFailed);
      EXPECT_NE(nullptr, std::strstr(sorter->getErrorMessage().asCstr(), "disk full"));
    }
    const SorterOwner limited = numbers();
    ASSERT_EQ(0, limited->setSortOptionB(100'000));
    runIntoFailure(*limited, 10000);
    expectSticky(*limited, datafileMessage::workLimitPassed);

    const ManagerOwner lost =
        makeManager(directory.file("a") + np_dir_listsep + directory.file("b"));
    ASSERT_TRUE(lost->sortAndSize0(64 * kilobyte) && lost->sortAndSize1(secondThread));
    const SorterOwner sorter = makeSorter(*lost, numberTypes, {{.column = 0}});
    runIntoFailure(*sorter, 10000);
    expectSticky(*sorter, datafileMessage::noDirectoryTakes);
  }
  EXPECT_TRUE(unseenFiles(directory.path()).empty());
}

struct Damage {
  std::int64_t first;  // of the bytes damaged, which are 16 of every `step`
  std::int64_t step;
  char byte;
};

void damage(const ProcessFile& file, const Damage& damage) {
  const std::int64_t size = sizeOf(file);
  for (std::int64_t offset = damage.first; offset + 16 < size; offset += damage.step) {
    ASSERT_TRUE(overwrite(file, offset, std::string(16, damage.byte)));
  }
}

/// In the midst of records, in the heads of blocks, which begin at pages, and of their first
/// records.
TEST_F(Sorter, NeverTakesADamagedBlockForRecords) {
  constexpr std::int64_t count = 10000;
  constexpr Damage damages[] = {{10000, 20000, '\xF5'}, {0, 4096, '\xF5'},  {0, 4096, '\0'},
                                {0, 4096, '\1'},        {16, 4096, '\xFF'}, {18, 4096, '\0'},
                                {32, 4096, '\x7F'}};
  ASSERT_TRUE(manager->sortAndSize0(256 * kilobyte) && manager->sortAndSize1(false));
  for (const Damage& each : damages) {
    for (const bool checksums : {true, false}) {
      ASSERT_TRUE(manager->sortAndSize7(checksums));
      const SorterOwner sorter = numbers();
      ASSERT_EQ(0, addNumbers(*sorter, count));
      ASSERT_EQ(0, sorter->sort());
      const std::vector<ProcessFile> files = unseenFiles(directory.path());
      ASSERT_FALSE(files.empty());
      for (const ProcessFile& file : files) {
        damage(file, each);
      }
      const Delivery delivery = deliverNumbers(*sorter, 2 * count);
      if (checksums) {
        EXPECT_TRUE(delivery.right);
        EXPECT_GT(count, delivery.records);
        expectSticky(*sorter, datafileMessage::workFileDamaged);
      } else {
        EXPECT_NE(zvDatafileSuccess, delivery.status);
      }
    }
  }
}

// ---- Memory

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST_F(Sorter, TakesLittleMoreMemoryThanItMay) {
  for (const bool secondThread : {true, false}) {
    ASSERT_TRUE(manager->sortAndSize0(megabyte) && manager->sortAndSize1(secondThread));
    forgetPeakMemory();
    const std::int64_t before = peakMemory();
    (void)sortNumbers(200'000);
    EXPECT_GT(before + (1 + 8) * kilobyte, peakMemory());
  }
}
#endif

// ---- Progress

/// Adds, sorts and delivers, and waits before each of them until the next report is due.
Delivery runSlowly(ZvDatafileSorter& sorter, std::int64_t count) {
  const auto wait = [] { std::this_thread::sleep_for(std::chrono::milliseconds(50)); };
  Delivery delivery;
  delivery.status = addNumbers(sorter, count / 2);
  wait();
  if (delivery.status == 0) {
    delivery.status = addNumbers(sorter, count / 2, count / 2);
    wait();
  }
  if (delivery.status == 0) {
    delivery.status = sorter.sort();
    wait();
  }
  return delivery.status == 0 ? deliverNumbers(sorter, count + 1) : delivery;
}

TEST_F(Sorter, ReportsCountsThatRise) {
  ASSERT_TRUE(manager->sortAndSize0(64 * kilobyte) && manager->sortAndSize4(2));
  const SorterOwner sorter = numbers();
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(zvDatafileNoMoreRecords, runSlowly(*sorter, 20000).status);
  const auto taken = std::chrono::steady_clock::now() - start;
  std::vector<bool> phases(3);
  ZvDatafileSortProgress last{};
  for (const ZvDatafileSortProgress& now : progress) {
    phases[static_cast<std::size_t>(now.phase)] = true;
    EXPECT_TRUE(last.phase <= now.phase && last.recordsAdded <= now.recordsAdded &&
                last.recordsDelivered <= now.recordsDelivered &&
                last.spilledBytes <= now.spilledBytes && last.blocksSpilled <= now.blocksSpilled &&
                last.runsSpilled <= now.runsSpilled && last.runsMerged <= now.runsMerged);
    last = now;
  }
  EXPECT_EQ(std::vector<bool>(3, true), phases);
  EXPECT_EQ(20000, last.recordsAdded);
  EXPECT_EQ(20000, last.recordsDelivered);
  // fifty times a second at most, and where sorting begins and delivering ends
  EXPECT_GE(taken / std::chrono::milliseconds(20) + 3, static_cast<std::int64_t>(progress.size()));
}

TEST_F(Sorter, IsCancelledInEveryPhase) {
  ASSERT_TRUE(manager->sortAndSize0(64 * kilobyte) && manager->sortAndSize4(2));
  for (const ZvDatafileSortPhase phase :
       {zvDatafileSortAdding, zvDatafileSortMerging, zvDatafileSortDelivering}) {
    cancelIn = phase;
    const SorterOwner sorter = numbers();
    const Delivery delivery = runSlowly(*sorter, 20000);
    EXPECT_NE(zvDatafileNoMoreRecords, delivery.status);
    EXPECT_TRUE(delivery.right);
    EXPECT_EQ(phase, progress.back().phase);
    EXPECT_EQ(phase == zvDatafileSortAdding, progress.back().recordsAdded < 20000);
    expectSticky(*sorter, datafileMessage::cancelled);
    EXPECT_NE(nullptr, std::strstr(sorter->getErrorMessage().asCstr(), "cancel"));
  }
  EXPECT_TRUE(unseenFiles(directory.path()).empty());
}

}  // namespace
