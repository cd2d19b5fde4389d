/// Rows written and read through the public interface, against the hand-written twin, in one run.
/// Reading adds up a checksum on both sides; where the two sides read all columns forwards, it must
/// agree.
#include <algorithm>
#include <iomanip>
#include <sstream>
#include <string>
#include <vector>

#include "Measuring.h"
#include "RowTwin.h"
#include "SampleRows.h"
#include "zvwt.h"

namespace {

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
        {"write, by hand", nullptr, [this] { writeTwin(); }},
        {"write, writeRow alone", "write, by hand", [this] { writePrepared(); }},
        {"write, with assignments", "write, by hand", [this] { writeAssigned(); }},
        {"read, by hand", nullptr, [this] { readTwin(); }},
        {"read", "read, by hand", [this] { readAll(false); }},
        {"read backwards", "read, by hand", [this] { readAll(true); }},
        {"read 2 of 7 columns", "read, by hand", [this] { readTwoColumns(); }},
    };
  }

  [[nodiscard]] double bytesPerRow() const {
    return static_cast<double>(dataBytes_) / static_cast<double>(rows_.size());
  }
  [[nodiscard]] std::string heading(int rounds) const {
    std::ostringstream text;
    text << rows_.size() << " rows of " << std::fixed << std::setprecision(1) << bytesPerRow()
         << " bytes, " << rounds << " rounds, checksum " << std::hex << twinChecksum_;
    return text.str();
  }

 private:
  static constexpr std::size_t preparedRows = 512;

  [[nodiscard]] std::string file(const char* name) const { return directory_ + "/" + name; }

  /// Row sets with their values in place, for writing without assignments.
  void prepareValues() {
    prepared_.resize(std::min(preparedRows, rows_.size()) * sampleColumnCount);
    for (std::size_t i = 0; i * sampleColumnCount < prepared_.size(); ++i) {
      assignSample(rows_[i], &prepared_[i * sampleColumnCount]);
    }
  }

  Table makeTable() {
    removeTable();
    ZvbString error;
    Table table(manager_->createTable(sampleColumnCount, 0, &error));
    if (table == nullptr) {
      stop("no table", error);
    }
    require(defineSampleColumns(*table), "column", *table);
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
      assignSample(row, values);
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
    while (table->readRow(values, &end)) {
      addSample(values, &checksum);
    }
    require(end, "read", *table);
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

}  // namespace

int main(int argc, char** argv) {
  const BenchmarkOptions defaults{.rowCount = 2'000'000, .parentDirectory = {}};
  return runBenchmark(argc, argv, "Rows written and read, against a hand-written twin.", defaults,
                      [](const BenchmarkOptions& options, const std::string& directory) {
                        RowBenchmark benchmark(options.rowCount, directory);
                        std::vector<Work> works = benchmark.works();
                        measure(options.rounds, &works);
                        print(works, benchmark.heading(options.rounds), benchmark.bytesPerRow(),
                              options);
                      });
}
