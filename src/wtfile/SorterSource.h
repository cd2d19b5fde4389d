/// Where a table gets the sorter of its rows from: its manager, which has the one datafile manager
/// that all its tables share.
#pragma once

#include <memory>
#include <span>

#include "base/ZvbString.h"
#include "datafile/ZvDatafileSorter.h"
#include "wtelem/ColumnDefinition.h"

struct ReleaseSorter {
  void operator()(ZvDatafileSorter* sorter) const noexcept { sorter->release(); }
};
using SorterHandle = std::unique_ptr<ZvDatafileSorter, ReleaseSorter>;

class SorterSource {
 public:
  /// A new sorter for rows of these columns; null with the reason in *error. May be called from any
  /// thread, and waits while another one has the datafile manager.
  [[nodiscard]] virtual SorterHandle makeSorter(std::span<const ColumnDefinition> columns,
                                                ZvbString* error) noexcept = 0;

 protected:
  ~SorterSource() = default;
};
