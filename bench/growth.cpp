/// Tables of more and more rows: the speed of a row, the time of opening at any row and the memory
/// that is taken must not depend on their number.
///
/// A full disk ends the benchmark: it says how far it came, prints what it had measured by then and
/// removes what it has written.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "Measuring.h"
#include "SampleRows.h"
#include "System.h"
#include "zvwt.h"

namespace {

constexpr std::size_t mostSamples = 1'000'000;
constexpr int openings = 200;  // of each place

/// How many bytes of resident memory were added.
struct MemoryGrowth {
  std::int64_t kept = 0;  ///< at the end
  std::int64_t peak = 0;  ///< at most

  /// Takes in another round, which finds memory that the first one has left.
  void add(const MemoryGrowth& round) {
    kept = std::max(kept, round.kept);
    peak = std::max(peak, round.peak);
  }
};

template <typename Run>
MemoryGrowth memoryGrowthOf(const Run& run) {
  // Lets the peak begin anew; where that is not allowed, only growth above the old one is seen.
  std::ofstream("/proc/self/clear_refs") << "5";
  const std::int64_t before = residentBytes();
  const std::int64_t peakBefore = peakResidentBytes();
  run();
  return {residentBytes() - before, peakResidentBytes() - peakBefore};
}

template <typename Run>
double microsecondsOf(const Run& run) {
  const auto start = std::chrono::steady_clock::now();
  run();
  return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start)
      .count();
}

double median(std::vector<double> figures) {
  const auto middle = figures.begin() + static_cast<std::ptrdiff_t>(figures.size() / 2);
  std::nth_element(figures.begin(), middle, figures.end());
  return *middle;
}

struct Point {
  std::size_t rows = 0;
  double writeSeconds = 0;
  double readSeconds = 0;
  double openFirst = 0;  ///< microseconds, as the next two
  double openMiddle = 0;
  double openLast = 0;
  MemoryGrowth writeMemory = {};
  MemoryGrowth readMemory = {};
  MemoryGrowth openMemory = {};

  [[nodiscard]] double perSecond(double seconds) const {
    return static_cast<double>(rows) / seconds;
  }
  [[nodiscard]] std::int64_t peakMemory() const {
    return std::max({writeMemory.peak, readMemory.peak, openMemory.peak});
  }
};

struct GrowthOptions {
  std::vector<std::size_t> rows = {2'000'000, 20'000'000};
  std::int64_t maxElementSize = 0;
};

/// One table. Its rows are the samples over and over, each with its number as its id.
class GrowthBenchmark {
 public:
  GrowthBenchmark(const std::vector<SampleRow>& samples, std::size_t rows,
                  std::int64_t maxElementSize, const std::string& directory)
      : samples_(samples), rows_(rows), maxElementSize_(maxElementSize) {
    ZvbString error;
    manager_.reset(zvwtCreateManager("bench", directory.c_str(), &error));
    if (manager_ == nullptr) {
      stop("no manager", error);
    }
  }
  GrowthBenchmark(const GrowthBenchmark&) = delete;
  GrowthBenchmark& operator=(const GrowthBenchmark&) = delete;
  ~GrowthBenchmark() { removeTable(); }

  Point measurePoint(int rounds) {
    Point point{.rows = rows_};
    std::vector<Work> works = {
        {.name = "write",
         .run = [&] { point.writeMemory.add(memoryGrowthOf([this] { write(); })); },
         .before = [this] { removeTable(); }},
        {.name = "read", .run = [&] { point.readMemory.add(memoryGrowthOf([this] { read(); })); }},
    };
    measure(rounds, &works);
    point.writeSeconds = works[0].median();
    point.readSeconds = works[1].median();
    point.openMemory = memoryGrowthOf([&] { measureOpenings(&point); });
    return point;
  }

 private:
  void write() {
    ZvbString error;
    const Table table(manager_->createTable(sampleColumnCount, maxElementSize_, &error));
    if (table == nullptr) {
      stop("no table", error);
    }
    require(defineSampleColumns(*table), "column", *table);
    ZvbDatavar values[sampleColumnCount];
    std::size_t sample = 0;
    for (std::size_t row = 0; row < rows_; ++row) {
      assignSample(samples_[sample], values);
      values[0].assign(static_cast<std::int64_t>(row));
      if (!table->writeRow(values)) {
        stopAt(row, *table);
      }
      sample = sample + 1 == samples_.size() ? 0 : sample + 1;
    }
    if (!table->close()) {
      stopAt(rows_, *table);
    }
    name_ = table->getName();
  }

  [[noreturn]] void stopAt(std::size_t row, ZvWorkTableFile& table) const {
    throw std::runtime_error("stopped after " + std::to_string(row) + " of " +
                             std::to_string(rows_) + " rows: " + table.getErrorMessage().asCstr());
  }

  Table open(const RowRange& range) {
    ZvbString error;
    const int* allColumns = nullptr;
    Table table(manager_->openTable(name_, -1, allColumns, &range, false, &error));
    if (table == nullptr) {
      stop("open", error);
    }
    return table;
  }

  void read() {
    const Table table = open({});
    ZvbDatavar values[sampleColumnCount];
    std::size_t row = 0;
    bool end = false;
    while (table->readRow(values, &end)) {
      checkId(values[0], row++);
    }
    require(end, "read", *table);
    if (row != rows_) {
      stop("read", "rows are missing");
    }
  }

  void readAt(std::size_t row) {
    const Table table = open({static_cast<std::int64_t>(row), 1});
    ZvbDatavar values[sampleColumnCount];
    bool end = false;
    require(table->readRow(values, &end), "read", *table);
    checkId(values[0], row);
  }

  static void checkId(const ZvbDatavar& id, std::size_t row) {
    bool failed = false;
    if (id.asInt64(&failed) != static_cast<std::int64_t>(row) || failed) {
      stop("the rows read are not those written", ZvbString());
    }
  }

  /// The places take turns, so that a drift of the machine meets all of them alike.
  void measureOpenings(Point* point) {
    const std::size_t places[] = {0, rows_ / 2, rows_ - 1};
    std::vector<double> times[std::size(places)];
    for (int i = 0; i < openings; ++i) {
      for (std::size_t place = 0; place < std::size(places); ++place) {
        times[place].push_back(microsecondsOf([&] { readAt(places[place]); }));
      }
    }
    point->openFirst = median(times[0]);
    point->openMiddle = median(times[1]);
    point->openLast = median(times[2]);
  }

  void removeTable() {
    ZvbString error;
    if (name_.length() != 0 && !manager_->deleteTable(name_, &error)) {
      std::cerr << "delete: " << error.asCstr() << '\n';
    }
    name_.setNull();
  }

  const std::vector<SampleRow>& samples_;
  std::size_t rows_;
  std::int64_t maxElementSize_;
  Manager manager_;
  ZvbString name_;
};

void printHeads() {
  std::printf("%12s | %-19s | %-26s | %s\n", "", "Mrows/s", "opened and read at, us",
              "memory added, MB, at most (at the end)");
  std::printf("%12s | %9s %9s | %8s %8s %8s | %15s %15s %15s\n", "rows", "write", "read", "first",
              "middle", "last", "write", "read", "open");
}

void printMemory(const MemoryGrowth& memory) {
  std::printf(" %7.2f (%5.2f)", static_cast<double>(memory.peak) / 1e6,
              static_cast<double>(memory.kept) / 1e6);
}

void printPoint(const Point& point) {
  std::printf("%12zu | %9.2f %9.2f | %8.1f %8.1f %8.1f |", point.rows,
              point.perSecond(point.writeSeconds) / 1e6, point.perSecond(point.readSeconds) / 1e6,
              point.openFirst, point.openMiddle, point.openLast);
  printMemory(point.writeMemory);
  printMemory(point.readMemory);
  printMemory(point.openMemory);
  std::printf("\n");
  static_cast<void>(std::fflush(stdout));  // the next point may take minutes
}

void printJson(const std::vector<Point>& points) {
  std::printf(R"({"name": "growth", "points": [)");
  const char* separator = "";
  for (const Point& point : points) {
    std::printf(
        "%s\n  {\"rows\": %zu, \"writeRowsPerSecond\": %.0f, \"readRowsPerSecond\": %.0f, "
        "\"openMicroseconds\": {\"first\": %.1f, \"middle\": %.1f, \"last\": %.1f}, "
        "\"residentBytes\": %lld}",
        separator, point.rows, point.perSecond(point.writeSeconds),
        point.perSecond(point.readSeconds), point.openFirst, point.openMiddle, point.openLast,
        static_cast<long long>(point.peakMemory()));
    separator = ",";
  }
  std::printf("\n]}\n");
}

void measurePoints(const BenchmarkOptions& options, const GrowthOptions& growthOptions,
                   const std::string& directory, std::vector<Point>* points) {
  const std::size_t mostRows =
      *std::max_element(growthOptions.rows.begin(), growthOptions.rows.end());
  const std::vector<SampleRow> samples = makeSampleRows(std::min(mostSamples, mostRows));
  if (!options.json) {
    printHeads();
  }
  for (const std::size_t rows : growthOptions.rows) {
    GrowthBenchmark benchmark(samples, rows, growthOptions.maxElementSize, directory);
    points->push_back(benchmark.measurePoint(options.rounds));
    if (!options.json) {
      printPoint(points->back());
    }
  }
}

void run(const BenchmarkOptions& options, const GrowthOptions& growthOptions,
         const std::string& directory) {
  std::vector<Point> points;
  const auto finish = [&] {
    if (options.json) {
      printJson(points);
    }
  };
  try {
    measurePoints(options, growthOptions, directory, &points);
  } catch (...) {
    finish();
    throw;
  }
  finish();
}

}  // namespace

int main(int argc, char** argv) {
  const BenchmarkOptions defaults{.name = "growth", .rowCount = 0, .rounds = 1};
  GrowthOptions growthOptions;
  return runBenchmark(
      argc, argv, "Tables of more and more rows.", defaults,
      [&](const BenchmarkOptions& options, const std::string& directory) {
        run(options, growthOptions, directory);
      },
      [&](CLI::App& app) {
        app.remove_option(app.get_option("--rows"));  // here it is a list
        app.add_option("--rows", growthOptions.rows, "rows of each table, separated by commas")
            ->delimiter(',')
            ->check(CLI::PositiveNumber);
        app.add_option("--element-size", growthOptions.maxElementSize,
                       "bytes of data in an element; 0: no limit");
      });
}
