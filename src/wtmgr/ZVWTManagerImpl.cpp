#include "wtmgr/ZVWTManagerImpl.h"

#include <algorithm>
#include <limits>
#include <new>
#include <utility>

#include "base/zvb_config.h"
#include "base/zvb_uuid.h"
#include "fio/np_fio.h"
#include "wtcheck/TableCheck.h"
#include "wtclean/DirectoryCleaning.h"
#include "wtelem/messages.h"
#include "wtmgr/Partition.h"

namespace {

/// Bytes of a column's values that a sorter is told to reckon with; a character may take four.
std::int32_t announcedSize(const ColumnDefinition& column) noexcept {
  constexpr std::int32_t usualWidth = 255;
  constexpr std::int32_t bytesPerCharacter = 4;
  if (column.type != zvbTypeString) {
    return column.width;
  }
  const std::int64_t characters = column.width == 0 ? usualWidth : column.width;
  return static_cast<std::int32_t>(std::clamp<std::int64_t>(
      characters * bytesPerCharacter, std::numeric_limits<std::int32_t>::min(),
      std::numeric_limits<std::int32_t>::max()));
}

}  // namespace

ZVWTManagerImpl::ZVWTManagerImpl(const ZvbString& name, const ZvbString& directoryList,
                                 ZvbString* error) noexcept
    : uuid_(zvbGetUUID()), name_(name), directoryList_(directoryList) {
  resolveDirectoryList();
  if (!directories_.split(directoryList_, np_dir_listsep)) {
    *error = WT_MESSAGE(outOfMemory, "(directory array)");
    return;
  }
  registryLock_ = zvLockCreate(0, 0);
  keys_.guardBy(registryLock_);
  if (registryLock_ == 0) {
    *error = WT_MESSAGE(outOfMemory, "(work table lock)");
  }
}

ZVWTManagerImpl::~ZVWTManagerImpl() {
  if (registryLock_ != 0) {
    zvLockDestroy(registryLock_);
  }
}

void ZVWTManagerImpl::release() noexcept { delete this; }

/// The caller's list, else the configured one, else the system's temporary directory.
void ZVWTManagerImpl::resolveDirectoryList() noexcept {
  if (directoryList_.isEmpty()) {
    (void)zvbGetConfigOptions(ZvbString())->get(ZvbString("BASE/TEMP", true), &directoryList_, 0);
  }
  char buffer[npFioPathSize];
  if (directoryList_.isEmpty() && np_fio_tmpdir(buffer, sizeof buffer) == npFioSuccess) {
    directoryList_.assign(buffer);
  }
}

ZvbString ZVWTManagerImpl::getName() noexcept { return name_; }

ZvbString ZVWTManagerImpl::getDirectoryList() noexcept { return directoryList_; }

ZvbString ZVWTManagerImpl::getLastError() noexcept {
  zvLockGet(registryLock_, 1, 1);
  ZvbString error = lastError_;
  zvLockRelease(registryLock_);
  return error;
}

ZvbString ZVWTManagerImpl::getDirectory(int index) const noexcept {
  return directories_.get(index);
}

// ---- Tables

ZVWTManagerImpl::Table ZVWTManagerImpl::makeTable(ZvbString* error) noexcept {
  Table table(new (std::nothrow) ZVWTFileImpl(directories_, this));
  if (table == nullptr) {
    *error = WT_MESSAGE(outOfMemory, "(work table file instance)");
  }
  return table;
}

ZvWorkTableFile* ZVWTManagerImpl::createTable(int columnCount, int sortKeyCount,
                                              std::int64_t maxElementSize,
                                              ZvbString* error) noexcept {
  // A table that will need the datafile manager is not made without it.
  if (sortKeyCount != 0 && !useDatafileManager([](ZvDatafileManager&) { return true; }, error)) {
    return nullptr;
  }
  Table table = makeTable(error);
  if (table == nullptr) {
    return nullptr;
  }
  if (!table->create(columnCount, sortKeyCount, maxElementSize)) {
    *error = table->getErrorMessage();
    return nullptr;
  }
  return table.release();
}

ZvWorkTableFile* ZVWTManagerImpl::createTable(int columnCount, std::int64_t maxElementSize,
                                              ZvbString* error) noexcept {
  return createTable(columnCount, 0, maxElementSize, error);
}

/// Makes a table object and opens it with one of its openers; null when that fails.
template <typename Opener>
ZVWTManagerImpl::Table ZVWTManagerImpl::openTableBy(const Opener& opener,
                                                    ZvbString* error) noexcept {
  Table table = makeTable(error);
  if (table != nullptr && !opener(*table)) {
    *error = table->getErrorMessage();
    table.reset();
  }
  return table;
}

ZvWorkTableFile* ZVWTManagerImpl::openTable(const ZvbString& name, int count, const int* numbers,
                                            const RowRange* range, bool readBackwards,
                                            ZvbString* error) noexcept {
  return openTableBy(
             [&](ZVWTFileImpl& table) {
               return table.openWithColumnNumbers(name, count, numbers, range, readBackwards);
             },
             error)
      .release();
}

ZvWorkTableFile* ZVWTManagerImpl::openTable(const ZvbString& name, int count,
                                            const ZvbString* names, const RowRange* range,
                                            bool readBackwards, ZvbString* error) noexcept {
  return openTableBy(
             [&](ZVWTFileImpl& table) {
               return table.openWithColumnNames(name, count, names, range, readBackwards);
             },
             error)
      .release();
}

ZvWorkTableFile* ZVWTManagerImpl::openTable(const ZvbString& nameOrUri, bool readBackwards,
                                            ZvbString* error) noexcept {
  return openTableBy(
             [&](ZVWTFileImpl& table) { return table.openFromURI(nameOrUri, readBackwards); },
             error)
      .release();
}

ZVWTManagerImpl::Table ZVWTManagerImpl::openWithoutColumns(const ZvbString& name,
                                                           ZvbString* error) noexcept {
  return openTableBy(
      [&](ZVWTFileImpl& table) {
        return table.openWithColumnNames(name, 0, nullptr, nullptr, false);
      },
      error);
}

bool ZVWTManagerImpl::deleteTable(const ZvbString& name, ZvbString* error) noexcept {
  const Table table = openWithoutColumns(name, error);
  if (table == nullptr) {
    return false;
  }
  if (!table->removeFiles()) {
    *error = table->getErrorMessage();
    return false;
  }
  return true;
}

bool ZVWTManagerImpl::getTableSizes(const ZvbString& name, ZvwtTableSizes* sizes,
                                    ZvbString* error) noexcept {
  const Table table = openWithoutColumns(name, error);
  if (table == nullptr) {
    return false;
  }
  TableSizes bytes;
  if (!table->measure(&bytes)) {
    *error = table->getErrorMessage();
    return false;
  }
  *sizes = {.elementCount = table->elementCount(),
            .rowCount = table->getRowCount(),
            .maxElementSize = table->maxElementSize(),
            .catalogueBytes = bytes.catalogueBytes,
            .dataBytes = bytes.dataBytes,
            .indexBytes = bytes.indexBytes};
  return true;
}

bool ZVWTManagerImpl::checkTable(const ZvbString& name, ZvwtFindingTaker taker, void* context,
                                 std::int64_t* findings, ZvbString* error) const noexcept {
  CheckReport report(taker, context);
  ::checkTable(directories_, name.asCstr(), &report);
  *findings = report.findings();
  if (report.failed()) {
    *error = report.error();
  }
  return !report.failed();
}

bool ZVWTManagerImpl::cleanDirectories(std::int64_t leastAge, bool remove, ZvwtOrphanTaker taker,
                                       void* context, ZvbString* error) const noexcept {
  DirectoryCleaning cleaning(directories_, leastAge, remove, taker, context);
  if (!cleaning.run()) {
    *error = cleaning.error();
    return false;
  }
  return true;
}

// ---- Keys

bool ZVWTManagerImpl::enqueue(const ZvbString& key, ZvbString* error) noexcept {
  return keys_.enqueue(key, error);
}

void ZVWTManagerImpl::dequeue(const ZvbString& key) noexcept { keys_.dequeue(key); }

// ---- Whole tables

bool ZVWTManagerImpl::appendTable(const ZvbString& targetName, const ZvbString& sourceName,
                                  bool alreadyEnqueued, ZvbString* error) noexcept {
  Table table(new (std::nothrow) ZVWTFileImpl(directories_, this));
  if (table == nullptr) {
    *error = WT_MESSAGE(outOfMemory, "(work table instance)");
    return false;
  }
  if (!alreadyEnqueued && !enqueue(targetName, error)) {
    *error = WT_MESSAGE(targetNotEnqueued, error->asCstr());
    return false;
  }
  const bool appended = table->open(targetName, false, nullptr, false) &&
                        table->appendFrom(sourceName) && table->close();
  if (!appended) {
    *error = table->getErrorMessage();
  }
  // The table is closed before the next appender may open it.
  table.reset();
  if (!alreadyEnqueued) {
    dequeue(targetName);
  }
  return appended;
}

bool ZVWTManagerImpl::appendTable(const ZvbString& targetName, const ZvbString& sourceName,
                                  ZvbString* error) noexcept {
  return appendTable(targetName, sourceName, false, error);
}

bool ZVWTManagerImpl::copyRows(ZVWTFileImpl& target, ZVWTFileImpl& source,
                               ZvbString* error) noexcept {
  if (!target.copyFrom(source)) {
    *error = target.getErrorMessage();
    return false;
  }
  return true;
}

/// The source is looked for in the directories of its own manager.
ZVWTManagerImpl::Table ZVWTManagerImpl::openSource(ZvWorkTableManager* sourceManager,
                                                   const ZvbString& sourceName,
                                                   ZvbString* error) noexcept {
  return static_cast<ZVWTManagerImpl*>(sourceManager)
      ->openTableBy([&](ZVWTFileImpl& table) { return table.openFromURI(sourceName, false); },
                    error);
}

bool ZVWTManagerImpl::copyIntoTable(ZvWorkTableFile* target, ZvWorkTableManager* sourceManager,
                                    const ZvbString& sourceName, ZvbString* error) noexcept {
  const Table source = openSource(sourceManager, sourceName, error);
  auto& table = *static_cast<ZVWTFileImpl*>(target);
  if (source == nullptr || !copyRows(table, *source, error)) {
    return false;
  }
  if (!table.close() || !table.openFromURI(ZvbString(), false)) {
    *error = table.getErrorMessage();
    return false;
  }
  return true;
}

ZvWorkTableFile* ZVWTManagerImpl::copyTable(std::int64_t maxElementSize,
                                            ZvWorkTableManager* sourceManager,
                                            const ZvbString& sourceName,
                                            ZvbString* error) noexcept {
  const Table source = openSource(sourceManager, sourceName, error);
  if (source == nullptr) {
    return nullptr;
  }
  ZvWorkTableFile* target = createTable(source->getColumnCount(), maxElementSize, error);
  if (target != nullptr && !copyRows(*static_cast<ZVWTFileImpl*>(target), *source, error)) {
    target->release();
    return nullptr;
  }
  return target;
}

ZvWorkTableFile* ZVWTManagerImpl::copyTable(std::int64_t maxElementSize,
                                            const ZvbString& sourceManagerName,
                                            const ZvbString& sourceName,
                                            ZvbString* error) noexcept {
  error->setNull();
  if (sourceManagerName.isEmpty() || name_.compare(sourceManagerName, true) == 0) {
    return copyTable(maxElementSize, this, sourceName, error);
  }
  ZvWorkTableManager* sourceManager = zvwtCreateManager(sourceManagerName, directoryList_, error);
  if (sourceManager == nullptr) {
    *error = WT_MESSAGE(sourceManagerNotMade, error->asCstr());
    return nullptr;
  }
  ZvWorkTableFile* table = copyTable(maxElementSize, sourceManager, sourceName, error);
  sourceManager->release();
  return table;
}

bool ZVWTManagerImpl::partitionTable(const ZvbString& nameOrUri, int* partCount, RowRange* ranges,
                                     ZvbString* error) noexcept {
  const Table table = openSource(this, nameOrUri, error);
  if (table == nullptr) {
    return false;
  }
  *partCount = partitionRows(*table, *partCount, ranges);
  return true;
}

// ---- Sorting

/// Calls `use` with the datafile manager, which is made if there is none, while no other thread
/// does; its result. False with the reason in *error when it cannot be had.
template <typename Use>
bool ZVWTManagerImpl::useDatafileManager(const Use& use, ZvbString* error) noexcept {
  if (!enqueue(uuid_, error)) {
    return false;
  }
  if (datafileManager_ == nullptr) {
    datafileManager_.reset(zvDatafileManagerCreate(directoryList_, error));
  }
  const bool used = datafileManager_ != nullptr && use(*datafileManager_);
  dequeue(uuid_);
  return used;
}

SorterHandle ZVWTManagerImpl::makeSorter(std::span<const ColumnDefinition> columns,
                                         ZvbString* error) noexcept {
  // Typed columns, work files allowed, rows with equal keys kept.
  constexpr std::uint32_t options =
      zvDatafileTypedColumns | zvDatafileWorkFiles | zvDatafileKeepEqual;
  SorterHandle sorter;
  (void)useDatafileManager(
      [&](ZvDatafileManager& manager) {
        const auto count = static_cast<std::int32_t>(columns.size());
        bool described = manager.setColumnCount(count);
        for (std::int32_t i = 0; described && i < count; ++i) {
          const ColumnDefinition& column = columns[static_cast<std::size_t>(i)];
          described = manager.defineColumn(i, column.type, announcedSize(column));
        }
        sorter.reset(described ? manager.createSorter(options) : nullptr);
        if (sorter == nullptr) {
          *error = manager.getErrorMessage();
        }
        return sorter != nullptr;
      },
      error);
  return sorter;
}

/// The reason of a refusal is read with getLastError, whose text other threads may be reading or
/// setting meanwhile: it is put in place whole.
template <typename Apply>
bool ZVWTManagerImpl::applySetting(const Apply& apply) noexcept {
  ZvbString error;
  const bool applied = useDatafileManager(
      [&](ZvDatafileManager& manager) {
        const bool taken = apply(manager);
        if (!taken) {
          error = manager.getErrorMessage();
        }
        return taken;
      },
      &error);
  if (!applied) {
    zvLockGet(registryLock_, 1, 1);
    lastError_ = std::move(error);
    zvLockRelease(registryLock_);
  }
  return applied;
}

bool ZVWTManagerImpl::sortAndSize0(std::int64_t value) noexcept {
  return applySetting([value](ZvDatafileManager& manager) { return manager.sortAndSize0(value); });
}
bool ZVWTManagerImpl::sortAndSize1(bool value) noexcept {
  return applySetting([value](ZvDatafileManager& manager) { return manager.sortAndSize1(value); });
}
bool ZVWTManagerImpl::sortAndSize2(bool value) noexcept {
  return applySetting([value](ZvDatafileManager& manager) { return manager.sortAndSize2(value); });
}
bool ZVWTManagerImpl::sortAndSize3(bool value) noexcept {
  return applySetting([value](ZvDatafileManager& manager) { return manager.sortAndSize3(value); });
}
bool ZVWTManagerImpl::sortAndSize4(std::int32_t value) noexcept {
  return applySetting([value](ZvDatafileManager& manager) { return manager.sortAndSize4(value); });
}
bool ZVWTManagerImpl::sortAndSize5(std::int64_t value) noexcept {
  return applySetting([value](ZvDatafileManager& manager) { return manager.sortAndSize5(value); });
}
bool ZVWTManagerImpl::sortAndSize6(std::int64_t value) noexcept {
  return applySetting([value](ZvDatafileManager& manager) { return manager.sortAndSize6(value); });
}
bool ZVWTManagerImpl::sortAndSize7(bool value) noexcept {
  return applySetting([value](ZvDatafileManager& manager) { return manager.sortAndSize7(value); });
}

bool ZVWTManagerImpl::setSortProgress(ZvDatafileSortCallback callback, void* context,
                                      ZvbString* error) noexcept {
  return useDatafileManager(
      [=](ZvDatafileManager& manager) {
        manager.setProgress(callback, context);
        return true;
      },
      error);
}
