/// What writing and reading rows takes besides time.
#include <malloc.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <functional>
#include <stdexcept>

#include "AllocationCount.h"
#include "Measuring.h"
#include "System.h"
#include "TableEngine.h"
#include "zvwt.h"

namespace {

/// Writes or reads all rows, and calls what it is given after each.
using RowsWork = std::function<void(const std::function<void()>& afterRow)>;

/// Reads and writes that this process has asked the system for, in calls.
std::int64_t systemCalls() {
  std::ifstream status("/proc/self/io");
  std::int64_t calls = 0;
  std::string name;
  for (std::int64_t value = 0; status >> name >> value;) {
    calls += name == "syscr:" || name == "syscw:" ? value : 0;
  }
  if (calls == 0) {
    throw std::runtime_error("this system does not tell the calls of a process");
  }
  return calls;
}

std::int64_t systemCallsOf(const RowsWork& work) {
  const std::int64_t earlier = systemCalls();
  const std::int64_t before = systemCalls();
  const std::int64_t ofCounting = before - earlier;
  work([] {});
  return systemCalls() - before - ofCounting;
}

/// Per row, from the first half on, when everything has the size that it needs.
double allocationsOf(const RowsWork& work, std::size_t rowCount) {
  const std::size_t firstHalf = rowCount / 2;
  std::size_t row = 0;
  std::int64_t first = 0;
  std::int64_t last = 0;
  work([&] {
    ++row;
    first = row == firstHalf ? allocationCount() : first;
    last = allocationCount();
  });
  return static_cast<double>(last - first) / static_cast<double>(rowCount - firstHalf);
}

/// The most bytes of resident memory beyond those from before, looked at a hundred times.
std::int64_t growthOf(const RowsWork& work, std::size_t rowCount) {
  // What earlier works have freed would hide what this one takes.
  malloc_trim(0);
  const std::int64_t before = residentBytes();
  const std::size_t stride = std::max<std::size_t>(rowCount / 100, 1);
  std::int64_t most = before;
  std::size_t row = 0;
  work([&] {
    if (++row % stride == 0) {
      most = std::max(most, residentBytes());
    }
  });
  return std::max(most, residentBytes()) - before;
}

void printCost(const char* name, const RowsWork& work, std::size_t rowCount) {
  const double growth = static_cast<double>(growthOf(work, rowCount)) / (1 << 20);
  const double calls =
      static_cast<double>(systemCallsOf(work)) * 1000 / static_cast<double>(rowCount);
  std::printf("%-26s %18.3f %18.3f %18.2f\n", name, calls, allocationsOf(work, rowCount), growth);
}

void writeAll(TableEngine& engine, const std::vector<SampleRow>& rows,
              const std::function<void()>& afterRow) {
  const Table table = engine.create(SortOrder::none);
  ZvbDatavar values[sampleColumnCount];
  for (const SampleRow& row : rows) {
    assignSample(row, values);
    require(table->writeRow(values), "write", *table);
    afterRow();
  }
  require(table->close(), "close", *table);
  ZvbString error;
  if (!engine.manager().deleteTable(table->getName(), &error)) {
    stop("delete", error);
  }
}

void readAll(TableEngine& engine, bool backwards, const std::function<void()>& afterRow) {
  const Table table = engine.open(-1, nullptr, backwards);
  ZvbDatavar values[sampleColumnCount];
  bool end = false;
  while (table->readRow(values, &end)) {
    afterRow();
  }
  require(end, "read", *table);
}

/// Of a write and of reads in both directions, beside what is asked of them.
void printCosts(const std::vector<SampleRow>& rows, const std::string& directory) {
  TableEngine engine(directory, {});
  std::printf("%zu rows\n\n%-26s %18s %18s %18s\n", rows.size(), "", "system calls", "allocations",
              "resident memory");
  std::printf("%-26s %18s %18s %18s\n", "work", "per 1,000 rows", "per row", "growth, MiB");
  std::printf("%-26s %18d %18d %18d\n", "asked: at most", 1, 0, 4);
  printCost(
      "writeRow with assignments",
      [&](const std::function<void()>& afterRow) { writeAll(engine, rows, afterRow); },
      rows.size());
  engine.store(rows, SortOrder::none);
  for (const bool backwards : {false, true}) {
    printCost(
        backwards ? "readRow, backwards" : "readRow",
        [&](const std::function<void()>& afterRow) { readAll(engine, backwards, afterRow); },
        rows.size());
  }
}

}  // namespace

int main(int argc, char** argv) {
  const BenchmarkOptions defaults{.name = "costs", .rowCount = 2'000'000};
  return runBenchmark(argc, argv, "System calls, allocations and memory of rows written and read.",
                      defaults, [](const BenchmarkOptions& options, const std::string& directory) {
                        printCosts(makeSampleRows(options.rowCount), directory);
                      });
}
