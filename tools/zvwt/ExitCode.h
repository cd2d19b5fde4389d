/// How the tool ends; --help lists the codes for its callers.
#pragma once

namespace zvwttool {

enum class ExitCode : int {
  success = 0,
  failure = 1,
  usage = 2,  ///< the command line itself is wrong
};

}  // namespace zvwttool
