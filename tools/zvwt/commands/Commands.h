/// The verbs of the tool. Each runs to its end, or ends with a Failure, which its caller says; only
/// what does not end it is said by the verb itself. Standard output is for data.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "formats/CsvForm.h"
#include "process/ExitCode.h"
#include "tables/ReadOptions.h"
#include "tables/SortPlan.h"
#include "zvwt.h"

namespace zvwttool {

struct GivenType {
  std::string column;
  zvbType type;
};

struct GivenWidth {
  std::string column;
  int bytes;
};

struct ImportOptions {
  std::string file;  ///< "-" is standard input
  CsvForm form;
  bool fillsShortRows = false;
  std::vector<GivenType> types;
  std::vector<GivenWidth> widths;
  SortPlan sort;
  std::int64_t maxElementSize = 0;  ///< bytes, 0 for no limit
};

struct ShowOptions {
  ReadOptions read;
  std::int64_t limit = 20;  ///< rows
  bool isWide = false;      ///< nothing is cut or left out
};

enum class ExportFormat { csv, jsonLines, xml };

struct ExportOptions {
  ReadOptions read;
  ExportFormat format = ExportFormat::csv;
  CsvForm form;  ///< of a CSV text
};

struct InfoOptions {
  SourceOptions source;     ///< its rows and columns do not matter
  bool statistics = false;  ///< only what the table's statistics cursor gives
  bool readsRows = false;   ///< for what the values of each column are like
  bool isWide = false;      ///< nothing is cut or left out
  bool asJson = false;
};

struct ListOptions {
  bool asJson = false;
};

struct CopyOptions {
  ReadOptions read;                 ///< forwards
  std::int64_t maxElementSize = 0;  ///< bytes, 0 for no limit
};

struct SortOptions {
  ReadOptions read;  ///< forwards
  SortPlan plan;
  std::int64_t maxElementSize = 0;  ///< bytes, 0 for no limit
};

struct AppendOptions {
  std::string target;
  SourceOptions source;
};

struct UriOptions {
  SourceOptions source;
  bool isWide = false;  ///< nothing is cut or left out
  bool asJson = false;
};

struct PartitionOptions {
  SourceOptions source;
  int parts = 1;
};

struct CheckOptions {
  std::vector<std::string> tables;
  bool asJson = false;
};

struct CleanOptions {
  std::int64_t leastAge = 86400;  ///< seconds
  bool isDryRun = false;
  bool asJson = false;
};

struct DeleteOptions {
  std::vector<std::string> tables;
};

/// Makes a table of a CSV text and prints its name. Whatever fails, nothing stays behind.
[[nodiscard]] ExitCode runImport(ZvWorkTableManager& manager, const ImportOptions& options);
/// Prints rows for people.
[[nodiscard]] ExitCode runShow(ZvWorkTableManager& manager, const ShowOptions& options);
/// Prints the number of rows, which are read only when they have to satisfy conditions.
[[nodiscard]] ExitCode runCount(ZvWorkTableManager& manager, const ReadOptions& options);
/// Prints rows as CSV, see CsvWriter.h, or as JSON lines, see JsonLinesWriter.h, or all columns of
/// them as the library's XML document.
[[nodiscard]] ExitCode runExport(ZvWorkTableManager& manager, const ExportOptions& options);
/// Prints what a table consists of.
[[nodiscard]] ExitCode runInfo(ZvWorkTableManager& manager, const InfoOptions& options);
/// Prints which tables are in the manager's directories; a failure is what is wrong with any.
[[nodiscard]] ExitCode runList(ZvWorkTableManager& manager, const ListOptions& options);
/// Makes a table of rows and prints its name. Whatever fails, nothing stays behind.
[[nodiscard]] ExitCode runCopy(ZvWorkTableManager& manager, const CopyOptions& options);
/// Makes a sorted table of rows and prints its name. Rows with equal keys
/// keep their order. Whatever fails, nothing stays behind.
[[nodiscard]] ExitCode runSort(ZvWorkTableManager& manager, const SortOptions& options);
/// Adds the rows of a source to a table.
[[nodiscard]] ExitCode runAppend(ZvWorkTableManager& manager, const AppendOptions& options);
/// Prints a URI for each part of a table.
[[nodiscard]] ExitCode runPartition(ZvWorkTableManager& manager, const PartitionOptions& options);
/// Prints the URI of a source, or what a URI stands for that is given alone.
[[nodiscard]] ExitCode runUri(ZvWorkTableManager& manager, const UriOptions& options);
/// Prints what is wrong in the files of tables; a failure is one of any of them.
[[nodiscard]] ExitCode runCheck(ZvWorkTableManager& manager, const CheckOptions& options);
/// Removes what killed processes have left in the manager's directories and prints what it was.
[[nodiscard]] ExitCode runClean(ZvWorkTableManager& manager, const CleanOptions& options);
/// Deletes every table that can be deleted; a failure is one of any of them.
[[nodiscard]] ExitCode runDelete(ZvWorkTableManager& manager, const DeleteOptions& options);

}  // namespace zvwttool
