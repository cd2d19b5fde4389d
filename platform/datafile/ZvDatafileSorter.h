/// One sort: takes records in any order and gives them back in the order of its keys.
///
///   setSortColumnCount, setSortColumn for each key, setSortOptionA and setSortOptionB
///   for each record: assign to value(0), value(1), ...; addRecord(0)
///   sort()
///   for (status = firstRecord(0); status == 0; status = nextRecord(0)): read value(0), value(1),
///   ...
///
/// Records with equal keys keep the order in which they were added. Keys compare by the declared
/// type of their column: numbers and dates by value, texts by bytes or, where case is ignored,
/// folded; a value that cannot be converted to that type counts as null. The values come back as
/// they were given, whole whatever sizes were announced: converted to the column's type, or
/// unchanged where they cannot be.
///
/// Status: 0 success, zvDatafileNoMoreRecords behind the last record, any other value a failure,
/// whose text getErrorMessage() gives. After a failure that concerns more than one record (a work
/// file, memory, a cancelled sort) every later operation fails with that text.
///
/// Memory: sorted runs lie in memory as long as the sort's memory lasts; after that they go to work
/// files, which nobody else sees and which are gone with the sorter or the process.
/// Ownership: the caller frees the sorter with release(). It needs neither the manager that made it
/// nor its settings any more. Thread rule: one thread at a time; a thread of the sorter's own may
/// work beside it.
#pragma once

#include <cstdint>

#include "base/ZvbDatavar.h"
#include "base/ZvbString.h"
#include "datafile/ZvDatafileSort.h"

/// Statuses of a sorter's operations.
enum ZvDatafileStatus : std::int32_t {
  zvDatafileSuccess = 0,
  zvDatafileNoMoreRecords = 4,
  zvDatafileFailed = 8,
};

class ZvDatafileSorter : public ZvDatafileSort {
 public:
  /// Adds a record of the values that value() gives. The argument is reserved and given as 0, here
  /// and below.
  [[nodiscard]] virtual std::int32_t addRecord(std::int32_t reserved) = 0;
  [[nodiscard]] virtual ZvbString getErrorMessage() = 0;
  /// The value of a column in the current record, the one to be added or the one delivered. The
  /// variants stay where they are until release(). Null when there is no such column.
  [[nodiscard]] virtual ZvbDatavar* value(std::int32_t column) = 0;
  /// Makes the next record in order the current one.
  [[nodiscard]] virtual std::int32_t nextRecord(std::int32_t reserved) = 0;
  virtual void release() = 0;
  /// The number of keys, 1 or more. All are column 0, ascending, until they are set.
  [[nodiscard]] virtual std::int32_t setSortColumnCount(std::int32_t count) = 0;
  /// Makes the first record in order the current one; called again, begins anew.
  [[nodiscard]] virtual std::int32_t firstRecord(std::int32_t reserved) = 0;
  /// Ends the adding and puts the records in order.
  [[nodiscard]] virtual std::int32_t sort() = 0;
  /// Adds a record of values that lie elsewhere, one for each column, and spares the caller to
  /// assign them to value() first: a fifth of the time that adding takes.
  [[nodiscard]] virtual std::int32_t addRecordOf(const ZvbDatavar* const* values) = 0;

 protected:
  ~ZvDatafileSorter() = default;
};
