/// How a table that is to be sorted is told so.
#pragma once

#include "Commands.h"

namespace zvwttool {

/// Describes the sort to a table that was created with as many sort keys as the plan has; its
/// columns are, or will be, those of `columns`.
void setSortKeys(const SortPlan& plan, ZvWorkTableFile& columns, ZvWorkTableFile* table);

}  // namespace zvwttool
