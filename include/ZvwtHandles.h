/// What C++ code of today wants around the library: owners for its objects, and loops over rows.
///
///   zvwt::Table table(manager->openTable(name, false, &error));
///   zvwt::Rows rows(*table);
///   for (const std::span<const ZvbDatavar> row : rows) {
///     std::puts(row[1].asString().asCstr());
///   }
///   if (!rows.complete()) {
///     std::puts(table->getErrorMessage().asCstr());
///   }
///
/// All of it is in this header and compiles to the calls that one would write by hand. It includes
/// zvwt.h.
/// Errors: null and false, as everywhere in the library. The constructor of Rows alone throws, and
/// only std::bad_alloc. Thread rule: that of the object behind an owner or a loop.
#pragma once

#include <concepts>
#include <cstddef>
#include <iterator>
#include <memory>
#include <span>
#include <vector>

#include "base/ZvURI.h"
#include "base/ZvWorkTableURI.h"
#include "base/ZvbDatavarCursor.h"
#include "base/ZvbStringCursor.h"
#include "zvwt.h"

namespace zvwt {

/// Gives an object back as the library wants it, with release().
struct Release {
  template <typename Object>
  void operator()(Object* object) const noexcept {
    object->release();
  }
};

/// Owners, one for each kind of object that the library hands out. An empty one is a failure of the
/// operation that it was made from. Declare a manager before its tables and cursors, so that it is
/// released after them. To give a table to a cursor, hand over `table.release()`: unique_ptr's own,
/// which lets go of the table and does not free it.
using Manager = std::unique_ptr<ZvWorkTableManager, Release>;
using Table = std::unique_ptr<ZvWorkTableFile, Release>;
using Cursor = std::unique_ptr<ZvWorkTableCursor, Release>;
using StringCursor = std::unique_ptr<ZvWorkTableStringCursor, Release>;
using ZvwfCursor = std::unique_ptr<ZvWorkTableStringZVWFCursor, Release>;
using Statistics = std::unique_ptr<ZvbStringCursor, Release>;
using Uri = std::unique_ptr<ZvURI, Release>;
using TableUri = std::unique_ptr<ZvWorkTableURI, Release>;

/// Where a loop over Rows or CursorRows stands.
template <typename Range>
class RowIterator {
 public:
  using iterator_concept = std::input_iterator_tag;
  using difference_type = std::ptrdiff_t;
  using value_type = typename Range::Row;

  RowIterator() noexcept = default;
  explicit RowIterator(Range* rows) noexcept : rows_(rows) {}

  [[nodiscard]] value_type operator*() const noexcept { return rows_->row(); }
  RowIterator& operator++() noexcept {
    rows_->read();
    return *this;
  }
  void operator++(int) noexcept { rows_->read(); }
  [[nodiscard]] bool operator==(std::default_sentinel_t) const noexcept { return !rows_->hasRow(); }

 private:
  Range* rows_ = nullptr;
};

/// The rows of a table that is open for reading, from where it stands to the end of what was
/// opened, once: an input range.
///
/// The range owns the values of one row, allocated when it is made, and every row is read into
/// them: a row is valid until the loop goes on and no longer than the range. The table outlives the
/// range and is not read by others meanwhile. After a `break` another loop goes on with the next
/// row. A failed read ends the loop, as the end of the table does: ask complete() behind it.
class Rows {
 public:
  /// One value per column, in column order.
  using Row = std::span<const ZvbDatavar>;

  /// Throws std::bad_alloc when memory for the values is short. Reads nothing yet.
  explicit Rows(ZvWorkTableFile& table)
      : table_(table), values_(static_cast<std::size_t>(table.getColumnCount())) {}
  Rows(const Rows&) = delete;
  Rows& operator=(const Rows&) = delete;

  /// Reads a row.
  [[nodiscard]] RowIterator<Rows> begin() noexcept {
    read();
    return RowIterator<Rows>(this);
  }
  [[nodiscard]] static std::default_sentinel_t end() noexcept { return {}; }

  /// Whether the end was reached. False behind a loop: it was left early, or a read failed and the
  /// table's getErrorMessage() has the reason.
  [[nodiscard]] bool complete() const noexcept { return isAtEnd_; }

 private:
  friend class RowIterator<Rows>;

  [[nodiscard]] Row row() const noexcept { return values_; }
  [[nodiscard]] bool hasRow() const noexcept { return hasRow_; }
  void read() noexcept { hasRow_ = table_.readRow(values_.data(), &isAtEnd_); }

  ZvWorkTableFile& table_;
  std::vector<ZvbDatavar> values_;
  bool hasRow_ = false;
  bool isAtEnd_ = false;
};

/// What CursorRows goes over: the cursors of this library, and any other like them.
template <typename CursorType>
concept RowCursor = requires(CursorType& cursor, int index) {
  { cursor.next() } -> std::same_as<int>;  // a ZvbCursorStep
  { cursor.columnCount() } -> std::same_as<int>;
  cursor.value(index);
};

/// The rows of a cursor from where it stands to its end, once: an input range. Rewind a cursor that
/// has been read.
///
/// Nothing is allocated, but for what the cursor's value() does. The cursor outlives the range and
/// its rows, and nothing else advances it meanwhile. After a `break` another loop goes on with the
/// next row. A failed read ends the loop, as the end does: ask complete() behind it.
template <RowCursor CursorType>
class CursorRows {
 public:
  /// The row on which the cursor stands: it changes when the loop goes on.
  class Row {
   public:
    explicit Row(CursorType& cursor) noexcept : cursor_(&cursor) {}

    /// A copy of a value: a ZvbDatavar, or of a string cursor a ZvbString. Keep it where it is used
    /// more than once.
    [[nodiscard]] auto operator[](int index) const noexcept { return cursor_->value(index); }
    /// The number of columns.
    [[nodiscard]] int size() const noexcept { return cursor_->columnCount(); }

   private:
    CursorType* cursor_;
  };

  /// Reads nothing yet.
  explicit CursorRows(CursorType& cursor) noexcept : cursor_(cursor) {}
  CursorRows(const CursorRows&) = delete;
  CursorRows& operator=(const CursorRows&) = delete;

  /// Reads a row.
  [[nodiscard]] RowIterator<CursorRows> begin() noexcept {
    read();
    return RowIterator<CursorRows>(this);
  }
  [[nodiscard]] static std::default_sentinel_t end() noexcept { return {}; }

  /// Whether the end was reached. False behind a loop: it was left early, or a read failed and the
  /// cursor's errorMessage() has the reason.
  [[nodiscard]] bool complete() const noexcept { return step_ == zvbCursorEnd; }

 private:
  friend class RowIterator<CursorRows>;

  [[nodiscard]] Row row() const noexcept { return Row(cursor_); }
  [[nodiscard]] bool hasRow() const noexcept { return step_ == zvbCursorRow; }
  void read() noexcept { step_ = cursor_.next(); }

  CursorType& cursor_;
  int step_ = zvbCursorFailed;  // until a row is read
};

static_assert(std::input_iterator<RowIterator<Rows>> &&
              std::sentinel_for<std::default_sentinel_t, RowIterator<Rows>>);
static_assert(std::input_iterator<RowIterator<CursorRows<ZvbStringCursor>>>);

}  // namespace zvwt
