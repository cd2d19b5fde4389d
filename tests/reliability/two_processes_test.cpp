/// Processes that work in the same directory, on the same table or on their own.

#include <chrono>
#include <cstring>
#include <thread>

#include "support/ChildProcess.h"
#include "support/SlowRun.h"
#include "support/TableFixture.h"
#include "support/TestEffort.h"
#include "wtfile/ZVWTFileImpl.h"

namespace {

constexpr std::int64_t blockRows = 100;

bool isToldInUse(const ZvbString& error) {
  return std::atoi(error.asCstr()) == 1353 &&
         std::strstr(error.asCstr(), "in use by another writer") != nullptr;
}

ManagerHandle managerOf(const std::string& directory) {
  ZvbString error;
  return ManagerHandle(zvwtCreateManager("child", directory.c_str(), &error));
}

/// Appends the source `times` times; each time another process has the table, it tries again.
const ChildPart appending("append", [](const Teller& teller, const Words& words) {
  const std::string& directory = words[0];
  const std::string& target = words[1];
  const std::string& source = words[2];
  const int times = std::stoi(words[3]);
  const ManagerHandle manager = managerOf(directory);
  ZvbString error;
  std::int64_t refusals = 0;
  for (int i = 0; i < times;) {
    error.setNull();
    if (manager->appendTable(target.c_str(), source.c_str(), &error)) {
      ++i;
      continue;
    }
    if (!isToldInUse(error)) {
      teller.fail(error.asCstr());
    }
    ++refusals;
    std::this_thread::sleep_for(std::chrono::microseconds(100));
  }
  teller.tell(0, "", refusals);
});

/// Keeps a table open for appending until it is killed.
const ChildPart keeping("keep", [](const Teller& teller, const Words& words) {
  TempDirectories directories;
  ZVWTFileImpl table(directories, nullptr);
  if (!directories.split(words[0].c_str(), np_dir_listsep) ||
      !table.open(words[1].c_str(), false, nullptr, false)) {
    teller.fail(table.getErrorMessage().asCstr());
  }
  teller.tell(0);
  std::this_thread::sleep_for(std::chrono::hours(1));
});

/// Makes tables of the rows 0 to 9, reads them and deletes all but each tenth.
const ChildPart working("create and delete", [](const Teller& teller, const Words& words) {
  const ManagerHandle manager = managerOf(words[0]);
  const int times = std::stoi(words[1]);
  ZvbString error;
  for (int i = 0; i < times; ++i) {
    constexpr std::int64_t maxElementSize = 20;  // 3 rows to an element
    const TableHandle made(manager->createTable(1, maxElementSize, &error));
    ZvbDatavar value;
    bool good = made != nullptr && made->defineColumn(0, "number", zvbTypeInteger, 0);
    for (std::int64_t number = 0; good && number < 10; ++number) {
      value.assign(number);
      good = made->writeRow(&value);
    }
    if (!good || !made->close()) {
      teller.fail("a table cannot be made");
    }
    const ZvbString name = made->getName();
    const TableHandle table(manager->openTable(name, false, &error));
    const std::vector<std::string> rows =
        table != nullptr ? restOfRows(*table) : std::vector<std::string>{error.asCstr()};
    if (rows.size() != 10 || rows.back() != "9") {
      teller.fail(rows.back().c_str());
    }
    if (i % 10 == 0) {
      teller.tell(0, name.asCstr());
    } else if (!manager->deleteTable(name, &error)) {
      teller.fail(error.asCstr());
    }
  }
});

class TwoProcesses : public TableTest {
 protected:
  /// A table of the rows `first`, `first` + 1, ...
  std::string makeBlock(std::int64_t first) {
    std::vector<Row> rows;
    for (std::int64_t i = 0; i < blockRows; ++i) {
      rows.push_back(row({first + i}));
    }
    return makeTable({{"number", zvbTypeInteger}}, rows);
  }

  bool appendOnce(const std::string& target, const std::string& source) {
    error.setNull();
    return manager->appendTable(target.c_str(), source.c_str(), &error);
  }
};

TEST_F(TwoProcesses, AppendToOneTableOneAfterTheOther) {
  constexpr int processes = 2;
  const int times = 60 * testEffort();
  const std::string target = makeTable({{"number", zvbTypeInteger}}, {}, 3000);
  const std::string sources[processes] = {makeBlock(0), makeBlock(1000)};
  std::int64_t refusals = 0;
  {
    const std::string count = std::to_string(times);
    ChildProcess first("append", {directory.path(), target, sources[0], count});
    ChildProcess second("append", {directory.path(), target, sources[1], count});
    for (ChildProcess* child : {&first, &second}) {
      while (const std::optional<Note> note = child->next()) {
        EXPECT_EQ(note->stage, 0) << note->text;
        refusals += note->number;
      }
      EXPECT_TRUE(child->join());
    }
  }
  std::printf("told in use: %lld times\n", static_cast<long long>(refusals));

  const std::vector<std::string> rows = readTable(target);
  ASSERT_EQ(rows.size(), static_cast<std::size_t>(processes * times * blockRows)) << rows.back();
  int blocks[processes] = {};
  for (std::size_t i = 0; i < rows.size(); i += blockRows) {
    const int first = std::atoi(rows[i].c_str());
    ASSERT_TRUE(first == 0 || first == 1000) << first;
    ++blocks[first / 1000];
    for (std::size_t j = 0; j < blockRows; ++j) {
      ASSERT_EQ(rows[i + j], std::to_string(first + static_cast<int>(j)));
    }
  }
  EXPECT_EQ(blocks[0], times);
  EXPECT_EQ(blocks[1], times);
}

TEST_F(TwoProcesses, AreToldOfEachOther) {
  const std::string target = makeBlock(0);
  const std::string source = makeBlock(1000);
  ChildProcess child("keep", {directory.path(), target});
  ASSERT_EQ(child.next().value_or(Note{.stage = Teller::failed}).stage, 0);
  EXPECT_FALSE(appendOnce(target, source));
  EXPECT_TRUE(isToldInUse(error)) << error.asCstr();
  EXPECT_EQ(readTable(target).size(), static_cast<std::size_t>(blockRows));
  child.end();
  EXPECT_TRUE(appendOnce(target, source)) << error.asCstr();
  EXPECT_EQ(readTable(target).size(), static_cast<std::size_t>(2 * blockRows));
}

/// While the files of both are cleaned all the time.
TEST_F(TwoProcesses, CreateAndDeleteInOneDirectory) {
  const int times = (isEmulated ? 30 : 150) * testEffort();
  const Words words = {directory.path(), std::to_string(times)};
  std::vector<std::string> tables;
  {
    ChildProcess first("create and delete", words);
    ChildProcess second("create and delete", words);
    for (bool runs = true; runs;) {
      EXPECT_TRUE(zvwtCleanDirectories(manager.get(), 0, true, nullptr, nullptr, &error))
          << error.asCstr();
      std::this_thread::sleep_for(std::chrono::milliseconds(isEmulated ? 50 : 0));
      runs = false;
      for (ChildProcess* child : {&first, &second}) {
        runs = child->isRunning() || runs;
        while (const std::optional<Note> note = child->next(std::chrono::milliseconds(0))) {
          ASSERT_EQ(note->stage, 0) << note->text;
          tables.emplace_back(note->text);
        }
      }
    }
    EXPECT_TRUE(first.join() && second.join());
  }
  EXPECT_EQ(tables.size(), static_cast<std::size_t>(2 * times / 10));
  for (const std::string& table : tables) {
    EXPECT_EQ(readTable(table).size(), 10U);
    EXPECT_TRUE(manager->deleteTable(table.c_str(), &error)) << error.asCstr();
  }
  EXPECT_EQ(directory.names(), std::vector<std::string>());
}

}  // namespace
