#include "commands/UriExplanation.h"

#include <algorithm>
#include <new>

#include "formats/CellText.h"
#include "formats/JsonWriter.h"
#include "formats/OutputLook.h"
#include "tables/Handles.h"
#include "tables/TableColumns.h"

namespace zvwttool {
namespace {

using Kind = TextGrid::Kind;

enum class Origin { table, constant, missing };

struct Explained {
  std::string name;
  zvbType type = zvbTypeString;
  Origin origin = Origin::table;
  std::string column;  // of the table, unless it is a constant
  ZvbDatavar value;    // of what is not the table's
};

const char* wordFor(Origin origin) {
  switch (origin) {
    case Origin::constant:
      return "constant";
    case Origin::missing:
      return "missing";
    case Origin::table:
      break;
  }
  return "table";
}

/// What the library reads where a constant stands; an empty text is a null.
ZvbDatavar constant(const ZvbString& text, zvbType type) {
  ZvbDatavar value;
  if (!text.isEmpty()) {
    value.assign(text);
  }
  if (value.memoryShort()) {
    throw std::bad_alloc();
  }
  (void)value.setType(type);
  return value;
}

Explained explain(const Source& source, const Source::Column& column, zvbType type) {
  Explained explained = {.name = column.name.asCstr(), .type = type, .column = {}, .value = {}};
  if (column.type != 0) {
    explained.origin = Origin::constant;
    explained.value = constant(column.second, type);
    return explained;
  }
  explained.column = column.nameInTable().asCstr();
  if (source.isMissing(column)) {
    explained.origin = Origin::missing;
    explained.value = constant(column.second, zvbTypeString);
  }
  return explained;
}

std::vector<Explained> explainColumns(ZvWorkTableManager& manager, const Source& source) {
  const TableHandle table = openTable(manager, source.uri());
  const std::vector<TableColumn> read = columnsOf(*table);
  std::vector<Explained> columns;
  for (std::size_t i = 0; i < read.size(); ++i) {
    columns.push_back(explain(source, source.columns()[i], read[i].type));
  }
  return columns;
}

std::string shownRows(const Source& source) {
  const RowRange rows = source.rows();
  const std::string all = std::to_string(source.rowsOfTable());
  if (source.isOfAllRows()) {
    return "all " + all;
  }
  return std::to_string(rows.rowCount) + " of " + all + ", from row " +
         std::to_string(rows.firstRow) + " on";
}

void printFacts(const Source& source, OutputBuffer* output) {
  TextGrid grid({Kind::text, Kind::text});
  grid.addCell("table");
  grid.addCell(source.table().asView());
  grid.addCell("rows");
  grid.addCell(shownRows(source));
  grid.print(output);
}

/// Returns how many columns of what is printed there is no room for.
std::size_t printColumns(const std::vector<Explained>& columns, bool isWide, OutputBuffer* output) {
  TextGrid grid({Kind::number, Kind::text, Kind::word, Kind::word, Kind::text});
  grid.addHeadings({"#", "column", "type", "from", "source"});
  ValueText valueText;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    grid.addCell(std::to_string(i + 1));
    grid.addCell(columns[i].name);
    grid.addCell(typeWord(columns[i].type));
    grid.addCell(wordFor(columns[i].origin));
    if (columns[i].origin == Origin::constant) {
      addValueCell(columns[i].value, &valueText, &grid);
    } else {
      grid.addCell(columns[i].column);
    }
  }
  return printFitted(&grid, isWide, output);
}

void writeColumn(const Explained& column, JsonWriter* json) {
  ValueText valueText;
  json->beginObject();
  json->member("name", column.name);
  json->member("type", typeWord(column.type));
  json->member("from", wordFor(column.origin));
  if (column.origin != Origin::constant) {
    json->member("column", column.column);
  }
  if (column.origin != Origin::table) {
    json->name("value");
    writeJsonValue(column.value, &valueText, json);
  }
  json->endObject();
}

}  // namespace

void explainForPeople(ZvWorkTableManager& manager, const Source& source, bool isWide,
                      OutputBuffer* output) {
  const std::vector<Explained> columns = explainColumns(manager, source);
  printFacts(source, output);
  output->append('\n');
  const std::size_t leftOut = printColumns(columns, isWide, output);
  output->finish();
  sayWhatIsLeftOut(leftOut, "--wide");
  source.remarkMissingColumns();
}

void explainInJson(ZvWorkTableManager& manager, const Source& source, OutputBuffer* output) {
  const std::vector<Explained> columns = explainColumns(manager, source);
  const RowRange rows = source.rows();
  JsonWriter json(output);
  json.beginObject();
  json.member("uri", source.uri().asView());
  json.member("table", source.table().asView());
  json.member("first_row", rows.firstRow);
  json.member("rows", rows.rowCount);
  json.member("rows_of_table", source.rowsOfTable());
  json.name("columns");
  json.beginArray();
  for (const Explained& column : columns) {
    writeColumn(column, &json);
  }
  json.endArray();
  json.endObject();
  output->finish();
  source.remarkMissingColumns();
}

}  // namespace zvwttool
