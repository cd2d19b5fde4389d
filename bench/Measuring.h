/// Kinds of work done in rounds and compared.
///
/// Each round does every kind of work once, one after another, so that a drift of the machine meets
/// all of them alike; the medians of the rounds are printed, and the ratios of the speeds that are
/// compared.
#pragma once

#include <cstddef>
#include <cstdint>
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

/// Who does a work: this library, the same done without any, or another library.
enum class Side { ours, byHand, peer };

/// A work's speed beside that of another one of the same run.
struct Comparison {
  std::string to;      ///< the other work; the comparison is left out where that is not run
  double atLeast = 0;  ///< what is asked of the ratio of the speeds; 0: nothing
};

/// One kind of work: its figures over the rounds.
struct Work {
  std::string name;
  std::vector<Comparison> comparisons = {};
  std::function<void()> run;
  std::function<void()> before = {};  ///< makes ready for it; not measured
  std::function<void()> after = {};   ///< looks at what it did and clears up; not measured
  Side side = Side::ours;
  std::vector<double> seconds = {};

  [[nodiscard]] double median() const;
};

/// What every benchmark can be told.
struct BenchmarkOptions {
  std::string name;  ///< the benchmark's own, in its JSON
  std::size_t rowCount;
  int rounds = 5;
  std::string parentDirectory = {};  ///< for the files
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

/// Prints speeds and comparisons under the heading, or all figures as JSON.
void print(const std::vector<Work>& works, const std::string& heading, double bytesPerRow,
           const BenchmarkOptions& options);
