#include <string_view>

#include "command_line/CommandDescription.h"
#include "command_line/Help.h"

namespace zvwttool {
namespace {

constexpr const char* environment =
    ".SH ENVIRONMENT\n"
    ".TP\n.B ZVB_BASE_TEMP\nthe directories of the tables where \\-\\-dir is not given\n"
    ".TP\n.B TMPDIR\nthe directory of the tables where neither is\n"
    ".TP\n.B NO_COLOR\nunless it is empty, nothing is bold or dim on a terminal\n";

/// A text as the macros take it: nothing in it commands them.
std::string escaped(std::string_view text) {
  std::string safe;
  bool isLineStart = true;
  for (const char character : text) {
    if (isLineStart && (character == '.' || character == '\'')) {
      safe += "\\&";
    }
    if (character == '\\') {
      safe += "\\e";
    } else if (character == '-') {
      safe += "\\-";
    } else {
      safe += character;
    }
    isLineStart = character == '\n';
  }
  return safe;
}

std::string literally(std::string_view text) { return ".nf\n" + escaped(text) + ".fi\n"; }

/// In short lines, as the sources of such pages have them.
std::string filled(const std::string& text) {
  constexpr std::size_t lineWidth = 72;
  return escaped(wrapped(text, 0, lineWidth));
}

std::string optionParagraph(const CLI::Option& option) {
  const bool isPositional = option.get_positional();
  const std::string form = isPositional ? "" : HelpFormatter().make_option_opts(&option);
  return ".TP\n.B " + escaped(option.get_name(isPositional, !isPositional) + form) + '\n' +
         filled(option.get_description());
}

std::string verbSection(const CLI::App& verb) {
  std::string text = ".SS " + escaped(verb.get_name()) + '\n' +
                     filled(verb.get_description() + '.') + ".PP\n" + literally(verb.get_footer());
  for (const CLI::Option* option : verb.get_options()) {
    text += option == verb.get_help_ptr() ? "" : optionParagraph(*option);
  }
  return text;
}

}  // namespace

std::string manPage(const CLI::App& app, const std::string& version, const std::string& date) {
  std::string page =
      ".TH ZVWT 1 " + date + " \"zvwt " + escaped(version) + "\" \"User Commands\"\n";
  page += ".SH NAME\nzvwt \\- work tables on the command line\n";
  page += ".SH SYNOPSIS\n.B zvwt\n.I VERB\n[\\fIOPTION\\fR]... [\\fIARGUMENT\\fR]...\n";
  page += ".SH EXAMPLES\n" + literally(app.get_footer());
  page += ".SH VERBS\n";
  for (const CLI::App* verb : app.get_subcommands({})) {
    page += verbSection(*verb);
  }
  page += ".SH EXIT STATUS\n" + literally(exitCodesText);
  return page + environment;
}

}  // namespace zvwttool
