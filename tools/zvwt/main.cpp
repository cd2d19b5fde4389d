#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <csignal>
#include <limits>
#include <map>
#include <new>
#include <optional>

#include "Commands.h"
#include "Diagnostics.h"
#include "Directories.h"
#include "fio/np_dir.h"

namespace {

using namespace zvwttool;

constexpr const char* exitCodes =
    "Exit codes:\n"
    "  0  done\n"
    "  1  failed; the reason is on standard error, except for a pipe that its reader closed\n"
    "  2  the command line is wrong\n"
    "Data goes to standard output, everything else to standard error.";

struct Options {
  std::vector<std::string> directories;
  ImportOptions import;
  ShowOptions show;
  ReadOptions read;
  InfoOptions info;
  DeleteOptions remove;
};

template <typename Number>
std::optional<Number> readNumber(std::string_view text) {
  Number number = 0;
  const char* end = text.data() + text.size();
  const auto [stop, status] = std::from_chars(text.data(), end, number);
  if (status != std::errc() || stop != end) {
    return std::nullopt;
  }
  return number;
}

/// Splits NAME=VALUE at its last equals sign: names may contain some.
std::pair<std::string, std::string> splitAssignment(const std::string& option,
                                                    const std::string& text) {
  const std::size_t equals = text.rfind('=');
  if (equals == std::string::npos || equals == 0) {
    throw CLI::ValidationError(option, "\"" + text + "\" is not of the form COLUMN=VALUE");
  }
  return {text.substr(0, equals), text.substr(equals + 1)};
}

GivenType readGivenType(const std::string& text) {
  static const std::map<std::string, zvbType> types = {{"bool", zvbTypeBoolean},
                                                       {"int", zvbTypeInteger},
                                                       {"real", zvbTypeReal},
                                                       {"string", zvbTypeString},
                                                       {"date", zvbTypeDate}};
  const auto [column, word] = splitAssignment("--type", text);
  const auto type = types.find(word);
  if (type == types.end()) {
    throw CLI::ValidationError("--type",
                               "\"" + word + "\" is none of bool, int, real, string, date");
  }
  return {column, type->second};
}

GivenWidth readGivenWidth(const std::string& text) {
  const auto [column, number] = splitAssignment("--width", text);
  const std::optional<int> bytes = readNumber<int>(number);
  if (bytes.value_or(0) < 1) {
    throw CLI::ValidationError("--width", "\"" + number + "\" is no number of bytes from 1 on");
  }
  return {column, *bytes};
}

RowRange readRowRange(const std::string& text) {
  const std::size_t comma = std::min(text.find(','), text.size());
  const std::string_view view = text;
  const auto first = readNumber<std::int64_t>(view.substr(0, comma));
  const auto count = readNumber<std::int64_t>(view.substr(std::min(comma + 1, view.size())));
  if (first.value_or(-1) < 0 || count.value_or(-2) < -1 ||
      *count > std::numeric_limits<std::int64_t>::max() - *first) {
    throw CLI::ValidationError(
        "--rows", "\"" + text + "\" is not FIRST,COUNT with FIRST from 0 and COUNT from -1 on");
  }
  return {*first, *count};
}

CLI::Validator countFromZero() {
  return {[](const std::string& text) {
            const bool fits = readNumber<std::int64_t>(text).value_or(-1) >= 0;
            return fits ? std::string() : "\"" + text + "\" is no number from 0 on";
          },
          ""};
}

CLI::App* addVerb(CLI::App* app, const std::string& name, const std::string& description,
                  Options* options) {
  CLI::App* verb = app->add_subcommand(name, description);
  verb->footer(exitCodes);
  verb->add_option("--dir", options->directories,
                   "directories of the tables, in the order in which they are searched; may be "
                   "given again to add more")
      ->allow_extra_args(false)
      ->type_name(std::string("DIR[") + np_dir_listsep + "DIR...]");
  return verb;
}

template <typename Given>
void addGiven(CLI::App* verb, const std::string& name, const std::string& form,
              const std::string& description, Given (*read)(const std::string&),
              std::vector<Given>* given) {
  verb->add_option_function<std::vector<std::string>>(
          name,
          [read, given](const std::vector<std::string>& texts) {
            for (const std::string& text : texts) {
              given->push_back(read(text));
            }
          },
          description)
      ->allow_extra_args(false)
      ->type_name(form);
}

void addReadOptions(CLI::App* verb, ReadOptions* read) {
  verb->add_option("TABLE", read->table, "the table's name")->required();
  verb->add_option_function<std::string>(
          "--rows", [read](const std::string& text) { read->range = readRowRange(text); },
          "only COUNT rows from row FIRST on; rows count from 0, a COUNT of -1 means to the end")
      ->take_last()
      ->type_name("FIRST,COUNT");
  verb->add_flag("--backwards", read->backwards, "the last of the rows first");
}

CLI::App* addImport(CLI::App* app, Options* options) {
  ImportOptions* import = &options->import;
  CLI::App* verb =
      addVerb(app, "import", "Makes a table of a CSV file and prints the table's name", options);
  verb->add_option("FILE", import->file, "the file, \"-\" for standard input")->required();
  addGiven<GivenType>(verb, "--type", "COLUMN=TYPE",
                      "the type of a column: bool, int, real, string or date. Without it the type "
                      "is the narrowest that changes no field",
                      readGivenType, &import->types);
  addGiven<GivenWidth>(verb, "--width", "COLUMN=BYTES",
                       "makes a column one of strings that are cut to so many bytes",
                       readGivenWidth, &import->widths);
  verb->add_option("--max-element-size", import->maxElementSize,
                   "bytes of rows after which the table begins another pair of files; 0 for no "
                   "limit")
      ->check(countFromZero())
      ->take_last()
      ->type_name("BYTES");
  return verb;
}

CLI::App* addShow(CLI::App* app, Options* options) {
  CLI::App* verb = addVerb(app, "show", "Prints the first rows of a table for people", options);
  addReadOptions(verb, &options->show.read);
  verb->add_option("--limit", options->show.limit, "the most rows to print")
      ->check(countFromZero())
      ->take_last()
      ->capture_default_str()
      ->type_name("ROWS");
  return verb;
}

CLI::App* addExport(CLI::App* app, Options* options) {
  CLI::App* verb = addVerb(app, "export", "Prints a table as CSV", options);
  addReadOptions(verb, &options->read);
  return verb;
}

CLI::App* addInfo(CLI::App* app, Options* options) {
  CLI::App* verb = addVerb(app, "info", "Prints what a table consists of", options);
  verb->add_option("TABLE", options->info.table, "the table's name")->required();
  return verb;
}

CLI::App* addDelete(CLI::App* app, Options* options) {
  CLI::App* verb = addVerb(app, "delete", "Deletes tables", options);
  verb->add_option("TABLE", options->remove.tables, "the tables' names")->required();
  return verb;
}

void spreadDirectories(Options* options) {
  const std::string directories = joinDirectories(options->directories);
  options->import.directories = directories;
  options->show.read.directories = directories;
  options->read.directories = directories;
  options->info.directories = directories;
  options->remove.directories = directories;
}

ExitCode run(int argumentCount, char** arguments) {
  CLI::App app("Work tables on the command line", "zvwt");
  app.require_subcommand(1);
  app.footer(exitCodes);
  Options options;
  const CLI::App* importVerb = addImport(&app, &options);
  const CLI::App* showVerb = addShow(&app, &options);
  const CLI::App* exportVerb = addExport(&app, &options);
  const CLI::App* infoVerb = addInfo(&app, &options);
  addDelete(&app, &options);
  try {
    app.parse(argumentCount, arguments);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? ExitCode::success : ExitCode::usage;
  }
  spreadDirectories(&options);
  if (importVerb->parsed()) {
    return runImport(options.import);
  }
  if (showVerb->parsed()) {
    return runShow(options.show);
  }
  if (exportVerb->parsed()) {
    return runExport(options.read);
  }
  return infoVerb->parsed() ? runInfo(options.info) : runDelete(options.remove);
}

}  // namespace

int main(int argumentCount, char** arguments) {
#ifdef SIGPIPE
  // A closed pipe is met as a failed write, so that commands can still clean up.
  (void)std::signal(SIGPIPE, SIG_IGN);
#endif
  try {
    return static_cast<int>(run(argumentCount, arguments));
  } catch (const std::bad_alloc&) {
    return static_cast<int>(fail("out of memory"));
  } catch (const std::exception& error) {
    return static_cast<int>(fail(error.what()));
  }
}
