#include "text/TerminalText.h"

#include <algorithm>
#include <limits>

#include "text/DisplayText.h"

namespace zvwttool {
namespace {

constexpr std::size_t mostBytes = 4;  // of a character

/// False when more data could make another character, or a line end, of what is at the front.
bool isWhole(std::string_view text) {
  return text.size() >= mostBytes || (text != "\r" && characterSize(text) > 0);
}

/// The bytes of the line end or tab at the front; 0 for none.
std::size_t keptSize(std::string_view text) {
  if (text.front() == '\n' || text.front() == '\t') {
    return 1;
  }
  return text.starts_with("\r\n") ? 2 : 0;
}

}  // namespace

std::string_view TerminalText::add(std::string_view data) {
  unread_ += data;
  shown_.clear();
  std::string_view rest = unread_;
  while (!rest.empty() && isWhole(rest)) {
    rest.remove_prefix(showNext(rest));
  }
  unread_.erase(0, unread_.size() - rest.size());
  return shown_;
}

std::string_view TerminalText::end() {
  shown_.clear();
  for (std::string_view rest = unread_; !rest.empty();) {
    rest.remove_prefix(showNext(rest));
  }
  unread_.clear();
  return shown_;
}

/// Returns the bytes of what it has shown.
std::size_t TerminalText::showNext(std::string_view rest) {
  if (const std::size_t kept = keptSize(rest); kept > 0) {
    shown_ += rest.substr(0, kept);
    return kept;
  }
  const std::string_view bytes = rest.substr(0, std::max<std::size_t>(characterSize(rest), 1));
  const std::string shown = displayText(bytes, std::numeric_limits<std::size_t>::max());
  hasEscapes_ = hasEscapes_ || shown != bytes;
  shown_ += shown;
  return bytes.size();
}

}  // namespace zvwttool
