/// How a sort is described: the first operations of every table and of every sorter.
#pragma once

#include <cstdint>

#include "base/zvb_export.h"

/// Keys compare by the declared type of their column: numbers and dates by value, texts by bytes,
/// or folded where case is ignored. Records with equal keys keep the order in which they came.
class ZVB_API ZvDatafileSort {
 public:
  /// Describes sort key number `key`, counted from 0, of which the first decides most: the column
  /// it compares, `flag` true for descending, and in `value` 1 to ignore case, 2 to put nulls last,
  /// 3 for both. Nulls come first otherwise, descending or not.
  virtual std::int32_t setSortColumn(std::int32_t key, std::uint32_t column, bool flag,
                                     std::uint64_t value) = 0;
  /// Memory for this sort in bytes, 65536 or more; 0 for the manager's setting.
  virtual std::int32_t setSortOptionA(std::uint64_t value) = 0;
  /// Limit on the work files of this sort in bytes; 0 for the manager's setting.
  virtual std::int32_t setSortOptionB(std::uint64_t value) = 0;

 protected:
  ~ZvDatafileSort() = default;
};
