/// The order of values.
#pragma once

#include "base/ZvbDatavar.h"

namespace zvwttool {

/// Below, at or above 0 as the left value comes before, with or behind the right one. Both are of
/// one type, and neither is null. Dates compare by their days, texts by their bytes.
[[nodiscard]] int compareValues(const ZvbDatavar& left, const ZvbDatavar& right);

}  // namespace zvwttool
