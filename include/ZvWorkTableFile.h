/// A work table: typed rows that wait on disk.
///
/// A manager makes every table object (see ZvWorkTableManager.h). A table that was just created is
/// being written: define its columns, write its rows, close it. A table that was opened is being
/// read: read its rows until the end-of-table flag is set.
///
/// Errors: an operation that fails returns false (or null, or an empty text) and leaves its reason
/// in getErrorMessage(). A success leaves an earlier message as it is. Nothing throws. Ownership:
/// the caller frees the object with release(), before it releases the manager. Thread rule: one
/// thread at a time uses an object; different objects may be used at once.
#pragma once

#include <cstdint>

#include "base/ZvbDatavar.h"
#include "base/ZvbString.h"
#include "base/ZvbStringCursor.h"
#include "base/zvb_export.h"
#include "base/zvb_type.h"
#include "datafile/ZvDatafileSort.h"

/// A part of a table's rows.
struct RowRange {
  std::int64_t firstRow = 0;   ///< counted from 0
  std::int64_t rowCount = -1;  ///< -1: to the end of the table
};

/// The first three operations describe a sort, see ZvDatafileSort.h; they have an effect only on a
/// table created with sort keys, and only before its first row. They always answer 0: what cannot
/// be is refused by the first writeRow, and can be set right then. Such a table takes rows in any
/// order, sorts them as they come, and stores them in order when it is closed. The order is that of
/// the values as given: a text is cut to its column's width only when it is stored, and a value
/// that cannot be converted to its column's type counts as null.
class ZVB_API ZvWorkTableFile : public ZvDatafileSort {
 public:
  /// Ends writing or reading. For a table being written this flushes the rows and writes the
  /// catalogue: only then can the table be opened.
  /// A failed close of a table being written removes the table's files, and a sort that fails or is
  /// cancelled fails the close. After a refused row it succeeds with the whole rows that the disk
  /// has. Rows that were accepted have their space, as far as the system tells: a full disk is met
  /// by writeRow, and a close fails where the disk itself fails or a quota ends. A table that is
  /// closed can still be asked for its name, columns and row count.
  [[nodiscard]] virtual bool close() = 0;

  /// Names and types column `index` (from 0) of a table being written, before its first row.
  /// `width` is the most bytes of a text that are stored, cut at a character; 0 means no limit. A
  /// column may be defined again; two columns cannot have one name (case does not count). Fails:
  /// 1420 no such column; 1666 the name is another column's.
  [[nodiscard]] virtual bool defineColumn(int index, ZvbString name, zvbType type, int width) = 0;

  /// Describes column `index`, from 0, of the caller's row, a renamed one by its new name.
  /// `maxLength` is the size in bytes of the longest text written so far, its terminator included;
  /// of a constant text `width` and `maxLength` are its characters. Fails: 1420 no such column.
  [[nodiscard]] virtual bool getColumnDefinition(int index, ZvbString* name, zvbType* type,
                                                 int* width, int* maxLength) = 0;

  /// The number of columns of the caller's row.
  [[nodiscard]] virtual int getColumnCount() = 0;

  /// The reason of the last failure; empty when nothing has failed.
  [[nodiscard]] virtual ZvbString getErrorMessage() = 0;

  /// The table's name: the name of its catalogue file without the directory. Other openings, of
  /// this manager or of one with the same directories, use it.
  [[nodiscard]] virtual ZvbString getName() = 0;

  /// All rows of the table, whatever range is being read.
  [[nodiscard]] virtual std::int64_t getRowCount() = 0;

  /// Reads the next row into the variants that `values` points to, one per column. True when a row
  /// came; false at the end (*endOfTable is then set) or on failure (*endOfTable is clear).
  /// `endOfTable` is required. Variants are assigned to, not replaced: giving the same ones for
  /// every row allocates nothing. After a failure the table stays open. Fails: 1793 the table is
  /// not open for reading; 1301 the files are damaged or shorter than the catalogue says; 1353 an
  /// element file cannot be opened.
  [[nodiscard]] virtual bool readRow(ZvbDatavar* const* values, bool* endOfTable) = 0;
  /// The same with the variants one after another.
  [[nodiscard]] virtual bool readRow(ZvbDatavar* values, bool* endOfTable) = 0;

  /// Puts up to `maxRows` rows, from where reading stands, into *out as an XML document in UTF-8:
  /// bean definitions of the Spring Framework, with one bean "Table" that the bean
  /// "TableFactoryBean" makes by createInstance(table's name, list of column names, list of rows,
  /// each a list of texts). A negative `maxRows` stands for the table's row count less `firstRow`,
  /// which has no other effect: open the table with a range. Values are escaped, the table's and
  /// the columns' names are not, and what XML cannot have, control characters and `]]>`, stays as
  /// it is. A null is an empty text. The columns listed are always the table's: values stand below
  /// their labels only when no columns were selected. With `endOfTable` given, fewer rows are no
  /// failure: the document ends with the last one read, and *endOfTable tells the end of the table
  /// (set) from a row that could not be read (clear, and the reason is in getErrorMessage()). With
  /// null they are: 29, and *out is incomplete. Fails otherwise: 29 memory is short.
  [[nodiscard]] virtual bool asXml(int firstRow, int maxRows, ZvbString* out, bool* endOfTable) = 0;

  /// Closes and frees the object. A table created by this object that has seen any failure is
  /// removed from disk; every other table stays until it is deleted.
  virtual void release() = 0;

  /// Statistics of the table as it is now, as a cursor that the caller owns and that does not need
  /// the table any more: the columns "Statistic" and "Value", and the rows "AccessKey", "Columns"
  /// (of the reader's row), "ElementSize" (its limit in bytes), "Elements", "Rows", "Version".
  /// Null on failure: 29 memory is short.
  [[nodiscard]] virtual ZvbStringCursor* getStatistics() = 0;

  /// The URI that opens this table again with the same columns, names, constants and rows;
  /// the direction of reading is not part of it. Of a
  /// table being written it lists no columns, or all of them with `allColumns` if this object
  /// created the table. Empty when memory is short; no message is left then.
  [[nodiscard]] virtual ZvbString getURI(bool allColumns) = 0;

  /// Adds a row to a table being written: one value per column, in column order. A value is
  /// converted to its column's type; one that cannot be converted is stored as a null. After a
  /// failure the row is not in the table, and further rows may be written. Fails: 1768 the table is
  /// not open for writing; 1044 the disk refused the bytes; 29 memory is short; 1417 no directory
  /// takes a new element, or 1045 there is no space to list it in the catalogue. Of a table with
  /// sort keys also, at its first row, 1801 to 1805 a key or an option is wrong; and 1808 to 1812 a
  /// work file cannot be made, written or read, 1813 the sort was cancelled: then no further rows
  /// are taken.
  [[nodiscard]] virtual bool writeRow(const ZvbDatavar* const* values) = 0;
  /// The same with the variants one after another.
  [[nodiscard]] virtual bool writeRow(const ZvbDatavar* values) = 0;

  /// As release().
  virtual ~ZvWorkTableFile() = default;
};
