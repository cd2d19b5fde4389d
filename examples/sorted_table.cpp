/// Writes rows as they come and reads them in order: by city without case, the latest year first.

#include <zvwt.h>

#include <cstdio>

#include "ZvwtHandles.h"

namespace {

struct Visit {
  const char* city;
  int year;
};

constexpr Visit visits[] = {
    {"Rome", 2019}, {"oslo", 2021}, {"Lisbon", 2020}, {"Oslo", 2024}, {nullptr, 2022}};

bool describe(ZvWorkTableFile& table) {
  const std::uint64_t ignoreCaseNullsLast = 3;
  table.setSortColumn(0, 0, false, ignoreCaseNullsLast);
  table.setSortColumn(1, 1, true, 0);
  return table.defineColumn(0, "city", zvbTypeString, 0) &&
         table.defineColumn(1, "year", zvbTypeInteger, 0);
}

bool fill(ZvWorkTableFile& table) {
  ZvbDatavar row[2];
  for (const Visit& visit : visits) {
    row[0].assign(visit.city);
    row[1].assign(visit.year);
    if (!table.writeRow(row)) {
      return false;
    }
  }
  return table.close();
}

bool print(ZvWorkTableManager& manager, const ZvbString& name, ZvbString* error) {
  const zvwt::Table table(manager.openTable(name, false, error));
  if (table == nullptr) {
    return false;
  }
  ZvbDatavar row[2];
  bool end = false;
  while (table->readRow(row, &end)) {
    std::printf("%s %s\n", row[0].isNull() ? "-" : row[0].asString().asCstr(),
                row[1].asString().asCstr());
  }
  *error = table->getErrorMessage();
  return end;
}

}  // namespace

int main() {
  ZvbString error;
  const zvwt::Manager manager(zvwtCreateManager("example", "", &error));
  zvwt::Table table(manager == nullptr ? nullptr : manager->createTable(2, 2, 0, &error));
  if (table == nullptr) {
    std::printf("%s\n", error.asCstr());
    return 1;
  }
  const bool sorted = describe(*table) && fill(*table);
  const ZvbString name = table->getName();
  error = table->getErrorMessage();
  table.reset();
  const bool printed = sorted && print(*manager, name, &error);
  if (!printed || !manager->deleteTable(name, &error)) {
    std::printf("%s\n", error.asCstr());
    return 1;
  }
  return 0;
}
