/// The words of a command line, before they are parsed.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace zvwttool {

/// `help` and `help VERB` become the options for it, and an option with an empty value behind an
/// equals sign becomes two words: the parser would take the next word for the value.
[[nodiscard]] std::vector<std::string> parsableWords(const CLI::App& app,
                                                     std::vector<std::string> words);

}  // namespace zvwttool
