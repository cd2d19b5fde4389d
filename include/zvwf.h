/** @file
 * A string cursor for C: 14 functions, each given the cursor's handle first.
 *
 *   ZvwfHandle* cursor = ...;  from zvwtNewCursor or ZvWorkTableStringZVWFCursor::zvwfHandle
 *   const ZvwfFunctions* table = cursor->functions;
 *   table->addColumn(cursor, "city");
 *   if (table->create(cursor) != 0) puts(table->errorMessage(cursor));
 *
 * Texts are UTF-8 and end with a zero byte. A text that a function gives belongs to the cursor and
 * is valid until the next function that gives one is called on it: columnName, errorMessage, value,
 * and zvwtTableName of zvwt_c.h.
 * A null value, and a text that cannot be had, is given as an empty text.
 * What the operations do is said in ZvWorkTableCursor.h and ZvWorkTableStringCursor.h.
 * Thread rule: one thread at a time uses a cursor.
 */
#ifndef ZVWF_H
#define ZVWF_H

#ifdef __cplusplus
extern "C" {
#endif

/* NOLINTBEGIN(modernize-use-using): C has no other names for types. */
typedef struct ZvwfFunctions ZvwfFunctions;

/** One cursor. */
typedef struct ZvwfHandle {
  const ZvwfFunctions* functions; /**< the same for all cursors */
  void* cursor;                   /**< for the functions themselves */
} ZvwfHandle;
/* NOLINTEND(modernize-use-using) */

/** The functions. Those that answer with an int give 0 for success and 1 for failure, where nothing
 * else is said; errorMessage has the reason. */
struct ZvwfFunctions {
  /** Always 0. */
  int (*addColumn)(ZvwfHandle* handle, const char* name);
  int (*create)(ZvwfHandle* handle);
  int (*endAppend)(ZvwfHandle* handle);
  int (*appendRow)(ZvwfHandle* handle);
  /** Puts a column's name into *name. Always 0. */
  int (*columnName)(ZvwfHandle* handle, int index, const char** name);
  /** The reason of the last failure; empty when nothing has failed. */
  const char* (*errorMessage)(ZvwfHandle* handle);
  int (*columnCount)(ZvwfHandle* handle);
  /** The number of rows, -1 when it does not fit an int or there is no table. */
  int (*rowCount)(ZvwfHandle* handle);
  /** Puts a value of the row that next has read into *text. Always 0. */
  int (*value)(ZvwfHandle* handle, int index, const char** text);
  int (*newRow)(ZvwfHandle* handle);
  /** 0 when a row was read, 1 at the end of the rows, -1 on failure. */
  int (*next)(ZvwfHandle* handle);
  /** Frees the cursor, its handle with it. */
  void (*release)(ZvwfHandle* handle);
  /** Sets a value of the row that newRow has begun; null makes it null. Always 0. */
  int (*setValue)(ZvwfHandle* handle, int index, const char* text);
  int (*rewind)(ZvwfHandle* handle);
};

#ifdef __cplusplus
}
#endif

#endif
