#include "SortProbes.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <stdexcept>

#include "System.h"
#include "TableEngine.h"

namespace {

constexpr std::int64_t mebibyte = 1 << 20;

/// Runs in a process of its own, whose peak of resident memory begins with what it is given.
void runInChild(const std::function<void()>& run) {
  // What is still in the buffer would be printed by both.
  static_cast<void>(std::fflush(stdout));
  const pid_t child = fork();
  if (child == 0) {
    int exitCode = 0;
    try {
      run();
    } catch (const std::exception& error) {
      std::cerr << error.what() << '\n';
      exitCode = 1;
    }
    static_cast<void>(std::fflush(stdout));
    _exit(exitCode);
  }
  int status = 0;
  if (child < 0 || waitpid(child, &status, 0) != child || status != 0) {
    throw std::runtime_error("the sort in a process of its own failed");
  }
}

void printMemoryOfSort(const std::vector<SampleRow>& rows, const std::string& directory,
                       const TableEngineSettings& settings, SortOrder order) {
  TableEngine sort(directory, settings);
  const std::int64_t before = peakResidentBytes();
  sort.store(rows, order);
  const std::int64_t grown = peakResidentBytes() - before;
  std::printf("%10.1f %8d  ORDER BY %-14s %12.1f %10.1f %12.1f\n",
              static_cast<double>(settings.memory) / mebibyte, settings.secondThread ? 2 : 1,
              sqlKeys(order), static_cast<double>(grown) / mebibyte,
              static_cast<double>(grown - settings.memory) / mebibyte,
              static_cast<double>(sort.spilledBytes()) / mebibyte);
}

using Clock = std::chrono::steady_clock;

/// Lets a sort report a number of times and cancels it at the next.
struct Canceller {
  int reportsLeft;
  ZvDatafileSortPhase phase = zvDatafileSortAdding;
  Clock::time_point cancelledAt = {};
  bool hasCancelled = false;

  static bool call(const ZvDatafileSortProgress* progress, void* context) {
    auto* canceller = static_cast<Canceller*>(context);
    if (canceller->reportsLeft-- > 0) {
      return true;
    }
    canceller->phase = progress->phase;
    canceller->hasCancelled = true;
    canceller->cancelledAt = Clock::now();
    return false;
  }
};

bool writeAndClose(const std::vector<SampleRow>& rows, ZvWorkTableFile& table) {
  ZvbDatavar values[sampleColumnCount];
  for (const SampleRow& row : rows) {
    assignSample(row, values);
    if (!table.writeRow(values)) {
      return false;
    }
  }
  return table.close();
}

/// Sorts until the canceller cancels; the seconds from then until the sort returned, or less than 0
/// when the sort came to its end before.
double sortUntilCancelled(const std::vector<SampleRow>& rows, TableEngine& sort,
                          Canceller* canceller) {
  ZvbString error;
  if (!zvwtSetSortProgress(&sort.manager(), Canceller::call, canceller, &error)) {
    stop("progress", error);
  }
  const Table table = sort.create(SortOrder::nameAmount);
  const bool sorted = writeAndClose(rows, *table);
  const std::chrono::duration<double> waited = Clock::now() - canceller->cancelledAt;
  if (sorted == canceller->hasCancelled) {
    stop(sorted ? "a cancelled sort went on to its end" : "the sort failed",
         table->getErrorMessage());
  }
  if (sorted && !sort.manager().deleteTable(table->getName(), &error)) {
    stop("delete", error);
  }
  return sorted ? -1 : waited.count();
}

/// The longest waits of the phases in which sorts were cancelled.
struct Waits {
  static constexpr int phases = 3;
  int count[phases] = {};
  double longest[phases] = {};

  void add(ZvDatafileSortPhase phase, double seconds) {
    ++count[phase];
    longest[phase] = std::max(longest[phase], seconds);
  }
};

Waits cancelAtEachReport(const std::vector<SampleRow>& rows, const std::string& directory,
                         const TableEngineSettings& settings) {
  TableEngine sort(directory, settings);
  Waits waits;
  for (int report = 0;; ++report) {
    Canceller canceller{.reportsLeft = report};
    const double seconds = sortUntilCancelled(rows, sort, &canceller);
    if (!std::filesystem::is_empty(directory)) {
      throw std::runtime_error("a cancelled sort left files");
    }
    if (seconds < 0) {
      return waits;
    }
    waits.add(canceller.phase, seconds);
  }
}

}  // namespace

void printMemoryOfSorts(const std::vector<SampleRow>& rows, const std::string& directory) {
  std::printf("memory of a sort of %zu rows, in MiB\n\n%10s %8s  %-23s %12s %10s %12s\n",
              rows.size(), "ceiling", "threads", "", "peak growth", "over", "spilled");
  for (const std::int64_t memory : {mebibyte, 64 * mebibyte, 1024 * mebibyte}) {
    for (const bool secondThread : {false, true}) {
      for (const SortOrder order : {SortOrder::amountName, SortOrder::nameAmount}) {
        runInChild([&] { printMemoryOfSort(rows, directory, {memory, secondThread}, order); });
      }
    }
  }
}

void printCancelledSorts(const std::vector<SampleRow>& rows, const std::string& directory) {
  const char* names[Waits::phases] = {"adding", "merging", "delivering"};
  std::printf(
      "sorts of %zu rows in 64 MiB cancelled at each of their reports\n\n%8s %-12s %8s %s\n",
      rows.size(), "threads", "phase", "times", "longest wait, ms");
  for (const bool secondThread : {false, true}) {
    const Waits waits = cancelAtEachReport(rows, directory, {64 * mebibyte, secondThread});
    for (int phase = 0; phase < Waits::phases; ++phase) {
      std::printf("%8d %-12s %8d %16.1f\n", secondThread ? 2 : 1, names[phase], waits.count[phase],
                  waits.longest[phase] * 1000);
    }
  }
}
