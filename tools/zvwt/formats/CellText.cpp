#include "formats/CellText.h"

#include <string_view>

namespace zvwttool {
namespace {

constexpr std::string_view nullMark = "\u2205";
constexpr std::string_view unwritableMark = "?";

/// True for the mark of a null within any number of pairs of quotes, each of which needs one more
/// to be told from the others.
bool looksLikeNull(std::string_view text) {
  while (text.size() > nullMark.size() && text.front() == '"' && text.back() == '"') {
    text = text.substr(1, text.size() - 2);
  }
  return text == nullMark;
}

}  // namespace

TextGrid::Kind kindOf(zvbType type) {
  switch (type) {
    case zvbTypeInteger:
    case zvbTypeReal:
      return TextGrid::Kind::number;
    case zvbTypeBoolean:
    case zvbTypeDate:
      return TextGrid::Kind::word;
    case zvbTypeString:
      break;
  }
  return TextGrid::Kind::text;
}

void addValueCell(const ZvbDatavar& value, ValueText* valueText, TextGrid* grid) {
  if (value.isNull()) {
    grid->addCell(nullMark, TextGrid::Style::dim);
    return;
  }
  const std::string_view text = valueText->of(value);
  if (value.type() == zvbTypeString) {
    grid->addCell(looksLikeNull(text) ? '"' + std::string(text) + '"' : text);
  } else {
    grid->addCell(text.empty() ? unwritableMark : text);
  }
}

void writeJsonValue(const ZvbDatavar& value, ValueText* valueText, JsonWriter* json) {
  const std::string_view text = value.isNull() ? std::string_view() : valueText->of(value);
  const bool isText = value.type() == zvbTypeString;
  if (value.isNull() || (text.empty() && !isText)) {
    json->literal("null");
  } else if (isText || value.type() == zvbTypeDate) {
    json->text(text);
  } else {
    json->literal(text);
  }
}

}  // namespace zvwttool
