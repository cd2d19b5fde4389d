#include "text/NearName.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "base/ZvbString.h"
#include "text/DisplayText.h"

namespace zvwttool {
namespace {

constexpr std::size_t mostSlips = 2;

/// A name whose letters have one case, by its characters.
class FoldedName {
 public:
  explicit FoldedName(const std::string& name) : text_(name.size() * 2, '\0') {
    text_.resize(zvbFoldText(name, text_.data()));
    for (std::string_view rest = text_; !rest.empty();) {
      characters_.push_back(rest.substr(0, std::max<std::size_t>(characterSize(rest), 1)));
      rest.remove_prefix(characters_.back().size());
    }
  }
  FoldedName(const FoldedName&) = delete;
  FoldedName& operator=(const FoldedName&) = delete;

  [[nodiscard]] std::size_t size() const { return characters_.size(); }
  [[nodiscard]] std::string_view operator[](std::size_t index) const { return characters_[index]; }

 private:
  std::string text_;
  std::vector<std::string_view> characters_;
};

std::size_t difference(std::size_t left, std::size_t right) {
  return std::max(left, right) - std::min(left, right);
}

/// The Damerau-Levenshtein distance of two names of which no piece is edited twice. Row by row of
/// its table; a row tells the slips that make each beginning of `right` of one beginning of `left`.
std::size_t slipsBetween(const FoldedName& left, const FoldedName& right) {
  std::array<std::vector<std::size_t>, 3> rows;  // the one before the last, the last, this one
  rows.fill(std::vector<std::size_t>(right.size() + 1));
  for (std::size_t j = 0; j <= right.size(); ++j) {
    rows[1][j] = j;
  }
  for (std::size_t i = 1; i <= left.size(); ++i) {
    rows[2][0] = i;
    for (std::size_t j = 1; j <= right.size(); ++j) {
      const std::size_t replaced = rows[1][j - 1] + (left[i - 1] == right[j - 1] ? 0 : 1);
      rows[2][j] = std::min({rows[1][j] + 1, rows[2][j - 1] + 1, replaced});
      const bool changedPlaces =
          i > 1 && j > 1 && left[i - 1] == right[j - 2] && left[i - 2] == right[j - 1];
      if (changedPlaces) {
        rows[2][j] = std::min(rows[2][j], rows[0][j - 2] + 1);
      }
    }
    std::rotate(rows.begin(), rows.begin() + 1, rows.end());
  }
  return rows[1][right.size()];
}

}  // namespace

std::string nearest(const std::string& given, const std::vector<std::string>& known) {
  const FoldedName wanted(given);
  const std::string* best = nullptr;
  std::size_t limit = std::min(mostSlips + 1, (wanted.size() + 1) / 2);  // to stay below
  for (const std::string& name : known) {
    const FoldedName candidate(name);
    if (difference(wanted.size(), candidate.size()) >= limit) {
      continue;
    }
    const std::size_t slips = slipsBetween(wanted, candidate);
    if (slips < limit) {
      best = &name;
      limit = slips;
    }
  }
  return best != nullptr ? *best : "";
}

std::string didYouMean(const std::string& given, const std::vector<std::string>& known) {
  const std::string near = nearest(given, known);
  return near.empty() ? "" : "; did you mean " + quotedName(near) + '?';
}

}  // namespace zvwttool
