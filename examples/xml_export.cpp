/// Prints a table as an XML document from which the Spring Framework makes a bean.

#include <zvwt.h>

#include <cstdio>

namespace {

bool fill(ZvWorkTableFile& table) {
  if (!table.defineColumn(0, "number", zvbTypeInteger, 0) ||
      !table.defineColumn(1, "title", zvbTypeString, 0)) {
    return false;
  }
  ZvbDatavar row[2];
  const char* titles[] = {"Salt & Pepper", "It's less <5>"};
  for (int i = 0; i < 2; ++i) {
    row[0].assign(i + 1);
    row[1].assign(titles[i]);
    if (!table.writeRow(row)) {
      return false;
    }
  }
  return table.close();
}

/// The name of a new table; empty, with the reason in *error, on failure.
ZvbString makeTable(ZvWorkTableManager& manager, ZvbString* error) {
  ZvWorkTableFile* table = manager.createTable(2, 0, error);
  if (table == nullptr) {
    return {};
  }
  const bool good = fill(*table);
  ZvbString name = good ? table->getName() : ZvbString();
  *error = table->getErrorMessage();
  table->release();
  return name;
}

/// Rows are read from where the table stands: open it anew, or with a range, for each document.
bool print(ZvWorkTableManager& manager, const ZvbString& name, ZvbString* error) {
  ZvWorkTableFile* table = manager.openTable(name, /*readBackwards=*/false, error);
  if (table == nullptr) {
    return false;
  }
  ZvbString xml;
  // With -1 all rows. With a flag for the end, a row that cannot be read ends the document early;
  // without one, as here, it is a failure.
  const bool good = table->asXml(0, -1, &xml, nullptr);
  *error = table->getErrorMessage();
  table->release();
  if (good) {
    // The name differs from run to run; this program's output is not to.
    std::printf("%s\n", xml.replace(name, "NAME", 0, -1).asCstr());
  }
  return good;
}

}  // namespace

int main() {
  ZvbString error;
  ZvWorkTableManager* manager = zvwtCreateManager("example", "", &error);
  bool good = manager != nullptr;
  if (good) {
    const ZvbString name = makeTable(*manager, &error);
    good = !name.isEmpty() && print(*manager, name, &error);
    ZvbString deleteError;
    if (!name.isEmpty() && !manager->deleteTable(name, &deleteError)) {
      error = deleteError;
      good = false;
    }
    manager->release();
  }
  if (!good) {
    std::printf("%s\n", error.asCstr());
  }
  return good ? 0 : 1;
}
