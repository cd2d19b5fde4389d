/// The two files of an element and its definition record.
#include "wtelem/DataElement.h"

#include <memory>
#include <string_view>
#include <utility>

#include "wtelem/CatalogueFormat.h"
#include "wtelem/DirectorySearch.h"
#include "wtelem/FileFields.h"
#include "wtelem/messages.h"

namespace {

constexpr const char* outOfMemoryPath = "(file path)";

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
  if (readOnly) {
    return true;
  }
  // The table holds its catalogue as its only writer, and nobody else writes its elements.
  np_fio_writeAlone(index_.handle);
  np_fio_writeAlone(data_.handle);
  return cutToRows();
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
  const bool flushed = flush();
  abandon();
  return flushed;
}

bool DataElement::flush() noexcept {
  const int status = bringToFiles();
  return status == npFioSuccess || fail(WT_MESSAGE(flushFailed, np_fio_errdesc(status)));
}

bool DataElement::closeWithWhatFits() noexcept {
  const bool closed = bringToFiles() == npFioSuccess || keepWholeRows();
  abandon();
  return closed;
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

bool DataElement::sharesFileWith(const DataElement& other) const noexcept {
  return data_.name.compare(other.data_.name, true) == 0 ||
         (!index_.name.isEmpty() && index_.name.compare(other.index_.name, true) == 0);
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

std::int64_t DataElement::definitionSize() const noexcept {
  const std::uint32_t indexNameSize = index_.name.cStrSize();
  return std::int64_t{recordHeadSize} + data_.name.cStrSize() +
         (indexNameSize >= 2 ? indexNameSize : 0);
}

bool DataElement::readDefinition(np_fio_handle catalogue) noexcept {
  unsigned char bytes[recordHeadSize];
  if (np_fio_getb(catalogue, bytes, recordHeadSize) != recordHeadSize) {
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
  const bool isNone = file == &index_ && length == 0;
  const std::string_view text = name.get();
  if (!complete || !(isNone || text.starts_with(file->prefix))) {
    return fail(WT_MESSAGE(shortRead, what));
  }
  file->name.assign(name.get());
  return !file->name.memoryShort() || fail(WT_MESSAGE(outOfMemory, "(element name)"));
}
