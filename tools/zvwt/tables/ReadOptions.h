/// Which rows and columns of a table are to be read, and how.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "zvwt.h"

namespace zvwttool {

/// What is to be read.
struct SourceOptions {
  std::string table;                ///< a table's name or a URI
  std::vector<std::string> select;  ///< lists of columns, each NAME or NEW=NAME
  std::optional<RowRange> range;
};

struct ReadOptions {
  SourceOptions source;
  std::vector<std::string> conditions;  ///< that a row has to satisfy, see Condition.h
  bool backwards = false;
};

}  // namespace zvwttool
