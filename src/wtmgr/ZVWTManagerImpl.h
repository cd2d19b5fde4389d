/// The object behind ZvWorkTableManager.
///
/// What it knows does not change after construction, so its operations may run on several threads
/// at once; every table object that it makes belongs to the one thread that uses it.
#pragma once

#include <memory>

#include "ZvWorkTableManager.h"
#include "base/ZvbString.h"
#include "datafile/ZvDatafileManager.h"
#include "fio/TempDirectories.h"
#include "lock/zv_lock.h"
#include "wtfile/SorterSource.h"
#include "wtfile/ZVWTFileImpl.h"
#include "wtmgr/KeyRegistry.h"
#include "zvwt.h"

class ZVWTManagerImpl final : public ZvWorkTableManager, private SorterSource {
 public:
  /// Leaves a text in *error, and an object fit only to be destroyed, when something fails.
  ZVWTManagerImpl(const ZvbString& name, const ZvbString& directoryList, ZvbString* error) noexcept;
  ZVWTManagerImpl(const ZVWTManagerImpl&) = delete;
  ZVWTManagerImpl& operator=(const ZVWTManagerImpl&) = delete;
  ~ZVWTManagerImpl() override;

  bool sortAndSize0(std::int64_t value) noexcept override;
  bool sortAndSize1(bool value) noexcept override;
  bool sortAndSize2(bool value) noexcept override;
  bool sortAndSize3(bool value) noexcept override;
  bool sortAndSize4(std::int32_t value) noexcept override;
  bool sortAndSize5(std::int64_t value) noexcept override;
  bool sortAndSize6(std::int64_t value) noexcept override;
  bool sortAndSize7(bool value) noexcept override;
  bool appendTable(const ZvbString& targetName, const ZvbString& sourceName, bool alreadyEnqueued,
                   ZvbString* error) noexcept override;
  bool appendTable(const ZvbString& targetName, const ZvbString& sourceName,
                   ZvbString* error) noexcept override;
  bool copyIntoTable(ZvWorkTableFile* target, ZvWorkTableManager* sourceManager,
                     const ZvbString& sourceName, ZvbString* error) noexcept override;
  ZvWorkTableFile* copyTable(std::int64_t maxElementSize, ZvWorkTableManager* sourceManager,
                             const ZvbString& sourceName, ZvbString* error) noexcept override;
  ZvWorkTableFile* copyTable(std::int64_t maxElementSize, const ZvbString& sourceManagerName,
                             const ZvbString& sourceName, ZvbString* error) noexcept override;
  ZvWorkTableFile* createTable(int columnCount, int sortKeyCount, std::int64_t maxElementSize,
                               ZvbString* error) noexcept override;
  ZvWorkTableFile* createTable(int columnCount, std::int64_t maxElementSize,
                               ZvbString* error) noexcept override;
  void dequeue(const ZvbString& key) noexcept override;
  bool enqueue(const ZvbString& key, ZvbString* error) noexcept override;
  ZvbString getName() noexcept override;
  ZvbString getDirectoryList() noexcept override;
  ZvbString getLastError() noexcept override;
  ZvWorkTableFile* openTable(const ZvbString& name, int count, const int* numbers,
                             const RowRange* range, bool readBackwards,
                             ZvbString* error) noexcept override;
  ZvWorkTableFile* openTable(const ZvbString& name, int count, const ZvbString* names,
                             const RowRange* range, bool readBackwards,
                             ZvbString* error) noexcept override;
  ZvWorkTableFile* openTable(const ZvbString& nameOrUri, bool readBackwards,
                             ZvbString* error) noexcept override;
  bool partitionTable(const ZvbString& nameOrUri, int* partCount, RowRange* ranges,
                      ZvbString* error) noexcept override;
  void release() noexcept override;
  bool deleteTable(const ZvbString& name, ZvbString* error) noexcept override;

  [[nodiscard]] bool setSortProgress(ZvDatafileSortCallback callback, void* context,
                                     ZvbString* error) noexcept;
  [[nodiscard]] bool getTableSizes(const ZvbString& name, ZvwtTableSizes* sizes,
                                   ZvbString* error) noexcept;
  [[nodiscard]] bool checkTable(const ZvbString& name, ZvwtFindingTaker taker, void* context,
                                std::int64_t* findings, ZvbString* error) const noexcept;
  [[nodiscard]] bool cleanDirectories(std::int64_t leastAge, bool remove, ZvwtOrphanTaker taker,
                                      void* context, ZvbString* error) const noexcept;

  /// Entry `index` of the directories; an empty text when there is none.
  [[nodiscard]] ZvbString getDirectory(int index) const noexcept;
  [[nodiscard]] int directoryCount() const noexcept { return directories_.count(); }

 private:
  using Table = std::unique_ptr<ZVWTFileImpl>;

  void resolveDirectoryList() noexcept;
  Table makeTable(ZvbString* error) noexcept;
  template <typename Opener>
  Table openTableBy(const Opener& opener, ZvbString* error) noexcept;
  Table openWithoutColumns(const ZvbString& name, ZvbString* error) noexcept;
  static Table openSource(ZvWorkTableManager* sourceManager, const ZvbString& sourceName,
                          ZvbString* error) noexcept;
  static bool copyRows(ZVWTFileImpl& target, ZVWTFileImpl& source, ZvbString* error) noexcept;

  SorterHandle makeSorter(std::span<const ColumnDefinition> columns,
                          ZvbString* error) noexcept override;
  template <typename Use>
  bool useDatafileManager(const Use& use, ZvbString* error) noexcept;
  template <typename Apply>
  bool applySetting(const Apply& apply) noexcept;

  ZvbString uuid_;
  ZvbString name_;
  ZvbString directoryList_;
  TempDirectories directories_;
  zvLockHandle registryLock_ = 0;
  KeyRegistry keys_;
  ZvbString lastError_;  // guarded by registryLock_
  struct ReleaseDatafileManager {
    void operator()(ZvDatafileManager* manager) const noexcept { manager->release(); }
  };
  /// Made at first need. Used by whoever holds the key uuid_.
  std::unique_ptr<ZvDatafileManager, ReleaseDatafileManager> datafileManager_;
};
