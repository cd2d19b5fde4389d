/// The maker of sorters: holds the directories of their work files, their settings, and the columns
/// of the records that the next one is to sort.
///
///   setting                 type    range, 0 where it says so          default
///   0  memory for one sort  64-bit  bytes, 64 KiB or more; 0: default  64 MiB
///   1  second thread        bool    sort and merge beside the caller   true
///   2  ignore case          bool    texts compare without case         false
///   3  spread               bool    work files in all directories      true
///   4  runs merged at once  32-bit  2 to 256 spilled runs              16
///   5  work file limit      64-bit  bytes of one sort; 0: no limit     0
///   6  read buffer          64-bit  bytes per run, 4 KiB to 64 MiB     64 KiB
///   7  checksums            bool    spilled blocks are checked         true
///
/// Settings count for the sorters made after them. A value outside its range is refused, false, and
/// getErrorMessage() names the setting and the range. Memory wins over the other settings: read
/// buffers and the runs merged at once shrink until all fits.
///
/// Ownership: the caller frees the manager with release(); sorters that it has made live on without
/// it. Nothing throws. Thread rule: one thread at a time.
#pragma once

#include <cstdint>

#include "base/ZvbString.h"
#include "base/zvb_type.h"
#include "datafile/ZvDatafileManagerSortAndSize.h"
#include "datafile/ZvDatafileSortProgress.h"
#include "datafile/ZvDatafileSorter.h"

/// What a sorter is to do, given to createSorter together.
enum ZvDatafileSorterOption : std::uint32_t {
  zvDatafileTypedColumns = 0x80000000U,  ///< columns have their defined types; else all are texts
  zvDatafileWorkFiles = 0x40000000U,     ///< may use work files; else all must fit in memory
  zvDatafileKeepEqual = 0x10000000U,     ///< keeps records with equal keys; else only the first
};

class ZvDatafileManager : public ZvDatafileManagerSortAndSize {
 public:
  /// A sorter for records of the columns defined, with a copy of the definitions and settings, made
  /// of ZvDatafileSorterOption. Null when an option is unknown or memory is short.
  [[nodiscard]] virtual ZvDatafileSorter* createSorter(std::uint32_t options) = 0;
  /// The text of the last failure.
  [[nodiscard]] virtual ZvbString getErrorMessage() = 0;
  virtual void release() = 0;
  /// Describes a column, counted from 0. An unknown type counts as zvbTypeString. `size` in bytes
  /// is a hint: values are never cut to it.
  [[nodiscard]] virtual bool defineColumn(std::int32_t column, zvbType type,
                                          std::int32_t size) = 0;
  /// Begins the description of new records: `count` columns, texts until they are defined.
  [[nodiscard]] virtual bool setColumnCount(std::int32_t count) = 0;
  /// Has the sorters made from now on report to `callback`; null: to nobody.
  virtual void setProgress(ZvDatafileSortCallback callback, void* context) = 0;

 protected:
  ~ZvDatafileManager() = default;
};

/// A manager whose sorters keep their work files in the directories of the list, which are parted
/// by np_dir_listsep. Null with the reason in *error when memory is short. May be called from any
/// thread.
[[nodiscard]] ZvDatafileManager* zvDatafileManagerCreate(const ZvbString& directoryList,
                                                         ZvbString* error) noexcept;
