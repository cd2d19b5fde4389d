#include "Measuring.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <random>
#include <stdexcept>

namespace {

/// A comparison whose both works were run.
struct Compared {
  const Work* work;
  const Work* other;
  double atLeast;

  [[nodiscard]] double ratio() const { return other->median() / work->median(); }
  [[nodiscard]] std::string name() const { return work->name + " / " + other->name; }
};

const Work* find(const std::vector<Work>& works, const std::string& name) {
  const auto found =
      std::find_if(works.begin(), works.end(), [&](const Work& work) { return work.name == name; });
  return found == works.end() ? nullptr : &*found;
}

std::vector<Compared> compare(const std::vector<Work>& works) {
  std::vector<Compared> all;
  for (const Work& work : works) {
    for (const Comparison& comparison : work.comparisons) {
      const Work* other = find(works, comparison.to);
      if (other != nullptr) {
        all.push_back({&work, other, comparison.atLeast});
      }
    }
  }
  return all;
}

void printSpeeds(const std::vector<Work>& works, std::size_t rowCount) {
  std::size_t width = 0;
  for (const Work& work : works) {
    width = std::max(width, work.name.size());
  }
  std::printf("%-*s %12s %12s\n", static_cast<int>(width), "work", "ms", "Mrows/s");
  for (const Work& work : works) {
    std::printf("%-*s %12.2f %12.2f\n", static_cast<int>(width), work.name.c_str(),
                work.median() * 1e3, static_cast<double>(rowCount) / work.median() / 1e6);
  }
}

void printComparison(const Compared& compared, int width) {
  std::printf("%-*s ", width, compared.name().c_str());
  if (compared.atLeast == 0) {
    std::printf("%8s %9.2f\n", "", compared.ratio());
  } else {
    std::printf("%8.2f %9.2f%s\n", compared.atLeast, compared.ratio(),
                compared.ratio() < compared.atLeast ? "  below" : "");
  }
}

void printComparisons(const std::vector<Compared>& comparisons) {
  std::size_t width = 0;
  for (const Compared& compared : comparisons) {
    width = std::max(width, compared.name().size());
  }
  if (!comparisons.empty()) {
    std::printf("\n%-*s %8s %9s\n", static_cast<int>(width), "speed of / speed of", "asked",
                "measured");
  }
  for (const Compared& compared : comparisons) {
    printComparison(compared, static_cast<int>(width));
  }
}

const char* nameOf(Side side) {
  return side == Side::ours ? "ours" : side == Side::byHand ? "by hand" : "peer";
}

/// The elements of a list, each on a line of its own.
template <typename Elements, typename Print>
void printJsonList(const Elements& elements, const Print& printElement) {
  const char* separator = "";
  for (const auto& element : elements) {
    std::printf("%s\n  ", separator);
    printElement(element);
    separator = ",";
  }
}

void printJsonWork(const Work& work, std::size_t rowCount) {
  std::printf(R"({"name": "%s", "side": "%s", "seconds": %.6f, "rowsPerSecond": %.0f, "rounds": [)",
              work.name.c_str(), nameOf(work.side), work.median(),
              static_cast<double>(rowCount) / work.median());
  const char* separator = "";
  for (const double seconds : work.seconds) {
    std::printf("%s%.6f", separator, seconds);
    separator = ", ";
  }
  std::printf("]}");
}

void printJsonComparison(const Compared& compared) {
  std::printf(R"({"work": "%s", "to": "%s", "ratio": %.3f, "atLeast": )",
              compared.work->name.c_str(), compared.other->name.c_str(), compared.ratio());
  if (compared.atLeast == 0) {
    std::printf("null}");
  } else {
    std::printf("%.2f}", compared.atLeast);
  }
}

/// No name has a character that JSON would want escaped.
void printJson(const std::vector<Work>& works, double bytesPerRow,
               const BenchmarkOptions& options) {
  std::printf("{\"name\": \"%s\", \"rows\": %zu, \"bytesPerRow\": %.1f, \"works\": [",
              options.name.c_str(), options.rowCount, bytesPerRow);
  printJsonList(works, [&](const Work& work) { printJsonWork(work, options.rowCount); });
  std::printf("\n], \"comparisons\": [");
  printJsonList(compare(works), printJsonComparison);
  std::printf("\n]}\n");
}

/// A directory of its own, removed in the end.
class BenchmarkDirectory {
 public:
  explicit BenchmarkDirectory(const std::filesystem::path& parent)
      : path_((parent / ("zvwt-bench-" + std::to_string(std::random_device()()))).string()) {
    if (!std::filesystem::create_directory(path_)) {
      throw std::runtime_error(path_ + " is there already");
    }
  }
  BenchmarkDirectory(const BenchmarkDirectory&) = delete;
  BenchmarkDirectory& operator=(const BenchmarkDirectory&) = delete;
  ~BenchmarkDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  [[nodiscard]] const std::string& path() const { return path_; }

 private:
  std::string path_;
};

}  // namespace

void stop(const char* what, const ZvbString& why) {
  throw std::runtime_error(std::string(what) + ": " + why.asCstr());
}

void require(bool success, const char* what, ZvWorkTableFile& table) {
  if (!success) {
    stop(what, table.getErrorMessage());
  }
}

double Work::median() const {
  std::vector<double> sorted = seconds;
  std::sort(sorted.begin(), sorted.end());
  const std::size_t middle = sorted.size() / 2;
  return sorted.size() % 2 == 1 ? sorted[middle] : (sorted[middle - 1] + sorted[middle]) / 2;
}

int runBenchmark(
    int argc, char** argv, const char* description, BenchmarkOptions options,
    const std::function<void(const BenchmarkOptions& options, const std::string& directory)>& run,
    const std::function<void(CLI::App& app)>& addOptions) {
  CLI::App app(description);
  options.parentDirectory = std::filesystem::temp_directory_path().string();
  app.add_option("--rows", options.rowCount, "rows in the table")->check(CLI::PositiveNumber);
  app.add_option("--rounds", options.rounds, "rounds; medians are printed")
      ->check(CLI::PositiveNumber);
  app.add_option("--dir", options.parentDirectory, "directory for the files");
  app.add_flag("--json", options.json, "print JSON");
  if (addOptions) {
    addOptions(app);
  }
  CLI11_PARSE(app, argc, argv);
  try {
    const BenchmarkDirectory directory(options.parentDirectory);
    run(options, directory.path());
    return 0;
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
  }
}

void measure(int rounds, std::vector<Work>* works) {
  for (int round = 0; round < rounds; ++round) {
    for (Work& work : *works) {
      if (work.before) {
        work.before();
      }
      const auto start = std::chrono::steady_clock::now();
      work.run();
      work.seconds.push_back(
          std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
      if (work.after) {
        work.after();
      }
    }
  }
}

void print(const std::vector<Work>& works, const std::string& heading, double bytesPerRow,
           const BenchmarkOptions& options) {
  if (options.json) {
    printJson(works, bytesPerRow, options);
    return;
  }
  std::printf("%s\n\n", heading.c_str());
  printSpeeds(works, options.rowCount);
  printComparisons(compare(works));
}
