/// What can be asked of the tool.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string>
#include <vector>

#include "process/ExitCode.h"
#include "zvwt.h"

namespace zvwttool {

/// What was asked, once the command line has been read.
struct Invocation {
  std::vector<std::string> directories;
  /// Runs the verb that was given, with the options that it was given.
  std::function<ExitCode(ZvWorkTableManager&)> run;
};

/// Adds all verbs to the command line. The invocation outlives it.
void addVerbs(CLI::App* app, Invocation* invocation);

}  // namespace zvwttool
