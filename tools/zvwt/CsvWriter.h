/// Writes rows as CSV that reads back as the same table.
///
/// A header line, then the rows, each ended by LF. A null is an empty field and an empty text `""`;
/// otherwise a field has quotes only where it contains a comma, a quote, CR or LF. Dates are
/// written as writeDate does.
#pragma once

#include <string_view>

#include "FieldValue.h"
#include "OutputBuffer.h"

namespace zvwttool {

class CsvWriter {
 public:
  explicit CsvWriter(OutputBuffer* output) : output_(output) {}

  void addName(std::string_view name);
  /// False when the value has no text: a date outside the years 1 to 9999.
  [[nodiscard]] bool addValue(const ZvbDatavar& value);
  void endRow() {
    output_->append('\n');
    atRowStart_ = true;
  }

 private:
  void separate() {
    if (!atRowStart_) {
      output_->append(',');
    }
    atRowStart_ = false;
  }
  void addText(std::string_view text);
  void addQuoted(std::string_view text);

  OutputBuffer* output_;
  ValueText valueText_;
  bool atRowStart_ = true;
  bool atFirstByte_ = true;  // of the whole output
};

}  // namespace zvwttool
