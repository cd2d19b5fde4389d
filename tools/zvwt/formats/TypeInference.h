/// Finds the types of CSV columns without ever changing what their fields say.
///
/// A type fits a column when every field that is not null would be exported as it was read: `7` is
/// an int and `007` is not, `1.5` is a real and `1.50` is not. Of the types that fit, the first of
/// bool, int, real, date is taken, else string. A column of nulls alone is a string.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "base/zvb_type.h"

namespace zvwttool {

class TypeInference {
 public:
  explicit TypeInference(std::size_t columnCount);

  /// Takes a field that is not null into account; `line` is where it begins.
  void observe(std::size_t column, std::string_view text, std::int64_t line) {
    if (columns_[column].candidates != 0) {
      narrowColumn(&columns_[column], text, line);
    }
  }
  [[nodiscard]] zvbType typeOf(std::size_t column) const;
  /// The field that left nothing but string for a column that looked like another one up to there,
  /// or because of that field: `line 3: "007"`. Empty when there is nothing to wonder at.
  [[nodiscard]] std::string reasonFor(std::size_t column) const;

 private:
  struct Column {
    unsigned candidates;  // a bit for each type that still fits; 0 leaves string
    std::int64_t line;    // of the field that left string, 0 for none worth telling
    std::string field;
  };

  static void narrowColumn(Column* column, std::string_view text, std::int64_t line);
  [[nodiscard]] static unsigned narrow(std::string_view text, unsigned candidates);

  std::vector<Column> columns_;
};

}  // namespace zvwttool
