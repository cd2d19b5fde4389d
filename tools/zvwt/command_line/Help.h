/// How --help looks.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace zvwttool {

/// What callers can rely on whatever the verb.
extern const char* const exitCodesText;

/// Examples first, then the options, each with its description below it; lines fit a terminal. The
/// examples are the footer of the app that they belong to.
class HelpFormatter : public CLI::Formatter {
 public:
  std::string make_help(const CLI::App* app, std::string name,
                        CLI::AppFormatMode mode) const override;
  std::string make_subcommand(const CLI::App* verb) const override;
  std::string make_option(const CLI::Option* option, bool isPositional) const override;
};

/// Breaks a text at its blanks into lines of at most `width` columns, each behind an indentation
/// and with its line feed.
[[nodiscard]] std::string wrapped(const std::string& text, std::size_t indentation,
                                  std::size_t width);

}  // namespace zvwttool
