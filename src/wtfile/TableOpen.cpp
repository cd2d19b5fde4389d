/// Opening a table and placing it at its first row.

#include <algorithm>
#include <limits>
#include <new>
#include <utility>

#include "wtelem/DirectorySearch.h"
#include "wtelem/messages.h"
#include "wtfile/ZVWTFileImpl.h"

bool ZVWTFileImpl::open(const ZvbString& name, bool forReading, const RowRange* range,
                        bool backwards) noexcept {
  if (!close()) {
    return false;
  }
  startClean(forReading, backwards);
  if (headerPath_.isEmpty()) {
    name_ = name;
  }
  const bool opened = openHeaderFile(forReading ? npFioRead : npFioOnlyWriter) && readHeader() &&
                      (forReading || (refuseOtherByteOrder() && assureRewriting())) &&
                      takeRange(range) && (forReading ? startReading() : startAppending());
  if (!opened) {
    abandonOpening();
  }
  return opened;
}

/// Nothing of an earlier use of the object shows in the next one.
void ZVWTFileImpl::startClean(bool forReading, bool backwards) noexcept {
  state_.openedForReading = forReading;
  state_.readsBackwards = backwards;
  state_.otherByteOrder = false;
  state_.readsWholeRows = false;
  state_.firstDelivered = 0;
  state_.stringBuffer.setLimit(0);
  selection_ = Selection();
  rowRefused_ = false;
  assuredSize_ = 0;
  rangeStart_ = 0;
  rangeCount_ = -1;
  rangeEnd_ = toTheEnd;
  readVector_.reset();
  writeVector_.reset();
}

/// Leaves nothing open and nothing that a later close would write.
void ZVWTFileImpl::abandonOpening() noexcept {
  if (current_ != nullptr) {
    std::exchange(current_, nullptr)->abandon();
  }
  closeHeader();
  mode_ = Mode::closed;
}

bool ZVWTFileImpl::openHeaderFile(int mode) noexcept {
  DirectorySearch search;
  if (headerPath_.isEmpty()) {
    (void)openFile(state_.directories, name_.asCstr(), mode, SearchOrder::toTheEnd, &search);
  } else {
    search.directory = directory_;
    std::copy_n(headerPath_.asCstr(), headerPath_.cStrSize(), search.path);
    search.status = np_fio_open(search.path, mode, &search.file);
  }
  if (!search.joined) {
    return fail(WT_MESSAGE(pathNotJoined, "header", search.status, np_fio_errdesc(search.status)));
  }
  if (search.status != npFioSuccess) {
    const char* description = np_fio_errdesc(search.status);
    return fail(description != nullptr ? WT_MESSAGE(openFailed, search.path, description)
                                       : WT_MESSAGE(openFailedStatus, search.path, search.status));
  }
  header_ = search.file;
  directory_ = search.directory;
  headerPath_.assign(search.path);
  return !headerPath_.memoryShort() || fail(WT_MESSAGE(outOfMemory, "(file path)"));
}

/// A catalogue is written in this machine's byte order: its elements would no longer fit it.
bool ZVWTFileImpl::refuseOtherByteOrder() noexcept {
  return !state_.otherByteOrder ||
         fail(WT_MESSAGE(openFailed, headerPath_.asCstr(),
                         "it was written on a machine of the other byte order, so it can be read "
                         "but not appended to"));
}

bool ZVWTFileImpl::takeRange(const RowRange* range) noexcept {
  if (range == nullptr) {
    return true;
  }
  if (range->firstRow < 0) {
    return fail(WT_MESSAGE(negativeFirstRow, range->firstRow));
  }
  if (range->rowCount < -1) {
    return fail(WT_MESSAGE(negativeRowCount, range->rowCount));
  }
  rangeStart_ = range->firstRow;
  if (range->rowCount != -1) {
    const std::int64_t room = std::numeric_limits<std::int64_t>::max() - rangeStart_;
    rangeCount_ = range->rowCount;
    rangeEnd_ = rangeStart_ + std::min(rangeCount_, room);
  }
  return true;
}

bool ZVWTFileImpl::startReading() noexcept {
  mode_ = Mode::reading;
  if (rangeStart_ >= rowCount_) {
    nextElement_ = elementCount_;
    rowPosition_ = rangeStart_;
    return true;
  }
  const std::int64_t row = state_.readsBackwards ? rowCount_ - 1 : rangeStart_;
  return (row == 0 && !state_.readsBackwards) || startReadingAt(row);
}

bool ZVWTFileImpl::startReadingAt(std::int64_t row) noexcept {
  std::int64_t rowsBefore = 0;
  for (int i = 0; i < elementCount_; ++i) {
    DataElement& element = *elements_[static_cast<std::size_t>(i)];
    if (rowsBefore + element.rowCount() > row) {
      current_ = &element;
      nextElement_ = state_.readsBackwards ? i - 1 : i + 1;
      rowPosition_ = row;
      return (element.open(true) && element.seekRow(row - rowsBefore)) || failAs(element);
    }
    rowsBefore += element.rowCount();
  }
  return fail(WT_MESSAGE(shortRead, "element definition"));
}

/// The close will write the catalogue again, and has to remove a table that it cannot write.
bool ZVWTFileImpl::assureRewriting() noexcept {
  const int status = np_fio_assure(header_, headerSize_);
  return status == npFioSuccess ||
         fail(WT_MESSAGE(openFailed, headerPath_.asCstr(), np_fio_errdesc(status)));
}

bool ZVWTFileImpl::startAppending() noexcept {
  mode_ = Mode::writing;
  rowPosition_ = rowCount_;
  if (elementCount_ == 0) {
    return true;
  }
  DataElement* last = elements_[static_cast<std::size_t>(elementCount_) - 1].get();
  if (!refuseSharedFiles(*last)) {
    return false;
  }
  current_ = last;
  if (!current_->open(false)) {
    return failAs(*current_);
  }
  const bool full = state_.maxElementSize > 0 && current_->dataSize() > state_.maxElementSize;
  if (!(full ? current_->close() : current_->seekRow(-1))) {
    return failAs(*current_);
  }
  if (full) {
    current_ = nullptr;
  }
  return true;
}

/// The files of the last element are about to be cut behind its rows: no others may be in them.
bool ZVWTFileImpl::refuseSharedFiles(const DataElement& last) noexcept {
  for (int i = 0; i < elementCount_ - 1; ++i) {
    if (elements_[static_cast<std::size_t>(i)]->sharesFileWith(last)) {
      return fail(
          WT_MESSAGE(openFailed, headerPath_.asCstr(),
                     "two of its elements have the same file, so it cannot be appended to"));
    }
  }
  return true;
}
