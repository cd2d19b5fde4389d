#include "Measuring.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

namespace {

double ratioToTwin(const Work& work, const std::vector<Work>& works) {
  for (const Work& other : works) {
    if (work.twin != nullptr && std::string(work.twin) == other.name) {
      return other.median() / work.median();
    }
  }
  return 1;
}

void printTable(const std::vector<Work>& works, std::size_t rowCount) {
  std::printf("%-26s %12s %10s\n", "work", "Mrows/s", "ratio");
  for (const Work& work : works) {
    std::printf("%-26s %12.2f %10.2f\n", work.name,
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

}  // namespace

void stop(const char* what, const ZvbString& why) {
  std::fprintf(stderr, "%s: %s\n", what, why.asCstr());
  std::exit(1);
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

int readOptions(int argc, char** argv, const char* description, BenchmarkOptions* options) {
  CLI::App app(description);
  options->parentDirectory = std::filesystem::temp_directory_path().string();
  app.add_option("--rows", options->rowCount, "rows in the table")->check(CLI::PositiveNumber);
  app.add_option("--rounds", options->rounds, "rounds; medians are printed")
      ->check(CLI::PositiveNumber);
  app.add_option("--dir", options->parentDirectory, "directory for the files");
  app.add_flag("--json", options->json, "print JSON");
  CLI11_PARSE(app, argc, argv);
  return -1;
}

BenchmarkDirectory::BenchmarkDirectory(const std::string& parent)
    : path_(parent + "/zvwt-bench-XXXXXX") {
  if (mkdtemp(path_.data()) == nullptr) {
    std::perror("no directory");
    std::exit(1);
  }
}

BenchmarkDirectory::~BenchmarkDirectory() { std::filesystem::remove_all(path_); }

void measure(int rounds, std::vector<Work>* works) {
  for (int round = 0; round < rounds; ++round) {
    for (Work& work : *works) {
      const auto start = std::chrono::steady_clock::now();
      work.run();
      work.seconds.push_back(
          std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
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
