/// The catalogue file's bytes. docs/file-format.md has the tables that this follows.

#include <algorithm>
#include <limits>
#include <new>
#include <utility>

#include "wtelem/CatalogueFormat.h"
#include "wtelem/FileFailure.h"
#include "wtelem/FileFields.h"
#include "wtelem/messages.h"
#include "wtfile/ZVWTFileImpl.h"

namespace {

constexpr int highestMinorVersion = 0;
constexpr unsigned storageCodeMask = 0xFF;

struct FixedHeader {
  std::uint16_t mark;
  std::int16_t version;
  std::uint16_t length;
  std::uint16_t accessKeyLength;
  std::uint32_t columnCount;
  std::uint32_t elementCount;
  std::int64_t maxElementSize;
  std::int64_t rowCount;
};

struct ColumnHead {
  std::uint16_t length;
  std::uint16_t storageCode;
  std::uint32_t nameLength;
  std::int32_t width;
  std::int32_t maxLength;
};

void storeFixedHeader(unsigned char* bytes, const FixedHeader& header) noexcept {
  storeField(bytes, header.mark);
  storeField(bytes + 2, header.version);
  storeField(bytes + 4, header.length);
  storeField(bytes + 6, header.accessKeyLength);
  storeField(bytes + 8, header.columnCount);
  storeField(bytes + 12, header.elementCount);
  storeField(bytes + 16, header.maxElementSize);
  storeField(bytes + 24, header.rowCount);
}

FixedHeader loadFixedHeader(const unsigned char* bytes, bool swap) noexcept {
  return {.mark = loadField<std::uint16_t>(bytes, swap),
          .version = loadField<std::int16_t>(bytes + 2, swap),
          .length = loadField<std::uint16_t>(bytes + 4, swap),
          .accessKeyLength = loadField<std::uint16_t>(bytes + 6, swap),
          .columnCount = loadField<std::uint32_t>(bytes + 8, swap),
          .elementCount = loadField<std::uint32_t>(bytes + 12, swap),
          .maxElementSize = loadField<std::int64_t>(bytes + 16, swap),
          .rowCount = loadField<std::int64_t>(bytes + 24, swap)};
}

void storeColumnHead(unsigned char* bytes, const ColumnHead& head) noexcept {
  storeField(bytes, head.length);
  storeField(bytes + 2, head.storageCode);
  storeField(bytes + 4, head.nameLength);
  storeField(bytes + 8, head.width);
  storeField(bytes + 12, head.maxLength);
}

ColumnHead loadColumnHead(const unsigned char* bytes, bool swap) noexcept {
  return {.length = loadField<std::uint16_t>(bytes, swap),
          .storageCode = loadField<std::uint16_t>(bytes + 2, swap),
          .nameLength = loadField<std::uint32_t>(bytes + 4, swap),
          .width = loadField<std::int32_t>(bytes + 8, swap),
          .maxLength = loadField<std::int32_t>(bytes + 12, swap)};
}

}  // namespace

// ---- Writing

/// A catalogue that fits a page reaches the file at once. A longer one goes in pieces, the fixed
/// header last: a process that is killed before it leaves a new table's catalogue without one, and
/// that of a table which was appended to with the one that it had, so that its rows are those that
/// it had.
bool ZVWTFileImpl::writeHeader() noexcept {
  if (state_.openedForReading) {
    return true;
  }
  if (isWrittenAtOnce(catalogueSize())) {
    return seekHeader(0) && writeFixedHeader() && writeRecords() && flushHeader() && cutHeader();
  }
  return seekHeader(fixedHeaderSize) && writeRecords() && flushHeader() && cutHeader() &&
         seekHeader(0) && writeFixedHeader() && flushHeader();
}

bool ZVWTFileImpl::seekHeader(std::int64_t offset) noexcept {
  return np_fio_seek64(header_, offset, npFioFromStart) == offset ||
         fail(WT_MESSAGE(seekFailed, "(work table header)"));
}

/// The access key and what follows it.
bool ZVWTFileImpl::writeRecords() noexcept {
  if (!putAll(header_, accessKey_.asCstr(), accessKey_.cStrSize())) {
    return fail(fileFailure(header_, WT_MESSAGE(shortWrite)));
  }
  for (int i = 0; i < state_.columnCount; ++i) {
    if (!writeColumnDefinition(state_.columns[static_cast<std::size_t>(i)])) {
      return fail(fileFailure(header_, WT_MESSAGE(shortWrite)));
    }
  }
  for (int i = 0; i < elementCount_; ++i) {
    DataElement& element = *elements_[static_cast<std::size_t>(i)];
    if (!element.writeDefinition(header_)) {
      return failAs(element);
    }
  }
  return true;
}

bool ZVWTFileImpl::writeFixedHeader() noexcept {
  unsigned char bytes[fixedHeaderSize];
  storeFixedHeader(bytes, {.mark = byteOrderMark,
                           .version = writtenVersion,
                           .length = fixedHeaderSize,
                           .accessKeyLength = static_cast<std::uint16_t>(accessKey_.cStrSize()),
                           .columnCount = static_cast<std::uint32_t>(state_.columnCount),
                           .elementCount = static_cast<std::uint32_t>(elementCount_),
                           .maxElementSize = state_.maxElementSize,
                           .rowCount = rowCount_});
  return putAll(header_, bytes, fixedHeaderSize) ||
         fail(fileFailure(header_, WT_MESSAGE(shortWrite)));
}

bool ZVWTFileImpl::writeColumnDefinition(const ColumnDefinition& column) noexcept {
  unsigned char bytes[recordHeadSize];
  storeColumnHead(bytes, {.length = recordHeadSize,
                          .storageCode = static_cast<std::uint16_t>(column.storageCode),
                          .nameLength = column.name.cStrSize(),
                          .width = column.width,
                          .maxLength = column.maxLength});
  return putAll(header_, bytes, recordHeadSize) &&
         putAll(header_, column.name.asCstr(), column.name.cStrSize());
}

bool ZVWTFileImpl::flushHeader() noexcept {
  const int status = np_fio_bufmode(header_, 0);
  return status == npFioSuccess || fail(WT_MESSAGE(flushFailed, np_fio_errdesc(status)));
}

/// Cuts off what is left of a longer catalogue.
bool ZVWTFileImpl::cutHeader() noexcept {
  const int status = np_fio_trunc(header_);
  return status == npFioSuccess || fail(WT_MESSAGE(flushFailed, np_fio_errdesc(status)));
}

std::int64_t ZVWTFileImpl::catalogueSize() const noexcept {
  std::int64_t size = fixedHeaderSize + accessKey_.cStrSize();
  for (int i = 0; i < state_.columnCount; ++i) {
    size += recordHeadSize + state_.columns[static_cast<std::size_t>(i)].name.cStrSize();
  }
  for (int i = 0; i < elementCount_; ++i) {
    size += elements_[static_cast<std::size_t>(i)]->definitionSize();
  }
  return size;
}

/// Sees to it that the catalogue can grow by one more element: a disk without the space is met by
/// the row that needs the element, not by the close, which would have to remove the table.
bool ZVWTFileImpl::assureHeader() noexcept {
  constexpr std::int64_t elementSize = 64;  // bytes, of a definition with the names of new files
  std::int64_t size = assuredSize_;
  if (size == 0) {
    size = std::max(headerSize_, catalogueSize());
  }
  const int status = np_fio_assure(header_, size + elementSize);
  if (status != npFioSuccess) {
    return fail(WT_MESSAGE(flushFailed, np_fio_errdesc(status)));
  }
  assuredSize_ = size + elementSize;
  return true;
}

// ---- Reading

bool ZVWTFileImpl::readHeader() noexcept {
  std::uint32_t columnCount = 0;
  std::uint32_t elementCount = 0;
  headerSize_ = np_fio_seek64(header_, 0, npFioFromEnd);
  if (headerSize_ < 0 || np_fio_seek64(header_, 0, npFioFromStart) != 0) {
    return fail(WT_MESSAGE(headerTooShort));
  }
  return readFixedHeader(&columnCount, &elementCount) && readColumnDefinitions(columnCount) &&
         readElementDefinitions(elementCount);
}

bool ZVWTFileImpl::readFixedHeader(std::uint32_t* columnCount,
                                   std::uint32_t* elementCount) noexcept {
  unsigned char bytes[fixedHeaderSize];
  if (np_fio_getb(header_, bytes, fixedHeaderSize) != fixedHeaderSize || isUnwritten(bytes)) {
    return fail(fileFailure(header_, WT_MESSAGE(headerTooShort)));
  }
  state_.otherByteOrder = loadField<std::uint16_t>(bytes, false) != byteOrderMark;
  const FixedHeader header = loadFixedHeader(bytes, state_.otherByteOrder);
  const int major = header.version / 100;
  const int minor = header.version % 100;
  if (major > highestMajorVersion) {
    return fail(WT_MESSAGE(versionTooHigh, major, minor, highestMajorVersion, highestMinorVersion));
  }
  if (!skipSurplus(header.length, fixedHeaderSize)) {
    return fail(WT_MESSAGE(surplusNotSkipped));
  }
  if (!readAccessKey(header.accessKeyLength)) {
    return false;
  }
  if (header.rowCount < 0 || header.rowCount > maximumRowCount) {
    return fail(WT_MESSAGE(shortRead, "element definition"));
  }
  state_.maxElementSize = header.maxElementSize;
  rowCount_ = header.rowCount;
  version_ = header.version;
  *columnCount = header.columnCount;
  *elementCount = header.elementCount;
  return true;
}

bool ZVWTFileImpl::readAccessKey(std::uint16_t length) noexcept {
  bool complete = false;
  const std::unique_ptr<char[]> text = readStoredName(header_, length, &complete);
  if (text == nullptr) {
    return fail(WT_MESSAGE(outOfMemory, "(access key)"));
  }
  if (!complete) {
    return fail(WT_MESSAGE(accessKeyTooShort));
  }
  accessKey_.assign(text.get());
  return !accessKey_.memoryShort() || fail(WT_MESSAGE(outOfMemory, "(access key)"));
}

bool ZVWTFileImpl::skipSurplus(std::uint32_t length, int known) noexcept {
  const std::int64_t surplus = std::int64_t{length} - known;
  return surplus == 0 || np_fio_seek64(header_, surplus, npFioFromHere) >= 0;
}

/// How many bytes the catalogue has behind the current position: no count in it can stand for more.
std::int64_t ZVWTFileImpl::remainingHeaderBytes() const noexcept {
  return headerSize_ - np_fio_seek64(header_, 0, npFioFromHere);
}

bool ZVWTFileImpl::readColumnDefinitions(std::uint32_t count) noexcept {
  if (count > std::numeric_limits<std::int32_t>::max() ||
      count > remainingHeaderBytes() / recordHeadSize) {
    return fail(WT_MESSAGE(shortRead, "column definition"));
  }
  if (!allocateColumns(count)) {
    return false;
  }
  for (int i = 0; i < state_.columnCount; ++i) {
    if (!readColumnDefinition(&state_.columns[static_cast<std::size_t>(i)])) {
      return false;
    }
  }
  return true;
}

bool ZVWTFileImpl::readColumnDefinition(ColumnDefinition* column) noexcept {
  unsigned char bytes[recordHeadSize];
  if (np_fio_getb(header_, bytes, recordHeadSize) != recordHeadSize) {
    return fail(WT_MESSAGE(shortRead, "column definition"));
  }
  const ColumnHead head = loadColumnHead(bytes, state_.otherByteOrder);
  if (!skipSurplus(head.length, recordHeadSize)) {
    return fail(WT_MESSAGE(surplusNotSkipped));
  }
  if (head.nameLength > remainingHeaderBytes()) {
    return fail(WT_MESSAGE(shortRead, "column name"));
  }
  bool complete = false;
  const std::unique_ptr<char[]> name = readStoredName(header_, head.nameLength, &complete);
  if (name == nullptr) {
    return fail(WT_MESSAGE(outOfMemory, "(column name)"));
  }
  if (!complete) {
    return fail(WT_MESSAGE(shortRead, "column name"));
  }
  column->name.assign(name.get());
  if (column->name.memoryShort()) {
    return fail(WT_MESSAGE(outOfMemory, "(column name)"));
  }
  column->storageCode = static_cast<StorageCode>(head.storageCode & storageCodeMask);
  column->type = typeOf(column->storageCode);
  column->width = head.width;
  column->maxLength = head.maxLength;
  return true;
}

/// The elements known before are kept until all are read: a table of this object's making that
/// fails here is removed with them.
bool ZVWTFileImpl::readElementDefinitions(std::uint32_t count) noexcept {
  if (count > std::numeric_limits<std::int32_t>::max() ||
      count > remainingHeaderBytes() / recordHeadSize) {
    return fail(WT_MESSAGE(shortRead, "element definition"));
  }
  Elements elements(new (std::nothrow) std::unique_ptr<DataElement>[count]);
  if (elements == nullptr) {
    return fail(WT_MESSAGE(outOfMemory, "(data element definition array)"));
  }
  std::int64_t rowsLeft = rowCount_;
  for (std::uint32_t i = 0; i < count; ++i) {
    std::unique_ptr<DataElement> element(new (std::nothrow) DataElement(state_));
    if (element == nullptr) {
      return fail(WT_MESSAGE(outOfMemory, "(data element definition)"));
    }
    if (!element->readDefinition(header_)) {
      return failAs(*element);
    }
    if (i + 1 == count && !isWrittenAtOnce(headerSize_)) {
      element->countRows(rowsLeft);
    }
    if (element->rowCount() > rowsLeft || !canHaveRows(*element)) {
      return fail(WT_MESSAGE(shortRead, "element definition"));
    }
    rowsLeft -= element->rowCount();
    elements[i] = std::move(element);
  }
  if (rowsLeft != 0) {
    return fail(WT_MESSAGE(shortRead, "element definition"));
  }
  elements_ = std::move(elements);
  elementCount_ = elementCapacity_ = static_cast<int>(count);
  return true;
}

/// Rows without columns take no bytes: without an index there could be any number of them.
bool ZVWTFileImpl::canHaveRows(const DataElement& element) const noexcept {
  return state_.columnCount != 0 || element.hasIndex() || element.rowCount() == 0;
}
