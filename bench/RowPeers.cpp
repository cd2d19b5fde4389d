#include "RowPeers.h"

#ifdef ZVWT_WITH_SQLITE
#include "SqliteEngine.h"
#endif
#ifdef ZVWT_WITH_DUCKDB
#include "DuckdbEngine.h"
#endif

std::vector<RowPeer> makeRowPeers([[maybe_unused]] const std::string& directory) {
  std::vector<RowPeer> peers;
#ifdef ZVWT_WITH_SQLITE
  constexpr std::int64_t cacheBytes = 64 << 20;
  peers.push_back({"SQLite, insert", "SQLite, step and columns",
                   std::make_unique<SqliteEngine>(directory, cacheBytes)});
#endif
#ifdef ZVWT_WITH_DUCKDB
  const auto duckdb = [&directory](const DuckdbEngineSettings& settings) {
    return std::make_unique<DuckdbEngine>(directory, settings);
  };
  peers.push_back(
      {"DuckDB, appender", nullptr,
       duckdb({.memoryLimit = nullptr, .threads = 2, .appending = DuckdbAppending::singleRows})});
  peers.push_back({"DuckDB, appended chunks", "DuckDB, chunks, 2 threads",
                   duckdb({.memoryLimit = nullptr, .threads = 2})});
  peers.push_back(
      {nullptr, "DuckDB, chunks, 1 thread", duckdb({.memoryLimit = nullptr, .threads = 1})});
#endif
  return peers;
}
