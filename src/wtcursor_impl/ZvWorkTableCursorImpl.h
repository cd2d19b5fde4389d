/// The cursor behind ZvWorkTableCursor, and the engine of the string cursors.
///
/// It has no table, or writes the one that it has created, or reads one: a table that it has
/// reopened (rewind) or was given (setWorkTable).
/// Thread rule: one thread at a time.
#pragma once

#include <memory>

#include "ZvWorkTableCursor.h"
#include "ZvWorkTableManager.h"
#include "base/ZvbArray.h"
#include "base/ZvbDatavar.h"
#include "base/ZvbString.h"
#include "wtfile/ZVWTFileImpl.h"

class ZvWorkTableCursorImpl final : public ZvWorkTableCursor {
 public:
  /// The manager, which may be null, outlives the cursor.
  explicit ZvWorkTableCursorImpl(ZvWorkTableManager* manager) noexcept : manager_(manager) {}
  ZvWorkTableCursorImpl(const ZvWorkTableCursorImpl&) = delete;
  ZvWorkTableCursorImpl& operator=(const ZvWorkTableCursorImpl&) = delete;
  ~ZvWorkTableCursorImpl() override;

  bool isValid() noexcept override { return true; }
  ZvbString columnName(int index) noexcept override;
  zvbType columnType(int index) noexcept override;
  int columnCount() noexcept override;
  ZvbDatavar value(int index) noexcept override {
    const ZvbDatavar* value = findValue(index);
    return value != nullptr ? *value : ZvbDatavar();
  }
  ZvbString errorMessage() noexcept override { return errorMessage_; }
  bool rowCount(std::int64_t* count) noexcept override;
  int next() noexcept override;
  void release() noexcept override { delete this; }
  bool rewind() noexcept override;
  bool newRow() noexcept override;
  void setValue(int index, const ZvbDatavar& value) noexcept override;
  bool appendRow() noexcept override;
  bool endAppend() noexcept override { return rewind(); }
  bool copyFrom(ZvbDatavarCursor* source) noexcept override;
  void addColumn(const ZvbString& name, zvbType type) noexcept override;
  bool create() noexcept override;
  ZvWorkTableFile* workTable(bool detach) noexcept override;
  bool setWorkTable(ZvWorkTableFile* table) noexcept override;
  void setRemoveOnClose(bool remove) noexcept override { removeOnClose_ = remove; }

  /// Keeps the table that is attached; the next one is deleted as setRemoveOnClose says.
  void keepTable() noexcept { keepsTable_ = true; }

  /// A value of the row that was read, until the next one is; null when there is none.
  [[nodiscard]] const ZvbDatavar* findValue(int index) noexcept {
    const auto place = static_cast<unsigned>(index);  // a negative one is beyond all columns
    if (fetchRow_ == nullptr || place >= fetchedColumns_) [[unlikely]] {
      lackValue(index);
      return nullptr;
    }
    return &fetchRow_[place];
  }

  /// Opens a table in place of the one attached, and keeps it. After a failure there is the
  /// table that was attached, or none.
  [[nodiscard]] bool open(const ZvbString& nameOrUri, bool readBackwards) noexcept;

  /// Reads up to `maxRows` rows and points at their texts, row by row; null for a null. The number
  /// of rows, 0 at the end; -1 when there is none because the first has failed, or `maxRows` is not
  /// above 0. A later one that fails is told by what reads next.
  [[nodiscard]] int readTexts(int maxRows, const char** texts) noexcept;

  /// Appends rows of texts, null for a null, each of which has to be of its column's type. The
  /// number of rows before the first that has failed.
  [[nodiscard]] int appendTexts(int rowCount, const char* const* texts) noexcept;

  /// What copyFrom does, for cursors of either kind: refuses a source that is not there or that is
  /// the target itself, closes, and lets `copy` do the rest with the place for its error text.
  template <typename Source, typename Copy>
  bool copyAfterClose(const Source* source, const Source* target, const Copy& copy) noexcept {
    return canCopy(source != nullptr, source == target) && close() && copy(&errorMessage_);
  }

 private:
  struct ReleaseTable {
    void operator()(ZVWTFileImpl* table) const noexcept { table->release(); }
  };
  /// What the interface cannot tell, whether rows are being read or written, the cursor asks of the
  /// object behind it.
  using Table = std::unique_ptr<ZVWTFileImpl, ReleaseTable>;
  using RowValues = std::unique_ptr<ZvbDatavar[]>;

  struct Column {
    ZvbString name;
    zvbType type = zvbTypeString;
  };

  bool fail(ZvbString text) noexcept;
  bool failAs(ZVWTFileImpl& table) noexcept;
  bool hasTable() noexcept { return table_ != nullptr || lackTable(); }
  bool lackTable() noexcept;
  bool lackColumn() noexcept;
  [[gnu::noinline]] void lackValue(int index) noexcept;
  bool queryTable() noexcept;
  /// Asked of the cursor rather than of the table: a failure of the table's own would cost one that
  /// was just created its files.
  bool hasColumn(int index) noexcept {
    return hasTable() && ((index >= 0 && index < table_->getColumnCount()) || lackColumn());
  }
  bool hasManager() noexcept;
  bool canCopy(bool hasSource, bool isItself) noexcept;
  bool describeColumn(int index, Column* column) noexcept;
  bool takeColumns() noexcept;
  bool canRead() noexcept;
  int readInto(ZvbDatavar* values) noexcept;
  bool makeRow(RowValues* row) noexcept;
  bool makeBatch(int maxRows) noexcept;
  bool lendTexts(ZvbDatavar* values, const char** texts) noexcept;
  bool isRowCount(int rows, int least) noexcept;
  bool appendRowOfTexts(const char* const* texts) noexcept;
  bool setText(int index, const char* text) noexcept;
  bool close() noexcept;
  bool letGoOfTable(const ZvbString& spared = {}) noexcept;
  void discardRows() noexcept;
  void forgetColumns() noexcept;

  ZvbString errorMessage_;
  ZvWorkTableManager* manager_;
  Table table_;
  ZvbString lostName_;  // of a table that rewind could not open again
  bool removeOnClose_ = true;
  bool keepsTable_ = false;      // the one attached, whatever removeOnClose_ says
  ZvbArray<Column> columns_;     // of the table to be created
  bool columnLost_ = false;      // memory was short for one of them
  RowValues appendRow_;          // one value for each column of the table; made when needed
  bool valueLost_ = false;       // memory was short for one that was set
  RowValues fetchRow_;           // likewise
  unsigned fetchedColumns_ = 0;  // values of fetchRow_
  RowValues batch_;              // rows that were read at once, one after another
  int batchRows_ = 0;            // for which it has room
  std::size_t longBytes_ = 0;    // that it has been given of texts beyond its objects
  bool failureWaits_ = false;    // of the row behind a batch, to be told
};
