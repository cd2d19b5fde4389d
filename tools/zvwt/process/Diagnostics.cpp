#include "process/Diagnostics.h"

#include <algorithm>
#include <cstdio>
#include <limits>
#include <string>

#include "process/System.h"
#include "text/DisplayText.h"

namespace zvwttool {
namespace {

bool isQuiet = false;
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

void sayPlainly(std::string_view text) noexcept {
  removeStatus();
  writeErrors("zvwt: ");
  writeErrors(text);
  writeErrors("\n");
}

void beginLine() noexcept {
  if (terminalWidth(OutputStream::errors) > 0) {
    (void)std::fputc('\n', stderr);
  }
}

void remark(std::string_view text) {
  if (!isQuiet) {
    say(text);
  }
}

void beQuiet() noexcept { isQuiet = true; }

bool statusIsSeen() noexcept { return !isQuiet && terminalWidth(OutputStream::errors) > 0; }

void showStatus(std::string_view text) noexcept {
  const int width = terminalWidth(OutputStream::errors);
  if (isQuiet || width <= 0) {
    return;
  }
  // In the last column, some terminals begin another line.
  const auto room = static_cast<std::size_t>(width - 1);
  text = text.substr(0, room);
  // Blanks overwrite what is left of a longer status, on any terminal.
  const std::size_t left = std::min(widthOfStatus, room) - std::min(widthOfStatus, text.size());
  widthOfStatus = text.size();
  (void)std::fprintf(stderr, "\r%.*s%*s", static_cast<int>(text.size()), text.data(),
                     static_cast<int>(left), "");
}

void removeStatus() noexcept {
  if (widthOfStatus > 0) {
    showStatus("");
    (void)std::fputc('\r', stderr);
  }
}

}  // namespace zvwttool
