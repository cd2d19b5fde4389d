/// Processes that work in the same directory, on the same table or on their own.

#include <chrono>
#include <cstring>
#include <thread>

#include "support/ChildProcess.h"
#include "support/TableFixture.h"
#include "support/TestEffort.h"
#include "wtfile/ZVWTFileImpl.h"

namespace {

constexpr std::int64_t blockRows = 100;

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

  bool isToldInUse() const {
    return messageId(error) == 1353 &&
           std::strstr(error.asCstr(), "in use by another writer") != nullptr;
  }

  /// Appends the source `times` times; each time another process has the table, it tries again.
  std::function<void(const Teller&)> appending(const std::string& target, const std::string& source,
                                               int times) {
    return [=, this](const Teller& teller) {
      std::int64_t refusals = 0;
      for (int i = 0; i < times; i += error.isEmpty() ? 1 : 0) {
        if (!appendOnce(target, source)) {
          if (!isToldInUse()) {
            teller.fail(error.asCstr());
          }
          ++refusals;
          std::this_thread::sleep_for(std::chrono::microseconds(100));
        }
      }
      teller.tell(0, "", refusals);
    };
  }
};

TEST_F(TwoProcesses, AppendToOneTableOneAfterTheOther) {
  constexpr int processes = 2;
  const int times = 60 * testEffort();
  const std::string target = makeTable({{"number", zvbTypeInteger}}, {}, 3000);
  const std::string sources[processes] = {makeBlock(0), makeBlock(1000)};
  std::int64_t refusals = 0;
  {
    ChildProcess first(appending(target, sources[0], times));
    ChildProcess second(appending(target, sources[1], times));
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
  ChildProcess child([&](const Teller& teller) {
    TempDirectories directories;
    ZVWTFileImpl table(directories, nullptr);
    if (!directories.split(directory.path().c_str(), np_dir_listsep) ||
        !table.open(target.c_str(), false, nullptr, false)) {
      teller.fail(table.getErrorMessage().asCstr());
    }
    teller.tell(0);
    for (;;) {
      pause();
    }
  });
  ASSERT_EQ(child.next().value_or(Note{.stage = Teller::failed}).stage, 0);
  EXPECT_FALSE(appendOnce(target, source));
  EXPECT_TRUE(isToldInUse()) << error.asCstr();
  EXPECT_EQ(readTable(target).size(), static_cast<std::size_t>(blockRows));
  (void)child.end();
  EXPECT_TRUE(appendOnce(target, source)) << error.asCstr();
  EXPECT_EQ(readTable(target).size(), static_cast<std::size_t>(2 * blockRows));
}

/// While the files of both are cleaned all the time.
TEST_F(TwoProcesses, CreateAndDeleteInOneDirectory) {
  const int times = 150 * testEffort();
  const auto working = [&](const Teller& teller) {
    for (int i = 0; i < times; ++i) {
      const std::string name = makeCountingTable(10, 20);  // 3 rows to an element
      const std::vector<std::string> rows = readTable(name);
      if (rows.size() != 10 || rows.back() != "9") {
        teller.fail(rows.back().c_str());
      }
      if (i % 10 == 0) {
        teller.tell(0, name.c_str());
      } else if (!manager->deleteTable(name.c_str(), &error)) {
        teller.fail(error.asCstr());
      }
    }
  };
  std::vector<std::string> tables;
  {
    ChildProcess first(working);
    ChildProcess second(working);
    for (bool runs = true; runs;) {
      EXPECT_TRUE(zvwtCleanDirectories(manager.get(), 0, true, nullptr, nullptr, &error))
          << error.asCstr();
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
