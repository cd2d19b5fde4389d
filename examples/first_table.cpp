/// Writes a table of three rows, reads it forwards and backwards, and deletes it.

#include <zvwt.h>

#include <cstdio>

namespace {

bool fill(ZvWorkTableFile& table) {
  ZvbDatavar row[3];
  const char* cities[] = {"Lisbon", "Oslo", "Rome"};
  for (int i = 0; i < 3; ++i) {
    row[0].assign(i + 1);
    row[1].assign(cities[i]);
    row[2].assign("2024-02-29");
    if (!table.writeRow(row)) {
      return false;
    }
  }
  return table.close();
}

void print(ZvWorkTableFile& table) {
  ZvbDatavar row[3];
  bool end = false;
  while (table.readRow(row, &end)) {
    std::printf("%s %s %s\n", row[0].asString().asCstr(), row[1].asString().asCstr(),
                row[2].asDate().asString(true).asCstr());
  }
  if (!end) {
    std::printf("%s\n", table.getErrorMessage().asCstr());
  }
}

}  // namespace

int main() {
  ZvbString error;
  ZvWorkTableManager* manager = zvwtCreateManager("example", "", &error);
  ZvWorkTableFile* table = manager == nullptr ? nullptr : manager->createTable(3, 0, &error);
  if (table == nullptr) {
    std::printf("%s\n", error.asCstr());
    return 1;
  }
  const bool written = table->defineColumn(0, "id", zvbTypeInteger, 0) &&
                       table->defineColumn(1, "city", zvbTypeString, 0) &&
                       table->defineColumn(2, "day", zvbTypeDate, 0) && fill(*table);
  const ZvbString name = table->getName();
  error = table->getErrorMessage();
  table->release();

  for (const bool backwards : {false, true}) {
    table = written ? manager->openTable(name, backwards, &error) : nullptr;
    if (table != nullptr) {
      print(*table);
      table->release();
    }
  }
  const bool deleted = written && manager->deleteTable(name, &error);
  manager->release();
  if (!deleted) {
    std::printf("%s\n", error.asCstr());
    return 1;
  }
  return 0;
}
