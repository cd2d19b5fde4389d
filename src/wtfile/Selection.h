/// The columns of a reader's row: which of the table's columns, in which order and under which
/// names, and the constants among them.
///
/// A selection marks its columns in the table's column definitions (their targets): the data
/// elements deliver each stored value to the places that are noted there, and pass over columns
/// without any. Without a selection the reader's row is the table's row.
/// Errors: the operations that select return false with the text in *error; the selection is then
/// unusable. Lifetime: the table's column definitions outlive it.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "base/ZvURI.h"
#include "base/ZvWorkTableURI.h"
#include "base/ZvbDatavar.h"
#include "base/ZvbString.h"
#include "wtelem/ColumnDefinition.h"

class Selection {
 public:
  using Columns = std::span<ColumnDefinition>;

  Selection() noexcept = default;
  /// For a table with these columns, none of which is marked yet.
  explicit Selection(Columns columns) noexcept : columns_(columns) {}

  /// A name that the table has not is a constant null text. A count of -1 means all columns, here
  /// and below.
  [[nodiscard]] bool selectNames(int count, const ZvbString* names, ZvbString* error) noexcept;
  /// Every column once at most.
  [[nodiscard]] bool selectNumbers(int count, const int* numbers, ZvbString* error) noexcept;
  [[nodiscard]] bool selectFromURI(const ZvURI& uri, ZvbString* error) noexcept;

  /// False when the reader's row is the table's row.
  [[nodiscard]] bool exists() const noexcept { return entries_ != nullptr; }
  /// Columns of the reader's row.
  [[nodiscard]] int count() const noexcept;
  [[nodiscard]] bool hasConstants() const noexcept { return constantCount_ != 0; }
  /// Those of them that come from the table's rows.
  [[nodiscard]] int storedCount() const noexcept { return count() - constantCount_; }
  /// A column of the reader's row, as the reader sees it.
  [[nodiscard]] const ColumnDefinition& column(int position) const noexcept;
  /// The largest maxLength among the columns of the reader's row.
  [[nodiscard]] std::int32_t longestText() const noexcept;
  /// Bytes of the text that a constant column delivers, 0 for every other column.
  [[nodiscard]] std::int32_t constantTextSize(int position) const noexcept;

  /// Links the table's columns that are delivered (nextDelivered); the number of the first one.
  [[nodiscard]] std::int32_t linkDelivered() const noexcept;

  /// Gives the constants to a reader's row. False when memory is short.
  [[nodiscard]] bool deliverConstants(ZvbDatavar* const* values) const noexcept;

  /// Adds the columns of the reader's row to a URI; with `unread`, and without a selection, also
  /// those of the table's columns that nothing has selected. False when memory is short.
  [[nodiscard]] bool describe(bool unread, ZvWorkTableURI& uri) const noexcept;

 private:
  /// A column of the reader's row.
  struct Entry {
    const ColumnDefinition* source = nullptr;  // the table's column; null: a constant
    const ColumnDefinition* shown = nullptr;   // the source, or `own`
    std::unique_ptr<ColumnDefinition> own;     // of a renamed or constant column
    std::unique_ptr<ZvbDatavar> constant;      // none: a null
  };

  [[nodiscard]] static bool describeEntry(const Entry& entry, ZvWorkTableURI& uri) noexcept;
  void selectAll() noexcept;
  [[nodiscard]] bool namesAreTheTables(const ZvbString* names) const noexcept;
  [[nodiscard]] bool isTheTables(const ZvURI& uri) const noexcept;
  [[nodiscard]] ColumnDefinition* find(const ZvbString& name) const noexcept;

  bool makeEntries(int count, const char* what, ZvbString* error) noexcept;
  bool selectName(int position, const ZvbString& name, ZvbString* error) noexcept;
  bool selectNumber(int position, int number, ZvbString* error) noexcept;
  bool selectURIColumn(int position, const ZvURI& uri, ZvbString* error) noexcept;
  static bool makeOwn(Entry& entry, const ZvbString& name, const char* what,
                      ZvbString* error) noexcept;
  static bool rename(Entry& entry, const ZvbString& name, ZvbString* error) noexcept;
  bool makeConstant(Entry& entry, const ZvbString& name, zvbType type, ZvbString* error) noexcept;
  static bool giveValue(Entry& entry, const ZvbString& text, ZvbString* error) noexcept;

  [[nodiscard]] Entry& entry(int position) const noexcept {
    return entries_[static_cast<std::size_t>(position)];
  }

  Columns columns_;
  std::unique_ptr<Entry[]> entries_;  // none: the table's columns
  int entryCount_ = 0;
  int constantCount_ = 0;
};
