/// The sort and size settings that a program gives to whatever sorts for it.
#pragma once

#include <cstdint>

#include "base/zvb_export.h"

class ZVB_API ZvDatafileManagerSortAndSize {
 public:
  /// Each is true when the setting was taken.
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
