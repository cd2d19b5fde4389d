#include "tables/ColumnFacts.h"

#include <algorithm>
#include <new>

#include "ZvwtHandles.h"
#include "process/Progress.h"
#include "tables/TableFailure.h"
#include "tables/ValueOrder.h"

namespace zvwttool {
namespace {

void keep(const ZvbDatavar& value, ZvbDatavar* kept) {
  *kept = value;
  if (kept->memoryShort()) {
    throw std::bad_alloc();
  }
}

void add(const ZvbDatavar& value, ColumnFacts* facts) {
  if (value.isNull()) {
    ++facts->nulls;
    return;
  }
  if (value.type() == zvbTypeString) {
    const auto size = static_cast<std::int64_t>(value.asTextView().size());
    facts->longest = std::max(facts->longest, size);
  }
  if (facts->minimum.isNull() || compareValues(value, facts->minimum) < 0) {
    keep(value, &facts->minimum);
  }
  if (facts->maximum.isNull() || compareValues(value, facts->maximum) > 0) {
    keep(value, &facts->maximum);
  }
}

}  // namespace

std::vector<ColumnFacts> readColumnFacts(ZvWorkTableFile* table) {
  std::vector<ColumnFacts> facts(static_cast<std::size_t>(table->getColumnCount()));
  Progress progress("looking at values", ProgressUnit::rows, table->getRowCount());
  std::int64_t done = 0;
  zvwt::Rows rows(*table);
  for (const zvwt::Rows::Row row : rows) {
    progress.update(++done);
    for (std::size_t column = 0; column < row.size(); ++column) {
      add(row[column], &facts[column]);
    }
  }
  if (!rows.complete()) {
    throw readingFailure(table->getName().asCstr(), table->getErrorMessage());
  }
  return facts;
}

}  // namespace zvwttool
