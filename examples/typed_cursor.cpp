/// A table by way of a cursor: adds columns, appends rows, reads them back. The table is temporary:
/// it goes with the cursor.

#include <zvwt.h>

#include <cstdio>

namespace {

bool append(ZvWorkTableCursor& cursor, const char* item, int pieces, const char* price) {
  if (!cursor.newRow()) {
    return false;
  }
  ZvbDatavar value;
  value.assign(item);
  cursor.setValue(0, value);
  value.assign(pieces);
  cursor.setValue(1, value);
  if (price != nullptr) {  // a value that is not set stays null
    value.assign(price);
    cursor.setValue(2, value);
  }
  return cursor.appendRow();
}

bool fill(ZvWorkTableCursor& cursor) {
  cursor.addColumn("item", zvbTypeString);
  cursor.addColumn("pieces", zvbTypeInteger);
  cursor.addColumn("price", zvbTypeReal);
  return cursor.create() && append(cursor, "lamp", 12, "24.90") &&
         append(cursor, "chair", 4, nullptr) && append(cursor, "table", 1, "310") &&
         cursor.endAppend();
}

void printColumns(ZvWorkTableCursor& cursor) {
  for (int i = 0; i < cursor.columnCount(); ++i) {
    std::printf("%s: %s\n", cursor.columnName(i).asCstr(), zvbTypeToString(cursor.columnType(i)));
  }
}

bool printRows(ZvWorkTableCursor& cursor) {
  std::int64_t sum = 0;
  int step = cursor.next();
  for (; step == zvbCursorRow; step = cursor.next()) {
    const ZvbDatavar price = cursor.value(2);
    std::printf("%s, %s\n", cursor.value(0).asString().asCstr(),
                price.isNull() ? "no price" : price.asString().asCstr());
    bool failed = false;  // set when the value is null or no number
    sum += cursor.value(1).asInt64(&failed);
  }
  std::printf("%lld pieces in all\n", static_cast<long long>(sum));
  return step == zvbCursorEnd;
}

}  // namespace

int main() {
  ZvbString error;
  ZvWorkTableManager* manager = zvwtCreateManager("example", "", &error);
  if (manager == nullptr) {
    std::printf("%s\n", error.asCstr());
    return 1;
  }
  ZvWorkTableCursor* cursor = zvwtCreateCursor(manager);
  bool good = cursor != nullptr && fill(*cursor);
  if (good) {
    printColumns(*cursor);
    good = printRows(*cursor);
  }
  if (!good) {
    std::printf("%s\n", cursor == nullptr ? "memory is short" : cursor->errorMessage().asCstr());
  }
  if (cursor != nullptr) {
    cursor->release();
  }
  manager->release();
  return good ? 0 : 1;
}
