#include "formats/JsonText.h"

#include "text/DisplayText.h"

namespace zvwttool {
namespace {

constexpr unsigned firstPrintable = 0x20;
constexpr unsigned lastPrintable = 0x7E;
constexpr unsigned firstOfSeveral = 0x80;  // bytes of one character
constexpr char32_t replacement = 0xFFFD;

unsigned code(char byte) { return static_cast<unsigned char>(byte); }

/// For each byte, whether it is a character of its own and plain.
constexpr std::array<bool, 256> plainBytes = [] {
  std::array<bool, 256> plain{};
  for (unsigned byte = firstPrintable; byte <= lastPrintable; ++byte) {
    plain[byte] = byte != '"' && byte != '\\';
  }
  return plain;
}();

/// Spares most characters the question what they are.
constexpr bool mayBeginControl(unsigned lead) {
  return lead == 0xC2 || lead == 0xD8 || lead == 0xE2;  // to U+00BF, U+063F and U+2FFF
}

/// The bytes of the character of several at the front of a text; 0 where there is none that is
/// plain.
std::size_t plainCharacterSize(std::string_view text) {
  if (code(text.front()) < firstOfSeveral) {
    return 0;
  }
  const std::size_t size = characterSize(text);
  const bool isEscaped = size > 0 && mayBeginControl(code(text.front())) &&
                         isControl(characterCode(text.substr(0, size)));
  return isEscaped ? 0 : size;
}

}  // namespace

std::size_t plainJsonSize(std::string_view text) noexcept {
  std::size_t size = 0;
  while (size < text.size()) {
    if (plainBytes[code(text[size])]) {
      ++size;
      continue;
    }
    const std::size_t character = plainCharacterSize(text.substr(size));
    if (character == 0) {
      break;
    }
    size += character;
  }
  return size;
}

JsonEscape::JsonEscape(std::string_view text) noexcept : text_{'\\', 'u'} {
  constexpr std::string_view digits = "0123456789abcdef";
  if (text.front() == '"' || text.front() == '\\') {
    text_[1] = text.front();
    size_ = 2;
    return;
  }
  const std::size_t character = characterSize(text);
  keepsBytes_ = character > 0;
  bytes_ = keepsBytes_ ? character : 1;
  char32_t code = keepsBytes_ ? characterCode(text.substr(0, bytes_)) : replacement;
  for (std::size_t i = size_; i > 2; --i, code >>= 4U) {
    text_[i - 1] = digits[code & 0xFU];
  }
}

}  // namespace zvwttool
