/// How a table that is to be sorted is told so.
#pragma once

#include "ZvWorkTableFile.h"
#include "tables/SortPlan.h"

namespace zvwttool {

/// What a message goes on with behind the column of a sort key that nobody knows: which modifier or
/// which column may have been meant, or nothing.
[[nodiscard]] std::string didYouMean(const SortKey& key, const std::vector<std::string>& columns);

/// Describes the sort to a table that was created with as many sort keys as the plan has; its
/// columns are, or will be, those of `columns`.
void setSortKeys(const SortPlan& plan, ZvWorkTableFile& columns, ZvWorkTableFile* table);

}  // namespace zvwttool
