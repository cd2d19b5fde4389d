/// Loops over the rows of a cursor, of a table and of its statistics, with ZvwtHandles.h: what the
/// library hands out has an owner, and nothing is released by hand.

#include <ZvwtHandles.h>

#include <cstdio>
#include <new>

namespace {

bool fail(ZvbString* error, const ZvbString& reason) {
  *error = reason;
  return false;
}

bool fill(ZvWorkTableStringCursor& cursor, ZvbString* error) {
  constexpr const char* rows[][2] = {{"Lisbon", "Tagus"}, {"Oslo", "Akerselva"}, {"Rome", "Tiber"}};
  cursor.addColumn("city");
  cursor.addColumn("river");
  bool good = cursor.create();
  for (const auto& [city, river] : rows) {
    if (good = good && cursor.newRow(); good) {
      cursor.setValue(0, city);
      cursor.setValue(1, river);
      good = cursor.appendRow();
    }
  }
  return (good && cursor.endAppend()) || fail(error, cursor.errorMessage());
}

/// Any cursor of texts: the table's, or that of its statistics.
template <typename CursorType>
bool printCursor(CursorType& cursor, ZvbString* error) {
  zvwt::CursorRows rows(cursor);
  for (const auto row : rows) {
    std::printf("%s=\"%s\"\n", row[0].asCstr(), row[1].asCstr());
  }
  return rows.complete() || fail(error, cursor.errorMessage());
}

bool printTable(ZvWorkTableFile& table, ZvbString* error) {
  zvwt::Rows rows(table);
  for (const std::span<const ZvbDatavar> row : rows) {
    std::printf("%s on %s\n", row[0].asString().asCstr(), row[1].asString().asCstr());
  }
  return rows.complete() || fail(error, table.getErrorMessage());
}

bool run(ZvbString* error) {
  const zvwt::Manager manager(zvwtCreateManager("example", "", error));
  const zvwt::StringCursor cursor(manager == nullptr ? nullptr
                                                     : zvwtCreateStringCursor(manager.get()));
  if (cursor == nullptr || !fill(*cursor, error) || !printCursor(*cursor, error)) {
    return false;
  }
  if (!cursor->rewind()) {
    return fail(error, cursor->errorMessage());
  }
  ZvWorkTableFile& table = *cursor->workTable(/*detach=*/false);
  const zvwt::Statistics statistics(table.getStatistics());
  return printTable(table, error) && (statistics == nullptr ? fail(error, table.getErrorMessage())
                                                            : printCursor(*statistics, error));
}

}  // namespace

int main() {
  ZvbString error;
  try {
    if (run(&error)) {
      return 0;
    }
  } catch (const std::bad_alloc&) {  // thrown by zvwt::Rows alone
    error = "memory is short";
  }
  std::printf("%s\n", error.asCstr());
  return 1;
}
