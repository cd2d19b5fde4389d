#include "command_line/VerbOptions.h"

#include <limits>

#include "command_line/OptionValues.h"
#include "fio/np_dir.h"
#include "process/Diagnostics.h"
#include "tables/Source.h"

namespace zvwttool {
namespace {

void addSelect(CLI::App* verb, SourceOptions* source) {
  verb->add_option("--select", source->select,
                   "only these columns, in this order, each by its name or as NEW=NAME; a column "
                   "may be given more than once, and so may the option")
      ->allow_extra_args(false)
      ->type_name("COLUMN,...");
}

}  // namespace

void addDirectories(CLI::App* verb, std::vector<std::string>* directories) {
  verb->add_option("--dir", *directories,
                   "directories of the tables, in the order in which they are searched; may be "
                   "given again to add more")
      ->allow_extra_args(false)
      ->type_name(std::string("DIR[") + np_dir_listsep + "DIR...]");
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

void addSource(CLI::App* verb, const char* position, SourceOptions* source) {
  addTable(verb, position, source);
  addSelect(verb, source);
}

void addConditions(CLI::App* verb, ReadOptions* read) {
  verb->add_option("--where", read->conditions,
                   "only rows that satisfy it: COLUMN=VALUE, or another one of != < <= > >= and ~, "
                   "which means that the value is a part of the text; COLUMN is null, or COLUMN is "
                   "not null. Quotes around a value are not a part of it, and a null satisfies no "
                   "comparison. May be given again: a row has to satisfy all")
      ->allow_extra_args(false)
      ->type_name("CONDITION");
}

void addReadOptions(CLI::App* verb, ReadOptions* read) {
  addSource(verb, "TABLE", &read->source);
  addRows(verb, &read->source);
  addConditions(verb, read);
  verb->add_flag("--backwards", read->backwards, "the last of the rows first");
}

void addCsvForm(CLI::App* verb, const char* aboutNull, const char* aboutHeader, CsvForm* form) {
  verb->add_option_function<std::string>(
          "--delimiter", [form](const std::string& text) { form->delimiter = readDelimiter(text); },
          "what stands between fields in place of a comma; tab for a tab")
      ->take_last()
      ->type_name("CHARACTER");
  verb->add_option("--null", form->null, aboutNull)->take_last()->type_name("TEXT");
  verb->add_flag_callback(
      "--no-header", [form] { form->hasHeader = false; }, aboutHeader);
}

void addQuiet(CLI::App* verb) {
  verb->add_flag_callback("-q,--quiet", beQuiet, "says nothing but what goes wrong");
}

void addMaxElementSize(CLI::App* verb, std::int64_t* maxElementSize) {
  verb->add_option_function<std::string>(
          "--max-element-size",
          [maxElementSize](const std::string& size) {
            constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
            *maxElementSize = readCount("--max-element-size", size, 0, most);
          },
          "bytes of rows after which the table begins another pair of files; 0 for no limit")
      ->take_last()
      ->type_name("BYTES");
}

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

}  // namespace zvwttool
