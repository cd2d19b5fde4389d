#include "DuckdbEngine.h"

#ifdef ZVWT_WITH_DUCKDB

#include <duckdb.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <stdexcept>

namespace {

[[noreturn]] void fail(const char* why) {
  throw std::runtime_error(std::string("DuckDB: ") + (why == nullptr ? "failed" : why));
}

/// A handle of DuckDB's with the function that gives it back, which clears the handle itself.
template <typename Handle, void (*destroy)(Handle*)>
class Owner {
 public:
  Owner() = default;
  explicit Owner(Handle handle) : handle_(handle) {}
  Owner(const Owner&) = delete;
  Owner& operator=(const Owner&) = delete;
  ~Owner() { destroy(&handle_); }

  [[nodiscard]] Handle get() const { return handle_; }
  [[nodiscard]] Handle* address() { return &handle_; }

 private:
  Handle handle_ = {};
};

void destroyAppender(duckdb_appender* appender) {
  static_cast<void>(duckdb_appender_destroy(appender));
}

using Config = Owner<duckdb_config, duckdb_destroy_config>;
using Chunk = Owner<duckdb_data_chunk, duckdb_destroy_data_chunk>;
using Type = Owner<duckdb_logical_type, duckdb_destroy_logical_type>;
using Statement = Owner<duckdb_prepared_statement, duckdb_destroy_prepare>;
using Appender = Owner<duckdb_appender, destroyAppender>;

class Result {
 public:
  Result() = default;
  Result(const Result&) = delete;
  Result& operator=(const Result&) = delete;
  ~Result() { duckdb_destroy_result(&result_); }

  [[nodiscard]] duckdb_result* get() { return &result_; }

 private:
  duckdb_result result_ = {};
};

/// An open database file and a connection to it; destroyed, everything is on file.
class Database {
 public:
  Database(const std::string& path, const std::string& temporaryDirectory,
           const DuckdbEngineSettings& settings) {
    Config config;
    if (duckdb_create_config(config.address()) != DuckDBSuccess) {
      fail("no configuration");
    }
    set(config, "threads", std::to_string(settings.threads).c_str());
    set(config, "temp_directory", temporaryDirectory.c_str());
    if (settings.memoryLimit != nullptr) {
      set(config, "memory_limit", settings.memoryLimit);
    }
    char* error = nullptr;
    if (duckdb_open_ext(path.c_str(), database_.address(), config.get(), &error) != DuckDBSuccess) {
      fail(error);
    }
    if (duckdb_connect(database_.get(), connection_.address()) != DuckDBSuccess) {
      fail("no connection");
    }
  }

  [[nodiscard]] duckdb_connection connection() const { return connection_.get(); }

  void execute(const std::string& sql) const {
    Result result;
    if (duckdb_query(connection(), sql.c_str(), result.get()) != DuckDBSuccess) {
      fail(duckdb_result_error(result.get()));
    }
  }

  void stream(const char* sql, duckdb_result* result) const {
    Statement statement;
    if (duckdb_prepare(connection(), sql, statement.address()) != DuckDBSuccess) {
      fail(duckdb_prepare_error(statement.get()));
    }
    if (duckdb_execute_prepared_streaming(statement.get(), result) != DuckDBSuccess) {
      fail(duckdb_result_error(result));
    }
  }

 private:
  static void set(const Config& config, const char* name, const char* value) {
    if (duckdb_set_config(config.get(), name, value) != DuckDBSuccess) {
      fail(name);
    }
  }

  Owner<duckdb_database, duckdb_close> database_;
  Owner<duckdb_connection, duckdb_disconnect> connection_;
};

Chunk makeChunk() {
  const Type integer(duckdb_create_logical_type(DUCKDB_TYPE_BIGINT));
  const Type text(duckdb_create_logical_type(DUCKDB_TYPE_VARCHAR));
  const Type real(duckdb_create_logical_type(DUCKDB_TYPE_DOUBLE));
  const Type boolean(duckdb_create_logical_type(DUCKDB_TYPE_BOOLEAN));
  std::array<duckdb_logical_type, sampleColumnCount> types = {
      integer.get(), integer.get(), integer.get(), text.get(),
      text.get(),    real.get(),    boolean.get()};
  return Chunk(duckdb_create_data_chunk(types.data(), types.size()));
}

/// The vectors of a chunk, one per column.
class Columns {
 public:
  explicit Columns(duckdb_data_chunk chunk) {
    for (idx_t i = 0; i < vectors_.size(); ++i) {
      vectors_[i] = duckdb_data_chunk_get_vector(chunk, i);
      data_[i] = duckdb_vector_get_data(vectors_[i]);
    }
  }

  void put(idx_t place, const RowView& row) {
    value<std::int64_t>(0, place) = row.id;
    value<std::int64_t>(1, place) = row.amount;
    value<std::int64_t>(2, place) = row.cents;
    duckdb_vector_assign_string_element_len(vectors_[3], place, row.code.data(), row.code.size());
    duckdb_vector_assign_string_element_len(vectors_[4], place, row.name.data(), row.name.size());
    value<double>(5, place) = row.day;
    value<bool>(6, place) = row.flag;
  }

  [[nodiscard]] RowView row(idx_t place) {
    return {value<std::int64_t>(0, place),
            value<std::int64_t>(1, place),
            value<std::int64_t>(2, place),
            text(3, place),
            text(4, place),
            value<double>(5, place),
            value<bool>(6, place)};
  }

 private:
  template <typename Value>
  Value& value(std::size_t column, idx_t place) {
    return static_cast<Value*>(data_[column])[place];
  }
  std::string_view text(std::size_t column, idx_t place) {
    auto& stored = value<duckdb_string_t>(column, place);
    return {duckdb_string_t_data(&stored), duckdb_string_t_length(stored)};
  }

  std::array<duckdb_vector, sampleColumnCount> vectors_ = {};
  std::array<void*, sampleColumnCount> data_ = {};
};

void require(duckdb_state state, const Appender& appender) {
  if (state != DuckDBSuccess) {
    fail(duckdb_appender_error(appender.get()));
  }
}

void appendChunk(const Appender& appender, const Chunk& chunk, const SampleRow* rows, idx_t count) {
  duckdb_data_chunk_reset(chunk.get());
  Columns columns(chunk.get());
  for (idx_t i = 0; i < count; ++i) {
    columns.put(i, viewOf(rows[i]));
  }
  duckdb_data_chunk_set_size(chunk.get(), count);
  require(duckdb_append_data_chunk(appender.get(), chunk.get()), appender);
}

void appendChunks(const Appender& appender, const std::vector<SampleRow>& rows) {
  const Chunk chunk = makeChunk();
  const idx_t chunkRows = duckdb_vector_size();
  for (idx_t first = 0; first < rows.size(); first += chunkRows) {
    appendChunk(appender, chunk, &rows[first], std::min<idx_t>(chunkRows, rows.size() - first));
  }
}

duckdb_state appendText(duckdb_appender appender, std::string_view text) {
  return duckdb_append_varchar_length(appender, text.data(), text.size());
}

bool appendRow(duckdb_appender appender, const RowView& row) {
  return duckdb_appender_begin_row(appender) == DuckDBSuccess &&
         duckdb_append_int64(appender, row.id) == DuckDBSuccess &&
         duckdb_append_int64(appender, row.amount) == DuckDBSuccess &&
         duckdb_append_int64(appender, row.cents) == DuckDBSuccess &&
         appendText(appender, row.code) == DuckDBSuccess &&
         appendText(appender, row.name) == DuckDBSuccess &&
         duckdb_append_double(appender, row.day) == DuckDBSuccess &&
         duckdb_append_bool(appender, row.flag) == DuckDBSuccess &&
         duckdb_appender_end_row(appender) == DuckDBSuccess;
}

void appendRows(const Appender& appender, const std::vector<SampleRow>& rows) {
  for (const SampleRow& row : rows) {
    if (!appendRow(appender.get(), viewOf(row))) {
      fail(duckdb_appender_error(appender.get()));
    }
  }
}

/// Where the appender finds a table that has the columns of the sample rows.
struct TablePlace {
  const char* catalogue;  ///< "temp" for temporary tables; null for those of the file
  const char* name;
};

void create(const Database& database, const TablePlace& table) {
  database.execute(
      std::string(table.catalogue == nullptr ? "CREATE TABLE " : "CREATE TEMP TABLE ") +
      table.name +
      " (id BIGINT, amount BIGINT, cents BIGINT, code VARCHAR, name VARCHAR,"
      " day DOUBLE, flag BOOLEAN)");
}

void fill(const Database& database, const TablePlace& table, const std::vector<SampleRow>& rows,
          DuckdbAppending appending) {
  create(database, table);
  Appender appender;
  require(duckdb_appender_create_ext(database.connection(), table.catalogue, "main", table.name,
                                     appender.address()),
          appender);
  if (appending == DuckdbAppending::wholeChunks) {
    appendChunks(appender, rows);
  } else {
    appendRows(appender, rows);
  }
  require(duckdb_appender_close(appender.get()), appender);
}

}  // namespace

DuckdbEngine::DuckdbEngine(const std::string& directory, const DuckdbEngineSettings& settings)
    : path_(directory + "/rows.duckdb"), temporaryDirectory_(directory), settings_(settings) {}

/// To be sorted, the rows come into a temporary table first, which costs less than one of the
/// file's own; those that are not come in one transaction, without which the appender commits now
/// and then. They are stored without compression, as ours are, which takes DuckDB a third less
/// time. The checkpoint waits for the disk, and DuckDB cannot be told not to.
void DuckdbEngine::store(const Rows& rows, SortOrder order) {
  const Database database(path_, temporaryDirectory_, settings_);
  database.execute("SET force_compression='uncompressed'");
  if (order == SortOrder::none) {
    database.execute("BEGIN TRANSACTION");
    fill(database, {.catalogue = nullptr, .name = "stored"}, rows, settings_.appending);
    database.execute("COMMIT");
  } else {
    fill(database, {.catalogue = "temp", .name = "input"}, rows, settings_.appending);
    database.execute(std::string("CREATE TABLE stored AS SELECT * FROM temp.input ORDER BY ") +
                     sqlKeys(order));
  }
  database.execute("CHECKPOINT");
}

/// Without an ORDER BY, which would have them sorted, the rows come in the order in which they were
/// stored all the same. The result is streamed: DuckDB would else gather all of it before the first
/// chunk, which takes half as long again.
template <typename Take>
void DuckdbEngine::readRows(const Take& take) const {
  const Database database(path_, temporaryDirectory_, settings_);
  Result result;
  database.stream("SELECT * FROM stored", result.get());
  for (;;) {
    const Chunk chunk(duckdb_fetch_chunk(*result.get()));
    if (chunk.get() == nullptr) {
      return;
    }
    Columns columns(chunk.get());
    for (idx_t i = 0; i < duckdb_data_chunk_get_size(chunk.get()); ++i) {
      take(columns.row(i));
    }
  }
}

void DuckdbEngine::read(const RowTaker& take) { readRows(take); }

std::uint64_t DuckdbEngine::checksum() {
  RowChecksum checksum;
  readRows([&checksum](const RowView& row) { addRow(row, &checksum); });
  return checksum.value();
}

std::int64_t DuckdbEngine::storedBytes() const {
  return static_cast<std::int64_t>(std::filesystem::file_size(path_));
}

void DuckdbEngine::remove() { std::filesystem::remove(path_); }

#endif  // ZVWT_WITH_DUCKDB
