/// Rows sorted, from the first one written to the sorted table on file, against SQLite and, where
/// its library was given to the build, DuckDB.
///
/// What each engine stored is read back after every run: its keys must come in the order that the
/// standard library's stable sort gives, with this library equal ones in the order in which they
/// were written, and a checksum of all rows must be that of the rows given.
#include <sys/mman.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "DuckdbEngine.h"
#include "Measuring.h"
#include "SampleRows.h"
#include "SortProbes.h"
#include "SqliteEngine.h"
#include "TableEngine.h"

namespace {

using Rows = RowEngine::Rows;
using Engine = std::unique_ptr<RowEngine>;

constexpr std::int64_t littleMemory = 64 << 20;
constexpr std::int64_t muchMemory = 1 << 30;
/// More bytes than an engine takes for a row, its files in the system's cache included.
constexpr std::size_t memoryPerRow = 1000;
constexpr std::size_t mostMemory = std::size_t{8} << 30;

struct SortOptions {
  std::string only;  ///< part of the names of the works to run
  bool withoutPeers = false;
  bool memory = false;
  bool cancel = false;
};

/// An engine with its settings, to sort by some keys.
struct Contender {
  std::string name;
  Side side;
  std::function<Engine(const std::string& directory)> makeEngine;
  bool presorted = false;  ///< gets its rows in the order of the keys
};

Contender ours(const char* name, const TableEngineSettings& settings, bool presorted = false) {
  return {name, Side::ours,
          [settings](const std::string& directory) {
            return std::make_unique<TableEngine>(directory, settings);
          },
          presorted};
}

Contender sqlite(const char* name, std::int64_t cacheBytes) {
  return {name, Side::peer, [cacheBytes](const std::string& directory) {
            return std::make_unique<SqliteEngine>(directory, cacheBytes);
          }};
}

#ifdef ZVWT_WITH_DUCKDB
Contender duckdb(const char* name, const DuckdbEngineSettings& settings) {
  return {name, Side::peer, [settings](const std::string& directory) {
            return std::make_unique<DuckdbEngine>(directory, settings);
          }};
}

/// With 64 MB it does not get through, so what is little for others is doubled for it.
std::vector<Contender> duckdbContenders() {
  return {duckdb("DuckDB, 2 threads", {.memoryLimit = nullptr, .threads = 2}),
          duckdb("DuckDB, 1 thread", {.memoryLimit = nullptr, .threads = 1}),
          duckdb("DuckDB 128 MB, 2 threads", {.memoryLimit = "128MB", .threads = 2}),
          duckdb("DuckDB 128 MB, 1 thread", {.memoryLimit = "128MB", .threads = 1})};
}
#else
std::vector<Contender> duckdbContenders() { return {}; }
#endif

std::vector<Contender> contenders(bool withoutPeers) {
  std::vector<Contender> all;
  all.push_back(ours("1 GB, 2 threads", {.memory = muchMemory, .secondThread = true}));
  all.push_back(ours("1 GB, 1 thread", {.memory = muchMemory, .secondThread = false}));
  all.push_back(ours("64 MB, 2 threads", {.memory = littleMemory, .secondThread = true}));
  all.push_back(ours("64 MB, 1 thread", {.memory = littleMemory, .secondThread = false}));
  all.push_back(ours("presorted", {.memory = muchMemory, .secondThread = true}, true));
  if (!withoutPeers) {
    all.push_back(sqlite("SQLite, 1 GB", muchMemory));
    all.push_back(sqlite("SQLite, 64 MB", littleMemory));
    for (Contender& contender : duckdbContenders()) {
      all.push_back(std::move(contender));
    }
  }
  return all;
}

constexpr const char* unsorted = "unsorted";

/// Pairs of contenders whose speeds are compared.
constexpr std::pair<const char*, const char*> comparisons[] = {
    {"1 GB, 2 threads", "DuckDB, 2 threads"}, {"1 GB, 2 threads", "SQLite, 1 GB"},
    {"1 GB, 2 threads", "1 GB, 1 thread"},    {"1 GB, 2 threads", unsorted},
    {"1 GB, 1 thread", "DuckDB, 1 thread"},   {"64 MB, 2 threads", "DuckDB 128 MB, 2 threads"},
    {"64 MB, 2 threads", "SQLite, 64 MB"},    {"64 MB, 2 threads", "64 MB, 1 thread"},
    {"64 MB, 2 threads", "1 GB, 2 threads"},  {"64 MB, 1 thread", "DuckDB 128 MB, 1 thread"},
    {"64 MB, 1 thread", "1 GB, 1 thread"},    {"presorted", "1 GB, 2 threads"},
};

constexpr SortOrder orders[] = {SortOrder::amountName, SortOrder::nameAmount};

std::string nameIn(SortOrder order, const std::string& contender) {
  return contender == unsorted
             ? contender
             : contender + (order == SortOrder::amountName ? ", int,text" : ", text,int");
}

std::vector<Comparison> comparisonsOf(const std::string& contender, SortOrder order) {
  std::vector<Comparison> all;
  for (const auto& [work, other] : comparisons) {
    if (work == contender) {
      all.push_back({.to = nameIn(order, other)});
    }
  }
  return all;
}

Rows sorted(const Rows& rows, SortOrder order) {
  Rows result = rows;
  std::stable_sort(result.begin(), result.end(), [order](const SampleRow& a, const SampleRow& b) {
    const std::string_view aName = a.name;
    const std::string_view bName = b.name;
    return order == SortOrder::amountName ? std::tie(a.amount, aName) < std::tie(b.amount, bName)
                                          : std::tie(aName, a.amount) < std::tie(bName, b.amount);
  });
  return result;
}

/// Has that much memory ready to be used, in large pages. A virtual machine may give what was freed
/// back to its host; the work that happens to touch it first would pay for getting it again.
void touchMemory(std::size_t bytes) {
  void* const memory =
      mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory != MAP_FAILED) {
    static_cast<void>(madvise(memory, bytes, MADV_HUGEPAGE));
    std::memset(memory, 1, bytes);
    munmap(memory, bytes);
  }
}

std::uint64_t checksumOf(const RowView& row) {
  RowChecksum checksum;
  addRow(row, &checksum);
  return checksum.value();
}

/// The same for the rows in every order.
std::uint64_t checksumOf(const Rows& rows) {
  std::uint64_t sum = 0;
  for (const SampleRow& row : rows) {
    sum += checksumOf(viewOf(row));
  }
  return sum;
}

class SortBenchmark {
 public:
  SortBenchmark(const BenchmarkOptions& options, SortOptions sortOptions, std::string directory)
      : sortOptions_(std::move(sortOptions)),
        directory_(std::move(directory)),
        rows_(makeSampleRows(options.rowCount)),
        sortedRows_{sorted(rows_, orders[0]), sorted(rows_, orders[1])},
        checksum_(checksumOf(rows_)) {
    enter({.contender = ours(unsorted, {}),
           .name = unsorted,
           .order = SortOrder::none,
           .input = &rows_,
           .expected = &rows_});
    for (std::size_t i = 0; i < std::size(orders); ++i) {
      for (const Contender& contender : contenders(sortOptions_.withoutPeers)) {
        enter({.contender = contender,
               .name = nameIn(orders[i], contender.name),
               .order = orders[i],
               .input = contender.presorted ? &sortedRows_[i] : &rows_,
               .expected = &sortedRows_[i]});
      }
    }
  }
  SortBenchmark(const SortBenchmark&) = delete;
  SortBenchmark& operator=(const SortBenchmark&) = delete;

  std::vector<Work> works() {
    std::vector<Work> works;
    for (Entry& entry : entries_) {
      works.push_back(
          {.name = entry.name,
           .comparisons = comparisonsOf(entry.contender.name, entry.order),
           .run = [&entry] { entry.engine->store(*entry.input, entry.order); },
           .before = [this] { touchMemory(std::min(rows_.size() * memoryPerRow, mostMemory)); },
           .after = [this, &entry] { finish(&entry); },
           .side = entry.contender.side});
    }
    return works;
  }

  /// Of a row in a table of ours.
  [[nodiscard]] double bytesPerRow() const { return bytesPerRow_; }

  [[nodiscard]] std::string heading(int rounds) const {
    std::ostringstream text;
    text << rows_.size() << " rows, " << rounds << " rounds, checksum " << std::hex << checksum_;
    return text.str();
  }

  void printSpills() const {
    std::printf("\n");
    for (const Entry& entry : entries_) {
      if (entry.spilledBytes != 0) {
        std::printf(
            "%s: spilled %.1f MB, %.3f times the %.1f MB of the table\n", entry.name.c_str(),
            static_cast<double>(entry.spilledBytes) / 1e6,
            static_cast<double>(entry.spilledBytes) / static_cast<double>(entry.storedBytes),
            static_cast<double>(entry.storedBytes) / 1e6);
      }
    }
  }

 private:
  /// A contender in one order, with its engine and what that said of the last run.
  struct Entry {
    Contender contender;
    std::string name;
    SortOrder order;
    const Rows* input;
    const Rows* expected;
    Engine engine = nullptr;
    std::int64_t storedBytes = 0;
    std::int64_t spilledBytes = 0;
  };

  void enter(Entry entry) {
    if (entry.name.find(sortOptions_.only) != std::string::npos) {
      entry.engine = entry.contender.makeEngine(directory_);
      entries_.push_back(std::move(entry));
    }
  }

  void finish(Entry* entry) {
    check(*entry);
    entry->storedBytes = entry->engine->storedBytes();
    entry->spilledBytes = entry->engine->spilledBytes();
    if (entry->engine->isStable()) {
      bytesPerRow_ = static_cast<double>(entry->storedBytes) / static_cast<double>(rows_.size());
    }
    entry->engine->remove();
  }

  void check(const Entry& entry) const {
    const Rows& expected = *entry.expected;
    std::size_t count = 0;
    std::uint64_t checksum = 0;
    bool good = true;
    entry.engine->read([&](const RowView& row) {
      if (count < expected.size()) {
        const RowView wanted = viewOf(expected[count]);
        good = good && row.amount == wanted.amount && row.name == wanted.name &&
               (row.id == wanted.id || !entry.engine->isStable());
      }
      checksum += checksumOf(row);
      ++count;
    });
    if (!good || count != expected.size() || checksum != checksum_) {
      stop("the rows stored are not those given, in order", entry.name.c_str());
    }
  }

  SortOptions sortOptions_;
  std::string directory_;
  Rows rows_;
  Rows sortedRows_[std::size(orders)];
  std::uint64_t checksum_;
  std::vector<Entry> entries_;
  double bytesPerRow_ = 0;
};

void compare(const BenchmarkOptions& options, const SortOptions& sortOptions,
             const std::string& directory) {
  SortBenchmark benchmark(options, sortOptions, directory);
  std::vector<Work> works = benchmark.works();
  measure(options.rounds, &works);
  print(works, benchmark.heading(options.rounds), benchmark.bytesPerRow(), options);
  if (!options.json) {
    benchmark.printSpills();
  }
}

void run(const BenchmarkOptions& options, const SortOptions& sortOptions,
         const std::string& directory) {
  if (sortOptions.memory) {
    printMemoryOfSorts(makeSampleRows(options.rowCount), directory);
  }
  if (sortOptions.cancel) {
    printCancelledSorts(makeSampleRows(options.rowCount), directory);
  }
  if (!sortOptions.memory && !sortOptions.cancel) {
    compare(options, sortOptions, directory);
  }
}

}  // namespace

int main(int argc, char** argv) {
  const BenchmarkOptions defaults{.name = "sort", .rowCount = 2'000'000};
  SortOptions sortOptions;
  return runBenchmark(
      argc, argv, "Rows sorted into a table, against SQLite and DuckDB.", defaults,
      [&](const BenchmarkOptions& options, const std::string& directory) {
        run(options, sortOptions, directory);
      },
      [&](CLI::App& app) {
        app.add_option("--only", sortOptions.only, "only works whose name contains this");
        app.add_flag("--no-peers", sortOptions.withoutPeers, "only works of this library");
        app.add_flag("--memory", sortOptions.memory, "measure resident memory instead");
        app.add_flag("--cancel", sortOptions.cancel, "measure cancelled sorts instead");
      });
}
