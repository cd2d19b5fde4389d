/// Appending rows to an element, and finding where its rows end.
#include "wtelem/DataElement.h"
#include "wtelem/FileFields.h"
#include "wtelem/messages.h"

using valueCodec::Result;

bool DataElement::failAfter(Result result, ZvbString fileFailure) noexcept {
  return fail(result == Result::memoryShort ? WT_MESSAGE(outOfMemory, "(column value)")
                                            : std::move(fileFailure));
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
  for (int i = 0; i < columnCount; ++i) {
    const Result result = valueCodec::encodeValue(&columns[i], *values[i], data_.handle, size);
    if (result != Result::done) [[unlikely]] {
      return result;
    }
  }
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
    return fail(WT_MESSAGE(shortRead, "row offset"));
  }
  const int status = cutBackTo(rowCount_, end);
  if (status != npFioSuccess) {
    return fail(WT_MESSAGE(flushFailed, np_fio_errdesc(status)));
  }
  resetPosition();
  dataSize_ = end;
  return true;
}

/// Finds where the last counted row ends by passing over its values.
bool DataElement::findEndOfRows(std::int64_t dataFileSize, std::int64_t* end) noexcept {
  std::int64_t rowsToPass = 0;
  if (!findLastRow(&rowsToPass)) {
    return false;
  }
  for (; rowsToPass > 0 && readOffset_ <= dataFileSize; --rowsToPass) {
    if (!passRest(0)) {
      return false;
    }
  }
  *end = readOffset_;
  return readOffset_ <= dataFileSize;
}

/// Places the data file at the last counted row, or, where no index tells where that is, at the
/// first one. Rows without columns take no bytes and need not be passed.
bool DataElement::findLastRow(std::int64_t* rowsToPass) noexcept {
  std::int64_t start = 0;
  *rowsToPass = table_.columnCount == 0 ? 0 : rowCount_;
  if (index_.handle != nullptr && rowCount_ > 0) {
    const std::int64_t lastEntry = (rowCount_ - 1) * indexEntrySize;
    *rowsToPass = 1;
    if (np_fio_seek64(index_.handle, lastEntry, npFioFromStart) != lastEntry ||
        !readIndexEntry(&start) || start < 0) {
      return false;
    }
  }
  readOffset_ = start;
  return np_fio_seek64(data_.handle, start, npFioFromStart) == start;
}
