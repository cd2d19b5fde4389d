/** @file
 * Work tables for C, and for every language that calls C: what leads to the functions of zvwf.h.
 *
 *   char error[256] = "";
 *   ZvWorkTableManager* manager = zvwtNewManager("reports", "", error, sizeof error);
 *   ZvwfHandle* cursor = manager == NULL ? NULL : zvwtNewCursor(manager);
 *   if (cursor == NULL) {
 *     printf("no cursor: %s\n", error);
 *   } else {
 *     const ZvwfFunctions* table = cursor->functions;
 *     const char* text = "";
 *     int status = zvwtOpenTable(cursor, "zvwt_ab12", 0) == 0 ? table->next(cursor) : -1;
 *     for (; status == 0; status = table->next(cursor)) {
 *       (void)table->value(cursor, 0, &text);
 *       puts(text);
 *     }
 *     if (status != 1) {  // 1 is the end of the rows, -1 a failure
 *       puts(table->errorMessage(cursor));
 *     }
 *     table->release(cursor);
 *   }
 *   zvwtReleaseManager(manager);
 *
 * To read: zvwtNewCursor, zvwtOpenTable, then next and value, or zvwtReadRows for many rows at
 * once. To write: zvwtNewCursor, zvwtAddColumn for each column, create; for each row newRow,
 * setValue, appendRow, or zvwtAppendRows for many; endAppend and zvwtKeepTable; release.
 * Appending to a finished table, copying, sorting, checking and cleaning up are left to the classes
 * of zvwt.h and to the tool.
 *
 * Texts are UTF-8 and end with a zero byte. What is given is copied. Pointers must not be null
 * unless it is said that they may be. Values travel as texts:
 *
 *   type          text that is read              text that is taken
 *   ZVWT_BOOLEAN  true false                     also yes no 1 0, in any case
 *   ZVWT_INTEGER  -42                            a ZVWT_REAL, cut toward zero
 *   ZVWT_REAL     -0.5 1e99                      [+-]digits[.digits][(e|E)[+-]digits]
 *   ZVWT_STRING   as it is                       as it is
 *   ZVWT_DATE     2024-02-29T13:45:10.250        YYYY-MM-DD[(T| )HH:MM[:SS[.digits]]]
 *
 * Blanks, tabs and line ends around a text that is taken are ignored, but for ZVWT_STRING. A real
 * has up to 38 significant digits; more are refused unless they are zeros. A date is read rounded
 * to milliseconds.
 *
 * Errors: functions that answer with an int give 0 for success and 1 for failure, where nothing
 * else is said. The reason is the cursor's errorMessage; functions of managers write it, ended by a
 * zero byte, to `error`, which has room for `errorSize` bytes, and cut a longer one at a character;
 * both may be 0. The texts are those that ZvWorkTableManager.h, ZvWorkTableFile.h and
 * ZvWorkTableCursor.h list by their numbers, and those listed here. Nothing throws.
 * Thread rule: a manager may be used by several threads at once, a cursor by one at a time.
 */
#ifndef ZVWT_C_H
#define ZVWT_C_H

/* NOLINTBEGIN(modernize-*): C has no other names for headers and types. */
#include <stddef.h>
#include <stdint.h>

#include "base/zvb_export.h"
#include "zvwf.h"

#ifdef __cplusplus
class ZvWorkTableManager;
extern "C" {
#else
typedef struct ZvWorkTableManager ZvWorkTableManager;
#endif

/** The types of columns, numbered as zvbType. */
typedef enum ZvwtColumnType {
  ZVWT_BOOLEAN = 1,
  ZVWT_INTEGER = 2, /**< 64 bits, signed */
  ZVWT_REAL = 3,    /**< a decimal */
  ZVWT_STRING = 4,
  ZVWT_DATE = 5 /**< with a time of day, in milliseconds */
} ZvwtColumnType;
/* NOLINTEND(modernize-*) */

/** Makes a manager of tables in the directories listed, as zvwtCreateManager does: they are parted
 * by ':', on Windows by ';'; an empty list stands for the option BASE/TEMP (the environment
 * variable ZVB_BASE_TEMP), else for the system's temporary directory. Directories are first looked
 * at when a table is made or opened. `name` is one by which copyTable of ZvWorkTableManager.h finds
 * this manager; files do not have it. Null on failure. The caller frees the manager with
 * zvwtReleaseManager, after all its cursors. */
ZVB_API ZvWorkTableManager* zvwtNewManager(const char* name, const char* directoryList, char* error,
                                           size_t errorSize);

/** Frees a manager; null is none. Its tables stay. */
ZVB_API void zvwtReleaseManager(ZvWorkTableManager* manager);

/** Removes a table's files; see ZvWorkTableManager::deleteTable for readers that have them open. */
ZVB_API int zvwtDeleteTable(ZvWorkTableManager* manager, const char* name, char* error,
                            size_t errorSize);

/** Makes a cursor for one table, one that is created or one that is opened. Null when memory is
 * short. The caller frees it with the function release. */
ZVB_API ZvwfHandle* zvwtNewCursor(ZvWorkTableManager* manager);

/** As the function addColumn, with the type of the column: one of ZvwtColumnType, any other number
 * being ZVWT_STRING. Memory that is short is told by create.
 *
 * The table that create makes is deleted when its cursor is released, until zvwtKeepTable says
 * otherwise: what is given up halfway leaves nothing. */
ZVB_API void zvwtAddColumn(ZvwfHandle* cursor, const char* name, int type);

/** Opens a table by its name, or by a URI with the rows and columns that it lists (ZvURI.h), for
 * reading from its first row, or with `readBackwards` not 0 from the last one. The table stays when
 * the cursor is released. The function rewind then reads forwards; to read backwards again, open
 * the table again with the same cursor. After a failure the cursor has the table it had, or none.
 */
ZVB_API int zvwtOpenTable(ZvwfHandle* cursor, const char* nameOrUri, int readBackwards);

/** Lets the table that the cursor has created stay on disk when the cursor lets go of it; those
 * that it creates later do not. Call it when endAppend has succeeded: only then is every row
 * stored. */
ZVB_API void zvwtKeepTable(ZvwfHandle* cursor);

/** The table's name, by which it is opened and deleted; empty when there is no table. The text
 * belongs to the cursor as those of zvwf.h do. */
ZVB_API const char* zvwtTableName(ZvwfHandle* cursor);

/** The type of column `index`, from 0: one of ZvwtColumnType, or 0 on failure. */
ZVB_API int zvwtColumnType(ZvwfHandle* cursor, int index);

/** All rows of the table, whatever range is being read; of a table being written those so far. -1
 * when there is no table. */
ZVB_API int64_t zvwtRowCount(ZvwfHandle* cursor);

/** Reads rows, from where reading stands: up to `maxRows`, of which there must be 1 or more (else
 * 1800). `texts` has room for maxRows times the column count. It gets the values' texts, row by
 * row; **null stands for a null value**, which the function value cannot tell from an empty text.
 *
 * Returns the number of rows read, which may be smaller before the end too; 0 at the end; -1 on
 * failure. A row that cannot be read does not cost those before it: they are returned first, and
 * the next call fails. Reading can go on behind it.
 * The texts belong to the cursor and are valid until rows are read with it again, in any way, or
 * rewind, create, zvwtOpenTable or release is called. The function value does not give them. */
ZVB_API int zvwtReadRows(ZvwfHandle* cursor, int maxRows, const char** texts);

/** Appends `rowCount` rows, 0 or more (else 1800), whose texts stand in `texts` row by row; null
 * stands for a null value. A text that cannot be converted to its column's type is refused with its
 * row (1799), where the function appendRow stores a null.
 *
 * Returns the number of rows appended. When it is not rowCount, the row of that number, from 0, has
 * failed, and those behind it have not been looked at. A refused text leaves the table as it is:
 * other rows may follow. What the disk refuses fails endAppend, too. A row begun with newRow is
 * lost. */
ZVB_API int zvwtAppendRows(ZvwfHandle* cursor, int rowCount, const char* const* texts);

#ifdef __cplusplus
}
#endif

#endif
