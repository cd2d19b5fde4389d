#include "wtcursor_impl/ZvWorkTableCursorImpl.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string_view>
#include <utility>

#include "base/zvb_assert.h"
#include "base/zvb_cursor.h"
#include "wtelem/messages.h"

namespace {

// What is read at once: values, and bytes of texts that lie outside them.
constexpr int batchValueLimit = 4096;
constexpr std::size_t batchTextLimit = std::size_t{1} << 20;

ZVWTFileImpl* asImpl(ZvWorkTableFile* table) noexcept { return static_cast<ZVWTFileImpl*>(table); }

/// So much of a text as belongs into a message.
ZvbString shortened(const char* text) noexcept {
  constexpr std::size_t limit = 60;
  ZvbString start;
  start.assign(text, zvbCutAtCharacter(text, std::strlen(text), limit));
  return start;
}

/// A time so late on the last day that it is rounded past it has no text, and would be read as a
/// null.
bool isUnreadableDate(const ZvbDatavar& value) noexcept {
  char text[ZvbDate::textCapacity];
  return value.type() == zvbTypeDate && !value.isNull() && value.asDate().toText(text, false) == 0;
}

}  // namespace

ZvWorkTableCursorImpl::~ZvWorkTableCursorImpl() { (void)close(); }

// ---- What every operation may need

bool ZvWorkTableCursorImpl::fail(ZvbString text) noexcept {
  errorMessage_ = std::move(text);
  return false;
}

bool ZvWorkTableCursorImpl::failAs(ZVWTFileImpl& table) noexcept {
  return fail(table.getErrorMessage());
}

bool ZvWorkTableCursorImpl::lackTable() noexcept {
  return fail(WT_MESSAGE(cursorLacks, "work table"));
}

bool ZvWorkTableCursorImpl::lackColumn() noexcept { return fail(WT_MESSAGE(noSuchColumn)); }

/// Says why there is no such value: the first reason there is.
void ZvWorkTableCursorImpl::lackValue(int index) noexcept {
  if (hasColumn(index)) {
    (void)fail(WT_MESSAGE(cursorLacks, "row that was read"));
  }
}

/// For questions to which "none" is an answer: it does not replace the reason of a failure.
bool ZvWorkTableCursorImpl::queryTable() noexcept {
  return table_ != nullptr || (errorMessage_.isEmpty() && hasTable());
}

bool ZvWorkTableCursorImpl::hasManager() noexcept {
  return manager_ != nullptr || fail(WT_MESSAGE(cursorLacks, "manager"));
}

bool ZvWorkTableCursorImpl::describeColumn(int index, Column* column) noexcept {
  int width = 0;
  int maxLength = 0;
  return table_->getColumnDefinition(index, &column->name, &column->type, &width, &maxLength) ||
         failAs(*table_);
}

bool ZvWorkTableCursorImpl::makeRow(RowValues* row) noexcept {
  if (*row == nullptr) {
    row->reset(new (std::nothrow) ZvbDatavar[static_cast<std::size_t>(table_->getColumnCount())]);
  }
  return *row != nullptr || fail(WT_MESSAGE(noMemoryForRow));
}

void ZvWorkTableCursorImpl::discardRows() noexcept {
  appendRow_.reset();
  fetchRow_.reset();
  batch_.reset();
  failureWaits_ = false;
  valueLost_ = false;
}

// ---- Columns and rows

ZvbString ZvWorkTableCursorImpl::columnName(int index) noexcept {
  Column column;
  return hasColumn(index) && describeColumn(index, &column) ? std::move(column.name) : ZvbString();
}

zvbType ZvWorkTableCursorImpl::columnType(int index) noexcept {
  Column column;
  return hasColumn(index) && describeColumn(index, &column) ? column.type : zvbType{0};
}

int ZvWorkTableCursorImpl::columnCount() noexcept {
  return queryTable() ? table_->getColumnCount() : 0;
}

bool ZvWorkTableCursorImpl::rowCount(std::int64_t* count) noexcept {
  const std::int64_t rows = hasTable() ? table_->getRowCount() : 0;
  *count = static_cast<std::int32_t>(rows);
  return table_ != nullptr && *count == rows;
}

bool ZvWorkTableCursorImpl::canRead() noexcept {
  return hasTable() && (table_->isBeingRead() || fail(WT_MESSAGE(notOpenForReading)));
}

int ZvWorkTableCursorImpl::readInto(ZvbDatavar* values) noexcept {
  if (std::exchange(failureWaits_, false)) [[unlikely]] {
    return zvbCursorFailed;
  }
  bool endOfTable = false;
  if (table_->readRow(values, &endOfTable)) {
    return zvbCursorRow;
  }
  if (endOfTable) {
    return zvbCursorEnd;
  }
  (void)failAs(*table_);
  return zvbCursorFailed;
}

int ZvWorkTableCursorImpl::next() noexcept {
  if (!canRead() || !makeRow(&fetchRow_)) {
    return zvbCursorFailed;
  }
  fetchedColumns_ = static_cast<unsigned>(table_->getColumnCount());
  return readInto(fetchRow_.get());
}

bool ZvWorkTableCursorImpl::newRow() noexcept {
  if (!hasTable() || !makeRow(&appendRow_)) {
    return false;
  }
  std::for_each_n(appendRow_.get(), table_->getColumnCount(),
                  [](ZvbDatavar& value) { value.setNull(); });
  valueLost_ = false;
  return true;
}

void ZvWorkTableCursorImpl::setValue(int index, const ZvbDatavar& value) noexcept {
  if (!hasColumn(index)) {
    return;
  }
  if (makeRow(&appendRow_)) {
    appendRow_[static_cast<std::size_t>(index)] = value;
  } else {
    valueLost_ = true;
  }
}

bool ZvWorkTableCursorImpl::appendRow() noexcept {
  return hasTable() && (table_->isBeingWritten() || fail(WT_MESSAGE(notOpenForWriting))) &&
         (!valueLost_ || fail(WT_MESSAGE(noMemoryForRow))) && makeRow(&appendRow_) &&
         (table_->writeRow(appendRow_.get()) || failAs(*table_));
}

// ---- Many rows at once, as texts

bool ZvWorkTableCursorImpl::isRowCount(int rows, int least) noexcept {
  return rows >= least || fail(WT_MESSAGE(wrongRowCount, rows));
}

int ZvWorkTableCursorImpl::readTexts(int maxRows, const char** texts) noexcept {
  if (!canRead() || !isRowCount(maxRows, 1) || !makeBatch(maxRows)) {
    return -1;
  }
  const auto columns = static_cast<std::size_t>(table_->getColumnCount());
  const int rows = std::min(maxRows, batchRows_);
  int row = 0;
  for (; row < rows && longBytes_ <= batchTextLimit; ++row) {
    const std::size_t start = static_cast<std::size_t>(row) * columns;
    const int step = readInto(&batch_[start]);
    if (step == zvbCursorEnd) {
      break;
    }
    if (step != zvbCursorRow || !lendTexts(&batch_[start], texts + start)) {
      failureWaits_ = row > 0;
      return row > 0 ? row : -1;
    }
  }
  return row;
}

/// The rows are made anew when more are asked for than before, and when their texts have become
/// large, so that these do not add up.
bool ZvWorkTableCursorImpl::makeBatch(int maxRows) noexcept {
  const int columns = table_->getColumnCount();
  const int rows = std::clamp(batchValueLimit / std::max(columns, 1), 1, maxRows);
  if (batch_ != nullptr && rows <= batchRows_ && longBytes_ <= batchTextLimit) {
    return true;
  }
  batch_.reset();
  longBytes_ = 0;
  batchRows_ = rows;
  const std::size_t values = static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns);
  batch_.reset(new (std::nothrow) ZvbDatavar[values]);
  return batch_ != nullptr || fail(WT_MESSAGE(noMemoryForRow));
}

bool ZvWorkTableCursorImpl::lendTexts(ZvbDatavar* values, const char** texts) noexcept {
  const int columns = table_->getColumnCount();
  for (int i = 0; i < columns; ++i) {
    ZvbDatavar& value = values[i];
    (void)value.setType(zvbTypeString);
    if (value.memoryShort()) {
      return fail(WT_MESSAGE(noMemoryForRow));
    }
    const std::string_view text = value.asTextView();
    texts[i] = value.isNull() ? nullptr : text.data();
    longBytes_ += text.size() > ZvbText::inlineCapacity ? text.size() : 0;
  }
  return true;
}

int ZvWorkTableCursorImpl::appendTexts(int rowCount, const char* const* texts) noexcept {
  if (!isRowCount(rowCount, 0)) {
    return 0;
  }
  const auto columns = static_cast<std::size_t>(columnCount());
  int row = 0;
  while (row < rowCount && appendRowOfTexts(texts + static_cast<std::size_t>(row) * columns)) {
    ++row;
  }
  return row;
}

bool ZvWorkTableCursorImpl::appendRowOfTexts(const char* const* texts) noexcept {
  if (!newRow()) {
    return false;
  }
  const int columns = table_->getColumnCount();
  for (int i = 0; i < columns; ++i) {
    if (!setText(i, texts[i])) {
      return false;
    }
  }
  return appendRow();
}

bool ZvWorkTableCursorImpl::setText(int index, const char* text) noexcept {
  const auto place = static_cast<std::size_t>(index);
  if (place >= columns_.size()) {  // memory was short when they were taken
    return fail(WT_MESSAGE(outOfMemory, "(cursor column)"));
  }
  const Column& column = columns_[place];
  ZvbDatavar& value = appendRow_[place];
  value.assign(text);
  if (value.memoryShort()) {
    return fail(WT_MESSAGE(noMemoryForRow));
  }
  return (value.setType(column.type) && !isUnreadableDate(value)) ||
         fail(WT_MESSAGE(valueOfOtherType, shortened(text).asCstr(), zvbTypeToString(column.type),
                         column.name.asCstr()));
}

// ---- Creating

void ZvWorkTableCursorImpl::addColumn(const ZvbString& name, zvbType type) noexcept {
  Column column{.name = name, .type = type};
  columnLost_ = column.name.memoryShort() || !columns_.append(std::move(column)) || columnLost_;
}

bool ZvWorkTableCursorImpl::create() noexcept {
  if (columnLost_) {
    return fail(WT_MESSAGE(outOfMemory, "(cursor column)"));
  }
  if (columns_.isEmpty()) {
    return fail(zvbStringFormat("Cannot create zero columns"));
  }
  if (!hasManager()) {
    return false;
  }
  const int count = static_cast<int>(columns_.size());
  Table made(asImpl(manager_->createTable(count, 0, &errorMessage_)));
  for (int i = 0; i < count && made != nullptr; ++i) {
    const Column& column = columns_[static_cast<std::size_t>(i)];
    if (!made->defineColumn(i, column.name, column.type, 0)) {
      return failAs(*made);
    }
  }
  if (made == nullptr) {
    return false;
  }
  (void)letGoOfTable();
  table_ = std::move(made);
  return true;
}

bool ZvWorkTableCursorImpl::copyFrom(ZvbDatavarCursor* source) noexcept {
  return copyAfterClose<ZvbDatavarCursor>(
      source, this, [&](ZvbString* error) { return copyCursor(source, this, error); });
}

bool ZvWorkTableCursorImpl::canCopy(bool hasSource, bool isItself) noexcept {
  return (hasSource || fail(WT_MESSAGE(cursorLacks, "source"))) &&
         (!isItself || fail(WT_MESSAGE(copiedFromItself)));
}

// ---- Attaching and letting go

ZvWorkTableFile* ZvWorkTableCursorImpl::workTable(bool detach) noexcept {
  if (!queryTable() || !detach) {
    return table_.get();
  }
  discardRows();
  return table_.release();
}

bool ZvWorkTableCursorImpl::setWorkTable(ZvWorkTableFile* table) noexcept {
  discardRows();
  forgetColumns();
  if (table != table_.get()) {
    // Another opening of the table attached before, or of the one that was lost, keeps its files.
    (void)letGoOfTable(table != nullptr ? table->getName() : ZvbString());
    table_.reset(asImpl(table));
  }
  return table_ == nullptr || takeColumns();
}

bool ZvWorkTableCursorImpl::open(const ZvbString& nameOrUri, bool readBackwards) noexcept {
  if (!hasManager()) {
    return false;
  }
  Table opened(asImpl(manager_->openTable(nameOrUri, readBackwards, &errorMessage_)));
  if (opened == nullptr) {
    return false;
  }
  if (!setWorkTable(opened.release())) {
    table_.reset();  // which is not to be deleted
    return false;
  }
  keepTable();
  return true;
}

bool ZvWorkTableCursorImpl::takeColumns() noexcept {
  const int count = table_->getColumnCount();
  for (int i = 0; i < count; ++i) {
    Column column;
    if (!describeColumn(i, &column)) {
      return false;
    }
    addColumn(column.name, column.type);
  }
  return !columnLost_ || fail(WT_MESSAGE(outOfMemory, "(cursor column)"));
}

/// The table is closed first, so that rows that cannot be flushed are the reason that is given, and
/// its URI is found while it is there.
bool ZvWorkTableCursorImpl::rewind() noexcept {
  if (!hasTable() || !hasManager()) {
    return false;
  }
  discardRows();
  // A created table that has failed does not outlive its release: its failure is the reason.
  if (!table_->close() || table_->isRemovedOnRelease()) {
    (void)failAs(*table_);
    table_.reset();
    return false;
  }
  const ZvbString uri = table_->getURI(true);
  if (uri.isEmpty()) {
    return fail(WT_MESSAGE(outOfMemory, "(work table URI)"));
  }
  lostName_ = table_->getName();
  table_.reset();
  table_.reset(asImpl(manager_->openTable(uri, false, &errorMessage_)));
  if (table_ == nullptr) {
    return false;
  }
  lostName_.setNull();
  return true;
}

bool ZvWorkTableCursorImpl::close() noexcept {
  forgetColumns();
  return letGoOfTable();
}

void ZvWorkTableCursorImpl::forgetColumns() noexcept {
  columns_.clear();
  columnLost_ = false;
}

/// Releases the table and, unless it is to be kept or is the one that is spared, deletes it.
bool ZvWorkTableCursorImpl::letGoOfTable(const ZvbString& spared) noexcept {
  discardRows();
  const bool keepsTable = std::exchange(keepsTable_, false);
  ZvbString name = std::exchange(lostName_, ZvbString());
  bool isGone = false;
  if (table_ != nullptr) {
    name = table_->getName();
    isGone = !table_->close() || table_->isRemovedOnRelease();
    table_.reset();
  }
  const bool isKept =
      keepsTable || !removeOnClose_ || manager_ == nullptr || name.compare(spared, true) == 0;
  ZvbString reason;
  if (isGone || isKept || name.isEmpty() || manager_->deleteTable(name, &reason)) {
    return true;
  }
  zvbAssertFailure(reason.asCstr(), "wtcursor_impl", __LINE__);
  return fail(std::move(reason));
}
