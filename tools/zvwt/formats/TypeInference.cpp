#include "formats/TypeInference.h"

#include <charconv>

#include "tables/FieldValue.h"
#include "text/DisplayText.h"

namespace zvwttool {
namespace {

constexpr unsigned boolean = 1;
constexpr unsigned integer = 2;
constexpr unsigned real = 4;
constexpr unsigned date = 8;
constexpr unsigned unseen = boolean | integer | real | date;  // no single field fits all of them

bool isBoolean(std::string_view text) { return text == "true" || text == "false"; }

bool isCanonicalInteger(std::string_view text) {
  const std::string_view digits = text.substr(text.starts_with('-') ? 1 : 0);
  if (digits.empty() || (digits.front() == '0' && text != "0")) {
    return false;
  }
  std::int64_t number = 0;
  const char* end = text.data() + text.size();
  const auto [stop, status] = std::from_chars(text.data(), end, number);
  return status == std::errc() && stop == end;
}

bool isCanonicalReal(std::string_view text) {
  bool failed = false;
  char written[ZvbReal::textCapacity];
  const ZvbReal number = ZvbReal::fromText(text, &failed);
  return !failed && std::string_view(written, number.toText(written)) == text;
}

bool isCanonicalDate(std::string_view text) {
  bool failed = false;
  char written[ZvbDate::textCapacity];
  const ZvbDate value = ZvbDate::fromText(text, &failed);
  return !failed && std::string_view(written, writeDate(value, written)) == text;
}

/// As people see it: a number or a date, in whatever form.
bool looksLikeNumber(std::string_view text) {
  return text.find_first_of("0123456789") != std::string_view::npos &&
         text.find_first_not_of("0123456789 +-.,:/'eET") == std::string_view::npos;
}

}  // namespace

TypeInference::TypeInference(std::size_t columnCount) : columns_(columnCount, {unseen, 0, ""}) {}

void TypeInference::narrowColumn(Column* column, std::string_view text, std::int64_t line) {
  const unsigned before = column->candidates;
  column->candidates = narrow(text, before);
  if (column->candidates == 0 && (before != unseen || looksLikeNumber(text))) {
    constexpr std::size_t more = 100;  // than are shown
    column->field = text.substr(0, more);
    column->line = line;
  }
}

std::string TypeInference::reasonFor(std::size_t column) const {
  const Column& known = columns_[column];
  return known.line == 0 ? ""
                         : "line " + std::to_string(known.line) + ": " + quotedName(known.field);
}

unsigned TypeInference::narrow(std::string_view text, unsigned candidates) {
  if ((candidates & (integer | real)) != 0 && isCanonicalInteger(text)) {
    return candidates & (integer | real);
  }
  unsigned left = 0;
  if ((candidates & boolean) != 0 && isBoolean(text)) {
    left |= boolean;
  }
  if ((candidates & real) != 0 && isCanonicalReal(text)) {
    left |= real;
  }
  if ((candidates & date) != 0 && isCanonicalDate(text)) {
    left |= date;
  }
  return left;
}

zvbType TypeInference::typeOf(std::size_t column) const {
  const unsigned left = columns_[column].candidates;
  if (left == unseen) {
    return zvbTypeString;
  }
  if ((left & boolean) != 0) {
    return zvbTypeBoolean;
  }
  if ((left & integer) != 0) {
    return zvbTypeInteger;
  }
  if ((left & real) != 0) {
    return zvbTypeReal;
  }
  return (left & date) != 0 ? zvbTypeDate : zvbTypeString;
}

}  // namespace zvwttool
