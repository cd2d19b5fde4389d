#include <CLI/CLI.hpp>
#include <algorithm>
#include <functional>
#include <new>

#include "Commands.h"
#include "Diagnostics.h"
#include "Directories.h"
#include "Handles.h"
#include "OptionValues.h"
#include "Source.h"
#include "System.h"
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
  ExportOptions exported;
  CopyOptions copy;
  SortOptions sort;
  AppendOptions append;
  PartitionOptions partition;
  InfoOptions info;
  CheckOptions check;
  CleanOptions clean;
  DeleteOptions remove;
  const SourceOptions* uriWanted = nullptr;  ///< print this one's URI in place of running the verb
  /// Runs the verb that was given.
  std::function<ExitCode(ZvWorkTableManager&)> run;
};

/// `given` are the verb's own options, a part of *options.
template <typename Given>
CLI::App* addVerb(CLI::App* app, const std::string& name, const std::string& description,
                  ExitCode (*run)(ZvWorkTableManager&, const Given&), const Given* given,
                  Options* options) {
  CLI::App* verb = app->add_subcommand(name, description);
  verb->callback([run, given, options] {
    options->run = [run, given](ZvWorkTableManager& manager) { return run(manager, *given); };
  });
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

void addSelect(CLI::App* verb, SourceOptions* source) {
  verb->add_option("--select", source->select,
                   "only these columns, in this order, each by its name or as NEW=NAME; a column "
                   "may be given more than once, and so may the option")
      ->allow_extra_args(false)
      ->type_name("COLUMN,...");
}

void addRows(CLI::App* verb, SourceOptions* source) {
  verb->add_option_function<std::string>(
          "--rows", [source](const std::string& text) { source->range = readRowRange(text); },
          "only COUNT rows from row FIRST on; rows count from 0, a COUNT of -1 means to the end")
      ->take_last()
      ->type_name("FIRST,COUNT");
}

void addTable(CLI::App* verb, const char* position, SourceOptions* source) {
  verb->add_option(position, source->table, "the table's name, or a URI of it")->required();
  verb->parse_complete_callback([source] {
    const std::string contradiction = Source::contradiction(*source);
    if (!contradiction.empty()) {
      throw CLI::ValidationError(contradiction);
    }
  });
}

/// The table that a verb reads, and which of its columns.
void addSource(CLI::App* verb, const char* position, SourceOptions* source, Options* options) {
  addTable(verb, position, source);
  addSelect(verb, source);
  verb->add_flag_callback(
      "--uri", [source, options] { options->uriWanted = source; },
      "print the URI of the rows and columns that would be read, which can be given in place of "
      "the name, and do nothing else");
}

void addReadOptions(CLI::App* verb, ReadOptions* read, Options* options) {
  addSource(verb, "TABLE", &read->source, options);
  addRows(verb, &read->source);
  verb->add_flag("--backwards", read->backwards, "the last of the rows first");
}

void addMaxElementSize(CLI::App* verb, std::int64_t* maxElementSize) {
  verb->add_option("--max-element-size", *maxElementSize,
                   "bytes of rows after which the table begins another pair of files; 0 for no "
                   "limit")
      ->check(countFrom(0))
      ->take_last()
      ->type_name("BYTES");
}

/// The option `name` gives the columns; the others count only beside it.
CLI::Option* addSortPlan(CLI::App* verb, const std::string& name, SortPlan* plan) {
  CLI::Option* keys =
      verb->add_option_function<std::vector<std::string>>(
              name,
              [name, plan](const std::vector<std::string>& texts) {
                plan->keys = readSortKeys(name, texts);
              },
              "sorts the rows by these columns, the first one first; may be given again to add "
              "more. Behind a column, :desc has the largest value first, :nulls-last puts nulls "
              "behind all values instead of before them, :nocase ignores the case of texts")
          ->allow_extra_args(false)
          ->type_name("COLUMN[:desc][:nulls-last][:nocase],...");
  verb->add_option_function<std::string>(
          "--memory",
          [plan](const std::string& size) {
            constexpr std::int64_t least = 65536;  // 64K, as the library has it
            plan->memory = readSize("--memory", size, least);
          },
          "memory for sorting, at least 64K; 64M if it is not given")
      ->needs(keys)
      ->take_last()
      ->type_name("BYTES[K|M|G]");
  verb->add_option_function<std::string>(
          "--temp-limit",
          [plan](const std::string& size) {
            plan->workFileLimit = readSize("--temp-limit", size, 0);
          },
          "the most that the work files of the sort may take; 0 for no limit")
      ->needs(keys)
      ->take_last()
      ->type_name("BYTES[K|M|G]");
  return keys;
}

void addImport(CLI::App* app, Options* options) {
  ImportOptions* import = &options->import;
  CLI::App* verb = addVerb(app, "import", "Makes a table of a CSV file and prints the table's name",
                           runImport, import, options);
  verb->add_option("FILE", import->file, "the file, \"-\" for standard input")->required();
  addGiven<GivenType>(verb, "--type", "COLUMN=TYPE",
                      "the type of a column: bool, int, real, string or date. Without it the type "
                      "is the narrowest that changes no field",
                      readGivenType, &import->types);
  addGiven<GivenWidth>(verb, "--width", "COLUMN=BYTES",
                       "makes a column one of strings that are cut to so many bytes",
                       readGivenWidth, &import->widths);
  addSortPlan(verb, "--sort", &import->sort);
  addMaxElementSize(verb, &import->maxElementSize);
}

void addShow(CLI::App* app, Options* options) {
  CLI::App* verb = addVerb(app, "show", "Prints the first rows of a table for people", runShow,
                           &options->show, options);
  addReadOptions(verb, &options->show.read, options);
  verb->add_option("--limit", options->show.limit, "the most rows to print")
      ->check(countFrom(0))
      ->take_last()
      ->capture_default_str()
      ->type_name("ROWS");
}

void addExport(CLI::App* app, Options* options) {
  CLI::App* verb = addVerb(app, "export", "Prints a table as CSV or XML", runExport,
                           &options->exported, options);
  addReadOptions(verb, &options->exported.read, options);
  verb->add_option_function<std::string>(
          "--format",
          [options](const std::string& format) { options->exported.asXml = format == "xml"; },
          "csv, or xml for the bean definition of a table, which has all columns")
      ->check(CLI::IsMember({"csv", "xml"}))
      ->take_last()
      ->default_str("csv");
}

void addCopy(CLI::App* app, Options* options) {
  CopyOptions* copy = &options->copy;
  CLI::App* verb = addVerb(app, "copy", "Copies a table and prints the name of the new one",
                           runCopy, copy, options);
  addSource(verb, "TABLE", &copy->source, options);
  addRows(verb, &copy->source);
  addMaxElementSize(verb, &copy->maxElementSize);
}

void addSort(CLI::App* app, Options* options) {
  SortOptions* sort = &options->sort;
  CLI::App* verb =
      addVerb(app, "sort",
              "Makes a sorted table of a table and prints the name of the new one. Rows with equal "
              "keys keep their order",
              runSort, sort, options);
  addSource(verb, "TABLE", &sort->source, options);
  addRows(verb, &sort->source);
  addSortPlan(verb, "--by", &sort->plan)->required();
  addMaxElementSize(verb, &sort->maxElementSize);
}

void addAppend(CLI::App* app, Options* options) {
  AppendOptions* append = &options->append;
  CLI::App* verb =
      addVerb(app, "append", "Adds the rows of a table to another one", runAppend, append, options);
  verb->add_option("TARGET", append->target, "the name of the table that gets the rows")
      ->required();
  addSource(verb, "SOURCE", &append->source, options);
  addRows(verb, &append->source);
}

void addPartition(CLI::App* app, Options* options) {
  PartitionOptions* partition = &options->partition;
  CLI::App* verb = addVerb(
      app, "partition",
      "Prints URIs of parts of a table, one a line: together they have all its rows, in order. A "
      "table of several pairs of files may have fewer parts than are asked for",
      runPartition, partition, options);
  addSource(verb, "TABLE", &partition->source, options);
  verb->add_option("N", partition->parts, "the most parts")->check(countFrom(1))->required();
}

void addInfo(CLI::App* app, Options* options) {
  CLI::App* verb =
      addVerb(app, "info", "Prints what a table consists of", runInfo, &options->info, options);
  addTable(verb, "TABLE", &options->info.source);
  verb->add_flag("--stats", options->info.statistics,
                 "only the table's statistics as the library's cursor gives them");
}

void addCheck(CLI::App* app, Options* options) {
  CLI::App* verb = addVerb(app, "check", "Prints what is wrong in the files of tables, if anything",
                           runCheck, &options->check, options);
  verb->add_option("TABLE", options->check.tables, "the tables' names")->required();
  verb->add_flag("--json", options->check.asJson,
                 "an array with an object for each finding: table, file, offset and rule");
}

void addClean(CLI::App* app, Options* options) {
  CLI::App* verb = addVerb(
      app, "clean",
      "Removes the files that killed processes have left, and prints which; files of living "
      "processes and all other files are never touched",
      runClean, &options->clean, options);
  // A catalogue that is not looked at cannot keep its elements: nothing is taken for granted.
  verb->get_option("--dir")->required()->description(
      "all directories that the tables there have files in; may be given again to add more");
  verb->add_option_function<std::string>(
          "--older-than",
          [options](const std::string& age) {
            options->clean.leastAge = readAge("--older-than", age);
          },
          "only files that are that old, and were that old when the oldest table that is being "
          "written was made; 0 for all, 1d if it is not given")
      ->take_last()
      ->type_name("AGE[s|m|h|d]");
  verb->add_flag("--dry-run", options->clean.isDryRun, "remove nothing");
}

void addDelete(CLI::App* app, Options* options) {
  CLI::App* verb = addVerb(app, "delete", "Deletes tables", runDelete, &options->remove, options);
  verb->add_option("TABLE", options->remove.tables, "the tables' names")->required();
}

ExitCode run(std::vector<std::string> arguments) {
  CLI::App app("Work tables on the command line", "zvwt");
  app.require_subcommand(1);
  app.allow_windows_style_options(false);  // a path can begin with a slash there too
  app.footer(exitCodes);
  Options options;
  addImport(&app, &options);
  addShow(&app, &options);
  addExport(&app, &options);
  addCopy(&app, &options);
  addSort(&app, &options);
  addAppend(&app, &options);
  addPartition(&app, &options);
  addInfo(&app, &options);
  addCheck(&app, &options);
  addClean(&app, &options);
  addDelete(&app, &options);
  try {
    std::reverse(arguments.begin(), arguments.end());  // as it takes them
    app.parse(std::move(arguments));
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? ExitCode::success : ExitCode::usage;
  }
  std::string error;
  const ManagerHandle manager = openManager(joinDirectories(options.directories), &error);
  if (manager == nullptr) {
    return fail(error);
  }
  return options.uriWanted != nullptr ? runPrintUri(*manager, *options.uriWanted)
                                      : options.run(*manager);
}

}  // namespace

int main(int argumentCount, char** arguments) {
  prepareStreams();
  try {
    return static_cast<int>(run(commandLineArguments(argumentCount, arguments)));
  } catch (const std::bad_alloc&) {
    return static_cast<int>(fail("out of memory"));
  } catch (const std::exception& error) {
    return static_cast<int>(fail(error.what()));
  }
}
