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
/// entry in the list is the current directory. Directories are first looked at when a table is made
/// or opened. `name` is one by which copyTable finds this manager; files do not have it.
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

/// Something in a table's files that is not as it has to be.
struct ZvwtFinding {
  const char* file;     ///< its path; of a file that is missing its name
  std::int64_t offset;  ///< in bytes, where in the file
  /// A sentence for people: what is expected there and what is found. Rows and columns in it count
  /// from 0.
  const char* rule;
};

/// Is given one finding at a time and the caller's context. The finding and its texts are valid
/// until it returns; false ends the check. Must not throw.
using ZvwtFindingTaker = bool (*)(const ZvwtFinding* finding, void* context);

/// Holds the files of a closed table against all that is known of them: catalogue, rows and index,
/// every byte, as docs/file-format.md has it. Texts are not looked at beyond their terminators: any
/// bytes may be stored.
///
/// The files are read once and never changed, with memory for the catalogue's columns and a few
/// buffers, whatever the files say. A finding does not end the check, but what cannot be understood
/// because of it is not looked at; after 100 findings it ends. Bytes behind the last counted row
/// are none: a killed writer leaves them, and the next append removes them.
///
/// `taker`, which may be null, is called with `context` on the calling thread. True when the check
/// could be made, with the number of findings in *findings: 0, the table is sound. False with the
/// reason in *error when it could not: 1353 or 1784 there is no such table or a file cannot be
/// opened, 1301 a file cannot be read, 29 memory is short; *findings then counts what was found
/// before. May be called from any thread; nobody may append to the table meanwhile.
extern "C" ZVB_API bool zvwtCheckTable(ZvWorkTableManager* manager, const ZvbString& tableName,
                                       ZvwtFindingTaker taker, void* context,
                                       std::int64_t* findings, ZvbString* error);

/// A file that a killed process has left behind, or one because of which others are kept.
struct ZvwtOrphan {
  const char* path;
  std::int64_t size;          ///< in bytes
  std::int64_t modifiedTime;  ///< nanoseconds since 1970-01-01 UTC
  std::uint32_t owner;        ///< the number of the user
  const char* problem;        ///< null, or a sentence for people: why it was not removed
};

/// Is given one file at a time and the caller's context. The file and its texts are valid until it
/// returns; false ends the cleaning. Must not throw.
using ZvwtOrphanTaker = bool (*)(const ZvwtOrphan* orphan, void* context);

/// Removes the files that killed processes have left in the manager's directories; those of living
/// processes, in this program and others, and all other files are never touched.
///
/// A file is one of them when it has a name that this library gives, is a regular file, is not
/// locked by a process and has not been changed for `leastAge` seconds, 0 to 2^31 - 1, and when
/// - an element's file is named by no catalogue in these directories, and was made `leastAge`
///   seconds before the oldest table that is being written there meanwhile. Where the system does
///   not tell when files were made, a table that is being written keeps all element files;
/// - a catalogue was never written by a close;
/// - a work file of a sort has kept its name.
/// A damaged catalogue keeps all element files; `taker` is told. Files that this user may not write
/// are left.
///
/// **The manager's directories must be all those that the tables named there have elements in**: a
/// catalogue elsewhere, or renamed to one of no such name, would not be seen, and its elements
/// taken for orphans. `leastAge` has to be longer than clocks differ or may be set back. An append
/// that begins at the moment in which its table is looked at may be told that the table is in use.
///
/// With `remove` false the files are found only. `taker`, which may be null, is called with
/// `context` on the calling thread. False with the reason in *error when it cannot be told what is
/// to be removed: 1352 or 1353 a directory or a catalogue cannot be opened, 29 memory is short; no
/// element file has then been removed. May be called from any thread.
extern "C" ZVB_API bool zvwtCleanDirectories(ZvWorkTableManager* manager, std::int64_t leastAge,
                                             bool remove, ZvwtOrphanTaker taker, void* context,
                                             ZvbString* error);

/// Has the sorts of a manager's tables report to `callback`, with `context` handed through; null:
/// to nobody. Counts for tables whose first row is written after it. The callback runs on the
/// thread that writes or closes the table; when it returns false the sort is cancelled: writeRow or
/// close fails and says so, and close removes the table. False with the reason in *error when
/// memory is short. May be called from any thread.
extern "C" ZVB_API bool zvwtSetSortProgress(ZvWorkTableManager* manager,
                                            ZvDatafileSortCallback callback, void* context,
                                            ZvbString* error);
