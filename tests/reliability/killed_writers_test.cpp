/// Processes that are killed at any moment while they create, append to, copy and sort tables: what
/// they closed is whole, what they did not close is refused, what was there before them is there
/// still, and cleaning takes their leftovers and nothing else.

#include <algorithm>
#include <chrono>
#include <cstring>
#include <iostream>
#include <random>
#include <thread>

#include "support/Bytes.h"
#include "support/ChildProcess.h"
#include "support/SlowRun.h"
#include "support/TableFixture.h"
#include "support/TestEffort.h"
#include "wtfile/ZVWTFileImpl.h"

namespace {

constexpr int killCount = isSlowRun ? 150 : 1000;

/// What tables look like. Catalogues of one kind take more than a page, of another one more than a
/// buffer of the file layer, so that they are not written at once.
struct Shape {
  int columns;
  std::size_t nameSize;
  std::size_t textSize;
  std::int64_t rows;
  std::int64_t maxElementSize;
};
constexpr Shape shapes[] = {{2, 1, 10, 200, 0},
                            {2, 1, 10, 70, 1},  // an element for each row
                            {400, 180, 1, 3, 0},
                            {2, 1, 100, 1200, 50'000}};  // more than the memory for a sort

/// How often each is worked on: many files take long.
constexpr std::size_t shapeNumbers[] = {0, 0, 0, 1, 2, 2, 2, 3};

enum class Work { create, append, copy, sort };
constexpr Work works[] = {Work::create, Work::append, Work::copy, Work::sort};
constexpr const char* workNames[] = {"create", "append", "copy", "sort"};

/// In the order in which a child comes to them.
enum Stage { starting, writing, closing, closed, stageCount };
constexpr const char* stageNames[] = {"starting", "writing", "closing", "closed"};

std::string textOf(std::int64_t row, const Shape& shape) {
  std::string text = std::to_string(row);
  text.resize(std::max(text.size(), shape.textSize), 'x');
  return text;
}

bool isInUse(const ZvbString& message) {
  return std::strstr(message.asCstr(), np_fio_errdesc(npFioInUse)) != nullptr;
}

/// What a child does.
class TableWork {
 public:
  TableWork(ZvWorkTableManager& manager, const TempDirectories& directories, const Shape& shape,
            const Teller& teller)
      : manager_(manager), directories_(directories), shape_(shape), teller_(teller) {}

  /// Ends with a table that has the rows 0, 1, 2, ..., or, of an append, has them once more.
  void run(Work work, const std::string& source, const std::string& target) {
    teller_.tell(starting);
    if (work == Work::append) {
      append(source, target);
    } else if (work == Work::copy) {
      finish(TableHandle(
          manager_.copyTable(shape_.maxElementSize, &manager_, source.c_str(), &error_)));
    } else {
      finish(fill(work == Work::sort));
    }
  }

 private:
  TableHandle fill(bool sorts) {
    TableHandle table(
        manager_.createTable(shape_.columns, sorts ? 1 : 0, shape_.maxElementSize, &error_));
    bool good = table != nullptr;
    for (int i = 0; good && i < shape_.columns; ++i) {
      const std::string name = std::to_string(i) + std::string(shape_.nameSize, 'n');
      good = table->defineColumn(i, name.c_str(), i == 0 ? zvbTypeInteger : zvbTypeString, 0);
    }
    if (good) {
      table->setSortColumn(0, 0, false, 0);  // does nothing without sort keys
      table->setSortOptionA(std::uint64_t{64} * 1024);
      teller_.tell(writing, table->getName().asCstr());
    }
    std::vector<ZvbDatavar> values(static_cast<std::size_t>(shape_.columns));
    for (std::int64_t i = 0; good && i < shape_.rows; ++i) {
      const std::int64_t row = sorts ? shape_.rows - 1 - i : i;
      values[0].assign(row);
      values[1].assign(textOf(row, shape_).c_str());
      good = table->writeRow(values.data());
    }
    return good ? std::move(table) : nullptr;
  }

  void append(const std::string& source, const std::string& target) {
    ZVWTFileImpl table(directories_, nullptr);
    while (!table.open(target.c_str(), false, nullptr, false)) {
      if (!isInUse(table.getErrorMessage())) {  // by a cleaning, for a moment
        teller_.fail(table.getErrorMessage().asCstr());
      }
    }
    teller_.tell(writing, target.c_str());
    if (!table.appendFrom(source.c_str())) {
      teller_.fail(table.getErrorMessage().asCstr());
    }
    close(table);
  }

  void finish(const TableHandle& table) {
    if (table == nullptr) {
      teller_.fail(error_.asCstr());
    }
    close(*table);
  }

  void close(ZvWorkTableFile& table) {
    const ZvbString name = table.getName();
    teller_.tell(closing, name.asCstr());
    if (!table.close()) {
      teller_.fail(table.getErrorMessage().asCstr());
    }
    teller_.tell(closed, name.asCstr());
  }

  ZvWorkTableManager& manager_;
  const TempDirectories& directories_;
  const Shape& shape_;
  const Teller& teller_;
  ZvbString error_;
};

/// Does what the words behind the directory, the shape's number and two tables' names say.
const ChildPart working("work", [](const Teller& teller, const Words& words) {
  ZvbString error;
  const ManagerHandle manager(zvwtCreateManager("child", words[0].c_str(), &error));
  TempDirectories directories;
  if (manager == nullptr || !directories.split(words[0].c_str(), np_dir_listsep)) {
    teller.fail("no directory");
  }
  TableWork work(*manager, directories, shapes[std::stoul(words[1])], teller);
  for (auto name = words.begin() + 4; name != words.end(); ++name) {
    const auto found = std::find(std::begin(workNames), std::end(workNames), *name);
    work.run(works[found - std::begin(workNames)], words[2], words[3]);
  }
});

/// The tables of one shape that children work on.
struct Bench {
  std::string source;  // is copied and appended from
  std::string target;  // is appended to
  std::int64_t targetRows = 0;
};

/// How long children are left alone behind a stage that they have told, in seconds; adapted so that
/// about half of them come to the next one.
struct Times {
  double behind[stageCount] = {0.0005, 0.0005, 0.0002, 0};
};

/// How many children of each kind were killed in each stage.
struct Kills {
  int counts[std::size(works)][stageCount] = {};

  /// Copies do not tell when they write.
  [[nodiscard]] bool areEverywhere() const {
    for (const Work work : works) {
      for (const Stage stage : {starting, writing, closing, closed}) {
        if (counts[static_cast<int>(work)][stage] == 0 &&
            !(work == Work::copy && stage == writing)) {
          return false;
        }
      }
    }
    return true;
  }

  void print() const {
    for (const Work work : works) {
      std::cout << workNames[static_cast<int>(work)] << ':';
      for (const Stage stage : {starting, writing, closing, closed}) {
        std::cout << ' ' << stageNames[stage] << ' ' << counts[static_cast<int>(work)][stage];
      }
      std::cout << '\n';
    }
  }
};

class KilledWriters : public TableTest {
 protected:
  KilledWriters() : seed_(std::random_device()()), random_(seed_) {
    EXPECT_TRUE(directories_.split(directory.path().c_str(), np_dir_listsep));
    (void)directory.write("foreign", "mine");
  }

  std::size_t below(std::size_t end) {
    return std::uniform_int_distribution<std::size_t>(0, end - 1)(random_);
  }

  [[nodiscard]] ChildProcess start(std::vector<Work> todo, const Shape& shape,
                                   const Bench& bench) const {
    Words words = {directory.path(), std::to_string(&shape - shapes), bench.source, bench.target};
    for (const Work work : todo) {
      words.emplace_back(workNames[static_cast<int>(work)]);
    }
    return ChildProcess("work", words);
  }

  /// Makes a table in a process that nobody kills.
  std::string make(const Shape& shape) {
    ChildProcess child = start({Work::create}, shape, {});
    std::string name;
    while (const std::optional<Note> note = child.next()) {
      name = note->text;
    }
    EXPECT_TRUE(child.join()) << name;
    return name;
  }

  /// The rows of a table that has the rows of its shape, again and again; -1 when it is refused, -2
  /// when it is wrong, and the reason in reason_.
  std::int64_t countRows(const std::string& name, const Shape& shape) {
    const TableHandle table = open(name);
    if (table == nullptr) {
      reason_ = error.asCstr();
      return -1;
    }
    std::vector<ZvbDatavar> values(static_cast<std::size_t>(shape.columns));
    bool end = false;
    std::int64_t rows = 0;
    for (; table->readRow(values.data(), &end); ++rows) {
      const std::int64_t row = rows % shape.rows;
      if (shown(values[0]) != std::to_string(row) || shown(values[1]) != textOf(row, shape)) {
        reason_ = "row " + std::to_string(rows) + " is " + shown(values[0]);
        return -2;
      }
    }
    reason_ = table->getErrorMessage().asCstr();
    return end && rows == table->getRowCount() ? rows : -2;
  }

  void expectRows(const std::string& name, const Shape& shape, std::int64_t rows) {
    EXPECT_EQ(countRows(name, shape), rows) << reason_;
  }

  /// Tables take more rows, whatever was killed before, and are sound then.
  void appendTo(const std::string& name, const Shape& shape, const Bench& bench) {
    const std::int64_t rows = countRows(name, shape);
    EXPECT_TRUE(manager->appendTable(name.c_str(), bench.source.c_str(), &error)) << error.asCstr();
    expectRows(name, shape, rows + shape.rows);
    std::int64_t findings = 0;
    EXPECT_TRUE(zvwtCheckTable(manager.get(), name.c_str(), nullptr, nullptr, &findings, &error));
    EXPECT_EQ(findings, 0);
  }

  void cleanAll() {
    const auto take = [](const ZvwtOrphan* orphan, void*) {
      EXPECT_EQ(orphan->problem, nullptr) << orphan->path << ": " << orphan->problem;
      return true;
    };
    EXPECT_TRUE(zvwtCleanDirectories(manager.get(), 0, true, take, nullptr, &error))
        << error.asCstr();
  }

  /// Nothing is there but the files of these tables, and what is no table's.
  void expectFilesOf(const std::vector<std::string>& tables) const {
    std::vector<std::string> files = tables;
    files.emplace_back("foreign");
    for (const std::string& table : tables) {
      const Bytes catalogue(directory.file(table));
      for (const std::string prefix : {"zvwte_", "zvwtei_"}) {
        for (std::size_t at = catalogue.content().find(prefix); at != std::string::npos;
             at = catalogue.content().find(prefix, at + 1)) {
          files.push_back(catalogue.content().substr(at, prefix.size() + 16));
        }
      }
    }
    std::sort(files.begin(), files.end());
    EXPECT_EQ(directory.names(), files);
  }

  void renew(const Shape& shape, Bench* bench) {
    if (bench->source.empty()) {
      bench->source = make(shape);
    }
    if (bench->targetRows > 3 * shape.rows) {
      EXPECT_TRUE(manager->deleteTable(bench->target.c_str(), &error)) << error.asCstr();
      bench->targetRows = 0;
    }
    if (bench->targetRows == 0) {
      bench->target = make(shape);
      bench->targetRows = shape.rows;
    }
  }

  /// Kills a child at a random moment behind one of its stages; the last note.
  Note killSomewhere(Work work, const Shape& shape, const Bench& bench, Times* times) {
    // Sorts seldom come to their end before they are killed: some are left alone until they have.
    const Stage stage = below(10) == 0 ? closed : static_cast<Stage>(below(closed));
    double* const time = &times->behind[stage];
    const std::chrono::duration<double> delay(
        std::uniform_real_distribution<double>(0, *time)(random_));
    constexpr std::chrono::duration<double> sleepsLonger(0.001);  // than it is told to
    ChildProcess child = start({work}, shape, bench);
    Note last;
    do {
      last = child.next().value_or(Note{.stage = closed});
    } while (last.stage >= 0 && last.stage < stage);
    const auto moment = std::chrono::steady_clock::now() + delay;
    std::this_thread::sleep_for(delay - sleepsLonger);
    while (std::chrono::steady_clock::now() < moment) {
    }
    child.end();
    while (const std::optional<Note> note = child.next()) {
      last = *note;
    }
    *time *= last.stage > stage ? 0.95 : 1.05;
    return last;
  }

  /// Of what a killed append has left.
  void judgeAppend(const Note& last, const Shape& shape, Bench* bench) {
    const std::int64_t before = bench->targetRows;
    const std::int64_t after = before + shape.rows;
    const std::int64_t rows = countRows(bench->target, shape);
    const bool isAppended = last.stage == closed || (last.stage == closing && rows == after);
    EXPECT_EQ(rows, isAppended ? after : before) << reason_;
    bench->targetRows = rows;
    // What its catalogue may have behind the last record names files that are to go.
    if (below(3) == 0 || (last.stage == closing && !isAppended)) {
      appendTo(bench->target, shape, *bench);
      bench->targetRows += shape.rows;
    }
  }

  /// Of what a killed creation has left; true when it is a table.
  bool judgeCreation(const Note& last, const Shape& shape, const Bench& bench) {
    if (last.text[0] == '\0') {
      return false;
    }
    const std::int64_t rows = countRows(last.text, shape);
    const bool isThere = last.stage == closed || (last.stage == closing && rows == shape.rows);
    EXPECT_EQ(rows, isThere ? shape.rows : -1) << reason_;
    if (isThere && below(3) == 0) {
      appendTo(last.text, shape, bench);
    }
    return isThere;
  }

  const unsigned seed_;
  std::mt19937_64 random_;
  TempDirectories directories_;
  std::string reason_;
};

TEST_F(KilledWriters, LoseNothingThatTheyClosedAndNothingThatWasThere) {
  Bench benches[std::size(shapes)];
  Times times[std::size(shapes)][std::size(works)];
  Kills kills;
  const int least = killCount * testEffort();
  for (int i = 0; (i < least || (i < 4 * least && !kills.areEverywhere())) && !HasFailure(); ++i) {
    const std::size_t kind = shapeNumbers[below(std::size(shapeNumbers))];
    const std::size_t work = below(std::size(works));
    const Shape& shape = shapes[kind];
    Bench& bench = benches[kind];
    SCOPED_TRACE("seed " + std::to_string(seed_) + ", kill " + std::to_string(i) + ", shape " +
                 std::to_string(kind) + ", " + workNames[work]);
    renew(shape, &bench);
    const Note last = killSomewhere(works[work], shape, bench, &times[kind][work]);
    ASSERT_GE(last.stage, 0) << last.text;
    ++kills.counts[work][last.stage];
    SCOPED_TRACE(stageNames[last.stage]);

    const bool isAppend = works[work] == Work::append;
    const bool isNewTable = !isAppend && judgeCreation(last, shape, bench);
    if (isAppend) {
      judgeAppend(last, shape, &bench);
    }
    expectRows(bench.source, shape, shape.rows);
    cleanAll();
    std::vector<std::string> tables;
    for (const Bench& each : benches) {
      if (!each.source.empty()) {
        tables.insert(tables.end(), {each.source, each.target});
      }
    }
    if (isNewTable) {
      tables.emplace_back(last.text);
    }
    expectFilesOf(tables);
    if (isNewTable) {
      EXPECT_TRUE(manager->deleteTable(last.text, &error)) << error.asCstr();
    }
  }
  kills.print();
  EXPECT_TRUE(kills.areEverywhere());
}

/// Elements of a table that is being written are closed, and nothing names them, while files that
/// older processes have left make the cleaning look at every table.
TEST_F(KilledWriters, AreToldFromLivingOnes) {
  const Shape& shape = shapes[1];
  Bench bench;
  renew(shape, &bench);
  int cleanings = 0;
  const int rounds = (isEmulated ? 2 : 10) * testEffort();
  for (int round = 0; round < rounds && !HasFailure(); ++round) {
    SCOPED_TRACE("seed " + std::to_string(seed_) + ", round " + std::to_string(round));
    std::vector<std::string> tables;
    Times times;
    const Note killed = killSomewhere(Work::create, shape, bench, &times);
    if (judgeCreation(killed, shape, bench)) {
      tables.emplace_back(killed.text);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(20));  // clocks of files are coarse
    ChildProcess child = start({std::begin(works), std::end(works)}, shape, bench);
    for (; child.isRunning(); ++cleanings) {
      cleanAll();
      std::this_thread::sleep_for(std::chrono::milliseconds(isEmulated ? 50 : 0));
    }
    while (const std::optional<Note> note = child.next()) {
      ASSERT_NE(note->stage, Teller::failed) << note->text;
      if (note->stage == closed && note->text != bench.target) {
        tables.emplace_back(note->text);
        expectRows(note->text, shape, shape.rows);
      }
    }
    EXPECT_TRUE(child.join());
    bench.targetRows += shape.rows;
    expectRows(bench.target, shape, bench.targetRows);
    std::vector<std::string> all = tables;
    all.insert(all.end(), {bench.source, bench.target});
    expectFilesOf(all);
    for (const std::string& table : tables) {
      EXPECT_TRUE(manager->deleteTable(table.c_str(), &error)) << error.asCstr();
    }
  }
  std::cout << cleanings << " cleanings\n";
}

}  // namespace
