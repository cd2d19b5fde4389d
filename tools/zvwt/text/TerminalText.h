/// Data as a terminal can take them.
#pragma once

#include <string>
#include <string_view>

namespace zvwttool {

/// Takes data in pieces, whatever the pieces are. Line ends and tabs stay as they are; other
/// control characters and bytes that are no UTF-8 are escaped as displayText() does.
class TerminalText {
 public:
  /// What is shown of the data so far and was not returned before; it lasts until the next call.
  /// The front of a character, or of a line end, waits for the rest of it.
  [[nodiscard]] std::string_view add(std::string_view data);
  /// What still waits.
  [[nodiscard]] std::string_view end();

  [[nodiscard]] bool hasEscapes() const { return hasEscapes_; }

 private:
  [[nodiscard]] std::size_t showNext(std::string_view rest);

  std::string unread_;
  std::string shown_;
  bool hasEscapes_ = false;
};

}  // namespace zvwttool
