#include "command_line/Help.h"

#include <algorithm>
#include <sstream>

namespace zvwttool {
namespace {

constexpr std::size_t lineWidth = 79;
constexpr std::size_t verbColumn = 14;
constexpr std::size_t descriptionIndentation = 8;

}  // namespace

const char* const exitCodesText =
    "Exit codes:\n"
    "  0  done\n"
    "  1  done, and something was found that is not as it should be\n"
    "  2  what was asked for cannot be: an option, a column, a name\n"
    "  3  a table or a file was not found\n"
    "  4  a table is damaged, or the data to import are malformed\n"
    "  5  the system refused: the disk is full or failing, rights or memory are\n"
    "     missing, or nobody reads standard output any more\n"
    "Data go to standard output, everything else to standard error.\n";

std::string wrapped(const std::string& text, std::size_t indentation, std::size_t width) {
  std::istringstream words(text);
  std::string lines;
  std::string line;
  const std::string start(indentation, ' ');
  for (std::string word; words >> word;) {
    if (!line.empty() && indentation + line.size() + 1 + word.size() > width) {
      lines += start + line + '\n';
      line.clear();
    }
    line += line.empty() ? word : ' ' + word;
  }
  return line.empty() ? lines : lines + start + line + '\n';
}

std::string HelpFormatter::make_help(const CLI::App* app, std::string name,
                                     CLI::AppFormatMode mode) const {
  std::string help = wrapped(app->get_description() + '.', 0, lineWidth);
  help += "\nExamples:\n";
  help += app->get_footer();
  help += '\n';
  help += make_usage(app, std::move(name));
  help += make_positionals(app);
  help += make_groups(app, mode);
  help += make_subcommands(app, mode);
  return help + '\n' + exitCodesText;
}

/// The first sentence is enough in a list.
std::string HelpFormatter::make_subcommand(const CLI::App* verb) const {
  const std::string description = verb->get_description();
  std::string line = "  " + verb->get_name();
  line.resize(std::max(line.size() + 1, verbColumn), ' ');
  return line + description.substr(0, description.find(". ")) + '\n';
}

std::string HelpFormatter::make_option(const CLI::Option* option, bool isPositional) const {
  return "  " + make_option_name(option, isPositional) +
         (isPositional ? "" : make_option_opts(option)) + '\n' +
         wrapped(make_option_desc(option), descriptionIndentation, lineWidth);
}

}  // namespace zvwttool
