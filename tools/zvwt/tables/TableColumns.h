/// The columns of a table.
#pragma once

#include <string>
#include <vector>

#include "ZvWorkTableFile.h"

namespace zvwttool {

struct TableColumn {
  std::string name;
  zvbType type = zvbTypeString;
  int width = 0;      ///< bytes that are kept of each text; 0: all
  int maxLength = 0;  ///< bytes of the longest text and a zero byte; 0: none is known
};

/// Of a table, or of what is read of it; the table may also be one whose columns are just defined.
[[nodiscard]] std::vector<TableColumn> columnsOf(ZvWorkTableFile& table);

}  // namespace zvwttool
