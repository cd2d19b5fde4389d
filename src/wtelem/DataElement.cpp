#include "wtelem/DataElement.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <new>
#include <utility>

#include "wtelem/ByteOrder.h"
#include "wtelem/DirectorySearch.h"
#include "wtelem/messages.h"

namespace {

using valueCodec::Result;

constexpr int indexEntrySize = 8;             // bytes
constexpr std::uint32_t recordHeadSize = 16;  // bytes, of an element definition
constexpr const char* outOfMemoryValue = "(column value)";

/// More rows cannot be: the offset of an index entry has to fit 63 bits.
constexpr std::int64_t maximumRowCount = std::numeric_limits<std::int64_t>::max() / indexEntrySize;

struct RecordHead {
  std::uint32_t length;
  std::uint16_t nameLength;
  std::uint16_t indexNameLength;
  std::int64_t rowCount;
};

void storeHead(unsigned char* bytes, const RecordHead& head) noexcept {
  storeField(bytes, head.length);
  storeField(bytes + 4, head.nameLength);
  storeField(bytes + 6, head.indexNameLength);
  storeField(bytes + 8, head.rowCount);
}

RecordHead loadHead(const unsigned char* bytes, bool swap) noexcept {
  return {.length = loadField<std::uint32_t>(bytes, swap),
          .nameLength = loadField<std::uint16_t>(bytes + 4, swap),
          .indexNameLength = loadField<std::uint16_t>(bytes + 6, swap),
          .rowCount = loadField<std::int64_t>(bytes + 8, swap)};
}

bool putAll(np_fio_handle file, const void* bytes, std::uint32_t count) noexcept {
  return np_fio_putb(file, bytes, static_cast<int>(count)) == static_cast<int>(count);
}

}  // namespace

DataElement::DataElement(TableState& table) noexcept : table_(table) {}

DataElement::~DataElement() { (void)close(); }

bool DataElement::fail(ZvbString text) noexcept {
  errorMessage_ = std::move(text);
  return false;
}

bool DataElement::failAfter(Result result, ZvbString fileFailure) noexcept {
  return fail(result == Result::memoryShort ? WT_MESSAGE(outOfMemory, outOfMemoryValue)
                                            : std::move(fileFailure));
}

// ---- Files

bool DataElement::createFiles(int startDirectory) noexcept {
  if (!createFile(&index_, startDirectory)) {
    return false;
  }
  if (!createFile(&data_, directory_)) {
    discardNewFile(&index_);
    return false;
  }
  return true;
}

bool DataElement::createFile(File* file, int startDirectory) noexcept {
  DirectorySearch search;
  search.directory = startDirectory;
  if (!makeFile(table_.directories, file->prefix, SearchOrder::around, &search)) {
    return fail(WT_MESSAGE(noDirectoryTakes,
                           table_.directories.path(table_.directories.count() - 1), search.status,
                           np_fio_errdesc(search.status)));
  }
  file->handle = search.file;
  file->path.assign(search.path);
  int status = npFioSuccess;
  if (!nameOfPath(search.path, &file->name, &status)) {
    discardNewFile(file);
    return fail(WT_MESSAGE(pathNotSplit, file->creatingName, status, np_fio_errdesc(status)));
  }
  directory_ = search.directory;
  return true;
}

void DataElement::discardNewFile(File* file) noexcept {
  np_fio_close(std::exchange(file->handle, nullptr));
  (void)np_fio_unlink(file->path.asCstr());
  file->name.setNull();
  file->path.setNull();
}

bool DataElement::open(bool readOnly) noexcept {
  if (!close()) {
    return false;
  }
  const int mode = readOnly ? npFioRead : npFioReadWrite;
  if (!index_.name.isEmpty() && !openFileOf(&index_, mode)) {
    return false;
  }
  if (!openFileOf(&data_, mode)) {
    return false;
  }
  return readOnly || cutToRows();
}

bool DataElement::openFileOf(File* file, int mode) noexcept {
  if (!file->path.isEmpty()) {
    const int status = np_fio_open(file->path.asCstr(), mode, &file->handle);
    return status == npFioSuccess ||
           fail(WT_MESSAGE(openFailed, file->path.asCstr(), np_fio_errdesc(status)));
  }
  DirectorySearch search;
  search.directory = directory_;
  const bool found =
      openFile(table_.directories, file->name.asCstr(), mode, SearchOrder::around, &search);
  if (!search.joined) {
    return fail(
        WT_MESSAGE(pathNotJoined, file->findingName, search.status, np_fio_errdesc(search.status)));
  }
  if (!found) {
    return fail(WT_MESSAGE(openFailed, search.path, np_fio_errdesc(search.status)));
  }
  file->handle = search.file;
  file->path.assign(search.path);
  directory_ = search.directory;
  return true;
}

bool DataElement::close() noexcept {
  if (torn_ && data_.handle != nullptr) {
    torn_ =
        !(cutFile(index_.handle, rowCount_ * indexEntrySize) && cutFile(data_.handle, dataSize_));
  }
  const bool indexClosed = flushAndClose(&index_, true);
  const bool dataClosed = flushAndClose(&data_, indexClosed);
  resetPosition();
  return indexClosed && dataClosed;
}

bool DataElement::flushAndClose(File* file, bool reportFailure) noexcept {
  if (file->handle == nullptr) {
    return true;
  }
  const int status = table_.openedForReading ? npFioSuccess : np_fio_bufmode(file->handle, 0);
  np_fio_close(std::exchange(file->handle, nullptr));
  if (status != npFioSuccess && reportFailure) {
    return fail(WT_MESSAGE(flushFailed, np_fio_errdesc(status)));
  }
  return status == npFioSuccess;
}

void DataElement::abandon() noexcept {
  np_fio_close(std::exchange(index_.handle, nullptr));
  np_fio_close(std::exchange(data_.handle, nullptr));
  resetPosition();
}

void DataElement::resetPosition() noexcept {
  currentRow_ = 0;
  readOffset_ = 0;
  dataSize_ = 0;
  fresh_ = true;
  positioned_ = false;
  torn_ = false;
}

bool DataElement::remove() noexcept {
  if (data_.name.isEmpty()) {
    return true;
  }
  (void)close();
  const bool indexGone = index_.name.isEmpty() || unlinkFile(&index_, true);
  const bool dataGone = unlinkFile(&data_, indexGone);
  return indexGone && dataGone;
}

bool DataElement::unlinkFile(File* file, bool reportFailure) noexcept {
  ZvbString earlier = errorMessage_;
  if (file->path.isEmpty() && !openFileOf(file, npFioRead)) {
    errorMessage_ = reportFailure ? errorMessage_ : earlier;
    return false;
  }
  np_fio_close(std::exchange(file->handle, nullptr));
  const int status = np_fio_unlink(file->path.asCstr());
  if (status != npFioSuccess && reportFailure) {
    return fail(WT_MESSAGE(deleteFailed, np_fio_errdesc(status)));
  }
  return status == npFioSuccess;
}

bool DataElement::sizeOf(const File& file, std::int64_t* size) noexcept {
  np_fio_stat info;
  const int status = np_fio_stat64(file.path.asCstr(), &info);
  if (status != npFioSuccess) {
    return fail(WT_MESSAGE(openFailed, file.path.asCstr(), np_fio_errdesc(status)));
  }
  *size = info.size;
  return true;
}

bool DataElement::measure(std::int64_t* dataBytes, std::int64_t* indexBytes) noexcept {
  *indexBytes = 0;
  const bool measured = open(true) && sizeOf(data_, dataBytes) &&
                        (index_.name.isEmpty() || sizeOf(index_, indexBytes));
  abandon();
  return measured;
}

// ---- The definition record

bool DataElement::writeDefinition(np_fio_handle catalogue) noexcept {
  const bool hasIndexName = index_.name.cStrSize() >= 2;
  const RecordHead head{
      .length = recordHeadSize,
      .nameLength = static_cast<std::uint16_t>(data_.name.cStrSize()),
      .indexNameLength = static_cast<std::uint16_t>(hasIndexName ? index_.name.cStrSize() : 0),
      .rowCount = rowCount_};
  unsigned char bytes[recordHeadSize];
  storeHead(bytes, head);
  const bool written =
      putAll(catalogue, bytes, recordHeadSize) &&
      putAll(catalogue, data_.name.asCstr(), head.nameLength) &&
      (!hasIndexName || putAll(catalogue, index_.name.asCstr(), head.indexNameLength));
  return written || fail(WT_MESSAGE(shortWrite));
}

bool DataElement::readDefinition(np_fio_handle catalogue) noexcept {
  unsigned char bytes[recordHeadSize];
  if (np_fio_getb(catalogue, bytes, recordHeadSize) != static_cast<int>(recordHeadSize)) {
    return fail(WT_MESSAGE(shortRead, "element definition"));
  }
  const RecordHead head = loadHead(bytes, table_.otherByteOrder);
  if (head.rowCount < 0 || head.rowCount > maximumRowCount) {
    return fail(WT_MESSAGE(shortRead, "element definition"));
  }
  if (head.length < recordHeadSize ||
      (head.length != recordHeadSize &&
       np_fio_seek64(catalogue, std::int64_t{head.length} - recordHeadSize, npFioFromHere) < 0)) {
    return fail(WT_MESSAGE(surplusNotSkipped));
  }
  const std::size_t capacity = std::size_t{std::max(head.nameLength, head.indexNameLength)} + 1;
  const std::unique_ptr<char[]> buffer(new (std::nothrow) char[capacity]);
  if (buffer == nullptr) {
    return fail(WT_MESSAGE(outOfMemory, "(element name)"));
  }
  if (!readName(catalogue, buffer.get(), head.nameLength, "element name", &data_.name) ||
      !readName(catalogue, buffer.get(), head.indexNameLength, "element index name",
                &index_.name)) {
    return false;
  }
  rowCount_ = head.rowCount;
  return true;
}

bool DataElement::readName(np_fio_handle catalogue, char* buffer, std::uint16_t length,
                           const char* what, ZvbString* name) noexcept {
  if (length != 0 && np_fio_getb(catalogue, buffer, length) != length) {
    return fail(WT_MESSAGE(shortRead, what));
  }
  buffer[length] = '\0';
  name->assign(buffer);
  return !name->memoryShort() || fail(WT_MESSAGE(outOfMemory, "(element name)"));
}

// ---- Writing rows

bool DataElement::writeRow(const ZvbDatavar* const* values, bool* elementFull) noexcept {
  *elementFull = false;
  if (torn_) {
    if (!cutFile(index_.handle, rowCount_ * indexEntrySize) || !cutFile(data_.handle, dataSize_)) {
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
  dataSize_ = size;
  ++rowCount_;
  *elementFull = table_.maxElementSize > 0 && dataSize_ > table_.maxElementSize;
  return true;
}

Result DataElement::encodeRow(const ZvbDatavar* const* values, std::int64_t* size) noexcept {
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

bool DataElement::cutFile(np_fio_handle file, std::int64_t size) noexcept {
  return file == nullptr ||
         (np_fio_seek64(file, size, npFioFromStart) == size && np_fio_trunc(file) == npFioSuccess);
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
  if (!findEndOfRows(dataFileSize, indexFileSize, &end)) {
    return fail(WT_MESSAGE(shortRead, "row offset"));
  }
  if ((indexFileSize > rowCount_ * indexEntrySize &&
       !cutFile(index_.handle, rowCount_ * indexEntrySize)) ||
      (dataFileSize > end && !cutFile(data_.handle, end))) {
    return fail(WT_MESSAGE(flushFailed, np_fio_errdesc(np_fio_status(data_.handle))));
  }
  resetPosition();
  dataSize_ = end;
  return true;
}

/// Finds where the last counted row ends by passing over its values. Without an index every row has
/// to be passed over.
bool DataElement::findEndOfRows(std::int64_t dataFileSize, std::int64_t indexFileSize,
                                std::int64_t* end) noexcept {
  *end = 0;
  if (rowCount_ == 0) {
    return true;
  }
  std::int64_t rowsToPass = rowCount_;
  if (index_.handle != nullptr) {
    const std::int64_t lastEntry = (rowCount_ - 1) * indexEntrySize;
    rowsToPass = 1;
    if (indexFileSize < rowCount_ * indexEntrySize ||
        np_fio_seek64(index_.handle, lastEntry, npFioFromStart) != lastEntry ||
        !readIndexEntry(end) || *end < 0 || *end > dataFileSize) {
      return false;
    }
  }
  if (np_fio_seek64(data_.handle, *end, npFioFromStart) != *end) {
    return false;
  }
  readOffset_ = *end;
  for (std::int64_t row = 0; row < rowsToPass; ++row) {
    if (!passRest(0) || readOffset_ > dataFileSize) {
      return false;
    }
  }
  *end = readOffset_;
  return true;
}

// ---- Reading rows

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
    return fail(WT_MESSAGE(shortRead, "row offset"));
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

bool DataElement::readIndexEntry(std::int64_t* offset) noexcept {
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
  if (backwards && !positioned_) {
    if (rowCount_ == 0) {
      *endOfData = true;
      return false;
    }
    if (!seekRow(rowCount_ - 1)) {
      return false;
    }
  }
  if (backwards ? currentRow_ < 0 : currentRow_ >= rowCount_) {
    *endOfData = true;
    return false;
  }
  if (fresh_ && !enterFirstRow()) {
    return fail(WT_MESSAGE(shortRead, "column"));
  }
  currentRow_ += backwards ? -1 : 1;
  int columnsRead = 0;
  const Result result = decodeRow(targets, valueCount, &columnsRead);
  if (result != Result::done) [[unlikely]] {
    readOffset_ = np_fio_seek64(data_.handle, 0, npFioFromHere);
    return failAfter(result, WT_MESSAGE(shortRead, "column"));
  }
  if (backwards) {
    return placeBackwards();
  }
  if (index_.handle == nullptr) {
    return passRest(columnsRead) || fail(WT_MESSAGE(shortRead, "column"));
  }
  return placeForwards(valueCount != 0 && columnsRead == table_.columnCount);
}

/// Steps over the index entry of row 0, which nothing needs: row 0 begins where the file begins.
bool DataElement::enterFirstRow() noexcept {
  std::int64_t ignored = 0;
  const bool stepOver = !positioned_ && currentRow_ < rowCount_ && index_.handle != nullptr;
  fresh_ = false;
  return !stepOver || readIndexEntry(&ignored);
}

Result DataElement::decodeRow(ZvbDatavar* const* targets, int valueCount,
                              int* columnsRead) noexcept {
  const valueCodec::Source source{
      .file = data_.handle, .swap = table_.otherByteOrder, .buffer = &table_.stringBuffer};
  const ColumnDefinition* columns = table_.columns.get();
  const int columnCount = table_.columnCount;
  int column = 0;
  for (; column < columnCount && valueCount >= 1; ++column) {
    const ColumnDefinition& definition = columns[column];
    const std::int32_t* places = definition.targets.get();
    ZvbDatavar* target = nullptr;
    if (definition.targetCount != 0) [[likely]] {
      target = targets[places == nullptr ? column : places[0]];
    }
    const Result result = valueCodec::decodeValue(source, target, &readOffset_);
    if (result != Result::done) [[unlikely]] {
      return result;
    }
    for (std::uint32_t i = 1; i < definition.targetCount; ++i) {
      *targets[places[i]] = *target;
    }
    valueCount -= static_cast<int>(definition.targetCount);
  }
  *columnsRead = column;
  return Result::done;
}

/// Passes over the columns of a row that were not read, value by value.
bool DataElement::passRest(int columnsRead) noexcept {
  const valueCodec::Source source{
      .file = data_.handle, .swap = table_.otherByteOrder, .buffer = &table_.stringBuffer};
  for (int column = columnsRead; column < table_.columnCount; ++column) {
    if (valueCodec::decodeValue(source, nullptr, &readOffset_) != Result::done) {
      return false;
    }
  }
  return true;
}

/// Moves on to the next row: it follows by itself when the whole row was read, else the index
/// tells. The index is then read for every row of the pass, so it always stands at the next row's
/// entry.
bool DataElement::placeForwards(bool wholeRowRead) noexcept {
  if (wholeRowRead || currentRow_ >= rowCount_) {
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
    if (np_fio_seek64(index_.handle, -2 * indexEntrySize, npFioFromHere) < 0) {
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
