/// The verbs of the tool. Each runs to its end, says on standard error what went wrong, and leaves
/// standard output to data.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "ExitCode.h"
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
  std::string directories;  ///< separated by np_dir_listsep; empty for the library's choice
  std::string file;         ///< "-" is standard input
  std::vector<GivenType> types;
  std::vector<GivenWidth> widths;
  std::int64_t maxElementSize = 0;  ///< bytes, 0 for no limit
};

struct ReadOptions {
  std::string directories;
  std::string table;
  RowRange range;
  bool backwards = false;
};

struct ShowOptions {
  ReadOptions read;
  std::int64_t limit = 20;  ///< rows
};

struct InfoOptions {
  std::string directories;
  std::string table;
};

struct DeleteOptions {
  std::string directories;
  std::vector<std::string> tables;
};

/// Makes a table of a CSV text and prints its name. Whatever fails, nothing stays behind.
[[nodiscard]] ExitCode runImport(const ImportOptions& options);
/// Prints rows for people.
[[nodiscard]] ExitCode runShow(const ShowOptions& options);
/// Prints rows as CSV, see CsvWriter.h.
[[nodiscard]] ExitCode runExport(const ReadOptions& options);
/// Prints what a table consists of.
[[nodiscard]] ExitCode runInfo(const InfoOptions& options);
/// Deletes every table that can be deleted; a failure is one of any of them.
[[nodiscard]] ExitCode runDelete(const DeleteOptions& options);

}  // namespace zvwttool
