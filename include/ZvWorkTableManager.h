/// The manager of work tables: the only way to obtain one.
///
/// A manager is made by zvwtCreateManager (zvwt.h) and knows the directories in which its tables
/// live. Tables are known by name, the name of their catalogue file, and are looked for in the
/// manager's directories in order.
///
/// Errors: an operation that fails returns false or null and puts the reason into *error, which the
/// caller supplies and which is required. Nothing throws.
/// Ownership: the caller frees the manager with release(), after all the tables it has handed out.
/// Thread rule: the operations may be called from several threads at once; release() is the last
/// call and comes from one thread alone.
#pragma once

#include <cstdint>

#include "ZvWorkTableFile.h"
#include "base/ZvbString.h"
#include "base/zvb_export.h"
#include "datafile/ZvDatafileManagerSortAndSize.h"

/// The first eight operations are the settings of the sorts of this manager's tables, see
/// ZvDatafileManagerSortAndSize.h; the reason of a refused one is read with getLastError().
class ZVB_API ZvWorkTableManager : public ZvDatafileManagerSortAndSize {
 public:
  /// Adds all rows of the source (a table name or URI) to the end of the target table, whose
  /// columns must have the same names and types. Appends to one target run one after another, by
  /// means of its key; with `alreadyEnqueued` the caller holds that key. After a failure the target
  /// may have some of the source's rows; those that it had are there.
  /// Fails: as openTable; 1769, 1770, 1771 the columns differ in number, name or type; 1780 the key
  /// cannot be had; 1782 the source cannot be read to its end; as writeRow and close.
  [[nodiscard]] virtual bool appendTable(const ZvbString& targetName, const ZvbString& sourceName,
                                         bool alreadyEnqueued, ZvbString* error) = 0;
  [[nodiscard]] virtual bool appendTable(const ZvbString& targetName, const ZvbString& sourceName,
                                         ZvbString* error) = 0;

  /// Copies a source table, columns and rows, into a table of the caller's that is being written
  /// and has as many columns. The target is then open for reading under the name it had; it stays
  /// the caller's whatever the result. Fails: as appendTable, but for names, types and key.
  [[nodiscard]] virtual bool copyIntoTable(ZvWorkTableFile* target,
                                           ZvWorkTableManager* sourceManager,
                                           const ZvbString& sourceName, ZvbString* error) = 0;
  /// Copies a source table into a new one of this manager, which is open for writing: the caller
  /// may add rows, closes it and owns it. The source's manager may be given by name: this one for
  /// its own name or an empty one, else one of that name with the same directories. Fails: as
  /// copyIntoTable and createTable; 1781 that manager cannot be made.
  [[nodiscard]] virtual ZvWorkTableFile* copyTable(std::int64_t maxElementSize,
                                                   ZvWorkTableManager* sourceManager,
                                                   const ZvbString& sourceName,
                                                   ZvbString* error) = 0;
  [[nodiscard]] virtual ZvWorkTableFile* copyTable(std::int64_t maxElementSize,
                                                   const ZvbString& sourceManagerName,
                                                   const ZvbString& sourceName,
                                                   ZvbString* error) = 0;

  /// Creates a table in the first directory that accepts it. Define its columns, then write.
  /// `maxElementSize` in bytes: an element whose data has grown beyond it is full and the next row
  /// begins another; 0 or less means no limit. With a `sortKeyCount` above 0 the table is sorted by
  /// as many keys, which setSortColumn describes before the first row. The caller owns the table.
  /// Fails: 1417 no directory accepts the file; 29 memory is short.
  [[nodiscard]] virtual ZvWorkTableFile* createTable(int columnCount, int sortKeyCount,
                                                     std::int64_t maxElementSize,
                                                     ZvbString* error) = 0;
  [[nodiscard]] virtual ZvWorkTableFile* createTable(int columnCount, std::int64_t maxElementSize,
                                                     ZvbString* error) = 0;

  /// Gives a key back, see enqueue. A key that nobody holds is ignored.
  virtual void dequeue(const ZvbString& key) = 0;
  /// Takes a named key for exclusive use, waiting while another holder has it. Any thread may give
  /// it back. A thread that takes a key it already holds waits for itself. Releasing the manager
  /// forgets the keys that are still held: nobody has to give them back, and nobody can. Fails: 29
  /// memory is short.
  [[nodiscard]] virtual bool enqueue(const ZvbString& key, ZvbString* error) = 0;

  /// The name given to zvwtCreateManager.
  [[nodiscard]] virtual ZvbString getName() = 0;
  /// The directories, separated by np_dir_listsep.
  [[nodiscard]] virtual ZvbString getDirectoryList() = 0;
  /// The reason why a sort and size setting was last refused; a success leaves it as it is.
  [[nodiscard]] virtual ZvbString getLastError() = 0;

  /// Opens a table for reading with the columns whose numbers are given; a count of -1 means all.
  /// With a range only its rows are read. Backwards, reading begins at the table's last row and
  /// ends with the range's first row; the range's row count then has no effect. Fails: 1353 or 1352
  /// the table is not in the directories or cannot be opened; 1784 the name is no plain file name;
  /// 1773, 1785, 1786, 1787, 1301 the catalogue is damaged; 1788, 1789 the range is negative; 1791
  /// there is no column of a number; 1792 a number is given twice.
  [[nodiscard]] virtual ZvWorkTableFile* openTable(const ZvbString& name, int count,
                                                   const int* numbers, const RowRange* range,
                                                   bool readBackwards, ZvbString* error) = 0;
  /// The same with the columns named, whose case does not count. A column may be named again, and a
  /// name that the table has not delivers a null text in every row. A count of 0 reads rows without
  /// any column.
  [[nodiscard]] virtual ZvWorkTableFile* openTable(const ZvbString& name, int count,
                                                   const ZvbString* names, const RowRange* range,
                                                   bool readBackwards, ZvbString* error) = 0;
  /// The same with all columns and rows of a table that is named, or with those that a URI tells
  /// (its form is in ZvURI.h, and getURI gives it): columns renamed and repeated, constants, a
  /// range of rows. A URI that lists no columns reads rows without any; one of a column that the
  /// table has not delivers a null text, or its second text. Fails: 1790 the URI is of another
  /// scheme.
  [[nodiscard]] virtual ZvWorkTableFile* openTable(const ZvbString& nameOrUri, bool readBackwards,
                                                   ZvbString* error) = 0;

  /// Splits a table's rows into up to *partCount ranges for readers side by side: `ranges` has room
  /// for as many, and *partCount becomes their number. They hold every row of the table once, in
  /// order, whatever range a URI has; with as many parts as elements or more, each lies in one
  /// element. Fails: as openTable.
  [[nodiscard]] virtual bool partitionTable(const ZvbString& nameOrUri, int* partCount,
                                            RowRange* ranges, ZvbString* error) = 0;

  /// Frees the manager.
  virtual void release() = 0;

  /// Removes a table's files. Whoever has the table open at that time, here or elsewhere, is not
  /// asked: on Linux files already open can be read to their end, while an element that is still to
  /// be opened answers 1353, and rows being appended are lost and may leave an element's files.
  /// Fails: as openTable; 1747 a file cannot be deleted.
  [[nodiscard]] virtual bool deleteTable(const ZvbString& name, ZvbString* error) = 0;

  /// As release().
  virtual ~ZvWorkTableManager() = default;
};
