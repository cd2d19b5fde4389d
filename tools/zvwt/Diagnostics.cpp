#include "Diagnostics.h"

#include <algorithm>
#include <cstdio>
#include <limits>
#include <system_error>

#include "DisplayText.h"
#include "System.h"

namespace zvwttool {
namespace {

std::size_t widthOfStatus = 0;  // columns of the terminal's last line that it takes

}  // namespace

void say(std::string_view text) {
  removeStatus();
  std::string line = "zvwt: ";
  // Names in it may come from a stranger's file and hold what commands a terminal.
  line += displayText(text, std::numeric_limits<std::size_t>::max());
  line += '\n';
  // Nobody is left to hear that standard error itself fails.
  (void)std::fwrite(line.data(), 1, line.size(), stderr);
}

ExitCode fail(std::string_view text) {
  say(text);
  return ExitCode::failure;
}

void showStatus(std::string_view text) noexcept {
  static const bool isSeen = standardErrorIsTerminal();
  if (!isSeen) {
    return;
  }
  const std::size_t left = widthOfStatus - std::min(widthOfStatus, text.size());
  widthOfStatus = text.size();
  // Blanks overwrite what is left of a longer status, on any terminal.
  (void)std::fprintf(stderr, "\r%.*s%*s", static_cast<int>(text.size()), text.data(),
                     static_cast<int>(left), "");
}

void removeStatus() noexcept {
  if (widthOfStatus > 0) {
    showStatus("");
    (void)std::fputc('\r', stderr);
  }
}

std::string systemErrorText(int errorNumber) {
  return std::generic_category().message(errorNumber);
}

}  // namespace zvwttool
