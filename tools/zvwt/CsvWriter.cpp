#include "CsvWriter.h"

#include <algorithm>

namespace zvwttool {
namespace {

bool isSpecial(char byte) { return byte == ',' || byte == '"' || byte == '\n' || byte == '\r'; }

bool needsQuotes(std::string_view text) {
  return text.empty() || std::any_of(text.begin(), text.end(), isSpecial);
}

}  // namespace

void CsvWriter::addName(std::string_view name) {
  // Without quotes a reader takes these bytes for a mark and not for part of the name.
  constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
  const bool hidesMark = atFirstByte_ && name.starts_with(byteOrderMark);
  atFirstByte_ = false;
  separate();
  if (hidesMark) {
    addQuoted(name);
  } else {
    addText(name);
  }
}

bool CsvWriter::addValue(const ZvbDatavar& value) {
  separate();
  if (value.isNull()) {
    return true;
  }
  const std::string_view text = valueText_.of(value);
  if (value.type() == zvbTypeString) {
    addText(text);
    return true;
  }
  output_->append(text);
  return !text.empty();
}

void CsvWriter::addText(std::string_view text) {
  if (needsQuotes(text)) {
    addQuoted(text);
  } else {
    output_->append(text);
  }
}

void CsvWriter::addQuoted(std::string_view text) {
  output_->append('"');
  for (std::size_t quote = text.find('"'); quote != std::string_view::npos;
       quote = text.find('"')) {
    output_->append(text.substr(0, quote + 1));
    output_->append('"');
    text.remove_prefix(quote + 1);
  }
  output_->append(text);
  output_->append('"');
}

}  // namespace zvwttool
