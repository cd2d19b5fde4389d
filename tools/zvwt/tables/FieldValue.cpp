#include "tables/FieldValue.h"

#include <charconv>
#include <cstdint>

namespace zvwttool {
namespace {

bool readInteger(std::string_view text, ZvbDatavar* value) {
  std::int64_t number = 0;
  const char* end = text.data() + text.size();
  const auto [stop, status] = std::from_chars(text.data(), end, number);
  if (status == std::errc() && stop == end) {
    value->assign(number);
    return true;
  }
  bool failed = false;
  const ZvbReal real = ZvbReal::fromText(text, &failed);
  number = failed ? 0 : real.asInt64(&failed);
  if (failed || real.compare(ZvbReal::fromInt64(number)) != 0) {
    return false;
  }
  value->assign(number);
  return true;
}

bool readReal(std::string_view text, ZvbDatavar* value) {
  bool failed = false;
  value->assign(ZvbReal::fromText(text, &failed));
  return !failed;
}

/// A text that is empty may lie nowhere, which would make a null of it.
void assignText(std::string_view text, ZvbDatavar* value) {
  value->assign(text.empty() ? "" : text.data(), text.size());
}

/// Whether a date has more than the milliseconds that are kept of it.
bool hasFinerTime(std::string_view text) {
  constexpr std::size_t keptDigits = 3;
  const std::size_t point = text.find('.');
  return point != std::string_view::npos &&
         text.find_first_of("123456789", point + 1 + keptDigits) != std::string_view::npos;
}

bool readDate(std::string_view text, ZvbDatavar* value) {
  bool failed = hasFinerTime(text);
  value->assign(ZvbDate::fromText(text, &failed));
  return !failed;
}

bool readBoolean(std::string_view text, ZvbDatavar* value) {
  assignText(text, value);
  return value->setType(zvbTypeBoolean);
}

}  // namespace

const char* typeWord(zvbType type) {
  switch (type) {
    case zvbTypeBoolean:
      return "bool";
    case zvbTypeInteger:
      return "int";
    case zvbTypeReal:
      return "real";
    case zvbTypeDate:
      return "date";
    case zvbTypeString:
      break;
  }
  return "string";
}

bool readField(std::string_view text, zvbType type, ZvbDatavar* value) {
  switch (type) {
    case zvbTypeBoolean:
      return readBoolean(text, value);
    case zvbTypeInteger:
      return readInteger(text, value);
    case zvbTypeReal:
      return readReal(text, value);
    case zvbTypeDate:
      return readDate(text, value);
    case zvbTypeString:
      break;
  }
  assignText(text, value);
  return true;
}

std::size_t writeDate(const ZvbDate& date, char (&text)[ZvbDate::textCapacity]) {
  constexpr std::size_t dayLength = std::string_view("YYYY-MM-DD").size();
  const std::size_t size = date.toText(text, true);
  if (size > dayLength) {
    text[dayLength] = 'T';
  }
  return size;
}

std::string_view ValueText::of(const ZvbDatavar& value) {
  bool failed = false;
  switch (value.type()) {
    case zvbTypeBoolean:
      return value.asBool(&failed) ? "true" : "false";
    case zvbTypeInteger:
      return ofInteger(value.asInt64(&failed));
    case zvbTypeReal:
      return {number_, value.asReal(&failed).toText(number_)};
    case zvbTypeDate:
      return {date_, writeDate(value.asDate(), date_)};
    case zvbTypeString:
      break;
  }
  return value.asTextView();
}

std::string_view ValueText::ofInteger(std::int64_t number) {
  const auto result = std::to_chars(number_, number_ + sizeof number_, number);
  return {number_, static_cast<std::size_t>(result.ptr - number_)};
}

}  // namespace zvwttool
