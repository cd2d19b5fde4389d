/// Rows of typed values behind one interface, whatever they are kept in: read, appended, created.
///
/// Positions of columns and values count from 0.
/// Errors: an operation that fails says so by its result and leaves its reason in errorMessage().
/// Nothing throws. Ownership: whoever obtained a cursor frees it with release(). Thread rule: one
/// thread at a time uses a cursor.
#pragma once

#include <cstdint>

#include "base/ZvbDatavar.h"
#include "base/ZvbString.h"
#include "base/zvb_export.h"
#include "base/zvb_type.h"

/// What next() has found.
enum ZvbCursorStep : int {
  zvbCursorEnd = 0,
  zvbCursorRow = 1,
  zvbCursorFailed = 2,
};

/// Reading.
class ZVB_API ZvbDatavarCursor {
 public:
  [[nodiscard]] virtual bool isValid() = 0;
  /// Empty on failure.
  [[nodiscard]] virtual ZvbString columnName(int index) = 0;
  /// 0 on failure.
  [[nodiscard]] virtual zvbType columnType(int index) = 0;
  [[nodiscard]] virtual int columnCount() = 0;
  /// A copy of a value of the row that next() has read; null when there is none.
  [[nodiscard]] virtual ZvbDatavar value(int index) = 0;
  /// The reason of the last failure; empty when nothing has failed.
  [[nodiscard]] virtual ZvbString errorMessage() = 0;
  /// Puts the number of rows, cut to 32 bits, into *count. False when it does not fit those.
  virtual bool rowCount(std::int64_t* count) = 0;
  /// Reads the next row: zvbCursorRow, zvbCursorEnd or zvbCursorFailed.
  [[nodiscard]] virtual int next() = 0;
  /// Frees the cursor.
  virtual void release() = 0;
  /// Goes back before the first row.
  [[nodiscard]] virtual bool rewind() = 0;

 protected:
  ~ZvbDatavarCursor() = default;
};

/// Appending rows, one after another: newRow, setValue for each value, appendRow; endAppend at
/// last.
class ZVB_API ZvbDatavarCursorAppender : public ZvbDatavarCursor {
 public:
  /// Begins a row of nulls.
  [[nodiscard]] virtual bool newRow() = 0;
  virtual void setValue(int index, const ZvbDatavar& value) = 0;
  /// Adds the row that newRow has begun.
  [[nodiscard]] virtual bool appendRow() = 0;
  /// Ends appending; the cursor then reads from the first row.
  [[nodiscard]] virtual bool endAppend() = 0;

 protected:
  ~ZvbDatavarCursorAppender() = default;
};

/// Creating what the rows are kept in: addColumn for each column, then create; or all at once from
/// another cursor.
class ZVB_API ZvbDatavarCursorCreater : public ZvbDatavarCursorAppender {
 public:
  /// Copies the columns and all rows of another cursor, which is rewound first. This cursor then
  /// reads from the first row.
  [[nodiscard]] virtual bool copyFrom(ZvbDatavarCursor* source) = 0;
  virtual void addColumn(const ZvbString& name, zvbType type) = 0;
  [[nodiscard]] virtual bool create() = 0;

 protected:
  ~ZvbDatavarCursorCreater() = default;
};
