/// The command line described for other programs, from what --help has.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace zvwttool {

/// A script that completes words for the shell bash.
[[nodiscard]] std::string bashCompletion(const CLI::App& app);

/// A page for man, in its macros; `date` is that of the version, as YYYY-MM-DD.
[[nodiscard]] std::string manPage(const CLI::App& app, const std::string& version,
                                  const std::string& date);

}  // namespace zvwttool
