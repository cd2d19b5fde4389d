#include "DisplayText.h"

#include <algorithm>

namespace zvwttool {
namespace {

constexpr std::string_view ellipsis = "\u2026";

unsigned char byteAt(std::string_view text, std::size_t index) {
  return static_cast<unsigned char>(text[index]);
}

bool isContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

std::size_t sizeByLeadByte(unsigned char lead) {
  if (lead < 0x80U) {
    return 1;
  }
  if (lead >= 0xC2U && lead < 0xE0U) {
    return 2;
  }
  if (lead >= 0xE0U && lead < 0xF0U) {
    return 3;
  }
  return lead >= 0xF0U && lead < 0xF5U ? 4 : 0;
}

// Leaves out overlong forms, surrogates and what lies beyond the last code point.
bool secondByteFits(unsigned char lead, unsigned char second) {
  switch (lead) {
    case 0xE0:
      return second >= 0xA0U;
    case 0xED:
      return second < 0xA0U;
    case 0xF0:
      return second >= 0x90U;
    case 0xF4:
      return second < 0x90U;
    default:
      return true;
  }
}

bool isControl(std::string_view character) {
  const unsigned char lead = byteAt(character, 0);
  const bool isSecondSet = character.size() == 2 && lead == 0xC2U && byteAt(character, 1) < 0xA0U;
  return lead < 0x20U || lead == 0x7FU || isSecondSet;
}

std::string escaped(std::string_view bytes) {
  if (bytes == "\n") {
    return "\\n";
  }
  if (bytes == "\r") {
    return "\\r";
  }
  if (bytes == "\t") {
    return "\\t";
  }
  constexpr std::string_view digits = "0123456789abcdef";
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    text += "\\x";
    text += digits[byteAt(bytes, i) >> 4U];
    text += digits[byteAt(bytes, i) & 0xFU];
  }
  return text;
}

}  // namespace

std::size_t characterSize(std::string_view text) {
  const unsigned char lead = byteAt(text, 0);
  const std::size_t size = sizeByLeadByte(lead);
  if (size <= 1) {
    return size;
  }
  if (text.size() < size || !secondByteFits(lead, byteAt(text, 1))) {
    return 0;
  }
  const std::string_view rest = text.substr(1, size - 1);
  return std::all_of(rest.begin(), rest.end(), isContinuation) ? size : 0;
}

std::string displayText(std::string_view text, std::size_t limit) {
  std::string shown;
  std::size_t width = 0;
  std::size_t cut = 0;  // of shown, where an ellipsis still fits
  while (!text.empty()) {
    const std::size_t size = characterSize(text);
    const std::string_view bytes = text.substr(0, std::max<std::size_t>(size, 1));
    const std::string piece = size == 0 || isControl(bytes) ? escaped(bytes) : std::string(bytes);
    width += displayWidth(piece);
    if (width > limit) {
      shown.resize(cut);
      return shown.append(ellipsis);
    }
    shown += piece;
    cut = width < limit ? shown.size() : cut;
    text.remove_prefix(bytes.size());
  }
  return shown;
}

std::string quotedName(std::string_view name) {
  constexpr std::size_t limit = 60;
  return '"' + displayText(name, limit) + '"';
}

std::size_t displayWidth(std::string_view text) {
  return text.size() -
         static_cast<std::size_t>(std::count_if(text.begin(), text.end(), isContinuation));
}

}  // namespace zvwttool
