/// Writes rows as JSON lines: for each an object on a line of its own, without blanks.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "process/OutputBuffer.h"
#include "tables/FieldValue.h"
#include "tables/TableRows.h"

namespace zvwttool {

/// A number has all its digits, a date is a text as writeDate has it. JSON is UTF-8: other bytes of
/// names and texts become U+FFFD.
class JsonLinesWriter {
 public:
  /// The output outlives the writer. A Failure when columns share a name.
  JsonLinesWriter(OutputBuffer* output, const std::vector<TableRows::Column>& columns);

  /// The value of the row's next column. False when it has no text: a date outside the years 1 to
  /// 9999.
  [[nodiscard]] bool addValue(const ZvbDatavar& value);
  void endRow() {
    output_->append(rowEnd_);
    column_ = 0;
  }
  /// Names, and texts so far, that are no UTF-8.
  [[nodiscard]] std::int64_t changedTexts() const { return changedTexts_; }

 private:
  OutputBuffer* output_;
  std::vector<std::string> starts_;  // of a value: all that stands before it
  std::string_view rowEnd_;
  std::size_t column_ = 0;
  std::int64_t changedTexts_ = 0;
  ValueText valueText_;
};

}  // namespace zvwttool
