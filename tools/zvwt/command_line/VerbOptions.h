/// Options that several verbs have, each added to a verb with the place where its value goes.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "commands/Commands.h"

namespace zvwttool {

/// An option that may be given again, each text of which `read` turns into a value.
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

/// The directories of the tables.
void addDirectories(CLI::App* verb, std::vector<std::string>* directories);
/// The table that a verb reads, as the positional argument `position`.
void addTable(CLI::App* verb, const char* position, SourceOptions* source);
/// The same, and which of its columns.
void addSource(CLI::App* verb, const char* position, SourceOptions* source);
void addRows(CLI::App* verb, SourceOptions* source);
/// Which rows are wanted by what they are like.
void addConditions(CLI::App* verb, ReadOptions* read);
/// A table, its columns, rows, conditions and direction.
void addReadOptions(CLI::App* verb, ReadOptions* read);
/// How a CSV text is written; the descriptions are of --null and --no-header.
void addCsvForm(CLI::App* verb, const char* aboutNull, const char* aboutHeader, CsvForm* form);
/// For verbs that show how far they are, or say what they have done.
void addQuiet(CLI::App* verb);
void addMaxElementSize(CLI::App* verb, std::int64_t* maxElementSize);
/// The option `name` gives the columns; the others count only beside it.
CLI::Option* addSortPlan(CLI::App* verb, const std::string& name, SortPlan* plan);

}  // namespace zvwttool
