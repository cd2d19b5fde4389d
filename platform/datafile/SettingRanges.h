/// The values that settings take, and how messages say so.
#pragma once

#include <cstdint>
#include <limits>

#include "datafile/SortSettings.h"

struct SettingRange {
  std::int64_t least;
  std::int64_t most;
  bool takesZero;
  const char* text;

  [[nodiscard]] constexpr bool takes(std::int64_t value) const noexcept {
    return (value >= least && value <= most) || (takesZero && value == 0);
  }
};

namespace settingRange {

inline constexpr std::int64_t noLimit = std::numeric_limits<std::int64_t>::max();

inline constexpr SettingRange memory = {smallestSortMemory, noLimit, true,
                                        "0 for the default, or 65536 bytes or more"};
inline constexpr SettingRange runsMergedAtOnce = {2, 256, false, "2 to 256"};
inline constexpr SettingRange workFileLimit = {0, noLimit, true,
                                               "0 for no limit, or a number of bytes"};
inline constexpr SettingRange readBuffer = {std::int64_t{4} << 10, std::int64_t{64} << 20, false,
                                            "4096 to 67108864 bytes"};

}  // namespace settingRange
