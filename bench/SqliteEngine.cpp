#include "SqliteEngine.h"

#include <filesystem>
#include <stdexcept>

namespace {

struct Finish {
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Statement = std::unique_ptr<sqlite3_stmt, Finish>;

void require(bool success, sqlite3* database) {
  if (!success) {
    throw std::runtime_error(std::string("SQLite: ") + sqlite3_errmsg(database));
  }
}

void execute(sqlite3* database, const std::string& sql) {
  require(sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK, database);
}

Statement prepare(sqlite3* database, const std::string& sql) {
  sqlite3_stmt* statement = nullptr;
  require(sqlite3_prepare_v2(database, sql.c_str(), -1, &statement, nullptr) == SQLITE_OK,
          database);
  return Statement(statement);
}

bool bindText(sqlite3_stmt* statement, int number, std::string_view text) {
  return sqlite3_bind_text(statement, number, text.data(), static_cast<int>(text.size()),
                           SQLITE_STATIC) == SQLITE_OK;
}

bool insert(sqlite3_stmt* statement, const RowView& row) {
  return sqlite3_bind_int64(statement, 1, row.id) == SQLITE_OK &&
         sqlite3_bind_int64(statement, 2, row.amount) == SQLITE_OK &&
         sqlite3_bind_int64(statement, 3, row.cents) == SQLITE_OK &&
         bindText(statement, 4, row.code) && bindText(statement, 5, row.name) &&
         sqlite3_bind_double(statement, 6, row.day) == SQLITE_OK &&
         sqlite3_bind_int(statement, 7, row.flag ? 1 : 0) == SQLITE_OK &&
         sqlite3_step(statement) == SQLITE_DONE && sqlite3_reset(statement) == SQLITE_OK;
}

/// Makes a table of the name and puts the rows into it.
void fill(sqlite3* database, const std::string& table, const std::vector<SampleRow>& rows) {
  execute(database, "CREATE TABLE " + table +
                        " (id INTEGER, amount INTEGER, cents INTEGER, code TEXT, name TEXT,"
                        " day REAL, flag INTEGER)");
  const Statement statement =
      prepare(database, "INSERT INTO " + table + " VALUES (?, ?, ?, ?, ?, ?, ?)");
  for (const SampleRow& row : rows) {
    require(insert(statement.get(), viewOf(row)), database);
  }
}

std::string_view textOf(sqlite3_stmt* statement, int column) {
  const void* text = sqlite3_column_text(statement, column);
  return {static_cast<const char*>(text),
          static_cast<std::size_t>(sqlite3_column_bytes(statement, column))};
}

RowView viewOf(sqlite3_stmt* statement) {
  return {sqlite3_column_int64(statement, 0),
          sqlite3_column_int64(statement, 1),
          sqlite3_column_int64(statement, 2),
          textOf(statement, 3),
          textOf(statement, 4),
          sqlite3_column_double(statement, 5),
          sqlite3_column_int(statement, 6) != 0};
}

}  // namespace

SqliteEngine::SqliteEngine(const std::string& directory, std::int64_t cacheBytes)
    : path_(directory + "/rows.sqlite"), temporaryDirectory_(directory), cacheBytes_(cacheBytes) {}

/// As fast as SQLite can be made for rows that need not survive a crash, which is what a work table
/// promises too: no journal, nothing waits for the disk, one thread for the sort beside the
/// caller's, and as much memory as our sort has. The sorter takes its memory from the cache size.
SqliteEngine::Database SqliteEngine::open() const {
  sqlite3* handle = nullptr;
  const bool opened = sqlite3_open(path_.c_str(), &handle) == SQLITE_OK;
  Database database(handle);
  require(opened, handle);
  sqlite3_free(sqlite3_temp_directory);
  sqlite3_temp_directory = sqlite3_mprintf("%s", temporaryDirectory_.c_str());
  const std::string cacheSize = "cache_size=-" + std::to_string(cacheBytes_ / 1024);
  execute(handle,
          "PRAGMA page_size=16384; PRAGMA journal_mode=OFF; PRAGMA synchronous=OFF;"
          "PRAGMA locking_mode=EXCLUSIVE; PRAGMA temp_store=FILE; PRAGMA threads=1;"
          "PRAGMA main." +
              cacheSize + "; PRAGMA temp." + cacheSize);
  return database;
}

/// To be sorted, the rows come into a temporary table first, which costs less than one of the
/// file's own.
void SqliteEngine::store(const Rows& rows, SortOrder order) {
  const Database database = open();
  execute(database.get(), "BEGIN");
  if (order == SortOrder::none) {
    fill(database.get(), "main.stored", rows);
  } else {
    fill(database.get(), "temp.input", rows);
    execute(
        database.get(),
        std::string("CREATE TABLE stored AS SELECT * FROM temp.input ORDER BY ") + sqlKeys(order));
  }
  execute(database.get(), "COMMIT");
}

template <typename Take>
void SqliteEngine::readRows(const Take& take) const {
  const Database database = open();
  execute(database.get(), "PRAGMA mmap_size=2000000000");  // faster than its own cache
  const Statement statement = prepare(database.get(), "SELECT * FROM stored ORDER BY rowid");
  int status = SQLITE_ROW;
  while ((status = sqlite3_step(statement.get())) == SQLITE_ROW) {
    take(viewOf(statement.get()));
  }
  require(status == SQLITE_DONE, database.get());
}

void SqliteEngine::read(const RowTaker& take) { readRows(take); }

std::uint64_t SqliteEngine::checksum() {
  RowChecksum checksum;
  readRows([&checksum](const RowView& row) { addRow(row, &checksum); });
  return checksum.value();
}

std::int64_t SqliteEngine::storedBytes() const {
  return static_cast<std::int64_t>(std::filesystem::file_size(path_));
}

void SqliteEngine::remove() { std::filesystem::remove(path_); }
