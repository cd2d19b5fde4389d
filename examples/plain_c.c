/** @file
 * A table from C alone: written, read row by row by the functions of zvwf.h, read backwards many
 * rows at once, and deleted. Languages that call C do the same. */

#include <stdio.h>
#include <zvwt_c.h>

enum { columnCount = 3, batchRows = 100 };

/* Takes and gives ints that are 0 for success, so that calls can be joined by ||. */
static int append(ZvwfHandle* cursor, const char* id, const char* city, const char* founded) {
  const ZvwfFunctions* table = cursor->functions;
  return table->newRow(cursor) || table->setValue(cursor, 0, id) ||
         table->setValue(cursor, 1, city) || table->setValue(cursor, 2, founded) ||
         table->appendRow(cursor);
}

/* Null texts are null values. One that is of another type than its column is refused. */
static int appendMany(ZvwfHandle* cursor) {
  static const char* const texts[] = {"3", "Rome",  "-753", /* a year is no date */
                                      "4", "Ghent", NULL};
  const int appended = zvwtAppendRows(cursor, 2, texts);
  if (appended < 2) {
    printf("row %d: %s\n", appended, cursor->functions->errorMessage(cursor));
  }
  return zvwtAppendRows(cursor, 1, texts + columnCount) != 1;
}

/* A table that is given up before zvwtKeepTable goes with its cursor. */
static int fill(ZvwfHandle* cursor) {
  const ZvwfFunctions* table = cursor->functions;
  zvwtAddColumn(cursor, "id", ZVWT_INTEGER);
  zvwtAddColumn(cursor, "city", ZVWT_STRING);
  zvwtAddColumn(cursor, "founded", ZVWT_DATE);
  if (table->create(cursor) || append(cursor, "1", "Lisbon", NULL) ||
      append(cursor, "2", "", "1048-01-01") || appendMany(cursor) || table->endAppend(cursor)) {
    return 1;
  }
  zvwtKeepTable(cursor);
  return 0;
}

/* A text belongs to the cursor until the next text is asked for, so each is printed at once. */
static int printRows(ZvwfHandle* cursor) {
  const ZvwfFunctions* table = cursor->functions;
  int status = 0;
  printf("%lld rows of", (long long)zvwtRowCount(cursor));
  for (int i = 0; i < table->columnCount(cursor); ++i) {
    const char* name = "";
    (void)table->columnName(cursor, i, &name); /* always 0 */
    printf(" %s (%d)", name, zvwtColumnType(cursor, i));
  }
  printf("\n");
  while ((status = table->next(cursor)) == 0) {
    for (int i = 0; i < table->columnCount(cursor); ++i) {
      const char* text = "";
      (void)table->value(cursor, i, &text); /* always 0; a null is an empty text */
      printf("%s[%s]", i == 0 ? "" : " ", text);
    }
    printf("\n");
  }
  return status != 1; /* 1 is the end of the rows, -1 a failure */
}

/* Many rows at once are read faster, and nulls are told from empty texts. */
static int printBackwards(ZvwfHandle* cursor, const char* name) {
  const char* texts[batchRows * columnCount];
  int rows = 0;
  if (zvwtOpenTable(cursor, name, 1)) {
    return 1;
  }
  while ((rows = zvwtReadRows(cursor, batchRows, texts)) > 0) {
    for (int i = 0; i < rows; ++i) {
      const char* const* row = texts + i * columnCount;
      printf("%s %s\n", row[0], row[2] == NULL ? "(null)" : row[2]);
    }
  }
  return rows != 0;
}

static int useTable(ZvWorkTableManager* manager, ZvwfHandle* writer, ZvwfHandle* reader) {
  char name[260]; /* longer names cannot be opened */
  char error[256] = "";
  int failed = fill(writer);
  (void)snprintf(name, sizeof name, "%s", zvwtTableName(writer));
  failed = failed || printRows(writer); /* endAppend has opened it again */
  if (failed) {
    printf("%s\n", writer->functions->errorMessage(writer));
  } else if (printBackwards(reader, name)) {
    printf("%s\n", reader->functions->errorMessage(reader));
    failed = 1;
  }
  if (name[0] != '\0' && zvwtDeleteTable(manager, name, error, sizeof error)) {
    printf("%s\n", error);
    failed = 1;
  }
  return failed;
}

int main(void) {
  char error[256] = "";
  int failed = 1;
  ZvWorkTableManager* manager = zvwtNewManager("example", "", error, sizeof error);
  if (manager == NULL) {
    printf("%s\n", error);
    return 1;
  }
  ZvwfHandle* writer = zvwtNewCursor(manager);
  ZvwfHandle* reader = zvwtNewCursor(manager);
  if (writer != NULL && reader != NULL) {
    failed = useTable(manager, writer, reader);
  }
  if (writer != NULL) {
    writer->functions->release(writer);
  }
  if (reader != NULL) {
    reader->functions->release(reader);
  }
  zvwtReleaseManager(manager);
  return failed;
}
