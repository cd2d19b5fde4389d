#include "formats/ColumnFit.h"

#include <algorithm>

namespace zvwttool {
namespace {

using Demands = std::vector<ColumnDemand>;

/// The width of a column where none may be wider than a level, but for those that need it.
std::size_t widthAt(const ColumnDemand& demand, std::size_t level) {
  return std::max(demand.least, std::min(demand.width, level));
}

/// What is left of a width by columns of which none is wider than a level; below 0, it is too
/// little.
std::ptrdiff_t restAt(const Demands& demands, std::size_t level, std::size_t width) {
  auto rest = static_cast<std::ptrdiff_t>(width);
  for (const ColumnDemand& demand : demands) {
    rest -= static_cast<std::ptrdiff_t>(widthAt(demand, level));
  }
  return rest;
}

/// Shares a width by lowering the widest columns to one level; what is left goes to the first of
/// them. Where even their least widths are too much, they have those.
std::vector<std::size_t> share(const Demands& demands, std::size_t width) {
  std::size_t level = 0;
  std::size_t above = 1;  // what is too high, or higher than all columns are wide
  for (const ColumnDemand& demand : demands) {
    above = std::max(above, demand.width + 1);
  }
  while (above - level > 1) {
    const std::size_t middle = level + (above - level) / 2;
    (restAt(demands, middle, width) >= 0 ? level : above) = middle;
  }
  std::ptrdiff_t rest = restAt(demands, level, width);
  std::vector<std::size_t> widths;
  for (const ColumnDemand& demand : demands) {
    widths.push_back(widthAt(demand, level));
    if (rest > 0 && widthAt(demand, level + 1) > widths.back()) {
      ++widths.back();
      --rest;
    }
  }
  return widths;
}

std::size_t minus(std::size_t left, std::size_t right) { return left > right ? left - right : 0; }

/// The first column is always there, if need be beside nothing but the mark.
Demands withRoomForFirst(Demands demands, std::size_t lineWidth) {
  const std::size_t beside = demands.size() > 1 ? columnGap + leftOutMarkWidth : 0;
  const std::size_t room = std::max<std::size_t>(minus(lineWidth, beside), 1);
  demands[0].least = std::min(demands[0].least, room);
  return demands;
}

/// Takes columns from both ends in turn, as long as they fit beside the mark.
void leaveOut(const Demands& demands, std::size_t lineWidth, ColumnFit* fit) {
  std::size_t front = 1;
  std::size_t back = 0;
  std::size_t used = leftOutMarkWidth + columnGap + demands[0].least;
  while (front + back < demands.size()) {
    const bool takesLast = back < front;
    const ColumnDemand& next = demands[takesLast ? demands.size() - 1 - back : front];
    used += columnGap + next.least;
    if (used > lineWidth) {
      break;
    }
    ++(takesLast ? back : front);
  }
  fit->firstLeftOut = front;
  fit->leftOut = demands.size() - front - back;
}

}  // namespace

ColumnFit fitColumns(const std::vector<ColumnDemand>& wanted, std::size_t lineWidth) {
  ColumnFit fit;
  if (wanted.empty()) {
    return fit;
  }
  const Demands demands = withRoomForFirst(wanted, lineWidth);
  const std::size_t width = minus(lineWidth, columnGap * (demands.size() - 1));
  if (demands.size() == 1 || restAt(demands, 0, width) >= 0) {
    fit.widths = share(demands, width);
    return fit;
  }
  leaveOut(demands, lineWidth, &fit);
  Demands kept = demands;
  const auto begin = kept.begin() + static_cast<std::ptrdiff_t>(fit.firstLeftOut);
  kept.erase(begin, begin + static_cast<std::ptrdiff_t>(fit.leftOut));
  fit.widths = share(kept, minus(lineWidth, leftOutMarkWidth + columnGap * kept.size()));
  fit.widths.insert(fit.widths.begin() + static_cast<std::ptrdiff_t>(fit.firstLeftOut), fit.leftOut,
                    0);
  return fit;
}

}  // namespace zvwttool
