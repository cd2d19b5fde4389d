#include "wtfile/ZVWTFileImpl.h"

#include <new>
#include <utility>

#include "wtelem/DirectorySearch.h"
#include "wtelem/FileNames.h"
#include "wtelem/messages.h"

ZVWTFileImpl::ZVWTFileImpl(const TempDirectories& directories, SorterSource* sorterSource) noexcept
    : sorterSource_(sorterSource),
      state_{.directories = directories, .columns = {}, .stringBuffer = {}} {}

ZVWTFileImpl::~ZVWTFileImpl() {
  (void)ZVWTFileImpl::close();
  if (createdHere_ && failed_) {
    (void)removeFiles();
  }
  // A close that had no memory to begin with has closed nothing.
  closeHeader();
}

void ZVWTFileImpl::release() noexcept { delete this; }

bool ZVWTFileImpl::fail(ZvbString text) noexcept {
  errorMessage_ = std::move(text);
  failed_ = true;
  return false;
}

bool ZVWTFileImpl::failAs(const DataElement& element) noexcept {
  return fail(element.getErrorMessage());
}

// ---- Creating

bool ZVWTFileImpl::create(int columnCount, int sortColumnCount,
                          std::int64_t maxElementSize) noexcept {
  createdHere_ = true;
  state_.maxElementSize = maxElementSize;
  version_ = writtenVersion;
  if (!allocateColumns(columnCount)) {
    return false;
  }
  const NewFileKind kind{
      .prefix = fileNames::tablePrefix, .name = "header", .order = SearchOrder::toTheEnd};
  NewFile made;
  made.directory = directory_;
  if (!makeFile(state_.directories, kind, &made, &errorMessage_)) {
    return false;
  }
  directory_ = made.directory;
  header_ = made.handle;
  headerPath_ = std::move(made.path);
  name_ = std::move(made.name);
  mode_ = Mode::writing;
  return sortColumnCount == 0 || allocateSortKeys(sortColumnCount);
}

bool ZVWTFileImpl::allocateColumns(std::int64_t count) noexcept {
  selection_ = Selection();
  state_.columns.reset();
  state_.columnCount = 0;
  if (count == 0) {
    return true;
  }
  if (count > 0) {
    state_.columns.reset(new (std::nothrow) ColumnDefinition[static_cast<std::size_t>(count)]);
  }
  if (state_.columns == nullptr) {
    return fail(WT_MESSAGE(outOfMemory, "(column definition array)"));
  }
  state_.columnCount = static_cast<std::int32_t>(count);
  selection_ = Selection({state_.columns.get(), static_cast<std::size_t>(count)});
  return true;
}

// ---- Columns

bool ZVWTFileImpl::defineColumn(int index, ZvbString name, zvbType type, int width) noexcept {
  if (index < 0 || index >= state_.columnCount) {
    return fail(WT_MESSAGE(noSuchColumn));
  }
  for (int i = 0; i < state_.columnCount; ++i) {
    if (i != index && state_.columns[static_cast<std::size_t>(i)].name.compare(name, false) == 0) {
      return fail(WT_MESSAGE(duplicateColumnName, name.asCstr()));
    }
  }
  if (name.memoryShort()) {
    return fail(WT_MESSAGE(outOfMemory, "(column name)"));
  }
  ColumnDefinition& column = state_.columns[static_cast<std::size_t>(index)];
  column.name = std::move(name);
  column.type = type;
  column.storageCode = storageCodeOf(type);
  column.width = width;
  return true;
}

bool ZVWTFileImpl::getColumnDefinition(int index, ZvbString* name, zvbType* type, int* width,
                                       int* maxLength) noexcept {
  if (index < 0 || index >= selection_.count()) {
    return fail(WT_MESSAGE(noSuchColumn));
  }
  const ColumnDefinition& column = selection_.column(index);
  *name = column.name;
  *type = column.type;
  *width = column.width;
  *maxLength = column.maxLength;
  return true;
}

int ZVWTFileImpl::getColumnCount() noexcept { return selection_.count(); }

ZvbString ZVWTFileImpl::getErrorMessage() noexcept { return errorMessage_; }

ZvbString ZVWTFileImpl::getName() noexcept { return name_; }

std::int64_t ZVWTFileImpl::getRowCount() noexcept { return rowCount_; }

// ---- Closing and removing

bool ZVWTFileImpl::close() noexcept {
  bool closed = true;
  if (sortColumnCount_ != 0 && sorter_ != nullptr) {
    if (!makeSortedVector()) {
      return false;
    }
    closed = drainSorter();
  }
  if (state_.openedForReading) {
    closeRead();
  } else {
    closed = closeWritten(closed);
  }
  rowPosition_ = 0;
  nextElement_ = 0;
  return closed;
}

/// `drained` is false when the rows of a sorted table could not all be stored.
bool ZVWTFileImpl::closeWritten(bool drained) noexcept {
  bool closed = drained;
  if (closed && current_ != nullptr) {
    closed = closeCurrent();
  }
  if (header_ != nullptr) {
    closed = closed && writeHeader();
    closeHeader();
  }
  mode_ = Mode::closed;
  if (!closed) {
    removeAfterFailure();
  }
  return closed;
}

/// Once a row has been refused, the rows accepted before it need not all have reached the disk: the
/// catalogue then counts those that did.
bool ZVWTFileImpl::closeCurrent() noexcept {
  DataElement& element = *std::exchange(current_, nullptr);
  const std::int64_t rows = element.rowCount();
  const bool closed = rowRefused_ ? element.closeWithWhatFits() : element.close();
  rowCount_ -= rows - element.rowCount();
  return closed || failAs(element);
}

void ZVWTFileImpl::closeRead() noexcept {
  leaveElement();
  closeHeader();
  mode_ = Mode::closed;
}

void ZVWTFileImpl::closeHeader() noexcept { np_fio_close(std::exchange(header_, nullptr)); }

/// The cause of the failure stays the message, whatever the removal meets.
void ZVWTFileImpl::removeAfterFailure() noexcept {
  ZvbString cause = errorMessage_;
  (void)removeFiles();
  errorMessage_ = std::move(cause);
}

bool ZVWTFileImpl::removeFiles() noexcept {
  if (name_.isEmpty()) {
    return true;
  }
  (void)close();
  bool removed = true;
  for (int i = 0; i < elementCount_; ++i) {
    std::unique_ptr<DataElement>& element = elements_[static_cast<std::size_t>(i)];
    if (element != nullptr && !element->remove() && removed) {
      removed = failAs(*element);
    }
    element.reset();
  }
  elementCount_ = 0;
  // Nothing is left to do when a failed close of a written table has removed it.
  const int status = headerPath_.isEmpty() ? npFioSuccess : np_fio_unlink(headerPath_.asCstr());
  if (status != npFioSuccess) {
    return removed && fail(WT_MESSAGE(deleteFailed, np_fio_errdesc(status)));
  }
  headerPath_.setNull();
  return removed;
}

bool ZVWTFileImpl::measure(TableSizes* sizes) noexcept {
  *sizes = TableSizes{};
  np_fio_stat info;
  const int status = np_fio_stat64(headerPath_.asCstr(), &info);
  if (status != npFioSuccess) {
    return fail(WT_MESSAGE(openFailed, headerPath_.asCstr(), np_fio_errdesc(status)));
  }
  sizes->catalogueBytes = info.size;
  for (int i = 0; i < elementCount_; ++i) {
    DataElement& element = *elements_[static_cast<std::size_t>(i)];
    std::int64_t dataBytes = 0;
    std::int64_t indexBytes = 0;
    if (!element.measure(&dataBytes, &indexBytes)) {
      return failAs(element);
    }
    sizes->dataBytes += dataBytes;
    sizes->indexBytes += indexBytes;
  }
  return true;
}
