/// Texts as a terminal can take them.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zvwttool {

/// The text on one line of at most `limit` columns (1 or more): control characters, also those of
/// the direction of writing, and bytes that are no UTF-8 are escaped, and what is too long ends
/// with an ellipsis. So is what has no width, from the ninth on that is put on one character: a
/// few columns cannot take any number of bytes.
[[nodiscard]] std::string displayText(std::string_view text, std::size_t limit);

/// The bytes at the front of the text that displayText() with this limit, or a lower one, reads.
[[nodiscard]] std::size_t displayedSize(std::string_view text, std::size_t limit);

/// The bytes of the valid UTF-8 character at the front of a text that is not empty; 0 for none.
[[nodiscard]] std::size_t characterSize(std::string_view text);

/// The code point of a valid character.
[[nodiscard]] char32_t characterCode(std::string_view character);

/// What commands a terminal, begins a line, or has the text around it stand from right to left.
[[nodiscard]] bool isControl(char32_t code);

/// A column's name in quotes, as messages give it.
[[nodiscard]] std::string quotedName(std::string_view name);

/// The columns that a text of valid UTF-8 without control characters takes.
[[nodiscard]] std::size_t displayWidth(std::string_view text);

}  // namespace zvwttool
