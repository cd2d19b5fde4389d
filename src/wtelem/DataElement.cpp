#include "wtelem/DataElement.h"

#include <limits>
#include <memory>
#include <string_view>
#include <utility>

#include "wtelem/DirectorySearch.h"
#include "wtelem/FileFields.h"
#include "wtelem/messages.h"

namespace {

using valueCodec::Result;

constexpr int indexEntrySize = 8;             // bytes
constexpr std::uint32_t recordHeadSize = 16;  // bytes, of an element definition
constexpr const char* outOfMemoryValue = "(column value)";
constexpr const char* outOfMemoryPath = "(file path)";

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
  const NewFileKind kind{
      .prefix = file->prefix, .name = file->creatingName, .order = SearchOrder::around};
  NewFile made;
  made.directory = startDirectory;
  if (!makeFile(table_.directories, kind, &made, &errorMessage_)) {
    return false;
  }
  file->handle = made.handle;
  file->name = std::move(made.name);
  file->path = std::move(made.path);
  directory_ = made.directory;
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
  return !file->path.memoryShort() || fail(WT_MESSAGE(outOfMemory, outOfMemoryPath));
}

bool DataElement::close() noexcept {
  const int status = bringToFiles();
  abandon();
  return status == npFioSuccess || fail(WT_MESSAGE(flushFailed, np_fio_errdesc(status)));
}

bool DataElement::closeFull() noexcept {
  const int status = bringToFiles();
  if (status != npFioSuccess) {
    --rowCount_;
    dataSize_ = lastRowStart_;
    torn_ = true;
    return fail(WT_MESSAGE(flushFailed, np_fio_errdesc(status)));
  }
  abandon();
  return true;
}

/// Flushes what was written, without what a failed row left; the status of the first failure.
int DataElement::bringToFiles() noexcept {
  if (table_.openedForReading || data_.handle == nullptr) {
    return npFioSuccess;
  }
  int status = torn_ ? cutBackTo(rowCount_, dataSize_) : npFioSuccess;
  for (File* file : {&index_, &data_}) {
    if (status == npFioSuccess && file->handle != nullptr) {
      status = np_fio_bufmode(file->handle, 0);
    }
  }
  return status;
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
  const bool indexGone = index_.name.isEmpty() || unlinkFile(&index_);
  ZvbString firstFailure = errorMessage_;
  const bool dataGone = unlinkFile(&data_);
  if (!indexGone) {
    errorMessage_ = std::move(firstFailure);
  }
  return indexGone && dataGone;
}

bool DataElement::unlinkFile(File* file) noexcept {
  if (!findFile(file)) {
    return false;
  }
  const int status = np_fio_unlink(file->path.asCstr());
  return status == npFioSuccess || fail(WT_MESSAGE(deleteFailed, np_fio_errdesc(status)));
}

/// Makes the file's path known.
bool DataElement::findFile(File* file) noexcept {
  if (!file->path.isEmpty()) {
    return true;
  }
  const bool found = openFileOf(file, npFioRead);
  np_fio_close(std::exchange(file->handle, nullptr));
  return found;
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
  return findFile(&data_) && sizeOf(data_, dataBytes) &&
         (index_.name.isEmpty() || (findFile(&index_) && sizeOf(index_, indexBytes)));
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
  if (!readName(catalogue, head.nameLength, "element name", &data_) ||
      !readName(catalogue, head.indexNameLength, "element index name", &index_)) {
    return false;
  }
  rowCount_ = head.rowCount;
  return true;
}

/// Reads a file's name. One that no element file can have is damage: a catalogue must not lead to
/// files that are not its table's.
bool DataElement::readName(np_fio_handle catalogue, std::uint16_t length, const char* what,
                           File* file) noexcept {
  bool complete = false;
  const std::unique_ptr<char[]> name = readStoredName(catalogue, length, &complete);
  if (name == nullptr) {
    return fail(WT_MESSAGE(outOfMemory, "(element name)"));
  }
  const std::string_view text = name.get();
  if (!complete || !(text.empty() || text.starts_with(file->prefix))) {
    return fail(WT_MESSAGE(shortRead, what));
  }
  file->name.assign(name.get());
  return !file->name.memoryShort() || fail(WT_MESSAGE(outOfMemory, "(element name)"));
}

// ---- Writing rows

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

/// Makes both files end behind `rows` rows of `dataSize` bytes; the status of the first failure.
int DataElement::cutBackTo(std::int64_t rows, std::int64_t dataSize) noexcept {
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
  if (backwards && !positioned_ && rowCount_ > 0 && !seekRow(rowCount_ - 1)) {
    return false;
  }
  if (backwards ? currentRow_ < 0 || rowCount_ == 0 : currentRow_ >= rowCount_) {
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
    standAtCurrentRow();
    return failAfter(result, WT_MESSAGE(shortRead, "column"));
  }
  return backwards ? placeBackwards() : placeForwards(valueCount, columnsRead);
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

/// Steps over the index entry of row 0, which nothing needs: row 0 begins where the file begins.
bool DataElement::enterFirstRow() noexcept {
  std::int64_t ignored = 0;
  const bool stepOver = !positioned_ && currentRow_ < rowCount_ && index_.handle != nullptr;
  fresh_ = false;
  return !stepOver || readIndexEntry(&ignored);
}

Result DataElement::decodeRow(ZvbDatavar* const* targets, int valueCount,
                              int* columnsRead) noexcept {
  const valueCodec::Source source = valueSource();
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
  const valueCodec::Source source = valueSource();
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
bool DataElement::placeForwards(int valueCount, int columnsRead) noexcept {
  if (index_.handle == nullptr) {
    return passRest(columnsRead) || fail(WT_MESSAGE(shortRead, "column"));
  }
  const bool wholeRowRead = valueCount != 0 && columnsRead == table_.columnCount;
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
