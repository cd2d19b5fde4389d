/// A cursor whose values are texts, over a table with a column of dates: texts become dates when
/// they are appended and texts again when they are read.

#include <zvwt.h>

#include <cstdio>

namespace {

/// The table is the cursor's from here on, which deletes it in the end.
bool attachNewTable(ZvWorkTableManager& manager, ZvWorkTableStringCursor& cursor,
                    ZvbString* error) {
  ZvWorkTableFile* table = manager.createTable(2, 0, error);
  if (table == nullptr) {
    return false;
  }
  if (!table->defineColumn(0, "task", zvbTypeString, 0) ||
      !table->defineColumn(1, "due", zvbTypeDate, 0)) {
    *error = table->getErrorMessage();
    table->release();
    return false;
  }
  return cursor.setWorkTable(table);
}

bool append(ZvWorkTableStringCursor& cursor, const char* task, const ZvbString& due) {
  if (!cursor.newRow()) {
    return false;
  }
  cursor.setValue(0, task);
  cursor.setValue(1, due);
  return cursor.appendRow();
}

bool fill(ZvWorkTableStringCursor& cursor) {
  return append(cursor, "sow", "2024-02-29") && append(cursor, "water", "2024-03-01T07:30") &&
         append(cursor, "harvest", "when ripe") &&    // no date, so it is stored as a null
         append(cursor, "rest", ZvbString(nullptr));  // a null string is a null value
}

bool print(ZvWorkTableStringCursor& cursor) {
  int step = cursor.next();
  for (; step == zvbCursorRow; step = cursor.next()) {
    const ZvbString due = cursor.value(1);
    std::printf("%s: %s\n", cursor.value(0).asCstr(), due.isNull() ? "(null)" : due.asCstr());
  }
  return step == zvbCursorEnd;
}

}  // namespace

int main() {
  ZvbString error;
  ZvWorkTableManager* manager = zvwtCreateManager("example", "", &error);
  ZvWorkTableStringCursor* cursor = manager == nullptr ? nullptr : zvwtCreateStringCursor(manager);
  if (cursor == nullptr) {
    std::printf("%s\n", manager == nullptr ? error.asCstr() : "memory is short");
  }
  bool good = cursor != nullptr && attachNewTable(*manager, *cursor, &error);
  good = good && fill(*cursor) && cursor->endAppend();
  // From here the cursor reads the first row, and after rewind once more.
  good = good && print(*cursor) && cursor->rewind() && print(*cursor);
  if (cursor != nullptr) {
    if (!good) {
      std::printf("%s%s\n", error.asCstr(), cursor->errorMessage().asCstr());
    }
    cursor->release();
  }
  if (manager != nullptr) {
    manager->release();
  }
  return good ? 0 : 1;
}
