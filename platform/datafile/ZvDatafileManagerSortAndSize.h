/// The sort and size settings that a program gives to whatever sorts for it.
///
///   setting                 type    range                              default
///   0  memory for one sort  64-bit  65536 bytes or more; 0: default    64 MiB
///   1  second thread        bool    sort and merge beside the caller   true
///   2  ignore case          bool    texts compare without case         false
///   3  spread               bool    work files in all directories, in  true
///                                   turn; else in the first
///   4  runs merged at once  32-bit  2 to 256 runs in work files        128
///   5  work file limit      64-bit  bytes of one sort; 0: no limit     0
///   6  read buffer          64-bit  bytes per run, 4096 to 67108864    64 KiB
///   7  checksums            bool    work files are checked             true
///
/// Memory is a ceiling for the records of a sort and all its buffers; only records larger than a
/// quarter of it go beyond, as two have to be compared and one be handed over. It wins over the
/// other settings: read buffers and the runs merged at once shrink until all fits. Settings count
/// for the sorts that begin after them.
#pragma once

#include <cstdint>

#include "base/zvb_export.h"

class ZVB_API ZvDatafileManagerSortAndSize {
 public:
  /// Each is true when the setting was taken. A value outside its range is refused, with a text
  /// that names the setting and the range, and the old value stays.
  [[nodiscard]] virtual bool sortAndSize0(std::int64_t value) = 0;
  [[nodiscard]] virtual bool sortAndSize1(bool value) = 0;
  [[nodiscard]] virtual bool sortAndSize2(bool value) = 0;
  [[nodiscard]] virtual bool sortAndSize3(bool value) = 0;
  [[nodiscard]] virtual bool sortAndSize4(std::int32_t value) = 0;
  [[nodiscard]] virtual bool sortAndSize5(std::int64_t value) = 0;
  [[nodiscard]] virtual bool sortAndSize6(std::int64_t value) = 0;
  [[nodiscard]] virtual bool sortAndSize7(bool value) = 0;

 protected:
  ~ZvDatafileManagerSortAndSize() = default;
};
