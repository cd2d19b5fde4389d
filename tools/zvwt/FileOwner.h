/// Who owns files, by name.
#pragma once

#include <cstdint>
#include <string>

namespace zvwttool {

/// The user's name, or the number where there is none.
[[nodiscard]] std::string ownerName(std::uint32_t owner);

}  // namespace zvwttool
