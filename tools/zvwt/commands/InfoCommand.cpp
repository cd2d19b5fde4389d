#include <optional>

#include "commands/Commands.h"
#include "formats/CellText.h"
#include "formats/JsonWriter.h"
#include "formats/OutputLook.h"
#include "tables/ColumnFacts.h"
#include "tables/Directories.h"
#include "tables/Handles.h"
#include "tables/Source.h"
#include "tables/TableColumns.h"
#include "tables/TableFailure.h"
#include "text/Counted.h"

namespace zvwttool {
namespace {

using Kind = TextGrid::Kind;

constexpr std::size_t cellWidthLimit = 260;  // as long as a table's path can be
constexpr std::size_t valueWidthLimit = 60;  // where there are values of the table's

void addFact(std::string_view what, std::string_view value, TextGrid* grid) {
  grid->addCell(what);
  grid->addCell(value);
}

std::string inBytes(std::int64_t count) { return counted(count, "byte"); }

struct ColumnInfo {
  std::string name;
  zvbType type = zvbTypeString;
  int width = 0;              // bytes, 0 for no limit
  std::int64_t longest = -1;  // bytes of the longest text; below 0: no text is known
};

struct TableInfo {
  std::string name;
  std::string path;
  ZvwtTableSizes sizes;
  std::vector<ColumnInfo> columns;
  std::vector<ColumnFacts> facts;  // of each column, or of none
};

ColumnInfo columnInfo(const TableColumn& column) {
  constexpr int terminator = 1;
  const bool hasTexts = column.type == zvbTypeString;
  return {.name = column.name,
          .type = column.type,
          .width = column.width,
          .longest = hasTexts ? column.maxLength - terminator : -1};
}

TableInfo tableInfo(ZvWorkTableManager& manager, ZvWorkTableFile* table, bool readsRows) {
  const ZvbString name = table->getName();
  TableInfo info = {
      .name = name.asCstr(),
      .path = pathOfTable(name.asCstr(), splitDirectories(manager.getDirectoryList().asCstr())),
      .sizes = {},
      .columns = {},
      .facts = {}};
  ZvbString error;
  if (!zvwtGetTableSizes(&manager, name, &info.sizes, &error)) {
    throw readingFailure(name.asCstr(), error);
  }
  for (const TableColumn& column : columnsOf(*table)) {
    info.columns.push_back(columnInfo(column));
  }
  if (readsRows) {
    info.facts = readColumnFacts(table);
    for (std::size_t i = 0; i < info.columns.size(); ++i) {
      info.columns[i].longest = info.facts[i].longest;
    }
  }
  return info;
}

void printFacts(const TableInfo& info, bool isWide, OutputBuffer* output) {
  const ZvwtTableSizes& sizes = info.sizes;
  TextGrid grid({Kind::text, Kind::text}, isWide ? TextGrid::noLimit : cellWidthLimit);
  addFact("table", info.name, &grid);
  addFact("file", info.path, &grid);
  addFact("rows", std::to_string(sizes.rowCount), &grid);
  addFact("columns", std::to_string(info.columns.size()), &grid);
  addFact("elements", std::to_string(sizes.elementCount), &grid);
  addFact("element limit", sizes.maxElementSize > 0 ? inBytes(sizes.maxElementSize) : "none",
          &grid);
  addFact("catalogue", inBytes(sizes.catalogueBytes), &grid);
  addFact("data", inBytes(sizes.dataBytes), &grid);
  addFact("index", inBytes(sizes.indexBytes), &grid);
  grid.print(output);
}

void addColumn(const TableInfo& info, std::size_t index, TextGrid* grid) {
  const ColumnInfo& column = info.columns[index];
  grid->addCell(std::to_string(index + 1));
  grid->addCell(column.name);
  grid->addCell(typeWord(column.type));
  grid->addCell(column.width > 0 ? std::to_string(column.width) : "");
  grid->addCell(column.longest >= 0 ? std::to_string(column.longest) : "");
  if (!info.facts.empty()) {
    const ColumnFacts& facts = info.facts[index];
    ValueText valueText;
    grid->addCell(std::to_string(facts.nulls));
    addValueCell(facts.minimum, &valueText, grid);
    addValueCell(facts.maximum, &valueText, grid);
  }
}

std::size_t limitOfCells(const TableInfo& info, bool isWide) {
  if (isWide) {
    return TextGrid::noLimit;
  }
  return info.facts.empty() ? cellWidthLimit : valueWidthLimit;
}

/// Returns how many columns of what is printed there is no room for.
std::size_t printColumns(const TableInfo& info, bool isWide, OutputBuffer* output) {
  std::vector<Kind> kinds = {Kind::number, Kind::text, Kind::word, Kind::number, Kind::number};
  std::vector<std::string_view> headings = {"#", "column", "type", "width", "longest"};
  if (!info.facts.empty()) {
    kinds.insert(kinds.end(), {Kind::number, Kind::text, Kind::text});
    headings.insert(headings.end(), {"nulls", "minimum", "maximum"});
  }
  TextGrid grid(kinds, limitOfCells(info, isWide));
  grid.addHeadings(headings);
  for (std::size_t column = 0; column < info.columns.size(); ++column) {
    addColumn(info, column, &grid);
  }
  return printFitted(&grid, isWide, output);
}

std::optional<std::int64_t> known(std::int64_t number, bool isKnown) {
  return isKnown ? std::optional(number) : std::nullopt;
}

void writeColumn(const TableInfo& info, std::size_t index, JsonWriter* json) {
  const ColumnInfo& column = info.columns[index];
  json->beginObject();
  json->member("name", column.name);
  json->member("type", typeWord(column.type));
  json->member("width", known(column.width, column.width > 0));
  json->member("longest", known(column.longest, column.longest >= 0));
  if (!info.facts.empty()) {
    const ColumnFacts& facts = info.facts[index];
    ValueText valueText;
    json->member("nulls", facts.nulls);
    json->name("minimum");
    writeJsonValue(facts.minimum, &valueText, json);
    json->name("maximum");
    writeJsonValue(facts.maximum, &valueText, json);
  }
  json->endObject();
}

void writeInfo(const TableInfo& info, OutputBuffer* output) {
  const ZvwtTableSizes& sizes = info.sizes;
  JsonWriter json(output);
  json.beginObject();
  json.member("name", info.name);
  json.member("path", info.path);
  json.member("rows", sizes.rowCount);
  json.member("elements", sizes.elementCount);
  json.member("element_limit", known(sizes.maxElementSize, sizes.maxElementSize > 0));
  json.member("catalogue_bytes", sizes.catalogueBytes);
  json.member("data_bytes", sizes.dataBytes);
  json.member("index_bytes", sizes.indexBytes);
  json.name("columns");
  json.beginArray();
  for (std::size_t column = 0; column < info.columns.size(); ++column) {
    writeColumn(info, column, &json);
  }
  json.endArray();
  json.endObject();
}

void printStatistics(ZvWorkTableFile* table, bool isWide) {
  const zvwt::Statistics statistics(table->getStatistics());
  if (statistics == nullptr) {
    throw libraryFailure(table->getErrorMessage());
  }
  TextGrid grid({Kind::text, Kind::text}, isWide ? TextGrid::noLimit : cellWidthLimit);
  addFact(statistics->columnName(0).asView(), statistics->columnName(1).asView(), &grid);
  grid.addRule();
  while (statistics->next() == zvbCursorRow) {
    addFact(statistics->value(0).asView(), statistics->value(1).asView(), &grid);
  }
  OutputBuffer output;
  grid.print(&output);
  output.finish();
}

}  // namespace

ExitCode runInfo(ZvWorkTableManager& manager, const InfoOptions& options) {
  const Source source(manager, options.source);
  const TableHandle table = openTable(manager, source.table());
  if (options.statistics) {
    printStatistics(table.get(), options.isWide);
    return ExitCode::success;
  }
  const TableInfo info = tableInfo(manager, table.get(), options.readsRows);
  OutputBuffer output;
  std::size_t leftOut = 0;
  if (options.asJson) {
    writeInfo(info, &output);
  } else {
    printFacts(info, options.isWide, &output);
    output.append('\n');
    leftOut = printColumns(info, options.isWide, &output);
  }
  output.finish();
  sayWhatIsLeftOut(leftOut, "--wide");
  return ExitCode::success;
}

}  // namespace zvwttool
