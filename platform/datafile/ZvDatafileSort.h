/// How a sort is described: the first operations of every table and of every sorter.
#pragma once

#include <cstdint>

#include "base/zvb_export.h"

class ZVB_API ZvDatafileSort {
 public:
  /// Describes sort key number `key`, counted from 0: the column it compares, `flag` true for
  /// descending, and in `value` 1 to ignore case, 2 to put nulls last, 3 for both.
  virtual std::int32_t setSortColumn(std::int32_t key, std::uint32_t column, bool flag,
                                     std::uint64_t value) = 0;
  /// Memory for this sort in bytes; 0 for the manager's setting.
  virtual std::int32_t setSortOptionA(std::uint64_t value) = 0;
  /// Limit on the work files of this sort in bytes; 0 for the manager's setting.
  virtual std::int32_t setSortOptionB(std::uint64_t value) = 0;

 protected:
  ~ZvDatafileSort() = default;
};
