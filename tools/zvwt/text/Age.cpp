#include "text/Age.h"

namespace zvwttool {

std::string shownAge(std::int64_t seconds) {
  struct Unit {
    std::int64_t seconds;
    const char* name;
  };
  constexpr Unit units[] = {{86400, "d"}, {3600, "h"}, {60, "m"}, {1, "s"}};
  const Unit* unit = units;
  while (unit->seconds > 1 && seconds < unit->seconds) {
    ++unit;
  }
  std::string text = std::to_string(seconds / unit->seconds) + unit->name;
  if (unit->seconds > 1) {
    const std::int64_t rest = seconds % unit->seconds / unit[1].seconds;
    text += ' ' + std::to_string(rest) + unit[1].name;
  }
  return text;
}

}  // namespace zvwttool
