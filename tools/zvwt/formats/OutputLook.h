/// For whom standard output is written.
#pragma once

#include <cstddef>
#include <string_view>

#include "formats/TextGrid.h"
#include "process/OutputBuffer.h"

namespace zvwttool {

struct OutputLook {
  std::size_t width = 0;    ///< columns of the terminal to write in; 0 when it is none
  bool withStyles = false;  ///< whether bold and dim text are wanted there
};

/// Styles are for terminals alone, and not where NO_COLOR or a TERM of "dumb" is set.
[[nodiscard]] OutputLook lookOfOutput();

/// Prints a grid as the output's look is, in its width if it has one and the grid is not to be
/// wide. Returns how many of the grid's columns are left out.
[[nodiscard]] std::size_t printFitted(TextGrid* grid, bool isWide, OutputBuffer* output);

/// Says that so many columns were left out, if any, and which options show them.
void sayWhatIsLeftOut(std::size_t columns, std::string_view options);

}  // namespace zvwttool
