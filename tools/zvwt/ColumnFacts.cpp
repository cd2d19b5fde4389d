#include "ColumnFacts.h"

#include <algorithm>
#include <new>

#include "Failure.h"
#include "ZvwtHandles.h"

namespace zvwttool {
namespace {

/// Of two values of one type that are not null. Dates compare by their days, texts by their bytes.
bool isLess(const ZvbDatavar& left, const ZvbDatavar& right) {
  bool failed = false;
  switch (left.type()) {
    case zvbTypeBoolean:
      return !left.asBool(&failed) && right.asBool(&failed);
    case zvbTypeInteger:
      return left.asInt64(&failed) < right.asInt64(&failed);
    case zvbTypeReal:
      return left.asReal(&failed).compare(right.asReal(&failed)) < 0;
    case zvbTypeDate:
      return left.asDate().days() < right.asDate().days();
    case zvbTypeString:
      break;
  }
  return left.asTextView() < right.asTextView();
}

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
  if (facts->minimum.isNull() || isLess(value, facts->minimum)) {
    keep(value, &facts->minimum);
  }
  if (facts->maximum.isNull() || isLess(facts->maximum, value)) {
    keep(value, &facts->maximum);
  }
}

}  // namespace

std::vector<ColumnFacts> readColumnFacts(ZvWorkTableFile* table) {
  std::vector<ColumnFacts> facts(static_cast<std::size_t>(table->getColumnCount()));
  zvwt::Rows rows(*table);
  for (const zvwt::Rows::Row row : rows) {
    for (std::size_t column = 0; column < row.size(); ++column) {
      add(row[column], &facts[column]);
    }
  }
  if (!rows.complete()) {
    throw libraryFailure(table->getErrorMessage());
  }
  return facts;
}

}  // namespace zvwttool
