#include "command_line/Verbs.h"

#include <limits>
#include <map>
#include <memory>

#include "command_line/OptionValues.h"
#include "command_line/VerbOptions.h"
#include "commands/Commands.h"

namespace zvwttool {
namespace {

/// How help tells of a verb. Examples have a line each, indented by two blanks.
struct VerbHelp {
  const char* name;
  const char* group;
  const char* description;
  const char* examples;
};

constexpr const char* making = "Make tables";
constexpr const char* reading = "Look at tables and take data out";
constexpr const char* keeping = "Look after tables";

/// A verb and the place of its options.
template <typename Given>
struct Verb {
  CLI::App* app;
  Given* given;
};

template <typename Given>
Verb<Given> addVerb(CLI::App* app, Invocation* invocation, const VerbHelp& help,
                    ExitCode (*run)(ZvWorkTableManager&, const Given&)) {
  const auto given = std::make_shared<Given>();
  CLI::App* verb = app->add_subcommand(help.name, help.description);
  verb->group(help.group);
  verb->footer(help.examples);
  verb->callback([run, given, invocation] {
    invocation->run = [run, given](ZvWorkTableManager& manager) { return run(manager, *given); };
  });
  addDirectories(verb, &invocation->directories);
  return {verb, given.get()};
}

void addImport(CLI::App* app, Invocation* invocation) {
  const auto [verb, given] =
      addVerb(app, invocation,
              {"import", making, "Makes a table of a CSV file and prints the table's name",
               "  zvwt import people.csv\n"
               "  zvwt import --type zip=string --sort born:desc,name people.csv\n"
               "  zvwt import --delimiter ';' --null NULL --ragged people.txt\n"
               "  curl -s https://example.org/data.csv | zvwt import -\n"},
              runImport);
  verb->add_option("FILE", given->file, "the file, \"-\" for standard input")->required();
  addCsvForm(verb,
             "reads a field without quotes that is this text as null, and an empty one as an empty "
             "text; without it, an empty one is null",
             "the first line is a row; the columns are called c1, c2 and so on", &given->form);
  verb->add_flag("--ragged", given->fillsShortRows,
                 "takes rows with fewer fields than the first line has; the others are null");
  addGiven<GivenType>(verb, "--type", "COLUMN=TYPE",
                      "the type of a column: bool, int, real, string or date. Without it the type "
                      "is the narrowest that changes no field",
                      readGivenType, &given->types);
  addGiven<GivenWidth>(verb, "--width", "COLUMN=BYTES",
                       "makes a column one of strings that are cut to so many bytes",
                       readGivenWidth, &given->widths);
  addSortPlan(verb, "--sort", &given->sort);
  addMaxElementSize(verb, &given->maxElementSize);
  addQuiet(verb);
}

void addCopy(CLI::App* app, Invocation* invocation) {
  const auto [verb, given] =
      addVerb(app, invocation,
              {"copy", making, "Copies a table and prints the name of the new one",
               "  zvwt copy \"$table\"\n"
               "  zvwt copy --select name,year=born --rows 0,1000 \"$table\"\n"
               "  zvwt copy --where 'born is not null' --where 'city!=Rome' \"$table\"\n"},
              runCopy);
  addSource(verb, "TABLE", &given->read.source);
  addRows(verb, &given->read.source);
  addConditions(verb, &given->read);
  addMaxElementSize(verb, &given->maxElementSize);
  addQuiet(verb);
}

void addSort(CLI::App* app, Invocation* invocation) {
  const auto [verb, given] =
      addVerb(app, invocation,
              {"sort", making,
               "Makes a sorted table of a table and prints the name of the new one. Rows with "
               "equal keys keep their order",
               "  zvwt sort --by born:desc,name \"$table\"\n"
               "  zvwt sort --by name --where 'born>=1900' \"$table\"\n"
               "  zvwt sort --by city:nocase:nulls-last --memory 1G \"$table\"\n"},
              runSort);
  addSource(verb, "TABLE", &given->read.source);
  addRows(verb, &given->read.source);
  addConditions(verb, &given->read);
  addSortPlan(verb, "--by", &given->plan)->required();
  addMaxElementSize(verb, &given->maxElementSize);
  addQuiet(verb);
}

void addAppend(CLI::App* app, Invocation* invocation) {
  const auto [verb, given] =
      addVerb(app, invocation,
              {"append", making, "Adds the rows of a table to another one",
               "  zvwt append \"$all\" \"$today\"\n"
               "  zvwt append --select name,year=born \"$all\" \"$today\"\n"},
              runAppend);
  verb->add_option("TARGET", given->target, "the name of the table that gets the rows")->required();
  addSource(verb, "SOURCE", &given->source);
  addRows(verb, &given->source);
}

void addShowOptions(CLI::App* verb, ShowOptions* given) {
  addReadOptions(verb, &given->read);
  verb->add_option_function<std::string>(
          "-n,--limit",
          [given](const std::string& rows) {
            given->limit = readCount("--limit", rows, 0, std::numeric_limits<std::int64_t>::max());
          },
          "the most rows to print")
      ->take_last()
      ->default_str(std::to_string(given->limit))
      ->type_name("ROWS");
  verb->add_flag("--wide", given->isWide,
                 "print all columns and whole values, wherever lines end. Without it, columns fit "
                 "a terminal, and values are cut to 60 columns elsewhere");
}

void addShow(CLI::App* app, Invocation* invocation) {
  const auto [verb, given] =
      addVerb(app, invocation,
              {"show", reading, "Prints the first rows of a table for people",
               "  zvwt show \"$table\"\n"
               "  zvwt show --select name,born --backwards --limit 5 \"$table\"\n"},
              runShow);
  addShowOptions(verb, given);
}

void addHead(CLI::App* app, Invocation* invocation) {
  const auto [verb, given] = addVerb(app, invocation,
                                     {"head", reading, "Prints the first 10 rows of a table",
                                      "  zvwt head \"$table\"\n"
                                      "  zvwt head -n 3 \"$table\"\n"},
                                     runShow);
  given->limit = 10;
  addShowOptions(verb, given);
}

void addCount(CLI::App* app, Invocation* invocation) {
  const auto [verb, given] = addVerb(app, invocation,
                                     {"count", reading, "Prints the number of a table's rows",
                                      "  zvwt count \"$table\"\n"
                                      "  zvwt count --where 'city=Rome' \"$table\"\n"
                                      "  zvwt partition \"$table\" 4 | xargs -n 1 zvwt count\n"},
                                     runCount);
  addTable(verb, "TABLE", &given->source);
  addRows(verb, &given->source);
  addConditions(verb, given);
}

void addExport(CLI::App* app, Invocation* invocation) {
  const auto [verb, given] =
      addVerb(app, invocation,
              {"export", reading, "Prints a table as CSV, JSON or XML",
               "  zvwt export \"$table\" > people.csv\n"
               "  zvwt export --select name,city --where 'born>=1900' \"$table\"\n"
               "  zvwt export --format jsonl \"$table\" | jq .name\n"
               "  zvwt export --format xml \"$table\"\n"},
              runExport);
  addReadOptions(verb, &given->read);
  const std::map<std::string, ExportFormat> formats = {
      {"csv", ExportFormat::csv}, {"jsonl", ExportFormat::jsonLines}, {"xml", ExportFormat::xml}};
  verb->add_option_function<std::string>(
          "--format",
          [given = given, formats](const std::string& format) {
            given->format = formats.at(format);
          },
          "csv; jsonl for an object of JSON for each row, on a line of its own; xml for the bean "
          "definition of a table, which has all columns")
      ->check(CLI::IsMember(formats))
      ->take_last()
      ->default_str("csv");
  addCsvForm(verb,
             "what a null is written as; a field that is the same without being null has quotes. "
             "Without it, a null is an empty field",
             "no line of the columns' names", &given->form);
  verb->add_flag("--crlf", given->form.endsWithCr, "ends each row with CR and LF in place of LF");
  addQuiet(verb);
}

/// For people; a verb's JSON is never cut.
void addWide(CLI::App* verb, CLI::Option* json, bool* isWide) {
  verb->add_flag("--wide", *isWide, "print all columns and whole values, wherever lines end")
      ->excludes(json);
}

void addInfo(CLI::App* app, Invocation* invocation) {
  const auto [verb, given] = addVerb(app, invocation,
                                     {"info", reading, "Prints what a table consists of",
                                      "  zvwt info \"$table\"\n"
                                      "  zvwt info --columns \"$table\"\n"
                                      "  zvwt info --json \"$table\"\n"},
                                     runInfo);
  addTable(verb, "TABLE", &given->source);
  CLI::Option* columns = verb->add_flag(
      "--columns", given->readsRows,
      "reads all rows for what the values of each column are like: how many are null, the least "
      "and the greatest one, and the bytes of the longest text");
  CLI::Option* json =
      verb->add_flag("--json", given->asJson,
                     "an object: name, path, rows, elements, element_limit, catalogue_bytes, "
                     "data_bytes, index_bytes, and columns, each with name, type, width and "
                     "longest; with --columns also nulls, minimum and maximum");
  addWide(verb, json, &given->isWide);
  verb->add_flag("--stats", given->statistics,
                 "only the table's statistics as the library's cursor gives them")
      ->excludes(columns)
      ->excludes(json);
}

void addList(CLI::App* app, Invocation* invocation) {
  const auto [verb, given] = addVerb(app, invocation,
                                     {"list", reading,
                                      "Prints which tables there are, the newest first. Files that "
                                      "are no tables, or are still being written, are left out",
                                      "  zvwt list\n"
                                      "  zvwt list --json --dir /var/tmp/tables\n"},
                                     runList);
  verb->add_flag("--json", given->asJson,
                 "an array with an object for each table: name, path, rows, columns, bytes, age in "
                 "seconds, and problem");
}

void addPartition(CLI::App* app, Invocation* invocation) {
  const auto [verb, given] =
      addVerb(app, invocation,
              {"partition", reading,
               "Prints URIs of parts of a table, one a line. Together they have all its rows, in "
               "order; a table of several pairs of files may have fewer parts than are asked for",
               "  zvwt partition \"$table\" 4\n"
               "  zvwt partition \"$table\" 4 | xargs -P 4 -n 1 zvwt count\n"},
              runPartition);
  addSource(verb, "TABLE", &given->source);
  verb->add_option_function<std::string>(
          "N",
          [given = given](const std::string& parts) {
            constexpr int most = std::numeric_limits<int>::max();
            given->parts = static_cast<int>(readCount("N", parts, 1, most));
          },
          "the most parts")
      ->required();
}

void addUri(CLI::App* app, Invocation* invocation) {
  const auto [verb, given] =
      addVerb(app, invocation,
              {"uri", reading,
               "Prints the URI of some of a table's rows and columns. It can be given wherever a "
               "table that is read can be named. Given a URI alone, prints what it stands for",
               "  zvwt uri --select name,year=born --rows 0,100 \"$table\"\n"
               "  zvwt uri 'zvwt:zvwt_...?rows=0,100&col=name&col=year,born'\n"},
              runUri);
  addSource(verb, "TABLE", &given->source);
  addRows(verb, &given->source);
  CLI::Option* json =
      verb->add_flag("--json", given->asJson,
                     "what the URI stands for, as an object: uri, table, first_row, rows, "
                     "rows_of_table, and columns, each with name, type, from (table, constant or "
                     "missing), column and value");
  addWide(verb, json, &given->isWide);
}

void addCheck(CLI::App* app, Invocation* invocation) {
  const auto [verb, given] =
      addVerb(app, invocation,
              {"check", keeping, "Prints what is wrong in the files of tables, if anything",
               "  zvwt check \"$table\"\n"
               "  zvwt check --json \"$one\" \"$other\"\n"},
              runCheck);
  verb->add_option("TABLE", given->tables, "the tables' names")->required();
  verb->add_flag("--json", given->asJson,
                 "an array with an object for each finding: table, file, offset and rule");
}

void addClean(CLI::App* app, Invocation* invocation) {
  const auto [verb, given] = addVerb(
      app, invocation,
      {"clean", keeping,
       "Removes the files that killed processes have left, and prints which. Files of living "
       "processes and all other files are never touched",
       "  zvwt clean --dry-run --dir /var/tmp/tables\n"
       "  zvwt clean --older-than 7d --dir /var/tmp/tables\n"
       "  zvwt clean --json --dry-run --dir /var/tmp/tables\n"},
      runClean);
  // A catalogue that is not looked at cannot keep its elements: nothing is taken for granted.
  verb->get_option("--dir")->required()->description(
      "all directories that the tables there have files in; may be given again to add more");
  verb->add_option_function<std::string>(
          "--older-than",
          [given = given](const std::string& age) {
            given->leastAge = readAge("--older-than", age);
          },
          "only files that are that old, and were that old when the oldest table that is being "
          "written was made; 0 for all, 1d if it is not given")
      ->take_last()
      ->type_name("AGE[s|m|h|d]");
  verb->add_flag("--dry-run", given->isDryRun, "remove nothing");
  verb->add_flag("--json", given->asJson,
                 "an array with an object for each file: file, owner, age in seconds, bytes and "
                 "removed");
}

void addDelete(CLI::App* app, Invocation* invocation) {
  const auto [verb, given] = addVerb(
      app, invocation,
      {"delete", keeping, "Deletes tables", "  zvwt delete \"$table\" \"$copy\"\n"}, runDelete);
  verb->add_option("TABLE", given->tables, "the tables' names")->required();
}

}  // namespace

void addVerbs(CLI::App* app, Invocation* invocation) {
  addImport(app, invocation);
  addCopy(app, invocation);
  addSort(app, invocation);
  addAppend(app, invocation);
  addShow(app, invocation);
  addHead(app, invocation);
  addCount(app, invocation);
  addExport(app, invocation);
  addInfo(app, invocation);
  addList(app, invocation);
  addPartition(app, invocation);
  addUri(app, invocation);
  addCheck(app, invocation);
  addClean(app, invocation);
  addDelete(app, invocation);
}

}  // namespace zvwttool
