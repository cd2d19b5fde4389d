/// What the check of a table's rows needs to know of a column, and what it learns of it.
#pragma once

#include <cstdint>
#include <span>

#include "wtelem/StorageCode.h"

struct CheckedColumn {
  std::int64_t definition = 0;  ///< where its record begins in the catalogue
  std::int32_t width = 0;       ///< most bytes of a text; 0 or less is no limit
  std::int32_t maxLength = 0;   ///< that the catalogue tells, terminator included
  std::int32_t longest = 0;     ///< in the rows, terminator included
  bool hasKnownCode = false;    ///< else its values may be of any type
  StorageCode code = StorageCode::none;
};

using CheckedColumns = std::span<CheckedColumn>;
