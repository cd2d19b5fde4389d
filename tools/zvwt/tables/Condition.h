/// What a row has to be like to be wanted, as --where tells it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/ZvbDatavar.h"
#include "tables/FieldValue.h"

namespace zvwttool {

enum class Comparison {
  equal,
  unequal,
  less,
  lessOrEqual,
  greater,
  greaterOrEqual,
  contains,
  isNull,
  isNotNull
};

struct ConditionParts {
  std::string column;
  Comparison comparison;
  std::string value;  ///< without what stands around it: blanks, or a pair of quotes
};

/// Reads COLUMN, one of = != < <= > >= ~ and a value, or COLUMN is null, or COLUMN is not null.
/// Blanks around the sign do not count. Columns may have signs in their names: the longest column
/// counts. A column that the table has not, or anything else, is a failure.
[[nodiscard]] ConditionParts readCondition(const std::string& text,
                                           const std::vector<std::string>& columnsOfTable);

class Condition {
 public:
  /// Fails unless the value is one of the column's type.
  Condition(const ConditionParts& parts, zvbType type);

  /// Whether a value of the column satisfies it. A null satisfies no comparison.
  [[nodiscard]] bool holdsFor(const ZvbDatavar& value);

 private:
  [[nodiscard]] bool holdsForOrder(int order) const;

  Comparison comparison_;
  std::string text_;  // to be contained
  ZvbDatavar value_;  // to be compared with
  ValueText valueText_;
};

}  // namespace zvwttool
