#include "tables/ColumnNames.h"

#include <algorithm>

namespace zvwttool {

bool sameName(const ZvbString& left, const ZvbString& right) {
  return left.compare(right, false) == 0;
}

bool hasName(const std::vector<std::string>& columns, const ZvbString& name) {
  return std::any_of(columns.begin(), columns.end(), [&name](const std::string& column) {
    return name.compare(column.c_str(), false) == 0;
  });
}

}  // namespace zvwttool
