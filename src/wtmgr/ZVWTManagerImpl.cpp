#include "wtmgr/ZVWTManagerImpl.h"

#include <new>
#include <utility>

#include "base/zvb_config.h"
#include "base/zvb_uuid.h"
#include "fio/np_fio.h"
#include "wtelem/messages.h"
#include "wtmgr/Partition.h"

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
  Table table(new (std::nothrow) ZVWTFileImpl(directories_));
  if (table == nullptr) {
    *error = WT_MESSAGE(outOfMemory, "(work table file instance)");
  }
  return table;
}

ZvWorkTableFile* ZVWTManagerImpl::createTable(int columnCount, int sortKeyCount,
                                              std::int64_t maxElementSize,
                                              ZvbString* error) noexcept {
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

// ---- Keys

bool ZVWTManagerImpl::enqueue(const ZvbString& key, ZvbString* error) noexcept {
  return keys_.enqueue(key, error);
}

void ZVWTManagerImpl::dequeue(const ZvbString& key) noexcept { keys_.dequeue(key); }

// ---- Whole tables

bool ZVWTManagerImpl::appendTable(const ZvbString& targetName, const ZvbString& sourceName,
                                  bool alreadyEnqueued, ZvbString* error) noexcept {
  Table table(new (std::nothrow) ZVWTFileImpl(directories_));
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

// ---- What later versions bring

bool ZVWTManagerImpl::refuseSetting() noexcept {
  zvLockGet(registryLock_, 1, 1);
  lastError_ = WT_MESSAGE(notAvailable, "A sort and size setting");
  zvLockRelease(registryLock_);
  return false;
}

bool ZVWTManagerImpl::sortAndSize0(std::int64_t /*value*/) noexcept { return refuseSetting(); }
bool ZVWTManagerImpl::sortAndSize1(bool /*value*/) noexcept { return refuseSetting(); }
bool ZVWTManagerImpl::sortAndSize2(bool /*value*/) noexcept { return refuseSetting(); }
bool ZVWTManagerImpl::sortAndSize3(bool /*value*/) noexcept { return refuseSetting(); }
bool ZVWTManagerImpl::sortAndSize4(std::int32_t /*value*/) noexcept { return refuseSetting(); }
bool ZVWTManagerImpl::sortAndSize5(std::int64_t /*value*/) noexcept { return refuseSetting(); }
bool ZVWTManagerImpl::sortAndSize6(std::int64_t /*value*/) noexcept { return refuseSetting(); }
bool ZVWTManagerImpl::sortAndSize7(bool /*value*/) noexcept { return refuseSetting(); }
