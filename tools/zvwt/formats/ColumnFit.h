/// How the columns of a grid share a line.
#pragma once

#include <cstddef>
#include <vector>

namespace zvwttool {

/// What one column would like, and what it cannot do with less than.
struct ColumnDemand {
  std::size_t width;
  std::size_t least;
};

struct ColumnFit {
  std::vector<std::size_t> widths;  ///< of all columns; those of columns left out mean nothing
  std::size_t firstLeftOut = 0;
  std::size_t leftOut = 0;  ///< as many columns in the middle, in whose place stands a mark
};

constexpr std::size_t columnGap = 2;         ///< blanks between columns
constexpr std::size_t leftOutMarkWidth = 1;  ///< of the column that stands for those left out

/// Fits columns into a line: the widest ones give way first; where that is not enough, columns in
/// the middle are left out, never the first one. Where a line has no room for its least width
/// either, the first one has less, so that lines of 4 columns and more always hold what they get.
[[nodiscard]] ColumnFit fitColumns(const std::vector<ColumnDemand>& wanted, std::size_t lineWidth);

}  // namespace zvwttool
