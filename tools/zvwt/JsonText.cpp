#include "JsonText.h"

#include "DisplayText.h"

namespace zvwttool {
namespace {

constexpr unsigned firstPrintable = 0x20;
constexpr unsigned firstOfSeveral = 0x80;  // bytes of one character

unsigned code(char byte) { return static_cast<unsigned char>(byte); }

/// For each byte, whether it is a character of its own and plain.
constexpr std::array<bool, 256> plainBytes = [] {
  std::array<bool, 256> plain{};
  for (unsigned byte = firstPrintable; byte < firstOfSeveral; ++byte) {
    plain[byte] = byte != '"' && byte != '\\';
  }
  return plain;
}();

}  // namespace

std::size_t plainJsonSize(std::string_view text) noexcept {
  std::size_t size = 0;
  while (size < text.size()) {
    if (plainBytes[code(text[size])]) {
      ++size;
      continue;
    }
    const bool isOfSeveral = code(text[size]) >= firstOfSeveral;
    const std::size_t character = isOfSeveral ? characterSize(text.substr(size)) : 0;
    if (character == 0) {
      break;
    }
    size += character;
  }
  return size;
}

JsonEscape::JsonEscape(char byte) noexcept : text_{'\\', 'u', '0', '0', '0', '0'} {
  constexpr std::string_view digits = "0123456789abcdef";
  if (code(byte) >= firstOfSeveral) {
    text_ = {'\\', 'u', 'f', 'f', 'f', 'd'};
    keepsByte_ = false;
  } else if (code(byte) < firstPrintable) {
    text_[4] = digits[code(byte) >> 4U];
    text_[5] = digits[code(byte) & 0xFU];
  } else {
    text_[1] = byte;
    size_ = 2;
  }
}

}  // namespace zvwttool
