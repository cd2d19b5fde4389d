#include "wtstats/ZVWTStatistics.h"

#include <utility>

bool ZVWTStatistics::add(const char* name, const ZvbString& value) noexcept {
  Statistic statistic{.name = name, .value = value};
  const bool copied = !statistic.name.memoryShort() && !statistic.value.memoryShort();
  return copied && statistics_.append(std::move(statistic));
}

bool ZVWTStatistics::add(const char* name, std::int64_t value) noexcept {
  ZvbString digits;
  digits.assign(value);
  return add(name, digits);
}

ZvbString ZVWTStatistics::columnName(int index) noexcept {
  switch (index) {
    case 0:
      return "Statistic";
    case 1:
      return "Value";
    default:
      return {};
  }
}

ZvbString ZVWTStatistics::value(int index) noexcept {
  if (currentRow_ < 0 || currentRow_ >= size()) {
    return {};
  }
  const Statistic& statistic = statistics_[static_cast<std::size_t>(currentRow_)];
  switch (index) {
    case 0:
      return statistic.name;
    case 1:
      return statistic.value;
    default:
      return {};
  }
}

bool ZVWTStatistics::rowCount(std::int64_t* count) noexcept {
  *count = size();
  return true;
}

int ZVWTStatistics::next() noexcept {
  if (currentRow_ < size()) {
    ++currentRow_;
  }
  return currentRow_ < size() ? zvbCursorRow : zvbCursorEnd;
}

bool ZVWTStatistics::rewind() noexcept {
  currentRow_ = -1;
  return true;
}
