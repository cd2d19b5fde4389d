#include <unistd.h>

#include "Terminal.h"

namespace zvwttool {

bool standardErrorIsTerminal() noexcept { return isatty(STDERR_FILENO) == 1; }

}  // namespace zvwttool
