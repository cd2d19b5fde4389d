#include "Diagnostics.h"

#include <cstdio>
#include <system_error>

namespace zvwttool {

void say(std::string_view text) {
  std::string line = "zvwt: ";
  line += text;
  line += '\n';
  // Nobody is left to hear that standard error itself fails.
  (void)std::fwrite(line.data(), 1, line.size(), stderr);
}

ExitCode fail(std::string_view text) {
  say(text);
  return ExitCode::failure;
}

std::string systemErrorText(int errorNumber) {
  return std::generic_category().message(errorNumber);
}

}  // namespace zvwttool
