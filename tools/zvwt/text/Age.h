/// How old files are.
#pragma once

#include <cstdint>
#include <string>

namespace zvwttool {

/// An age in seconds as people read it: its two largest units, such as 2d 5h.
[[nodiscard]] std::string shownAge(std::int64_t seconds);

}  // namespace zvwttool
