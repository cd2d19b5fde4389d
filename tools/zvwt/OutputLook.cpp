#include "OutputLook.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>

#include "System.h"

namespace zvwttool {
namespace {

std::string_view environmentVariable(const char* name) {
  const char* value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): the tool has one thread
  return value != nullptr ? value : "";
}

bool wantsStyles() {
  return environmentVariable("NO_COLOR").empty() && environmentVariable("TERM") != "dumb";
}

}  // namespace

OutputLook lookOfOutput() {
  const int width = terminalWidth(OutputStream::output);
  if (width <= 0) {
    return {};
  }
  // Some consoles begin a new line as soon as the last column is written.
  const int used = std::max(width - 1, 1);
  return {static_cast<std::size_t>(used), wantsStyles() && enableStyles()};
}

void printFitted(TextGrid* grid, OutputBuffer* output) {
  const OutputLook look = lookOfOutput();
  if (look.width > 0) {
    (void)grid->fit(look.width);
  }
  grid->print(output, look.withStyles);
}

}  // namespace zvwttool
