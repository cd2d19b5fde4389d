/// Rows written and read, in one run: through the table object and the cursors, by the hand-written
/// twin, and by SQLite and, where its library was given to the build, DuckDB.
///
/// Every reader adds up a checksum of the values that it gets, which must be that of the rows
/// given. A reader that leaves columns out adds up the others.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <bit>
#include <filesystem>
#include <iomanip>
#include <sstream>
#include <string>
#include <vector>

#include "Measuring.h"
#include "RowPeers.h"
#include "RowTwin.h"
#include "SampleRows.h"
#include "TableEngine.h"
#include "zvwt.h"

namespace {

constexpr int firstColumns[] = {0, 1};
constexpr int lastColumns[] = {5, 6};

void addFirstColumns(const ZvbDatavar* values, RowChecksum* checksum) {
  bool failed = false;
  checksum->add(static_cast<std::uint64_t>(values[0].asInt64(&failed)));
  checksum->add(static_cast<std::uint64_t>(values[1].asInt64(&failed)));
}

void addLastColumns(const ZvbDatavar* values, RowChecksum* checksum) {
  bool failed = false;
  checksum->add(std::bit_cast<std::uint64_t>(values[0].asDouble(&failed)));
  checksum->add(values[1].asBool(&failed) ? 1 : 0);
}

/// What a string cursor gives of a row.
void addTexts(const ZvbDatavar* values, RowChecksum* checksum) {
  for (int i = 0; i < sampleColumnCount; ++i) {
    const ZvbString text =
        values[i].type() == zvbTypeDate ? values[i].asDate().asString(true) : values[i].asString();
    checksum->addText(text.asCstr(), text.asView().size());
  }
}

/// What the readers have to add up.
struct Expected {
  std::uint64_t forwards;
  std::uint64_t backwards;
  std::uint64_t firstColumns;
  std::uint64_t lastColumns;
  std::uint64_t texts;
};

Expected expect(const std::vector<SampleRow>& rows) {
  RowChecksum forwards;
  RowChecksum backwards;
  RowChecksum first;
  RowChecksum last;
  RowChecksum texts;
  ZvbDatavar values[sampleColumnCount];
  for (const SampleRow& row : rows) {
    assignSample(row, values);
    addRow(viewOf(row), &forwards);
    addRow(viewOf(rows[rows.size() - 1 - static_cast<std::size_t>(&row - rows.data())]),
           &backwards);
    addFirstColumns(values, &first);
    addLastColumns(&values[lastColumns[0]], &last);
    addTexts(values, &texts);
  }
  return {forwards.value(), backwards.value(), first.value(), last.value(), texts.value()};
}

/// Reads to the end, adding up each row.
template <typename AddRow>
std::uint64_t readRows(ZvWorkTableFile& table, const AddRow& add) {
  ZvbDatavar values[sampleColumnCount];
  RowChecksum checksum;
  bool end = false;
  while (table.readRow(values, &end)) {
    add(values, &checksum);
  }
  require(end, "read", table);
  return checksum.value();
}

template <typename Cursor, typename AddRow>
std::uint64_t readCursor(Cursor& cursor, const AddRow& add) {
  RowChecksum checksum;
  int step = cursor.next();
  for (; step == zvbCursorRow; step = cursor.next()) {
    add(cursor, &checksum);
  }
  if (step != zvbCursorEnd) {
    stop("read", cursor.errorMessage());
  }
  return checksum.value();
}

void addValues(ZvWorkTableCursor& cursor, RowChecksum* checksum) {
  addSampleValues([&cursor](int column) { return cursor.value(column); }, checksum);
}

void addCursorTexts(ZvWorkTableStringCursor& cursor, RowChecksum* checksum) {
  for (int i = 0; i < sampleColumnCount; ++i) {
    const ZvbString text = cursor.value(i);
    checksum->addText(text.asCstr(), text.asView().size());
  }
}

/// The cursor owns the table from here on.
template <typename Cursor>
void attach(Cursor* cursor, Table table, bool remove) {
  if (cursor == nullptr) {
    stop("no cursor", ZvbString());
  }
  cursor->setRemoveOnClose(remove);
  if (!cursor->setWorkTable(table.release())) {
    stop("cursor", cursor->errorMessage());
  }
}

class RowBenchmark {
 public:
  RowBenchmark(std::size_t rowCount, const std::string& directory)
      : rows_(makeSampleRows(rowCount)),
        expected_(expect(rows_)),
        directory_(directory),
        table_(directory, {}),
        peers_(makeRowPeers(directory)) {
    prepareValues();
  }
  RowBenchmark(const RowBenchmark&) = delete;
  RowBenchmark& operator=(const RowBenchmark&) = delete;

  /// Each reader follows the writer whose table it reads.
  std::vector<Work> works(bool withoutPeers) {
    std::vector<Work> all = ourWriters();
    if (!withoutPeers) {
      add(peerWriters(), &all);
    }
    add(ourReaders(), &all);
    if (!withoutPeers) {
      add(peerReaders(), &all);
    }
    return all;
  }

  [[nodiscard]] double bytesPerRow() const {
    return static_cast<double>(dataBytes_) / static_cast<double>(rows_.size());
  }
  [[nodiscard]] std::string heading(int rounds) const {
    std::ostringstream text;
    text << rows_.size() << " rows of " << std::fixed << std::setprecision(1) << bytesPerRow()
         << " bytes, " << rounds << " rounds, checksum " << std::hex << expected_.forwards;
    return text.str();
  }

 private:
  static constexpr std::size_t preparedRows = 512;

  static void add(const std::vector<Work>& works, std::vector<Work>* all) {
    all->insert(all->end(), works.begin(), works.end());
  }

  std::vector<Work> ourWriters() {
    return {
        {.name = "write by hand",
         .run = [this] { dataBytes_ = writeByHand(rows_, file("data"), file("index")); },
         .before = [this] { removeTwin(); },
         .side = Side::byHand},
        {.name = "writeRow alone",
         .comparisons = {{"write by hand", 0.85}},
         .run = [this] { writePrepared(); },
         .after = [this] { removePrepared(); }},
        {.name = "writeRow with assignments",
         .comparisons = {{"write by hand", 0.6},
                         {"SQLite, insert", 9},
                         {"DuckDB, appender", 4},
                         {"DuckDB, appended chunks"}},
         .run = [this] { table_.store(rows_, SortOrder::none); },
         .before = [this] { table_.remove(); }},
        {.name = "cursor, appendRow",
         .comparisons = {{"writeRow with assignments"}},
         .run = [this] { writeCursor(); },
         .after = [this] { cursor_.reset(); }},
    };
  }

  std::vector<Work> ourReaders() {
    return {
        {.name = "read by hand",
         .run = [this] { check(readByHand(file("data")), expected_.forwards); },
         .side = Side::byHand},
        {.name = "readRow",
         .comparisons = {{"read by hand", 0.55},
                         {"SQLite, step and columns", 8},
                         {"DuckDB, chunks, 2 threads", 2},
                         {"DuckDB, chunks, 1 thread"}},
         .run = [this] { check(table_.checksum(), expected_.forwards); }},
        {.name = "readRow, backwards",
         .comparisons = {{"readRow", 0.7}},
         .run = [this] { readBackwards(); }},
        {.name = "readRow, first two columns",
         .comparisons = {{"readRow", 2}},
         .run = [this] { readFirstColumns(); }},
        {.name = "readRow, last two columns",
         .comparisons = {{"readRow", 1.2}},
         .run = [this] { readLastColumns(); }},
        {.name = "cursor, typed values",
         .comparisons = {{"readRow", 0.9}},
         .run = [this] { readTypedCursor(); }},
        {.name = "cursor, texts",
         .comparisons = {{"readRow", 0.4}},
         .run = [this] { readStringCursor(); }},
    };
  }

  std::vector<Work> peerWriters() {
    std::vector<Work> all;
    for (const RowPeer& peer : peers_) {
      if (peer.writing != nullptr) {
        all.push_back(store(peer.writing, *peer.engine));
      }
    }
    return all;
  }

  std::vector<Work> peerReaders() {
    std::vector<Work> all;
    for (const RowPeer& peer : peers_) {
      if (peer.reading != nullptr) {
        all.push_back(read(peer.reading, *peer.engine));
      }
    }
    return all;
  }

  Work store(const char* name, RowEngine& engine) {
    return {.name = name,
            .run = [this, &engine] { engine.store(rows_, SortOrder::none); },
            .before = [&engine] { engine.remove(); },
            .side = Side::peer};
  }

  Work read(const char* name, RowEngine& engine) {
    return {.name = name,
            .run = [this, &engine] { check(engine.checksum(), expected_.forwards); },
            .side = Side::peer};
  }

  static void check(std::uint64_t checksum, std::uint64_t expected) {
    if (checksum != expected) {
      stop("the rows read are not those written", ZvbString());
    }
  }

  [[nodiscard]] std::string file(const char* kind) const { return directory_ + "/twin." + kind; }

  void removeTwin() const {
    std::filesystem::remove(file("data"));
    std::filesystem::remove(file("index"));
  }

  /// Row sets with their values in place, for writing without assignments.
  void prepareValues() {
    prepared_.resize(std::min(preparedRows, rows_.size()) * sampleColumnCount);
    for (std::size_t i = 0; i * sampleColumnCount < prepared_.size(); ++i) {
      assignSample(rows_[i], &prepared_[i * sampleColumnCount]);
    }
  }

  void writePrepared() {
    const Table table = table_.create(SortOrder::none);
    const std::size_t sets = prepared_.size() / sampleColumnCount;
    for (std::size_t i = 0; i < rows_.size(); ++i) {
      require(table->writeRow(&prepared_[i % sets * sampleColumnCount]), "write", *table);
    }
    require(table->close(), "close", *table);
    preparedName_ = table->getName();
  }

  void removePrepared() {
    ZvbString error;
    if (!table_.manager().deleteTable(preparedName_, &error)) {
      stop("delete", error);
    }
  }

  /// The table goes with the cursor.
  void writeCursor() {
    cursor_.reset(zvwtCreateCursor(&table_.manager()));
    attach(cursor_.get(), table_.create(SortOrder::none), /*remove=*/true);
    ZvbDatavar values[sampleColumnCount];
    for (const SampleRow& row : rows_) {
      assignSample(row, values);
      appendRow(values);
    }
    if (!cursor_->endAppend()) {
      stop("append", cursor_->errorMessage());
    }
  }

  void appendRow(const ZvbDatavar* values) {
    bool good = cursor_->newRow();
    for (int i = 0; i < sampleColumnCount; ++i) {
      cursor_->setValue(i, values[i]);
    }
    good = good && cursor_->appendRow();
    if (!good) {
      stop("append", cursor_->errorMessage());
    }
  }

  void readBackwards() {
    const Table table = table_.open(-1, nullptr, /*backwards=*/true);
    check(readRows(*table, addSample), expected_.backwards);
  }

  void readFirstColumns() {
    const Table table = table_.open(2, firstColumns);
    check(readRows(*table, addFirstColumns), expected_.firstColumns);
  }

  void readLastColumns() {
    const Table table = table_.open(2, lastColumns);
    check(readRows(*table, addLastColumns), expected_.lastColumns);
  }

  void readTypedCursor() {
    const zvwt::Cursor cursor(zvwtCreateCursor(&table_.manager()));
    attach(cursor.get(), table_.open(), /*remove=*/false);
    check(readCursor(*cursor, addValues), expected_.forwards);
  }

  void readStringCursor() {
    const zvwt::StringCursor cursor(zvwtCreateStringCursor(&table_.manager()));
    attach(cursor.get(), table_.open(), /*remove=*/false);
    check(readCursor(*cursor, addCursorTexts), expected_.texts);
  }

  std::vector<SampleRow> rows_;
  Expected expected_;
  std::string directory_;
  TableEngine table_;  // what writeRow with assignments wrote
  std::vector<RowPeer> peers_;
  std::vector<ZvbDatavar> prepared_;
  ZvbString preparedName_;
  zvwt::Cursor cursor_;  // what was appended by it
  std::int64_t dataBytes_ = 0;
};

void compare(const BenchmarkOptions& options, bool withoutPeers, const std::string& directory) {
  RowBenchmark benchmark(options.rowCount, directory);
  std::vector<Work> works = benchmark.works(withoutPeers);
  measure(options.rounds, &works);
  print(works, benchmark.heading(options.rounds), benchmark.bytesPerRow(), options);
}

}  // namespace

int main(int argc, char** argv) {
  const BenchmarkOptions defaults{.name = "rows", .rowCount = 2'000'000};
  bool withoutPeers = false;
  return runBenchmark(
      argc, argv, "Rows written and read, against a hand-written twin, SQLite and DuckDB.",
      defaults,
      [&](const BenchmarkOptions& options, const std::string& directory) {
        compare(options, withoutPeers, directory);
      },
      [&](CLI::App& app) {
        app.add_flag("--no-peers", withoutPeers, "only this library and the hand-written twin");
      });
}
