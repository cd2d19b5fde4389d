/// How rows are to be sorted.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace zvwttool {

/// One column that rows are sorted by.
struct SortKey {
  std::string column;
  std::string modifiers = {};  ///< behind it, as they were given
  bool isDescending = false;
  bool putsNullsLast = false;  ///< whatever the direction; else they come first
  bool ignoresCase = false;
};

struct SortPlan {
  std::vector<SortKey> keys;       ///< none: not sorted
  std::int64_t memory = 0;         ///< bytes, 0 for the library's default
  std::int64_t workFileLimit = 0;  ///< bytes, 0 for no limit
};

}  // namespace zvwttool
