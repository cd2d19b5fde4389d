#include "formats/JsonLinesWriter.h"

#include <unordered_set>

#include "formats/JsonText.h"
#include "process/Failure.h"
#include "text/DisplayText.h"

namespace zvwttool {

JsonLinesWriter::JsonLinesWriter(OutputBuffer* output,
                                 const std::vector<TableRows::Column>& columns)
    : output_(output), rowEnd_(columns.empty() ? "{}\n" : "}\n") {
  std::unordered_set<std::string> names;
  for (const TableRows::Column& column : columns) {
    std::string start = ",";
    changedTexts_ += appendJsonText(column.name, &start) ? 0 : 1;
    start += ':';
    if (!names.insert(start).second) {
      throw Failure(ExitCode::usage, "two columns would have the name " + quotedName(column.name) +
                                         ", which no object of JSON can have");
    }
    starts_.push_back(std::move(start));
  }
  if (!starts_.empty()) {
    starts_.front().front() = '{';
  }
}

bool JsonLinesWriter::addValue(const ZvbDatavar& value) {
  output_->append(starts_[column_++]);
  if (value.isNull()) {
    output_->append("null");
    return true;
  }
  const std::string_view text = valueText_.of(value);
  if (value.type() == zvbTypeString) {
    changedTexts_ += appendJsonText(text, output_) ? 0 : 1;
    return true;
  }
  const std::string_view quote = value.type() == zvbTypeDate ? "\"" : "";
  output_->append(quote);
  output_->append(text);
  output_->append(quote);
  return !text.empty();
}

}  // namespace zvwttool
