/// Finds the types of CSV columns without ever changing what their fields say.
///
/// A type fits a column when every field that is not null would be exported as it was read: `7` is
/// an int and `007` is not, `1.5` is a real and `1.50` is not. Of the types that fit, the first of
/// bool, int, real, date is taken, else string. A column of nulls alone is a string.
#pragma once

#include <string_view>
#include <vector>

#include "base/zvb_type.h"

namespace zvwttool {

class TypeInference {
 public:
  explicit TypeInference(std::size_t columnCount);

  /// Takes a field that is not null into account.
  void observe(std::size_t column, std::string_view text) {
    if (candidates_[column] != 0) {
      candidates_[column] = narrow(text, candidates_[column]);
    }
  }
  [[nodiscard]] zvbType typeOf(std::size_t column) const;

 private:
  [[nodiscard]] static unsigned narrow(std::string_view text, unsigned candidates);

  std::vector<unsigned> candidates_;  // a bit for each type that still fits; 0 leaves string
};

}  // namespace zvwttool
