/// Texts as JSON has them, in UTF-8.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace zvwttool {

/// How many bytes at the front of a text JSON has as they are. It has escapes for more than it
/// needs to: where it is read at a terminal, it sends no control characters there.
[[nodiscard]] std::size_t plainJsonSize(std::string_view text) noexcept;

/// What JSON has in place of the character at the front of a text that is not plain there, or of
/// one byte that is no part of UTF-8.
class JsonEscape {
 public:
  explicit JsonEscape(std::string_view text) noexcept;

  [[nodiscard]] std::string_view text() const noexcept { return {text_.data(), size_}; }
  /// The bytes that it stands for.
  [[nodiscard]] std::size_t bytes() const noexcept { return bytes_; }
  /// False when U+FFFD stands for a byte.
  [[nodiscard]] bool keepsBytes() const noexcept { return keepsBytes_; }

 private:
  std::array<char, 6> text_;
  std::size_t size_ = 6;
  std::size_t bytes_ = 1;
  bool keepsBytes_ = true;
};

/// Appends a text of any bytes, in quotes, to what has append(std::string_view). False when some of
/// the bytes are no UTF-8.
template <typename Sink>
bool appendJsonText(std::string_view text, Sink* sink) {
  bool keepsBytes = true;
  sink->append(std::string_view("\""));
  for (std::size_t size = plainJsonSize(text); size < text.size(); size = plainJsonSize(text)) {
    const JsonEscape escape(text.substr(size));
    sink->append(text.substr(0, size));
    sink->append(escape.text());
    keepsBytes = keepsBytes && escape.keepsBytes();
    text.remove_prefix(size + escape.bytes());
  }
  sink->append(text);
  sink->append(std::string_view("\""));
  return keepsBytes;
}

}  // namespace zvwttool
