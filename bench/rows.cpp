/// Rows written and read through the public interface, against the hand-written twin, in one run.
///
/// Each round does every kind of work once, one after another, so that a drift of the machine meets
/// all of them alike; the medians of the rounds are printed, and their ratios to the twin. Reading
/// adds up a checksum on both sides; where the two sides read all columns forwards, it must agree.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <bit>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "RowTwin.h"
#include "SampleRows.h"
#include "zvwt.h"

namespace {

struct Releaser {
  template <typename Object>
  void operator()(Object* object) const {
    object->release();
  }
};
using Manager = std::unique_ptr<ZvWorkTableManager, Releaser>;
using Table = std::unique_ptr<ZvWorkTableFile, Releaser>;

[[noreturn]] void stop(const char* what, const ZvbString& why) {
  std::fprintf(stderr, "rows: %s: %s\n", what, why.asCstr());
  std::exit(1);
}

void require(bool success, const char* what, ZvWorkTableFile& table) {
  if (!success) {
    stop(what, table.getErrorMessage());
  }
}

/// One kind of work: its figures over the rounds.
struct Work {
  const char* name;
  const char* twin;  // the work that its ratio is taken to
  std::function<void()> run;
  std::vector<double> seconds;

  [[nodiscard]] double median() const {
    std::vector<double> sorted = seconds;
    std::sort(sorted.begin(), sorted.end());
    return sorted[sorted.size() / 2];
  }
};

class RowBenchmark {
 public:
  RowBenchmark(std::size_t rowCount, const std::string& directory)
      : rows_(makeSampleRows(rowCount)), directory_(directory) {
    ZvbString error;
    manager_.reset(zvwtCreateManager("bench", directory.c_str(), &error));
    if (manager_ == nullptr) {
      stop("no manager", error);
    }
    prepareValues();
  }
  RowBenchmark(const RowBenchmark&) = delete;
  RowBenchmark& operator=(const RowBenchmark&) = delete;
  ~RowBenchmark() { removeTable(); }

  std::vector<Work> works() {
    return {
        {"write, by hand", nullptr, [this] { writeTwin(); }, {}},
        {"write, writeRow alone", "write, by hand", [this] { writePrepared(); }, {}},
        {"write, with assignments", "write, by hand", [this] { writeAssigned(); }, {}},
        {"read, by hand", nullptr, [this] { readTwin(); }, {}},
        {"read", "read, by hand", [this] { readAll(false); }, {}},
        {"read backwards", "read, by hand", [this] { readAll(true); }, {}},
        {"read 2 of 7 columns", "read, by hand", [this] { readTwoColumns(); }, {}},
    };
  }

  [[nodiscard]] double bytesPerRow() const {
    return static_cast<double>(dataBytes_) / static_cast<double>(rows_.size());
  }
  [[nodiscard]] std::uint64_t checksum() const { return twinChecksum_; }

 private:
  static constexpr std::size_t preparedRows = 512;

  [[nodiscard]] std::string file(const char* name) const { return directory_ + "/" + name; }

  /// Row sets with their values in place, for writing without assignments.
  void prepareValues() {
    prepared_.resize(std::min(preparedRows, rows_.size()) * sampleColumnCount);
    for (std::size_t i = 0; i * sampleColumnCount < prepared_.size(); ++i) {
      assign(&prepared_[i * sampleColumnCount], rows_[i]);
    }
  }

  static void assign(ZvbDatavar* values, const SampleRow& row) {
    values[0].assign(row.id);
    values[1].assign(row.amount);
    values[2].assign(zvbTypeReal, row.price, sizeof row.price, false);
    values[3].assign(row.code);
    values[4].assign(row.name);
    values[5].assign(row.day);
    values[5].setType(zvbTypeDate);
    values[6].assign(row.flag);
  }

  Table makeTable() {
    removeTable();
    ZvbString error;
    Table table(manager_->createTable(sampleColumnCount, 0, &error));
    if (table == nullptr) {
      stop("no table", error);
    }
    const zvbType types[] = {zvbTypeInteger, zvbTypeInteger, zvbTypeReal,   zvbTypeString,
                             zvbTypeString,  zvbTypeDate,    zvbTypeBoolean};
    const char* names[] = {"id", "amount", "price", "code", "name", "day", "flag"};
    for (int i = 0; i < sampleColumnCount; ++i) {
      require(table->defineColumn(i, names[i], types[i], 0), "column", *table);
    }
    name_ = table->getName();
    return table;
  }

  void removeTable() {
    ZvbString error;
    if (name_.length() != 0 && !manager_->deleteTable(name_, &error)) {
      stop("delete", error);
    }
    name_.setNull();
  }

  void writePrepared() {
    const Table table = makeTable();
    const std::size_t sets = prepared_.size() / sampleColumnCount;
    for (std::size_t i = 0; i < rows_.size(); ++i) {
      require(table->writeRow(&prepared_[i % sets * sampleColumnCount]), "write", *table);
    }
    require(table->close(), "close", *table);
  }

  void writeAssigned() {
    const Table table = makeTable();
    ZvbDatavar values[sampleColumnCount];
    for (const SampleRow& row : rows_) {
      assign(values, row);
      require(table->writeRow(values), "write", *table);
    }
    require(table->close(), "close", *table);
  }

  void writeTwin() { dataBytes_ = writeByHand(rows_, file("twin.data"), file("twin.index")); }

  void readTwin() { twinChecksum_ = readByHand(file("twin.data")); }

  Table open(int columns, const int* numbers, bool backwards) {
    ZvbString error;
    Table table(manager_->openTable(name_, columns, numbers, nullptr, backwards, &error));
    if (table == nullptr) {
      stop("open", error);
    }
    return table;
  }

  void readAll(bool backwards) {
    const Table table = open(-1, nullptr, backwards);
    ZvbDatavar values[sampleColumnCount];
    RowChecksum checksum;
    bool end = false;
    bool failed = false;
    while (table->readRow(values, &end)) {
      checksum.add(static_cast<std::uint64_t>(values[0].asInt64(&failed)));
      checksum.add(static_cast<std::uint64_t>(values[1].asInt64(&failed)));
      std::uint64_t words[3];
      values[2].asReal(&failed).asFD(&words);
      checksum.add(words[1]);
      checksum.addText(values[3].asTextView().data(), values[3].asTextView().size());
      checksum.addText(values[4].asTextView().data(), values[4].asTextView().size());
      checksum.add(std::bit_cast<std::uint64_t>(values[5].asDouble(&failed)));
      checksum.add(values[6].asBool(&failed) ? 1 : 0);
    }
    require(end && !failed, "read", *table);
    if (!backwards && checksum.value() != twinChecksum_) {
      stop("the rows read are not those written", ZvbString());
    }
  }

  void readTwoColumns() {
    ZvbString error;
    const int numbers[] = {0, 1};
    Table table(manager_->openTable(name_, 2, numbers, nullptr, false, &error));
    if (table == nullptr) {
      stop("open", error);
    }
    ZvbDatavar values[2];
    bool end = false;
    while (table->readRow(values, &end)) {
    }
    require(end, "read", *table);
  }

  std::vector<SampleRow> rows_;
  std::string directory_;
  Manager manager_;
  std::vector<ZvbDatavar> prepared_;
  ZvbString name_;
  std::int64_t dataBytes_ = 0;
  std::uint64_t twinChecksum_ = 0;
};

double ratioToTwin(const Work& work, const std::vector<Work>& works) {
  for (const Work& other : works) {
    if (work.twin != nullptr && std::string(work.twin) == other.name) {
      return other.median() / work.median();
    }
  }
  return 1;
}

void printTable(const std::vector<Work>& works, std::size_t rowCount) {
  std::printf("%-26s %12s %10s\n", "work", "Mrows/s", "ratio");
  for (const Work& work : works) {
    std::printf("%-26s %12.2f %10.2f\n", work.name,
                static_cast<double>(rowCount) / work.median() / 1e6, ratioToTwin(work, works));
  }
}

void printJson(const std::vector<Work>& works, std::size_t rowCount, double bytesPerRow) {
  std::printf("{\"rows\": %zu, \"bytesPerRow\": %.1f, \"work\": [", rowCount, bytesPerRow);
  for (const Work& work : works) {
    std::printf(
        "%s\n  {\"name\": \"%s\", \"seconds\": %.6f, \"rowsPerSecond\": %.0f, "
        "\"ratioToTwin\": %.3f}",
        &work == works.data() ? "" : ",", work.name, work.median(),
        static_cast<double>(rowCount) / work.median(), ratioToTwin(work, works));
  }
  std::printf("\n]}\n");
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Rows written and read, against a hand-written twin.");
  std::size_t rowCount = 2'000'000;
  int rounds = 5;
  std::string parent = std::filesystem::temp_directory_path().string();
  bool json = false;
  app.add_option("--rows", rowCount, "rows in the table")->check(CLI::PositiveNumber);
  app.add_option("--rounds", rounds, "rounds; medians are printed")->check(CLI::PositiveNumber);
  app.add_option("--dir", parent, "directory for the files");
  app.add_flag("--json", json, "print JSON");
  CLI11_PARSE(app, argc, argv);

  std::string directory = parent + "/zvwt-bench-XXXXXX";
  if (mkdtemp(directory.data()) == nullptr) {
    std::perror("rows: no directory");
    return 1;
  }
  {
    RowBenchmark benchmark(rowCount, directory);
    std::vector<Work> works = benchmark.works();
    for (int round = 0; round < rounds; ++round) {
      for (Work& work : works) {
        const auto start = std::chrono::steady_clock::now();
        work.run();
        work.seconds.push_back(
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
      }
    }
    if (json) {
      printJson(works, rowCount, benchmark.bytesPerRow());
    } else {
      std::printf("%zu rows of %.1f bytes, %d rounds, checksum %016llx\n\n", rowCount,
                  benchmark.bytesPerRow(), rounds,
                  static_cast<unsigned long long>(benchmark.checksum()));
      printTable(works, rowCount);
    }
  }
  std::filesystem::remove_all(directory);
  return 0;
}
