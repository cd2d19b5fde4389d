/// Appending rows to an element, and finding where its rows end.
#include <algorithm>

#include "wtelem/DataElement.h"
#include "wtelem/FileFailure.h"
#include "wtelem/FileFields.h"
#include "wtelem/ValueStream.h"
#include "wtelem/messages.h"

using valueCodec::Result;

bool DataElement::failAfter(Result result, ZvbString usual) noexcept {
  if (result == Result::fileFailed) {
    return failInFiles(std::move(usual));
  }
  const char* what = result == Result::bufferShort ? "(string read buffer)" : "(column value)";
  return fail(WT_MESSAGE(outOfMemory, what));
}

/// As a read or write of one of the files has failed.
bool DataElement::failInFiles(ZvbString usual) noexcept {
  return fail(fileFailure(index_.handle, fileFailure(data_.handle, std::move(usual))));
}

bool DataElement::writeRow(const ZvbDatavar* const* values, bool* elementFull) noexcept {
  *elementFull = false;
  if (torn_) {
    if (cutBackTo(rowCount_, dataSize_) != npFioSuccess) {
      return fail(WT_MESSAGE(shortWrite));
    }
    torn_ = false;
  }
  std::int64_t size = dataSize_;
  const Result result = encodeRow(values, &size);
  if (result != Result::done) [[unlikely]] {
    torn_ = true;
    return failAfter(result, WT_MESSAGE(shortWrite));
  }
  lastRowStart_ = dataSize_;
  dataSize_ = size;
  ++rowCount_;
  *elementFull = table_.maxElementSize > 0 && dataSize_ > table_.maxElementSize;
  return true;
}

Result DataElement::encodeRow(const ZvbDatavar* const* values, std::int64_t* size) const noexcept {
  if (index_.handle != nullptr &&
      np_fio_putb(index_.handle, size, indexEntrySize) != indexEntrySize) {
    return Result::fileFailed;
  }
  ColumnDefinition* columns = table_.columns.get();
  const int columnCount = table_.columnCount;
  ValueWriter writer(data_.handle, size);
  for (int i = 0; i < columnCount; ++i) {
    const Result result = writer.write(&columns[i], *values[i]);
    if (result != Result::done) [[unlikely]] {
      return result;
    }
  }
  writer.finish();
  return Result::done;
}

/// Makes both files end behind `rows` rows of `dataSize` bytes; the status of the first failure.
int DataElement::cutBackTo(std::int64_t rows, std::int64_t dataSize) const noexcept {
  const int status =
      index_.handle == nullptr ? npFioSuccess : np_fio_cut(index_.handle, rows * indexEntrySize);
  return status == npFioSuccess ? np_fio_cut(data_.handle, dataSize) : status;
}

/// Makes the files end where the last counted row ends. Files that do not hold all of the counted
/// rows are left as they are.
bool DataElement::cutToRows() noexcept {
  std::int64_t dataFileSize = 0;
  std::int64_t indexFileSize = rowCount_ * indexEntrySize;
  if (!sizeOf(data_, &dataFileSize) ||
      (index_.handle != nullptr && !sizeOf(index_, &indexFileSize))) {
    return false;
  }
  std::int64_t end = 0;
  if (indexFileSize < rowCount_ * indexEntrySize || !findEndOfRows(dataFileSize, &end)) {
    return failInFiles(WT_MESSAGE(shortRead, "row offset"));
  }
  const int status = cutBackTo(rowCount_, end);
  if (status != npFioSuccess) {
    return fail(WT_MESSAGE(flushFailed, np_fio_errdesc(status)));
  }
  resetPosition();
  dataSize_ = end;
  openedRows_ = rowCount_;
  openedSize_ = end;
  return true;
}

/// Drops what the disk has refused: both files then end behind the last row that they hold whole.
/// The index tells where rows end, each where the next one begins; rows that were there when the
/// element was opened are whole in any case.
bool DataElement::keepWholeRows() noexcept {
  std::int64_t dataBytes = 0;
  std::int64_t indexBytes = 0;
  if (!sizeOf(data_, &dataBytes) || (index_.handle != nullptr && !sizeOf(index_, &indexBytes))) {
    return false;
  }
  const std::int64_t entries = std::min(indexBytes / indexEntrySize, rowCount_);
  dataBytes = std::min(dataBytes, dataSize_);
  if (cutBackTo(entries, dataBytes) != npFioSuccess) {
    return fail(WT_MESSAGE(shortWrite));
  }
  const bool allWhole = entries == rowCount_ && dataBytes == dataSize_;
  if (!allWhole && !countWholeRows(entries, dataBytes)) {
    return fail(WT_MESSAGE(shortRead, "row offset"));
  }
  return cutBackTo(rowCount_, dataSize_) == npFioSuccess || fail(WT_MESSAGE(shortWrite));
}

/// Counts, beyond the rows that were there at the opening, those that begin at one of the first
/// `entries` index entries and have another one behind them that begins within `dataBytes`.
bool DataElement::countWholeRows(std::int64_t entries, std::int64_t dataBytes) noexcept {
  rowCount_ = openedRows_;
  dataSize_ = openedSize_;
  for (std::int64_t beyond = entries; beyond - rowCount_ > 1;) {
    const std::int64_t middle = rowCount_ + (beyond - rowCount_) / 2;
    std::int64_t start = 0;
    if (!readRowStart(middle, &start)) {
      return false;
    }
    if (start > dataBytes) {
      beyond = middle;
    } else {
      rowCount_ = middle;
      dataSize_ = start;
    }
  }
  return true;
}

bool DataElement::readRowStart(std::int64_t row, std::int64_t* start) const noexcept {
  const std::int64_t place = row * indexEntrySize;
  return np_fio_seek64(index_.handle, place, npFioFromStart) == place && readIndexEntry(start);
}

/// Finds where the last counted row ends by passing over the last rows.
bool DataElement::findEndOfRows(std::int64_t dataFileSize, std::int64_t* end) noexcept {
  std::int64_t row = firstRowToPass();
  if (!standAtStartOf(row)) {
    return false;
  }
  for (; row < rowCount_ && readOffset_ <= dataFileSize; ++row) {
    if (!indexAgreesOn(row) || !passRest(0)) {
      return false;
    }
  }
  *end = readOffset_;
  return readOffset_ <= dataFileSize;
}

/// With an index the last row but one: the last row must begin where that ends, or a damaged entry
/// would have rows cut off.
std::int64_t DataElement::firstRowToPass() const noexcept {
  return index_.handle == nullptr ? 0 : std::max<std::int64_t>(rowCount_ - 2, 0);
}

/// Places the data file at the row. Row 0 begins where the file begins.
bool DataElement::standAtStartOf(std::int64_t row) noexcept {
  readOffset_ = 0;
  const bool found = row == 0 || index_.handle == nullptr || readRowStart(row, &readOffset_);
  return found && readOffset_ >= 0 &&
         np_fio_seek64(data_.handle, readOffset_, npFioFromStart) == readOffset_;
}

/// Whether the row begins where the data are read.
bool DataElement::indexAgreesOn(std::int64_t row) const noexcept {
  std::int64_t start = 0;
  return index_.handle == nullptr || (readRowStart(row, &start) && start == readOffset_);
}
