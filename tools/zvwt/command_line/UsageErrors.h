/// What is said of a command line that cannot be understood.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace zvwttool {

/// Fails when the first word is meant to be a verb and is none.
void requireVerb(const CLI::App& app, const std::string& word);

/// The reason why the words given to the app were refused.
[[nodiscard]] std::string usageErrorText(const CLI::App& app, const CLI::ParseError& error);

}  // namespace zvwttool
