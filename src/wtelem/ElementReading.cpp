/// Reading an element's rows, forwards and backwards.
#include "wtelem/DataElement.h"
#include "wtelem/FileFields.h"
#include "wtelem/ValueStream.h"
#include "wtelem/messages.h"

using valueCodec::Result;

namespace {

/// Gives the value of a column's first target to the others.
[[gnu::noinline]] void deliverAgain(const ColumnDefinition& definition,
                                    ZvbDatavar* const* targets) noexcept {
  const std::int32_t* places = definition.targets.get();
  for (std::uint32_t i = 1; i < definition.targetCount; ++i) {
    *targets[places[i]] = *targets[places[0]];
  }
}

}  // namespace

bool DataElement::seekRow(std::int64_t row) noexcept {
  const bool alreadyThere = row == currentRow_ && (positioned_ || !table_.readsBackwards);
  if (alreadyThere) {
    return true;
  }
  if (row == -1) {
    return seekToEnd();
  }
  if (row > rowCount_) {
    return fail(WT_MESSAGE(rowBeyondElement));
  }
  if (row < 0 || index_.handle == nullptr ||
      np_fio_seek64(index_.handle, row * indexEntrySize, npFioFromStart) < 0) {
    return fail(WT_MESSAGE(elementSeekFailed));
  }
  std::int64_t offset = 0;
  if (!readIndexEntry(&offset)) {
    return failInFiles(WT_MESSAGE(shortRead, "row offset"));
  }
  positioned_ = true;
  if (np_fio_seek64(data_.handle, offset, npFioFromStart) < 0) {
    return fail(WT_MESSAGE(elementSeekFailed));
  }
  currentRow_ = row;
  readOffset_ = offset;
  return true;
}

bool DataElement::seekToEnd() noexcept {
  if (index_.handle != nullptr && np_fio_seek64(index_.handle, 0, npFioFromEnd) < 0) {
    return fail(WT_MESSAGE(elementSeekFailed));
  }
  currentRow_ = rowCount_;
  const std::int64_t end = np_fio_seek64(data_.handle, 0, npFioFromEnd);
  if (end < 0) {
    return fail(WT_MESSAGE(elementSeekFailed));
  }
  readOffset_ = end;
  return true;
}

bool DataElement::readIndexEntry(std::int64_t* offset) const noexcept {
  unsigned char bytes[indexEntrySize];
  if (np_fio_getb(index_.handle, bytes, indexEntrySize) != indexEntrySize) {
    return false;
  }
  *offset = loadField<std::int64_t>(bytes, table_.otherByteOrder);
  return true;
}

bool DataElement::readRow(ZvbDatavar* const* targets, int valueCount, bool* endOfData) noexcept {
  const bool backwards = table_.readsBackwards;
  *endOfData = false;
  if (fresh_ && !enterFirstRow()) [[unlikely]] {
    return false;
  }
  if (backwards ? currentRow_ < 0 || rowCount_ == 0 : currentRow_ >= rowCount_) [[unlikely]] {
    *endOfData = true;
    return false;
  }
  currentRow_ += backwards ? -1 : 1;
  int columnsRead = table_.columnCount;
  const Result result = table_.readsWholeRows ? decodeWholeRow(targets)
                                              : decodeRow(targets, valueCount, &columnsRead);
  if (result != Result::done) [[unlikely]] {
    return leaveDamagedRow(result);
  }
  if (backwards) {
    return placeBackwards();
  }
  // The next row follows by itself when the whole row was read.
  const bool wholeRowRead = valueCount != 0 && columnsRead == table_.columnCount;
  return wholeRowRead || placeForwards(columnsRead);
}

bool DataElement::leaveDamagedRow(Result result) noexcept {
  standAtCurrentRow();
  return failAfter(result, WT_MESSAGE(shortRead, "column"));
}

/// After a row that could not be read: the index leads to the next one, so that a damaged row costs
/// only itself. Without an index reading goes on where it stopped.
void DataElement::standAtCurrentRow() noexcept {
  const std::int64_t row = currentRow_;
  if (index_.handle != nullptr && row >= 0 && row < rowCount_) {
    currentRow_ = rowCount_;  // so that no shortcut is taken
    positioned_ = true;
    (void)seekRow(row);
    currentRow_ = row;
  } else {
    readOffset_ = np_fio_seek64(data_.handle, 0, npFioFromHere);
  }
}

valueCodec::Source DataElement::valueSource() const noexcept {
  return {.file = data_.handle, .swap = table_.otherByteOrder, .buffer = &table_.stringBuffer};
}

/// Reading backwards, places at the last row; forwards, steps over the index entry of row 0, which
/// nothing needs: row 0 begins where the file begins.
bool DataElement::enterFirstRow() noexcept {
  if (data_.handle == nullptr) {
    return fail(WT_MESSAGE(shortRead, "column"));
  }
  if (table_.readsBackwards && !positioned_ && rowCount_ > 0 && !seekRow(rowCount_ - 1)) {
    return false;
  }
  std::int64_t ignored = 0;
  const bool stepOver = !positioned_ && currentRow_ < rowCount_ && index_.handle != nullptr;
  fresh_ = false;
  return !stepOver || readIndexEntry(&ignored) || failInFiles(WT_MESSAGE(shortRead, "column"));
}

Result DataElement::decodeWholeRow(ZvbDatavar* const* targets) noexcept {
  ValueReader reader(valueSource(), &readOffset_);
  const int columnCount = table_.columnCount;
  for (int column = 0; column < columnCount; ++column) {
    const Result result = reader.read(targets[column]);
    if (result != Result::done) [[unlikely]] {
      return result;
    }
  }
  reader.finish();
  return Result::done;
}

Result DataElement::decodeRow(ZvbDatavar* const* targets, int valueCount,
                              int* columnsRead) noexcept {
  ValueReader reader(valueSource(), &readOffset_);
  const ColumnDefinition* columns = table_.columns.get();
  int column = 0;  // the next one in the file
  int next = table_.firstDelivered;
  while (valueCount >= 1 && next < table_.columnCount) {
    const ColumnDefinition& definition = columns[next];
    Result result = reader.pass(next - column);
    if (result == Result::done) [[likely]] {
      result = reader.read(targets[definition.firstTarget(next)]);
    }
    if (result != Result::done) [[unlikely]] {
      return result;
    }
    if (definition.targetCount > 1) [[unlikely]] {
      deliverAgain(definition, targets);
    }
    valueCount -= static_cast<int>(definition.targetCount);
    column = next + 1;
    next = definition.nextDelivered;
  }
  reader.finish();
  *columnsRead = column;
  return Result::done;
}

/// Passes over the columns of a row that were not read.
bool DataElement::passRest(int columnsRead) noexcept {
  ValueReader reader(valueSource(), &readOffset_);
  if (reader.pass(table_.columnCount - columnsRead) != Result::done) {
    return false;
  }
  reader.finish();
  return true;
}

/// Moves on to the next row after a part of one, by the index. The index is then read for every
/// row of the pass, so it always stands at the next row's entry.
bool DataElement::placeForwards(int columnsRead) noexcept {
  if (index_.handle == nullptr) {
    return passRest(columnsRead) || failInFiles(WT_MESSAGE(shortRead, "column"));
  }
  if (currentRow_ >= rowCount_) {
    return true;
  }
  std::int64_t next = 0;
  if (!readIndexEntry(&next)) {
    return fail(WT_MESSAGE(shortRead, "column position"));
  }
  if (next == 0 || next == readOffset_) {
    return true;
  }
  if (next < 0 || np_fio_seek64(data_.handle, next - readOffset_, npFioFromHere) != next) {
    return fail(WT_MESSAGE(shortRead, "column"));
  }
  readOffset_ = next;
  return true;
}

/// Moves to the row before the one just read. The index stands behind the entry of that row.
bool DataElement::placeBackwards() noexcept {
  std::int64_t offset = 0;
  if (currentRow_ >= 0) {
    if (np_fio_seek64(index_.handle, std::int64_t{-2} * indexEntrySize, npFioFromHere) < 0) {
      return fail(WT_MESSAGE(shortRead, "column"));
    }
    if (!readIndexEntry(&offset)) {
      return fail(WT_MESSAGE(shortRead, "column position"));
    }
  }
  if (offset < 0 || np_fio_seek64(data_.handle, offset - readOffset_, npFioFromHere) != offset) {
    return fail(WT_MESSAGE(shortRead, "column"));
  }
  readOffset_ = offset;
  return true;
}
