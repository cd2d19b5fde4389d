#include "formats/JsonWriter.h"

#include <array>
#include <charconv>

#include "formats/JsonText.h"

namespace zvwttool {

void JsonWriter::begin(char bracket) {
  separate();
  output_->append(bracket);
  ++depth_;
  isFirst_ = true;
}

void JsonWriter::end(char bracket) {
  --depth_;
  if (depth_ == 0 && !isFirst_) {
    output_->append('\n');
  }
  output_->append(bracket);
  isFirst_ = false;
  if (depth_ == 0) {
    output_->append('\n');
    isFirst_ = true;  // of the next document
  }
}

void JsonWriter::name(std::string_view text) {
  separate();
  (void)appendJsonText(text, output_);
  output_->append(": ");
  isNamed_ = true;
}

void JsonWriter::text(std::string_view text) {
  separate();
  (void)appendJsonText(text, output_);
}

void JsonWriter::number(std::int64_t number) {
  std::array<char, 24> digits{};
  const auto written = std::to_chars(digits.data(), digits.data() + digits.size(), number);
  literal({digits.data(), written.ptr});
}

void JsonWriter::literal(std::string_view text) {
  separate();
  output_->append(text);
}

void JsonWriter::member(std::string_view name, std::string_view text) {
  this->name(name);
  this->text(text);
}

void JsonWriter::member(std::string_view name, std::int64_t number) {
  this->name(name);
  this->number(number);
}

void JsonWriter::member(std::string_view name, std::optional<std::int64_t> number) {
  if (number.has_value()) {
    member(name, *number);
  } else {
    this->name(name);
    literal("null");
  }
}

void JsonWriter::separate() {
  if (isNamed_ || depth_ == 0) {
    isNamed_ = false;
    return;
  }
  if (depth_ == 1) {
    output_->append(isFirst_ ? "\n  " : ",\n  ");
  } else if (!isFirst_) {
    output_->append(", ");
  }
  isFirst_ = false;
}

}  // namespace zvwttool
