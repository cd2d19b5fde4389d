/// Texts as JSON has them, in UTF-8.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace zvwttool {

/// How many bytes at the front of a text JSON has as they are.
[[nodiscard]] std::size_t plainJsonSize(std::string_view text) noexcept;

/// What JSON has in place of a byte that is not plain.
class JsonEscape {
 public:
  explicit JsonEscape(char byte) noexcept;

  [[nodiscard]] std::string_view text() const noexcept { return {text_.data(), size_}; }
  /// False when the byte is no part of UTF-8 and U+FFFD stands for it.
  [[nodiscard]] bool keepsByte() const noexcept { return keepsByte_; }

 private:
  std::array<char, 6> text_;
  std::size_t size_ = 6;
  bool keepsByte_ = true;
};

/// Appends a text of any bytes, in quotes, to what has append(std::string_view). False when some of
/// the bytes are no UTF-8.
template <typename Sink>
bool appendJsonText(std::string_view text, Sink* sink) {
  bool keepsBytes = true;
  sink->append(std::string_view("\""));
  for (std::size_t size = plainJsonSize(text); size < text.size(); size = plainJsonSize(text)) {
    const JsonEscape escape(text[size]);
    sink->append(text.substr(0, size));
    sink->append(escape.text());
    keepsBytes = keepsBytes && escape.keepsByte();
    text.remove_prefix(size + 1);
  }
  sink->append(text);
  sink->append(std::string_view("\""));
  return keepsBytes;
}

}  // namespace zvwttool
