/// Makes a manager and a cursor, and has a library in C use the cursor. See function_table.c.

#include <zvwt.h>

#include <cstdio>

#include "function_table.h"

int main() {
  ZvbString error;
  ZvWorkTableManager* manager = zvwtCreateManager("example", "", &error);
  if (manager == nullptr) {
    std::printf("%s\n", error.asCstr());
    return 1;
  }
  ZvWorkTableStringZVWFCursor* cursor = zvwtCreateStringZVWFCursor(manager);
  if (cursor == nullptr) {
    std::printf("memory is short\n");
  }
  const int result = cursor == nullptr ? 1 : fillAndPrint(cursor->zvwfHandle());
  manager->release();
  return result;
}
