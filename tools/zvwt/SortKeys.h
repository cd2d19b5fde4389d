/// How a table that is to be sorted is told so.
#pragma once

#include <string>

#include "Commands.h"

namespace zvwttool {

/// Describes the sort to a table that was created with as many sort keys as the plan has; its
/// columns are, or will be, those of `columns`. False with the reason in *error.
[[nodiscard]] bool setSortKeys(const SortPlan& plan, ZvWorkTableFile& columns,
                               ZvWorkTableFile* table, std::string* error);

}  // namespace zvwttool
