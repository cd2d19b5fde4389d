/// Whole tables: copied, appended, partitioned, and read by one thread and by two.
///
/// The table has ten elements. Copying and appending are measured against reading the rows and
/// writing them through the same interface; what the system takes to copy the files' bytes is there
/// to compare.
#include <filesystem>
#include <future>
#include <string>
#include <vector>

#include "Measuring.h"
#include "SampleRows.h"

namespace {

constexpr int elements = 10;

class TableBenchmark {
 public:
  TableBenchmark(std::size_t rowCount, const std::string& directory) : directory_(directory) {
    ZvbString error;
    manager_.reset(zvwtCreateManager("bench", directory.c_str(), &error));
    if (manager_ == nullptr) {
      stop("no manager", error);
    }
    const std::vector<SampleRow> rows = makeSampleRows(rowCount);
    const std::int64_t dataBytes = writeTable(rows, 0);
    deleteTable(source_);
    dataBytes_ = writeTable(rows, dataBytes / elements);
    checksum_ = readPart({});
  }

  std::vector<Work> works() {
    return {
        {.name = "read, one thread", .run = [this] { readSideBySide(1); }},
        {.name = "read, two threads",
         .comparisons = {{"read, one thread", 1.8}},
         .run = [this] { readSideBySide(2); }},
        {.name = "read and write the rows", .run = [this] { readAndWrite(); }},
        {.name = "copyTable",
         .comparisons = {{"read and write the rows", 0.9}, {"copy of the files"}},
         .run = [this] { copyTable(0); }},
        {.name = "copyTable, ten elements",
         .comparisons = {{"read and write the rows"}},
         .run = [this] { copyTable(elementSize_); }},
        {.name = "appendTable",
         .comparisons = {{"read and write the rows", 0.9}},
         .run = [this] { appendTable(); }},
        {.name = "copy of the files", .run = [this] { copyFiles(); }, .side = Side::byHand},
        {.name = "partitionTable, 40 parts", .run = [this] { (void)partition(40); }},
    };
  }

  [[nodiscard]] double bytesPerRow() const {
    return static_cast<double>(dataBytes_) / static_cast<double>(rowCount_);
  }

 private:
  using Ranges = std::vector<RowRange>;

  /// Writes the source; the bytes of its data.
  std::int64_t writeTable(const std::vector<SampleRow>& rows, std::int64_t maxElementSize) {
    ZvbString error;
    const Table table(manager_->createTable(sampleColumnCount, maxElementSize, &error));
    if (table == nullptr) {
      stop("no table", error);
    }
    require(defineSampleColumns(*table), "column", *table);
    ZvbDatavar values[sampleColumnCount];
    for (const SampleRow& row : rows) {
      assignSample(row, values);
      require(table->writeRow(values), "write", *table);
    }
    require(table->close(), "close", *table);
    source_ = table->getName();
    rowCount_ = table->getRowCount();
    elementSize_ = maxElementSize;
    ZvwtTableSizes sizes{};
    if (!zvwtGetTableSizes(manager_.get(), source_, &sizes, &error)) {
      stop("sizes", error);
    }
    return sizes.dataBytes;
  }

  void deleteTable(const ZvbString& name) {
    ZvbString error;
    if (!manager_->deleteTable(name, &error)) {
      stop("delete", error);
    }
  }

  /// Sums of rows, so that the parts of a table can be added up.
  std::uint64_t readPart(const RowRange& range) {
    ZvbString error;
    const int* noNumbers = nullptr;
    const Table table(manager_->openTable(source_, -1, noNumbers, &range, false, &error));
    if (table == nullptr) {
      stop("open", error);
    }
    ZvbDatavar values[sampleColumnCount];
    std::uint64_t sum = 0;
    bool end = false;
    while (table->readRow(values, &end)) {
      RowChecksum row;
      addSample(values, &row);
      sum += row.value();
    }
    require(end, "read", *table);
    return sum;
  }

  Ranges partition(int parts) {
    Ranges ranges(static_cast<std::size_t>(parts));
    ZvbString error;
    if (!manager_->partitionTable(source_, &parts, ranges.data(), &error)) {
      stop("partition", error);
    }
    ranges.resize(static_cast<std::size_t>(parts));
    return ranges;
  }

  void readSideBySide(int threads) {
    const Ranges ranges = partition(threads);
    std::vector<std::future<std::uint64_t>> readers;
    for (const RowRange& range : ranges) {
      readers.push_back(std::async(std::launch::async, [this, range] { return readPart(range); }));
    }
    std::uint64_t sum = 0;
    for (std::future<std::uint64_t>& reader : readers) {
      sum += reader.get();
    }
    if (sum != checksum_) {
      stop("the parts are not the table", ZvbString());
    }
  }

  void copyFiles() {
    namespace fs = std::filesystem;
    const std::string target = directory_ + "/copied";
    fs::create_directory(target);
    for (const fs::directory_entry& entry : fs::directory_iterator(directory_)) {
      if (entry.is_regular_file()) {
        fs::copy_file(entry.path(), target / entry.path().filename());
      }
    }
    fs::remove_all(target);
  }

  /// What copyTable does, by the caller: into a table of one element, which is deleted.
  void readAndWrite() {
    ZvbString error;
    const Table source(manager_->openTable(source_, false, &error));
    const Table target(manager_->createTable(sampleColumnCount, 0, &error));
    if (source == nullptr || target == nullptr) {
      stop("no table", error);
    }
    require(defineSampleColumns(*target), "columns", *target);
    ZvbDatavar values[sampleColumnCount];
    bool end = false;
    while (source->readRow(values, &end)) {
      require(target->writeRow(values), "write", *target);
    }
    require(end, "read", *source);
    require(target->close() && target->getRowCount() == rowCount_, "close", *target);
    deleteTable(target->getName());
  }

  void copyTable(std::int64_t maxElementSize) {
    ZvbString error;
    const Table copy(manager_->copyTable(maxElementSize, manager_.get(), source_, &error));
    if (copy == nullptr) {
      stop("copy", error);
    }
    require(copy->close() && copy->getRowCount() == rowCount_, "close", *copy);
    deleteTable(copy->getName());
  }

  void appendTable() {
    ZvbString error;
    const Table target(manager_->createTable(sampleColumnCount, 0, &error));
    if (target == nullptr) {
      stop("no table", error);
    }
    require(defineSampleColumns(*target) && target->close(), "columns", *target);
    if (!manager_->appendTable(target->getName(), source_, &error)) {
      stop("append", error);
    }
    deleteTable(target->getName());
  }

  std::string directory_;
  Manager manager_;
  ZvbString source_;
  std::int64_t rowCount_ = 0;
  std::int64_t elementSize_ = 0;
  std::int64_t dataBytes_ = 0;
  std::uint64_t checksum_ = 0;
};

}  // namespace

int main(int argc, char** argv) {
  const BenchmarkOptions defaults{.name = "tables", .rowCount = 1'000'000};
  return runBenchmark(argc, argv, "Whole tables: copied, appended, partitioned.", defaults,
                      [](const BenchmarkOptions& options, const std::string& directory) {
                        TableBenchmark benchmark(options.rowCount, directory);
                        std::vector<Work> works = benchmark.works();
                        measure(options.rounds, &works);
                        print(works, std::to_string(options.rowCount) + " rows in ten elements",
                              benchmark.bytesPerRow(), options);
                      });
}
