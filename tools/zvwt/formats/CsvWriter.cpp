#include "formats/CsvWriter.h"

#include <algorithm>

namespace zvwttool {
namespace {

constexpr std::string_view specialBytes = "\"\r\n";

unsigned char code(char byte) { return static_cast<unsigned char>(byte); }

/// True when the texts of values that are no texts may contain the byte.
bool isInNumbers(char byte) {
  return (byte >= '0' && byte <= '9') ||
         std::string_view("truefalsTE:.+-").find(byte) != std::string_view::npos;
}

}  // namespace

CsvWriter::CsvWriter(OutputBuffer* output, const CsvForm& form)
    : output_(output),
      form_(&form),
      rowEnd_(form.endsWithCr ? "\r\n" : "\n"),
      numbersMayNeedQuotes_(!form.null.empty() || isInNumbers(form.delimiter)) {
  isSpecial_[code(form.delimiter)] = true;
  for (const char byte : specialBytes) {
    isSpecial_[code(byte)] = true;
  }
}

void CsvWriter::addName(std::string_view name) {
  separate();
  addText(name);
}

bool CsvWriter::addValue(const ZvbDatavar& value) {
  separate();
  if (value.isNull()) {
    output_->append(form_->null);
    atFirstByte_ = false;
    return true;
  }
  const std::string_view text = valueText_.of(value);
  if (value.type() == zvbTypeString || numbersMayNeedQuotes_) {
    addText(text);
  } else {
    output_->append(text);
    atFirstByte_ = false;
  }
  return !text.empty() || value.type() == zvbTypeString;
}

bool CsvWriter::needsQuotes(std::string_view text) const {
  return text.empty() || text == form_->null ||
         // Without quotes a reader takes these bytes for no part of the text.
         (atFirstByte_ && text.starts_with(byteOrderMark)) ||
         std::any_of(text.begin(), text.end(),
                     [this](char byte) { return isSpecial_[code(byte)]; });
}

void CsvWriter::addText(std::string_view text) {
  const bool isQuoted = needsQuotes(text);
  atFirstByte_ = false;
  if (isQuoted) {
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
