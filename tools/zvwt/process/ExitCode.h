/// How the tool ends; --help lists the codes for its callers.
#pragma once

namespace zvwttool {

enum class ExitCode : int {
  success = 0,
  findings = 1,     ///< done, but there is something to look at
  usage = 2,        ///< what was asked for cannot be
  notFound = 3,     ///< no such table or file
  damaged = 4,      ///< a table, or what was to become one, is not as it has to be
  inputOutput = 5,  ///< the system refused: a disk is full or failing, rights, memory
};

}  // namespace zvwttool
