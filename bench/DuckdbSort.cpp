#include "DuckdbSort.h"

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
           const DuckdbSortSettings& settings) {
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

  void execute(const std::string& sql, duckdb_result* result) const {
    if (duckdb_query(connection(), sql.c_str(), result) != DuckDBSuccess) {
      fail(duckdb_result_error(result));
    }
  }
  void execute(const std::string& sql) const {
    Result result;
    execute(sql, result.get());
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

void append(const Appender& appender, const Chunk& chunk, const SampleRow* rows, idx_t count) {
  duckdb_data_chunk_reset(chunk.get());
  Columns columns(chunk.get());
  for (idx_t i = 0; i < count; ++i) {
    columns.put(i, viewOf(rows[i]));
  }
  duckdb_data_chunk_set_size(chunk.get(), count);
  if (duckdb_append_data_chunk(appender.get(), chunk.get()) != DuckDBSuccess) {
    fail(duckdb_appender_error(appender.get()));
  }
}

void append(const Database& database, const std::vector<SampleRow>& rows) {
  Appender appender;
  if (duckdb_appender_create_ext(database.connection(), "temp", "main", "input",
                                 appender.address()) != DuckDBSuccess) {
    fail(duckdb_appender_error(appender.get()));
  }
  const Chunk chunk = makeChunk();
  const idx_t chunkRows = duckdb_vector_size();
  for (idx_t first = 0; first < rows.size(); first += chunkRows) {
    append(appender, chunk, &rows[first], std::min<idx_t>(chunkRows, rows.size() - first));
  }
  if (duckdb_appender_close(appender.get()) != DuckDBSuccess) {
    fail(duckdb_appender_error(appender.get()));
  }
}

}  // namespace

DuckdbSort::DuckdbSort(const std::string& directory, const DuckdbSortSettings& settings)
    : path_(directory + "/sorted.duckdb"), temporaryDirectory_(directory), settings_(settings) {}

/// The rows come in whole chunks, DuckDB's fastest way, into a temporary table, which costs less
/// than one of the file's own. They are stored without compression, as ours are, which takes DuckDB
/// a third less time. The checkpoint waits for the disk, and DuckDB cannot be told not to.
void DuckdbSort::store(const Rows& rows, SortOrder order) {
  const Database database(path_, temporaryDirectory_, settings_);
  database.execute("SET force_compression='uncompressed'");
  database.execute(
      "CREATE TEMP TABLE input (id BIGINT, amount BIGINT, cents BIGINT, code VARCHAR,"
      " name VARCHAR, day DOUBLE, flag BOOLEAN)");
  append(database, rows);
  database.execute(std::string("CREATE TABLE sorted AS SELECT * FROM input ORDER BY ") +
                   sqlKeys(order));
  database.execute("CHECKPOINT");
}

void DuckdbSort::read(const RowTaker& take) {
  const Database database(path_, temporaryDirectory_, settings_);
  Result result;
  database.execute("SELECT * FROM sorted ORDER BY rowid", result.get());
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

std::int64_t DuckdbSort::storedBytes() const {
  return static_cast<std::int64_t>(std::filesystem::file_size(path_));
}

void DuckdbSort::remove() { std::filesystem::remove(path_); }

#endif  // ZVWT_WITH_DUCKDB
