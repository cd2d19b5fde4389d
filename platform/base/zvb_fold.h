/// The one case folding of the library, fixed and the same under every locale.
///
/// It is Unicode's simple folding, one code point to one code point, for the blocks below U+0530
/// that have letters in both cases by a plain rule: ASCII, Latin-1, Latin Extended-A, Greek and
/// Cyrillic. The sharp s, the dotted capital and the dotless small i stay as they are; so does
/// everything else. Internal to the base library; may be called from any thread.
#pragma once

#include <array>
#include <cstdint>

constexpr char32_t zvbFoldEnd = 0x530;

/// What each code point below zvbFoldEnd folds to.
extern const std::array<std::uint16_t, zvbFoldEnd> zvbFoldTable;

inline char32_t zvbFold(char32_t code) noexcept {
  return code < zvbFoldEnd ? zvbFoldTable[code] : code;
}
