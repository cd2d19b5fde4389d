/// The maker of sorters: holds the directories of their work files, their settings, and the columns
/// of the records that the next one is to sort.
///
/// The settings stand in ZvDatafileManagerSortAndSize.h; getErrorMessage() tells why one was
/// refused. Ownership: the caller frees the manager with release(); sorters that it has made live
/// on without it. Nothing throws. Thread rule: one thread at a time.
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
  [[nodiscard]] virtual bool defineColumn(std::int32_t column, zvbType type, std::int32_t size) = 0;
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
