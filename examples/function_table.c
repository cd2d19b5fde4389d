/** @file
 * A table from C (C99), by the functions of zvwf.h alone. Their results are 0 for success. */

#include "function_table.h"

#include <stdio.h>

static int append(ZvwfHandle* cursor, const char* city, const char* river) {
  const ZvwfFunctions* table = cursor->functions;
  return table->newRow(cursor) != 0 || table->setValue(cursor, 0, city) != 0 ||
         table->setValue(cursor, 1, river) != 0 || table->appendRow(cursor) != 0;
}

static int fill(ZvwfHandle* cursor) {
  const ZvwfFunctions* table = cursor->functions;
  return table->addColumn(cursor, "city") != 0 || table->addColumn(cursor, "river") != 0 ||
         table->create(cursor) != 0 || append(cursor, "Lisbon", "Tagus") != 0 ||
         append(cursor, "Oslo", NULL) != 0 || append(cursor, "Rome", "Tiber") != 0 ||
         table->endAppend(cursor) != 0;
}

/* A text belongs to the cursor until the next text is asked for, so each is printed at once. */
static void printColumns(ZvwfHandle* cursor) {
  const ZvwfFunctions* table = cursor->functions;
  printf("%d rows of", table->rowCount(cursor));
  for (int i = 0; i < table->columnCount(cursor); ++i) {
    const char* name = "";
    (void)table->columnName(cursor, i, &name); /* always 0 */
    printf(" %s", name);
  }
  printf("\n");
}

static int printRows(ZvwfHandle* cursor) {
  const ZvwfFunctions* table = cursor->functions;
  int status = table->next(cursor);
  for (; status == 0; status = table->next(cursor)) {
    for (int i = 0; i < table->columnCount(cursor); ++i) {
      const char* text = "";
      (void)table->value(cursor, i, &text); /* always 0; a null is an empty text */
      printf("%s[%s]", i == 0 ? "" : " ", text);
    }
    printf("\n");
  }
  return status != 1; /* 1 is the end of the rows, -1 a failure */
}

int fillAndPrint(ZvwfHandle* cursor) {
  const ZvwfFunctions* table = cursor->functions;
  int failed = fill(cursor);
  if (!failed) {
    printColumns(cursor);
    failed = printRows(cursor) != 0 || table->rewind(cursor) != 0 || table->next(cursor) != 0;
  }
  if (!failed) {
    const char* text = "";
    (void)table->value(cursor, 0, &text);
    printf("again from the start: %s\n", text);
  } else {
    printf("%s\n", table->errorMessage(cursor));
  }
  table->release(cursor);
  return failed;
}
