/// A cursor over a work table: creates it, appends rows of typed values, reads them back.
///
///   addColumn for each column, create; per row newRow, setValue for each value, appendRow;
///   endAppend; then next until it returns zvbCursorEnd, value for each value; release.
///
/// The table is temporary: the cursor deletes it when it is released, unless
/// setRemoveOnClose(false) was called or the caller took the table away with workTable(true). That
/// holds for a table that was attached with setWorkTable, too.
///
/// Errors: an operation that fails says so by its result and leaves its reason in errorMessage().
/// An operation that needs a table, a row or a valid position and has none answers with an empty
/// text, a null value, 0 or false, and a reason; none of them is dangerous to call at any time, but
/// all except workTable and columnCount replace the reason of an earlier failure. Texts are those
/// of the manager and the table; 29 and 1642 memory is short for a column, a URI or a row, 1797
/// there is nothing to work on, 1798 a cursor cannot be copied from itself, and "Cannot create zero
/// columns". Ownership: the caller frees the cursor with release(), before its manager. Thread
/// rule: one thread at a time uses a cursor.
#pragma once

#include "ZvWorkTableFile.h"
#include "base/ZvbDatavarCursor.h"
#include "base/zvb_export.h"

/// On the operations that are inherited:
///
/// rewind and endAppend close the table and open it again for reading from its first row, with the
/// rows and columns that it was opened with. copyFrom closes the cursor first, as release does, and
/// copies into a new table; a source that reads this cursor's own table is gone then. create makes
/// a table of the columns added so far, without a limit on its element; a table that was attached
/// is released once the new one is there, and deleted unless it is to be kept. The columns stay
/// added. setValue keeps a copy.
class ZVB_API ZvWorkTableCursor : public ZvbDatavarCursorCreater {
 public:
  /// The attached table, or null. With `detach` the cursor forgets it: the caller releases it, and
  /// it stays on disk.
  [[nodiscard]] virtual ZvWorkTableFile* workTable(bool detach) = 0;
  /// Attaches a table, which the cursor then owns; its columns replace those that were added. The
  /// table attached before is released, and deleted unless it is to be kept. Null only lets go of
  /// that; another opening of the same table keeps its files; attaching the attached table again
  /// reads its columns anew. False when a column cannot be described; the table is attached all the
  /// same.
  [[nodiscard]] virtual bool setWorkTable(ZvWorkTableFile* table) = 0;
  /// Whether the table is deleted when the cursor lets go of it; true at first.
  virtual void setRemoveOnClose(bool remove) = 0;

  /// As release().
  virtual ~ZvWorkTableCursor() = default;
};
