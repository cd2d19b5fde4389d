#include "text/CharacterWidth.h"

#include <algorithm>
#include <iterator>

#include "text/CharacterRanges.h"

namespace zvwttool {
namespace {

template <std::size_t count>
bool isIn(const CharacterRange (&ranges)[count], char32_t code) {
  const auto* const found = std::lower_bound(
      std::begin(ranges), std::end(ranges), code,
      [](const CharacterRange& range, char32_t sought) { return range.last < sought; });
  return found != std::end(ranges) && found->first <= code;
}

}  // namespace

std::size_t characterWidth(char32_t code) {
  if (code < withoutWidth[0].first) {
    return 1;
  }
  if (isIn(withoutWidth, code)) {
    return 0;
  }
  return isIn(wide, code) ? 2 : 1;
}

}  // namespace zvwttool
