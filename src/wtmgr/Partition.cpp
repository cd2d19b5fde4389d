#include "wtmgr/Partition.h"

#include <cstddef>

namespace {

/// Splits `count` rows from `first` on into `parts` ranges that differ by one row at most, the
/// longer ones first.
void splitEvenly(std::int64_t first, std::int64_t count, int parts, RowRange* ranges) noexcept {
  const std::int64_t shortest = count / parts;
  const std::int64_t longer = count % parts;
  for (int i = 0; i < parts; ++i) {
    ranges[i].firstRow = first;
    ranges[i].rowCount = shortest + (i < longer ? 1 : 0);
    first += ranges[i].rowCount;
  }
}

}  // namespace

int partitionRows(ZVWTFileImpl& table, int parts, RowRange* ranges) noexcept {
  const std::int64_t rowCount = table.getRowCount();
  const int elements = table.elementCount();
  if (parts <= 0) {
    return 0;
  }
  if (parts == 1) {
    ranges[0] = {.firstRow = 0, .rowCount = rowCount};
    return 1;
  }
  if (parts >= rowCount) {
    const int single = static_cast<int>(rowCount);
    for (int i = 0; i < single; ++i) {
      ranges[i] = {.firstRow = i, .rowCount = 1};
    }
    return single;
  }
  if (elements <= 1 || parts < elements) {
    splitEvenly(0, rowCount, parts, ranges);
    return parts;
  }
  const int partsOfElement = parts / elements;
  std::int64_t first = 0;
  for (int i = 0; i < elements; ++i) {
    const std::int64_t count = table.rowsOfElement(i);
    splitEvenly(first, count, partsOfElement, ranges + std::ptrdiff_t{i} * partsOfElement);
    first += count;
  }
  return elements * partsOfElement;
}
