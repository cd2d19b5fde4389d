/// Opening tables: one of many columns and elements against its catalogue decoded by hand, and
/// fifty tables open at once, in turn written and read, against one table of as many rows.
#include <fcntl.h>
#include <malloc.h>
#include <sys/stat.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <string>
#include <vector>

#include "Measuring.h"
#include "SampleRows.h"
#include "System.h"
#include "zvwt.h"

namespace {

constexpr int wideColumns = 1000;
constexpr int wideElements = 1000;
constexpr std::size_t tablesAtOnce = 50;

Manager makeManager(const std::string& directory) {
  ZvbString error;
  Manager manager(zvwtCreateManager("bench", directory.c_str(), &error));
  if (manager == nullptr) {
    stop("no manager", error);
  }
  return manager;
}

// ---- The catalogue by hand

struct CatalogueColumn {
  std::uint16_t storageCode;
  std::int32_t width;
  std::int32_t maxLength;
  std::string name;
};

struct CatalogueElement {
  std::int64_t rows;
  std::string dataName;
  std::string indexName;
};

struct Catalogue {
  std::int64_t maxElementSize = 0;
  std::int64_t rows = 0;
  std::string accessKey;
  std::vector<CatalogueColumn> columns;
  std::vector<CatalogueElement> elements;
};

/// The fields of a catalogue one after another, in this machine's byte order.
class CatalogueFields {
 public:
  explicit CatalogueFields(const std::vector<char>& bytes) : bytes_(bytes) {}

  template <typename Number>
  Number number() {
    Number value{};
    std::memcpy(&value, take(sizeof value), sizeof value);
    return value;
  }
  /// Of a size that counts the terminator.
  std::string text(std::size_t size) {
    const char* start = take(size);
    return size == 0 ? std::string() : std::string(start, size - 1);
  }

 private:
  const char* take(std::size_t size) {
    if (bytes_.size() - position_ < size) {
      stop("by hand", "the catalogue ends early");
    }
    position_ += size;
    return bytes_.data() + position_ - size;
  }

  const std::vector<char>& bytes_;
  std::size_t position_ = 0;
};

CatalogueColumn decodeColumn(CatalogueFields* fields) {
  CatalogueColumn column;
  (void)fields->number<std::uint16_t>();  // length of the head
  column.storageCode = fields->number<std::uint16_t>();
  const auto nameSize = fields->number<std::uint32_t>();
  column.width = fields->number<std::int32_t>();
  column.maxLength = fields->number<std::int32_t>();
  column.name = fields->text(nameSize);
  return column;
}

CatalogueElement decodeElement(CatalogueFields* fields) {
  CatalogueElement element;
  (void)fields->number<std::uint32_t>();  // length of the head
  const auto dataNameSize = fields->number<std::uint16_t>();
  const auto indexNameSize = fields->number<std::uint16_t>();
  element.rows = fields->number<std::int64_t>();
  element.dataName = fields->text(dataNameSize);
  element.indexName = fields->text(indexNameSize);
  return element;
}

Catalogue decode(const std::vector<char>& bytes) {
  CatalogueFields fields(bytes);
  Catalogue catalogue;
  (void)fields.number<std::uint16_t>();  // byte-order mark
  (void)fields.number<std::int16_t>();   // version
  (void)fields.number<std::uint16_t>();  // length of the fixed part
  const auto accessKeySize = fields.number<std::uint16_t>();
  const auto columnCount = fields.number<std::uint32_t>();
  const auto elementCount = fields.number<std::uint32_t>();
  catalogue.maxElementSize = fields.number<std::int64_t>();
  catalogue.rows = fields.number<std::int64_t>();
  catalogue.accessKey = fields.text(accessKeySize);
  catalogue.columns.reserve(columnCount);
  for (std::uint32_t i = 0; i < columnCount; ++i) {
    catalogue.columns.push_back(decodeColumn(&fields));
  }
  catalogue.elements.reserve(elementCount);
  for (std::uint32_t i = 0; i < elementCount; ++i) {
    catalogue.elements.push_back(decodeElement(&fields));
  }
  return catalogue;
}

/// A file that is open for reading as long as the object lives.
class OpenFile {
 public:
  explicit OpenFile(const std::string& path) : file_(open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
    if (file_ < 0) {
      stop("cannot be opened", path.c_str());
    }
  }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  ~OpenFile() { close(file_); }

  [[nodiscard]] std::vector<char> bytes() const {
    struct stat info {};
    (void)fstat(file_, &info);
    std::vector<char> all(static_cast<std::size_t>(info.st_size));
    if (read(file_, all.data(), all.size()) != info.st_size) {
      stop("by hand", "the catalogue cannot be read");
    }
    return all;
  }

 private:
  int file_;
};

// ---- One wide table

/// A table of which every row has an element of its own.
class WideTable {
 public:
  WideTable(const std::string& directory, int openings)
      : directory_(directory), openings_(openings), manager_(makeManager(directory)) {
    ZvbString error;
    const Table table(manager_->createTable(wideColumns, 1, &error));
    if (table == nullptr) {
      stop("no table", error);
    }
    for (int i = 0; i < wideColumns; ++i) {
      const std::string name = "column " + std::to_string(i);
      require(table->defineColumn(i, name.c_str(), zvbTypeInteger, 0), "column", *table);
    }
    writeRows(*table);
    name_ = table->getName();
  }

  /// A table opened at its first row has no element file open until that row is read; opened at
  /// any other it has those of the row's element.
  std::vector<Work> works() {
    constexpr double atLeast = 0.3;
    return {
        {.name = "open, by hand",
         .run = [this] { repeat([this] { (void)decodeCatalogue(); }); },
         .side = Side::byHand},
        {.name = "open",
         .comparisons = {{"open, by hand", atLeast}},
         .run = [this] { repeat([this] { openAt(0); }); }},
        {.name = "open at a row, by hand",
         .run = [this] { repeat([this] { openElementByHand(); }); },
         .side = Side::byHand},
        {.name = "open at a row",
         .comparisons = {{"open at a row, by hand", atLeast}},
         .run = [this] { repeat([this] { openAt(middle); }); }},
    };
  }

 private:
  static constexpr int middle = wideElements / 2;

  static void writeRows(ZvWorkTableFile& table) {
    std::vector<ZvbDatavar> values(wideColumns);
    for (int row = 0; row < wideElements; ++row) {
      values[0].assign(row);
      require(table.writeRow(values.data()), "write", table);
    }
    require(table.close(), "close", table);
  }

  template <typename Run>
  void repeat(const Run& run) const {
    for (int i = 0; i < openings_; ++i) {
      run();
    }
  }

  void openAt(int row) {
    ZvbString error;
    const int* allColumns = nullptr;
    const RowRange range{row, 1};
    const Table table(manager_->openTable(name_, -1, allColumns, &range, false, &error));
    if (table == nullptr) {
      stop("open", error);
    }
    if (table->getColumnCount() != wideColumns || table->getRowCount() != wideElements) {
      stop("open", "it is another table");
    }
  }

  [[nodiscard]] Catalogue decodeCatalogue() const {
    Catalogue catalogue = decode(OpenFile(directory_ + "/" + name_.asCstr()).bytes());
    std::int64_t rows = 0;
    for (const CatalogueElement& element : catalogue.elements) {
      rows += element.rows;
    }
    if (catalogue.columns.size() != wideColumns || catalogue.elements.size() != wideElements ||
        rows != wideElements || catalogue.rows != rows) {
      stop("by hand", "it is another table");
    }
    return catalogue;
  }

  void openElementByHand() const {
    const Catalogue catalogue = decodeCatalogue();
    const OpenFile index(directory_ + "/" + catalogue.elements[middle].indexName);
    const OpenFile data(directory_ + "/" + catalogue.elements[middle].dataName);
  }

  std::string directory_;
  int openings_;
  Manager manager_;
  ZvbString name_;
};

// ---- Tables open at once

/// Tables among which rows are dealt in turn.
class TableGroup {
 public:
  TableGroup(const std::vector<SampleRow>& rows, std::size_t tableCount,
             const std::string& directory)
      : rows_(rows), names_(tableCount), manager_(makeManager(directory)) {
    ZvbDatavar values[sampleColumnCount];
    RowChecksum checksum;
    for (const SampleRow& row : rows_) {
      assignSample(row, values);
      addSample(values, &checksum);
    }
    checksum_ = checksum.value();
  }
  TableGroup(const TableGroup&) = delete;
  TableGroup& operator=(const TableGroup&) = delete;
  ~TableGroup() { remove(); }

  /// `beforeClosing` is called when all rows are in the tables and these are still open.
  void write(const std::function<void()>& beforeClosing = {}) {
    std::vector<Table> tables;
    for (ZvbString& name : names_) {
      tables.push_back(create());
      name = tables.back()->getName();
    }
    ZvbDatavar values[sampleColumnCount];
    std::size_t turn = 0;
    for (const SampleRow& row : rows_) {
      ZvWorkTableFile& table = *tables[turn];
      assignSample(row, values);
      require(table.writeRow(values), "write", table);
      turn = turn + 1 == tables.size() ? 0 : turn + 1;
    }
    if (beforeClosing) {
      beforeClosing();
    }
    for (const Table& table : tables) {
      require(table->close(), "close", *table);
    }
  }

  /// `beforeClosing` is called when all rows have been read and the tables are still open.
  void read(const std::function<void()>& beforeClosing = {}) {
    const std::vector<Table> tables = open();
    ZvbDatavar values[sampleColumnCount];
    RowChecksum checksum;
    std::size_t turn = 0;
    bool end = false;
    for (std::size_t row = 0; row < rows_.size(); ++row) {
      ZvWorkTableFile& table = *tables[turn];
      require(table.readRow(values, &end), "read", table);
      addSample(values, &checksum);
      turn = turn + 1 == tables.size() ? 0 : turn + 1;
    }
    if (checksum.value() != checksum_) {
      stop("the rows read are not those written", ZvbString());
    }
    if (beforeClosing) {
      beforeClosing();
    }
  }

  void remove() {
    for (ZvbString& name : names_) {
      ZvbString error;
      if (name.length() != 0 && !manager_->deleteTable(name, &error)) {
        std::cerr << "delete: " << error.asCstr() << '\n';
      }
      name.setNull();
    }
  }

 private:
  Table create() {
    ZvbString error;
    Table table(manager_->createTable(sampleColumnCount, 0, &error));
    if (table == nullptr) {
      stop("no table", error);
    }
    require(defineSampleColumns(*table), "column", *table);
    return table;
  }

  std::vector<Table> open() {
    std::vector<Table> tables;
    for (const ZvbString& name : names_) {
      ZvbString error;
      tables.emplace_back(manager_->openTable(name, false, &error));
      if (tables.back() == nullptr) {
        stop("open", error);
      }
    }
    return tables;
  }

  const std::vector<SampleRow>& rows_;
  std::vector<ZvbString> names_;
  Manager manager_;
  std::uint64_t checksum_ = 0;
};

std::vector<Work> worksOf(TableGroup* one, TableGroup* fifty) {
  return {
      {.name = "write one table", .run = [=] { one->write(); }, .before = [=] { one->remove(); }},
      {.name = "write fifty tables in turn",
       .comparisons = {{"write one table"}},
       .run = [=] { fifty->write(); },
       .before = [=] { fifty->remove(); }},
      {.name = "read one table", .run = [=] { one->read(); }},
      {.name = "read fifty tables in turn",
       .comparisons = {{"read one table"}},
       .run = [=] { fifty->read(); }},
  };
}

/// Bytes of resident memory that an open table takes when all its rows have been through it.
struct TableMemory {
  std::int64_t writing;
  std::int64_t reading;
};

template <typename Run>
std::int64_t memoryPerTable(const Run& run) {
  (void)malloc_trim(0);  // or freed memory would hide growth
  const std::int64_t before = residentBytes();
  std::int64_t inUse = before;
  run([&] { inUse = residentBytes(); });
  return (inUse - before) / static_cast<std::int64_t>(tablesAtOnce);
}

TableMemory measureMemory(TableGroup* fifty) {
  TableMemory memory{};
  memory.writing = memoryPerTable([&](const auto& look) { fifty->write(look); });
  memory.reading = memoryPerTable([&](const auto& look) { fifty->read(look); });
  fifty->remove();
  return memory;
}

// ---- All of it

struct Results {
  TableMemory memory;
  std::vector<Work> openWorks;
  std::vector<Work> rowWorks;
};

Results measureAll(const BenchmarkOptions& options, int openings, const std::string& directory) {
  const std::vector<SampleRow> rows = makeSampleRows(options.rowCount);
  TableGroup one(rows, 1, directory);
  TableGroup fifty(rows, tablesAtOnce, directory);
  WideTable wide(directory, openings);
  Results results{.memory = measureMemory(&fifty),
                  .openWorks = wide.works(),
                  .rowWorks = worksOf(&one, &fifty)};
  measure(options.rounds, &results.openWorks);
  measure(options.rounds, &results.rowWorks);
  return results;
}

/// The speed of a work as a part of that of the work it is compared with; 1 for one that is not.
double ratioOf(const Work& work, const std::vector<Work>& works) {
  for (const Work& other : works) {
    if (!work.comparisons.empty() && work.comparisons[0].to == other.name) {
      return other.median() / work.median();
    }
  }
  return 1;
}

void printComparison(double atLeast, double ratio) {
  if (atLeast == 0) {
    std::printf(" %8s %9.2f", "", ratio);
  } else {
    std::printf(" %8.2f %9.2f%s", atLeast, ratio, ratio < atLeast ? "  below" : "");
  }
}

void printWorks(const std::vector<Work>& works, const char* unit, double unitsPerRun) {
  std::printf("%-28s %12s %8s %9s\n", "work", unit, "asked", "measured");
  for (const Work& work : works) {
    std::printf("%-28s %12.3f", work.name.c_str(), work.median() * 1e6 / unitsPerRun);
    if (!work.comparisons.empty()) {
      printComparison(work.comparisons[0].atLeast, ratioOf(work, works));
    }
    std::printf("\n");
  }
}

void printText(const Results& results, const BenchmarkOptions& options, int openings) {
  std::printf("a table of %d columns and %d elements\n\n", wideColumns, wideElements);
  printWorks(results.openWorks, "us/opening", openings);
  std::printf("\n%zu rows\n\n", options.rowCount);
  printWorks(results.rowWorks, "us/row", static_cast<double>(options.rowCount));
  std::printf("\nmemory of an open table: writing %.1f kB, reading %.1f kB\n",
              static_cast<double>(results.memory.writing) / 1e3,
              static_cast<double>(results.memory.reading) / 1e3);
}

void printJsonWorks(const std::vector<Work>& works, double unitsPerRun) {
  const char* separator = "";
  for (const Work& work : works) {
    std::printf("%s\n  {\"name\": \"%s\", \"microseconds\": %.4f, \"ratio\": %.3f}", separator,
                work.name.c_str(), work.median() * 1e6 / unitsPerRun, ratioOf(work, works));
    separator = ",";
  }
}

void printJson(const Results& results, const BenchmarkOptions& options, int openings) {
  std::printf(R"({"name": "opening", "columns": %d, "elements": %d, "openings": [)", wideColumns,
              wideElements);
  printJsonWorks(results.openWorks, openings);
  std::printf("\n], \"rows\": %zu, \"tables\": %zu, \"rowWorks\": [", options.rowCount,
              tablesAtOnce);
  printJsonWorks(results.rowWorks, static_cast<double>(options.rowCount));
  std::printf("\n], \"residentBytesPerTable\": {\"writing\": %lld, \"reading\": %lld}}\n",
              static_cast<long long>(results.memory.writing),
              static_cast<long long>(results.memory.reading));
}

}  // namespace

int main(int argc, char** argv) {
  const BenchmarkOptions defaults{.name = "opening", .rowCount = 1'000'000};
  int openings = 100;
  return runBenchmark(
      argc, argv, "Opening a table, and many tables open at once.", defaults,
      [&](const BenchmarkOptions& options, const std::string& directory) {
        const Results results = measureAll(options, openings, directory);
        (options.json ? printJson : printText)(results, options, openings);
      },
      [&](CLI::App& app) {
        app.add_option("--openings", openings, "openings of the wide table in a round")
            ->check(CLI::PositiveNumber);
      });
}
