/// Rows of many shapes, from one byte to 100,000 and from one column to 500, so that no shape is
/// found out to be slow by its user.
///
/// Each table has about the same bytes of data. Its twin writes as many bytes to two files, as the
/// table has data and index, and reads those of the data, with the system's calls alone: the ratio
/// to it tells how near a shape comes to what files can do at all.
#include <fcntl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include "Measuring.h"
#include "zvwt.h"

namespace {

enum class Content { null, integer, text };

struct Shape {
  const char* name;
  int columns;
  Content content;
  std::size_t textSize = 0;  ///< bytes of each text, without its terminator

  /// Bytes of a row in the data file.
  [[nodiscard]] std::size_t rowBytes() const {
    constexpr std::size_t longestOfShortLength = 126;  // bytes of text whose length takes one byte
    const std::size_t length = textSize <= longestOfShortLength ? 1 : 4;
    const std::size_t value = content == Content::null      ? 1
                              : content == Content::integer ? 9
                                                            : 1 + length + textSize + 1;
    return value * static_cast<std::size_t>(columns);
  }
};

constexpr Shape shapes[] = {
    {"text 1 byte", 1, Content::text, 1},
    {"text 10 bytes", 1, Content::text, 10},
    {"text 47 bytes", 1, Content::text, 47},
    {"text 48 bytes", 1, Content::text, 48},
    {"text 100 bytes", 1, Content::text, 100},
    {"text 1000 bytes", 1, Content::text, 1'000},
    {"text 10000 bytes", 1, Content::text, 10'000},
    {"text 100000 bytes", 1, Content::text, 100'000},
    {"7 nulls", 7, Content::null},
    {"1 integer", 1, Content::integer},
    {"500 integers", 500, Content::integer},
    {"500 texts", 500, Content::text, 10},
};

/// A file of nothing but bytes, written and read in pieces.
class PlainFile {
 public:
  PlainFile(const std::string& path, int mode) : file_(open(path.c_str(), mode | O_CLOEXEC, 0600)) {
    if (file_ < 0) {
      stop("cannot be opened", path.c_str());
    }
  }
  PlainFile(const PlainFile&) = delete;
  PlainFile& operator=(const PlainFile&) = delete;
  ~PlainFile() { close(file_); }

  void put(std::size_t bytes) {
    while (bytes > 0) {
      const ssize_t count = write(file_, piece_.data(), std::min(bytes, piece_.size()));
      if (count <= 0) {
        stop("write, by hand", "the bytes do not fit");
      }
      bytes -= static_cast<std::size_t>(count);
    }
  }

  /// The bytes there are.
  [[nodiscard]] std::size_t readAll() {
    std::size_t bytes = 0;
    for (;;) {
      const ssize_t count = read(file_, piece_.data(), piece_.size());
      if (count <= 0) {
        return bytes;
      }
      bytes += static_cast<std::size_t>(count);
    }
  }

 private:
  static constexpr std::size_t pieceSize = 0x40000;

  int file_;
  std::vector<char> piece_ = std::vector<char>(pieceSize, 'x');
};

/// What of a value is added up: nothing of it can be missing or be another value unnoticed.
std::uint64_t sumOf(const ZvbDatavar& value) {
  if (value.isNull()) {
    return 1;
  }
  if (value.holdsText()) {
    const std::string_view text = value.asTextView();
    const std::uint64_t first = static_cast<unsigned char>(text.front());
    const std::uint64_t last = static_cast<unsigned char>(text.back());
    return text.size() * 65'536 + first * 256 + last;
  }
  bool failed = false;
  return static_cast<std::uint64_t>(value.asInt64(&failed));
}

std::uint64_t sumOf(const ZvbDatavar* values, std::size_t count) {
  std::uint64_t sum = 0;
  for (std::size_t i = 0; i < count; ++i) {
    sum += sumOf(values[i]);
  }
  return sum;
}

class ShapeBenchmark {
 public:
  ShapeBenchmark(const Shape& shape, std::size_t bytes, const std::string& directory)
      : shape_(shape),
        columns_(static_cast<std::size_t>(shape.columns)),
        rows_(std::max<std::size_t>(1, bytes / shape.rowBytes())),
        dataPath_(directory + "/twin.data"),
        indexPath_(directory + "/twin.index") {
    ZvbString error;
    manager_.reset(zvwtCreateManager("bench", directory.c_str(), &error));
    if (manager_ == nullptr) {
      stop("no manager", error);
    }
    prepareRows();
  }
  ShapeBenchmark(const ShapeBenchmark&) = delete;
  ShapeBenchmark& operator=(const ShapeBenchmark&) = delete;
  ~ShapeBenchmark() {
    removeTwin();
    removeTable();
  }

  std::vector<Work> works() {
    return {
        {.name = "write, by hand",
         .run = [this] { writeByHand(); },
         .before = [this] { removeTwin(); },
         .side = Side::byHand},
        {.name = "write",
         .run = [this] { write(); },
         .before = [this] { removeTable(); },
         .after = [this] { checkSize(); }},
        {.name = "read, by hand", .run = [this] { readByHand(); }, .side = Side::byHand},
        {.name = "read", .run = [this] { read(); }},
    };
  }

  [[nodiscard]] std::size_t rows() const { return rows_; }

 private:
  /// Different rows that are written in turn, as many as stay in the processor's caches.
  void prepareRows() {
    constexpr std::size_t mostRows = 16;
    constexpr std::size_t mostBytes = 0x40000;
    const std::size_t count = std::clamp<std::size_t>(
        mostBytes / (columns_ * sizeof(ZvbDatavar) + shape_.rowBytes()), 1, mostRows);
    prepared_.resize(count * columns_);
    for (std::size_t i = 0; i < prepared_.size(); ++i) {
      fill(&prepared_[i], i);
    }
    for (std::size_t row = 0; row < rows_; ++row) {
      expectedSum_ += sumOf(preparedRow(row), columns_);
    }
  }

  void fill(ZvbDatavar* value, std::size_t number) const {
    if (shape_.content == Content::integer) {
      value->assign(static_cast<std::int64_t>(number * 1'000'003));
    } else if (shape_.content == Content::text) {
      const std::string text(shape_.textSize, static_cast<char>('a' + number % 26));
      value->assign(text.c_str(), text.size());
    }
  }

  [[nodiscard]] const ZvbDatavar* preparedRow(std::size_t row) const {
    return &prepared_[row % (prepared_.size() / columns_) * columns_];
  }

  void write() {
    ZvbString error;
    const Table table(manager_->createTable(shape_.columns, 0, &error));
    if (table == nullptr) {
      stop("no table", error);
    }
    defineColumns(*table);
    for (std::size_t row = 0; row < rows_; ++row) {
      require(table->writeRow(preparedRow(row)), "write", *table);
    }
    require(table->close(), "close", *table);
    name_ = table->getName();
  }

  void defineColumns(ZvWorkTableFile& table) const {
    const zvbType type = shape_.content == Content::text ? zvbTypeString : zvbTypeInteger;
    for (int i = 0; i < shape_.columns; ++i) {
      const std::string name = "column" + std::to_string(i);
      require(table.defineColumn(i, name.c_str(), type, 0), "column", table);
    }
  }

  void checkSize() {
    ZvbString error;
    ZvwtTableSizes sizes;
    if (!zvwtGetTableSizes(manager_.get(), name_, &sizes, &error)) {
      stop("sizes", error);
    }
    if (sizes.dataBytes != static_cast<std::int64_t>(dataBytes()) ||
        sizes.indexBytes != static_cast<std::int64_t>(indexBytes())) {
      stop("the twin does not write as many bytes as the table", shape_.name);
    }
  }

  void read() {
    ZvbString error;
    const Table table(manager_->openTable(name_, false, &error));
    if (table == nullptr) {
      stop("open", error);
    }
    std::vector<ZvbDatavar> values(columns_);
    std::uint64_t sum = 0;
    bool end = false;
    while (table->readRow(values.data(), &end)) {
      sum += sumOf(values.data(), columns_);
    }
    require(end, "read", *table);
    if (sum != expectedSum_) {
      stop("the rows read are not those written", shape_.name);
    }
  }

  void writeByHand() const {
    PlainFile(dataPath_, O_CREAT | O_EXCL | O_WRONLY).put(dataBytes());
    PlainFile(indexPath_, O_CREAT | O_EXCL | O_WRONLY).put(indexBytes());
  }

  void readByHand() const {
    if (PlainFile(dataPath_, O_RDONLY).readAll() != dataBytes()) {
      stop("read, by hand", "bytes are missing");
    }
  }

  void removeTwin() const {
    std::error_code ignored;
    std::filesystem::remove(dataPath_, ignored);
    std::filesystem::remove(indexPath_, ignored);
  }

  void removeTable() {
    ZvbString error;
    if (name_.length() != 0 && !manager_->deleteTable(name_, &error)) {
      std::cerr << "delete: " << error.asCstr() << '\n';
    }
    name_.setNull();
  }

  [[nodiscard]] std::size_t dataBytes() const { return rows_ * shape_.rowBytes(); }
  [[nodiscard]] std::size_t indexBytes() const { return rows_ * sizeof(std::int64_t); }

  Shape shape_;
  std::size_t columns_;
  std::size_t rows_;
  std::string dataPath_;
  std::string indexPath_;
  Manager manager_;
  std::vector<ZvbDatavar> prepared_;
  std::uint64_t expectedSum_ = 0;
  ZvbString name_;
};

struct Speed {
  double seconds;
  double secondsByHand;

  [[nodiscard]] double ratio() const { return secondsByHand / seconds; }
};

struct Result {
  Shape shape;
  std::size_t rows;
  Speed write;
  Speed read;

  [[nodiscard]] double rowsPerSecond(const Speed& speed) const {
    return static_cast<double>(rows) / speed.seconds;
  }
  [[nodiscard]] double valuesPerSecond(const Speed& speed) const {
    return rowsPerSecond(speed) * shape.columns;
  }
  [[nodiscard]] double bytesPerSecond(const Speed& speed) const {
    return rowsPerSecond(speed) * static_cast<double>(shape.rowBytes());
  }
};

Result measureShape(const Shape& shape, std::size_t bytes, int rounds,
                    const std::string& directory) {
  ShapeBenchmark benchmark(shape, bytes, directory);
  std::vector<Work> works = benchmark.works();
  measure(rounds, &works);
  return {shape,
          benchmark.rows(),
          {works[1].median(), works[0].median()},
          {works[3].median(), works[2].median()}};
}

void printSpeed(const Result& result, const Speed& speed) {
  std::printf(" |%9.3f %10.2f %8.0f %6.2f", result.rowsPerSecond(speed) / 1e6,
              result.valuesPerSecond(speed) / 1e6, result.bytesPerSecond(speed) / 1e6,
              speed.ratio());
}

void printTable(const std::vector<Result>& results) {
  const char* columns = " |  Mrows/s  Mvalues/s     MB/s  ratio";
  std::printf("%-18s %10s %9s | %-35s | read\n", "", "", "", "write");
  std::printf("%-18s %10s %9s%s%s\n", "rows of", "rows", "bytes", columns, columns);
  for (const Result& result : results) {
    std::printf("%-18s %10zu %9zu", result.shape.name, result.rows, result.shape.rowBytes());
    printSpeed(result, result.write);
    printSpeed(result, result.read);
    std::printf("\n");
  }
}

void printJsonSpeed(const Result& result, const char* name, const Speed& speed) {
  std::printf(R"(, "%s": {"rowsPerSecond": %.0f, "valuesPerSecond": %.0f, "bytesPerSecond": %.0f, )"
              R"("ratio": %.3f})",
              name, result.rowsPerSecond(speed), result.valuesPerSecond(speed),
              result.bytesPerSecond(speed), speed.ratio());
}

void printJson(const std::vector<Result>& results) {
  std::printf(R"({"name": "shapes", "works": [)");
  const char* separator = "";
  for (const Result& result : results) {
    std::printf("%s\n  {\"name\": \"%s\", \"rows\": %zu, \"bytesPerRow\": %zu", separator,
                result.shape.name, result.rows, result.shape.rowBytes());
    printJsonSpeed(result, "write", result.write);
    printJsonSpeed(result, "read", result.read);
    std::printf("}");
    separator = ",";
  }
  std::printf("\n]}\n");
}

}  // namespace

int main(int argc, char** argv) {
  const BenchmarkOptions defaults{.name = "shapes", .rowCount = 0};
  std::size_t bytes = 200'000'000;
  std::string only;
  return runBenchmark(
      argc, argv, "Rows of many shapes, against files written and read by hand.", defaults,
      [&](const BenchmarkOptions& options, const std::string& directory) {
        std::vector<Result> results;
        for (const Shape& shape : shapes) {
          if (std::string(shape.name).find(only) != std::string::npos) {
            results.push_back(measureShape(shape, bytes, options.rounds, directory));
          }
        }
        (options.json ? printJson : printTable)(results);
      },
      [&](CLI::App& app) {
        app.remove_option(app.get_option("--rows"));  // the bytes decide
        app.add_option("--bytes", bytes, "data in each table")->check(CLI::PositiveNumber);
        app.add_option("--only", only, "only shapes whose name contains this");
      });
}
