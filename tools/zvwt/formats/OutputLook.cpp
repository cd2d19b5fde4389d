#include "formats/OutputLook.h"

#include <algorithm>
#include <cstdlib>
#include <string>

#include "process/Diagnostics.h"
#include "process/System.h"
#include "text/Counted.h"

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

std::size_t printFitted(TextGrid* grid, bool isWide, OutputBuffer* output) {
  const OutputLook look = lookOfOutput();
  const bool fits = isWide || look.width == 0;
  const std::size_t leftOut = fits ? 0 : grid->fit(look.width);
  grid->print(output, look.withStyles);
  return leftOut;
}

void sayWhatIsLeftOut(std::size_t columns, std::string_view options) {
  if (columns > 0) {
    const std::string shown(options);
    say(counted(static_cast<std::int64_t>(columns), "column does not fit; " + shown + " shows it",
                "columns do not fit; " + shown + " shows them"));
  }
}

}  // namespace zvwttool
