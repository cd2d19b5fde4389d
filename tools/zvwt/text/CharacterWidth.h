/// What a character takes on a terminal.
#pragma once

#include <cstddef>

namespace zvwttool {

/// 2 columns for East Asian wide characters and emoji; 0 for what is put on the character before
/// it, such as accents, and for what is not seen; else 1. Control characters are not asked about.
[[nodiscard]] std::size_t characterWidth(char32_t code);

}  // namespace zvwttool
