/// Kinds of work done in rounds and compared.
///
/// Each round does every kind of work once, one after another, so that a drift of the machine meets
/// all of them alike; the medians of the rounds are printed, and their ratios to the work that each
/// is measured against.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "ZvwtHandles.h"

namespace CLI {
class App;
}

using Manager = zvwt::Manager;
using Table = zvwt::Table;

/// Ends the benchmark: what it measures does not work.
[[noreturn]] void stop(const char* what, const ZvbString& why);
void require(bool success, const char* what, ZvWorkTableFile& table);

/// One kind of work: its figures over the rounds.
struct Work {
  const char* name;
  const char* twin;  ///< the work that its ratio is taken to, or null
  std::function<void()> run;
  std::function<void()> before = {};  ///< makes ready for it; not measured
  std::function<void()> after = {};   ///< looks at what it did and clears up; not measured
  std::vector<double> seconds = {};

  [[nodiscard]] double median() const;
};

/// What every benchmark can be told.
struct BenchmarkOptions {
  std::size_t rowCount;
  int rounds = 5;
  std::string parentDirectory;  ///< for the files
  bool json = false;
};

/// Runs a benchmark in a directory of its own, which is removed in the end; the exit code of its
/// program. The options have their defaults and get those of the command line, to which
/// `addOptions` adds the benchmark's own.
[[nodiscard]] int runBenchmark(
    int argc, char** argv, const char* description, BenchmarkOptions options,
    const std::function<void(const BenchmarkOptions& options, const std::string& directory)>& run,
    const std::function<void(CLI::App& app)>& addOptions = {});

/// Runs the rounds and fills in the works' seconds.
void measure(int rounds, std::vector<Work>* works);

/// Prints speeds and ratios under the heading, or all figures as JSON.
void print(const std::vector<Work>& works, const std::string& heading, double bytesPerRow,
           const BenchmarkOptions& options);
