/// Splitting a table's rows among readers that work side by side.
#pragma once

#include "ZvWorkTableFile.h"
#include "wtfile/ZVWTFileImpl.h"

/// Fills up to `parts` ranges that together hold every row once, in order, and returns their
/// number. With as many parts as elements or more, no range crosses the border of an element.
[[nodiscard]] int partitionRows(ZVWTFileImpl& table, int parts, RowRange* ranges) noexcept;
