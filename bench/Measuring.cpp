#include "Measuring.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <string_view>
#include <system_error>

namespace {

double ratioToTwin(const Work& work, const std::vector<Work>& works) {
  for (const Work& other : works) {
    if (work.twin != nullptr && std::string(work.twin) == other.name) {
      return other.median() / work.median();
    }
  }
  return 1;
}

int longestName(const std::vector<Work>& works) {
  std::size_t length = 26;
  for (const Work& work : works) {
    length = std::max(length, std::string_view(work.name).size());
  }
  return static_cast<int>(length);
}

void printTable(const std::vector<Work>& works, std::size_t rowCount) {
  const int width = longestName(works);
  std::printf("%-*s %12s %10s\n", width, "work", "Mrows/s", "ratio");
  for (const Work& work : works) {
    std::printf("%-*s %12.2f %10.2f\n", width, work.name,
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

/// A directory of its own, removed in the end.
class BenchmarkDirectory {
 public:
  explicit BenchmarkDirectory(const std::string& parent) : path_(parent + "/zvwt-bench-XXXXXX") {
    if (mkdtemp(path_.data()) == nullptr) {
      throw std::system_error(errno, std::generic_category(), path_);
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
  return sorted[sorted.size() / 2];
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
    printJson(works, options.rowCount, bytesPerRow);
    return;
  }
  std::printf("%s\n\n", heading.c_str());
  printTable(works, options.rowCount);
}
