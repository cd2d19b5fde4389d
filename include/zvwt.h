/// Work tables: typed rows on disk for a while. This is the header to include.
///
///   ZvbString error;
///   ZvWorkTableManager* manager = zvwtCreateManager("reports", "", &error);
///   ZvWorkTableFile* table = manager->createTable(2, 0, &error);
///
/// See ZvWorkTableManager.h for what a manager does, ZvWorkTableFile.h for what a table does, and
/// ZvWorkTableCursor.h for the way to use a table as a cursor. ZvwtHandles.h has owners for all of
/// these objects and loops over rows.
#pragma once

#include "ZvWorkTableCursor.h"
#include "ZvWorkTableFile.h"
#include "ZvWorkTableManager.h"
#include "ZvWorkTableStringCursor.h"
#include "ZvWorkTableStringZVWFCursor.h"
#include "base/ZvbString.h"
#include "base/zvb_export.h"
#include "datafile/ZvDatafileSortProgress.h"

/// Makes a manager.
///
/// `directoryList` names the directories for its tables, separated by np_dir_listsep. Given empty,
/// the configuration option "BASE/TEMP" is used, else the system's temporary directory. An empty
/// entry in the list is the current directory.
/// `*error` must be empty. Returns null with the reason in *error, or with *error still empty when
/// the manager itself could not be allocated. The caller frees the manager with release().
/// May be called from any thread.
extern "C" ZVB_API ZvWorkTableManager* zvwtCreateManager(const ZvbString& name,
                                                         const ZvbString& directoryList,
                                                         ZvbString* error);

/// Cursors whose tables the manager creates, opens and deletes. The manager outlives them. Null
/// when memory is short; the caller frees a cursor with release(). May be called from any thread.
[[nodiscard]] ZVB_API ZvWorkTableCursor* zvwtCreateCursor(ZvWorkTableManager* manager) noexcept;
[[nodiscard]] ZVB_API ZvWorkTableStringCursor* zvwtCreateStringCursor(
    ZvWorkTableManager* manager) noexcept;
[[nodiscard]] ZVB_API ZvWorkTableStringZVWFCursor* zvwtCreateStringZVWFCursor(
    ZvWorkTableManager* manager) noexcept;

/// What a table takes on disk.
struct ZvwtTableSizes {
  int elementCount = 0;
  std::int64_t rowCount = 0;
  std::int64_t maxElementSize = 0;  ///< bytes of element data; 0 or less is no limit
  std::int64_t catalogueBytes = 0;
  std::int64_t dataBytes = 0;   ///< of all elements
  std::int64_t indexBytes = 0;  ///< of all elements
};

/// Finds out what a closed table takes on disk. False with the reason in *error: as for openTable.
/// May be called from any thread.
extern "C" ZVB_API bool zvwtGetTableSizes(ZvWorkTableManager* manager, const ZvbString& tableName,
                                          ZvwtTableSizes* sizes, ZvbString* error);

/// Has the sorts of a manager's tables report to `callback`, with `context` handed through; null:
/// to nobody. Counts for tables whose first row is written after it. The callback runs on the
/// thread that writes or closes the table; when it returns false the sort is cancelled: writeRow or
/// close fails and says so, and close removes the table. False with the reason in *error when
/// memory is short. May be called from any thread.
extern "C" ZVB_API bool zvwtSetSortProgress(ZvWorkTableManager* manager,
                                            ZvDatafileSortCallback callback, void* context,
                                            ZvbString* error);
