#include "text/DisplayText.h"

#include <algorithm>

#include "text/CharacterWidth.h"

namespace zvwttool {
namespace {

constexpr std::string_view ellipsis = "\u2026";
constexpr std::size_t mostMarks = 8;  // without a width, on one character

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

/// A character of a text, or a byte that is part of none.
struct Piece {
  std::string_view bytes;
  std::string escape;  // empty where the bytes are shown as they are
  std::size_t width = 0;

  [[nodiscard]] std::string_view shown() const {
    return escape.empty() ? bytes : std::string_view(escape);
  }
};

class Pieces {
 public:
  explicit Pieces(std::string_view text) : rest_(text) {}

  [[nodiscard]] bool isAtEnd() const { return rest_.empty(); }

  Piece next() {
    const std::size_t size = characterSize(rest_);
    Piece piece = {.bytes = rest_.substr(0, std::max<std::size_t>(size, 1)), .escape = {}};
    rest_.remove_prefix(piece.bytes.size());
    const bool isShown = size > 0 && !isControl(characterCode(piece.bytes));
    piece.width = isShown ? characterWidth(characterCode(piece.bytes)) : 0;
    marks_ = isShown && piece.width == 0 ? marks_ + 1 : 0;
    if (!isShown || marks_ > mostMarks) {
      piece.escape = escaped(piece.bytes);
      piece.width = piece.escape.size();
    }
    return piece;
  }

 private:
  std::string_view rest_;
  std::size_t marks_ = 0;  // since the last character that has a width
};

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

char32_t characterCode(std::string_view character) {
  constexpr char32_t leadBits[] = {0, 0x7F, 0x1F, 0x0F, 0x07};
  char32_t code = byteAt(character, 0) & leadBits[character.size()];
  for (std::size_t i = 1; i < character.size(); ++i) {
    code = code << 6U | (byteAt(character, i) & 0x3FU);
  }
  return code;
}

bool isControl(char32_t code) {
  const bool isC0 = code < 0x20 || code == 0x7F;
  const bool isC1 = code >= 0x80 && code < 0xA0;
  const bool isOfDirection = code == 0x061C || code == 0x200E || code == 0x200F ||
                             (code >= 0x202A && code <= 0x202E) ||
                             (code >= 0x2066 && code <= 0x2069);
  const bool isOfLines = code == 0x2028 || code == 0x2029;
  return isC0 || isC1 || isOfDirection || isOfLines;
}

std::string displayText(std::string_view text, std::size_t limit) {
  std::string shown;
  std::size_t width = 0;
  std::size_t cut = 0;  // of shown, where an ellipsis still fits
  for (Pieces pieces(text); !pieces.isAtEnd();) {
    const Piece piece = pieces.next();
    width += piece.width;
    if (width > limit) {
      shown.resize(cut);
      return shown.append(ellipsis);
    }
    shown += piece.shown();
    cut = width < limit ? shown.size() : cut;
  }
  return shown;
}

std::size_t displayedSize(std::string_view text, std::size_t limit) {
  std::size_t size = 0;
  std::size_t width = 0;
  for (Pieces pieces(text); !pieces.isAtEnd() && width <= limit;) {
    const Piece piece = pieces.next();
    size += piece.bytes.size();
    width += piece.width;
  }
  return size;
}

std::string quotedName(std::string_view name) {
  constexpr std::size_t limit = 60;
  return '"' + displayText(name, limit) + '"';
}

std::size_t displayWidth(std::string_view text) {
  std::size_t width = 0;
  while (!text.empty()) {
    const std::string_view character =
        text.substr(0, std::max<std::size_t>(characterSize(text), 1));
    width += characterWidth(characterCode(character));
    text.remove_prefix(character.size());
  }
  return width;
}

}  // namespace zvwttool
