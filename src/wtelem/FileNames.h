/// The names of a table's files: a prefix that tells the kind, and 16 random lower-case letters and
/// digits. See docs/file-format.md.
#pragma once

#include <algorithm>
#include <string_view>

namespace fileNames {

inline constexpr const char* tablePrefix = "zvwt_";  // of the catalogue
inline constexpr const char* dataPrefix = "zvwte_";
inline constexpr const char* indexPrefix = "zvwtei_";

inline constexpr int randomCharacters = 16;

/// Bytes of a name with this prefix, terminator included.
constexpr int sizeOf(const char* prefix) noexcept {
  return static_cast<int>(std::string_view(prefix).size()) + randomCharacters + 1;
}

/// True for the prefix with 16 lower-case letters and digits behind it.
constexpr bool isOf(const char* prefix, std::string_view name) noexcept {
  const std::string_view start = prefix;
  return name.starts_with(start) && name.size() == start.size() + randomCharacters &&
         std::all_of(name.begin() + static_cast<std::ptrdiff_t>(start.size()), name.end(),
                     [](char character) {
                       return (character >= 'a' && character <= 'z') ||
                              (character >= '0' && character <= '9');
                     });
}

}  // namespace fileNames
