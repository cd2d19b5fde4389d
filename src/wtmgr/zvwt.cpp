#include "zvwt.h"

#include <new>

#include "wtmgr/ZVWTManagerImpl.h"

ZvWorkTableManager* zvwtCreateManager(const ZvbString& name, const ZvbString& directoryList,
                                      ZvbString* error) {
  auto* manager = new (std::nothrow) ZVWTManagerImpl(name, directoryList, error);
  if (manager != nullptr && error->length() != 0) {
    manager->release();
    return nullptr;
  }
  return manager;
}

bool zvwtGetTableSizes(ZvWorkTableManager* manager, const ZvbString& tableName,
                       ZvwtTableSizes* sizes, ZvbString* error) {
  return static_cast<ZVWTManagerImpl*>(manager)->getTableSizes(tableName, sizes, error);
}

bool zvwtCheckTable(ZvWorkTableManager* manager, const ZvbString& tableName, ZvwtFindingTaker taker,
                    void* context, std::int64_t* findings, ZvbString* error) {
  return static_cast<ZVWTManagerImpl*>(manager)->checkTable(tableName, taker, context, findings,
                                                            error);
}

bool zvwtCleanDirectories(ZvWorkTableManager* manager, std::int64_t leastAge, bool remove,
                          ZvwtOrphanTaker taker, void* context, ZvbString* error) {
  return static_cast<ZVWTManagerImpl*>(manager)->cleanDirectories(leastAge, remove, taker, context,
                                                                  error);
}

bool zvwtSetSortProgress(ZvWorkTableManager* manager, ZvDatafileSortCallback callback,
                         void* context, ZvbString* error) {
  return static_cast<ZVWTManagerImpl*>(manager)->setSortProgress(callback, context, error);
}
