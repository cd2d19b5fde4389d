/// What the values of a table's columns are like.
#pragma once

#include <cstdint>
#include <vector>

#include "ZvWorkTableFile.h"

namespace zvwttool {

struct ColumnFacts {
  std::int64_t nulls = 0;
  std::int64_t longest = -1;  ///< bytes of the longest text; below 0: there are no texts
  ZvbDatavar minimum;         ///< by the order of the column's type; null when all values are
  ZvbDatavar maximum;
};

/// Reads the rows of a table to their end, once, and keeps nothing but these facts of each column.
[[nodiscard]] std::vector<ColumnFacts> readColumnFacts(ZvWorkTableFile* table);

}  // namespace zvwttool
