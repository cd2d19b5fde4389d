#include <CLI/CLI.hpp>
#include <algorithm>
#include <new>
#include <sstream>

#include "command_line/CommandDescription.h"
#include "command_line/CommandWords.h"
#include "command_line/Help.h"
#include "command_line/UsageErrors.h"
#include "command_line/Verbs.h"
#include "process/Diagnostics.h"
#include "process/InterruptGuard.h"
#include "process/OutputBuffer.h"
#include "process/System.h"
#include "tables/Directories.h"
#include "tables/Handles.h"

namespace {

using namespace zvwttool;

constexpr const char* examples =
    "  table=$(zvwt import people.csv)\n"
    "  zvwt show \"$table\"\n"
    "  sorted=$(zvwt sort --by born:desc,name \"$table\")\n"
    "  zvwt export --select name,born \"$sorted\" > sorted.csv\n"
    "  zvwt delete \"$table\" \"$sorted\"\n";

void print(const std::string& text) {
  OutputBuffer output;
  output.append(text);
  output.finish();
}

[[noreturn]] void printAndEnd(const std::string& text) {
  print(text);
  throw CLI::Success();
}

void describe(CLI::App* app) {
  app->description("Work tables on the command line: typed rows on disk for a while");
  app->footer(examples);
  app->formatter(std::make_shared<HelpFormatter>());
  app->set_help_flag("-h,--help", "prints this help");
  app->set_version_flag("--version", ZVWT_VERSION, "prints the version");
  constexpr const char* hidden = "";
  app->add_flag_callback("--bash-completion", [app] { printAndEnd(bashCompletion(*app)); })
      ->group(hidden);
  app->add_flag_callback("--man-page",
                         [app] { printAndEnd(manPage(*app, ZVWT_VERSION, ZVWT_VERSION_DATE)); })
      ->group(hidden);
}

ExitCode run(std::vector<std::string> arguments) {
  CLI::App app("", "zvwt");
  app.require_subcommand(1);
  app.allow_windows_style_options(false);  // a path can begin with a slash there too
  describe(&app);
  Invocation invocation;
  addVerbs(&app, &invocation);
  if (!arguments.empty()) {
    arguments = parsableWords(app, std::move(arguments));
    requireVerb(app, arguments.front());
  }
  try {
    std::reverse(arguments.begin(), arguments.end());  // as it takes them
    app.parse(std::move(arguments));
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) {
      std::ostringstream text;
      (void)app.exit(error, text, text);
      print(text.str());
      return ExitCode::success;
    }
    throw Failure(ExitCode::usage, usageErrorText(app, error));
  }
  const ManagerHandle manager = openManager(joinDirectories(invocation.directories));
  return invocation.run(*manager);
}

/// A failure without a text is nothing to speak of.
ExitCode report(const Failure& failure) {
  if (InterruptGuard::interrupted()) {
    beginLine();  // behind the ^C of a terminal
  }
  if (*failure.what() != '\0') {
    say(failure.what());
  }
  return failure.code();
}

ExitCode runAndReport(std::vector<std::string> arguments) {
  try {
    return run(std::move(arguments));
  } catch (const Failure& failure) {
    return report(failure);
  } catch (const std::bad_alloc&) {
    throw;  // there may be none for a report either
  } catch (const std::exception& error) {
    return report({ExitCode::inputOutput, error.what()});
  }
}

}  // namespace

int main(int argumentCount, char** arguments) {
  ExitCode result = ExitCode::inputOutput;
  prepareStreams();
  try {
    result = runAndReport(commandLineArguments(argumentCount, arguments));
  } catch (const std::bad_alloc&) {
    sayPlainly("out of memory");
  }
  InterruptGuard::obey();
  return static_cast<int>(result);
}
