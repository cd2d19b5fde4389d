/// How columns are told apart by their names, whose letter case does not count.
#pragma once

#include <string>
#include <vector>

#include "base/ZvbString.h"

namespace zvwttool {

[[nodiscard]] bool sameName(const ZvbString& left, const ZvbString& right);

/// Whether one of the columns has the name.
[[nodiscard]] bool hasName(const std::vector<std::string>& columns, const ZvbString& name);

}  // namespace zvwttool
