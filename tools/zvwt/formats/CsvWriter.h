/// Writes rows as CSV that reads back as the same table.
///
/// A header line, unless the form has none, then the rows. A null is the form's text for it,
/// without quotes, and an empty text is `""`; otherwise a field has quotes only where it is that
/// text or contains the delimiter, a quote, CR or LF. Dates are written as writeDate does.
#pragma once

#include <array>
#include <string_view>

#include "formats/CsvForm.h"
#include "process/OutputBuffer.h"
#include "tables/FieldValue.h"

namespace zvwttool {

class CsvWriter {
 public:
  /// The output and the form outlive the writer.
  CsvWriter(OutputBuffer* output, const CsvForm& form);

  void addName(std::string_view name);
  /// False when the value has no text: a date outside the years 1 to 9999.
  [[nodiscard]] bool addValue(const ZvbDatavar& value);
  void endRow() {
    output_->append(rowEnd_);
    atRowStart_ = true;
  }

 private:
  void separate() {
    if (!atRowStart_) {
      output_->append(form_->delimiter);
    }
    atRowStart_ = false;
  }
  [[nodiscard]] bool needsQuotes(std::string_view text) const;
  void addText(std::string_view text);
  void addQuoted(std::string_view text);

  OutputBuffer* output_;
  const CsvForm* form_;
  std::string_view rowEnd_;
  std::array<bool, 256> isSpecial_{};  // for each byte, whether a field with it has quotes
  bool numbersMayNeedQuotes_;          // and dates and so on
  ValueText valueText_;
  bool atRowStart_ = true;
  bool atFirstByte_ = true;  // of the whole output
};

}  // namespace zvwttool
