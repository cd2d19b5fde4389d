/// One column of a table.
#pragma once

#include <cstdint>
#include <memory>

#include "base/ZvbString.h"
#include "base/zvb_type.h"
#include "wtelem/StorageCode.h"

struct ColumnDefinition {
  ZvbString name;
  zvbType type = zvbType{0};
  StorageCode storageCode = StorageCode::none;
  std::int32_t width = 0;      ///< most bytes of a text that are stored; 0 or less is no limit
  std::int32_t maxLength = 0;  ///< bytes of the longest text stored, its terminator included

  /// The number of the next column behind this one that is delivered; none: the column count.
  std::int32_t nextDelivered = 0;
  /// How often the column's value is delivered for each row read; 0: it is skipped.
  std::uint32_t targetCount = 0;
  /// The places in the caller's row that get the value; none: the place of the column's own number.
  std::unique_ptr<std::int32_t[]> targets;

  /// The first of those places, of a column with this number that has any.
  [[nodiscard]] std::int32_t firstTarget(std::int32_t number) const noexcept {
    return targets == nullptr ? number : targets[0];
  }
};
