#include <filesystem>

#include "Commands.h"
#include "Diagnostics.h"
#include "Directories.h"
#include "FieldValue.h"
#include "Handles.h"
#include "OutputBuffer.h"
#include "Source.h"
#include "TextGrid.h"

namespace zvwttool {
namespace {

using Align = TextGrid::Align;

constexpr std::size_t cellWidthLimit = 260;  // as long as a table's path can be

std::filesystem::path pathOfText(const std::string& utf8) {
  return std::u8string(utf8.begin(), utf8.end());
}

/// Where the library finds the table: in the first of the directories that has it.
std::string pathOf(const std::string& table, const std::vector<std::string>& directories) {
  for (const std::string& directory : directories) {
    const std::filesystem::path path = pathOfText(directory) / pathOfText(table);
    std::error_code ignored;
    if (std::filesystem::exists(path, ignored)) {
      const std::u8string text = path.u8string();
      return {text.begin(), text.end()};
    }
  }
  return "";
}

void addFact(std::string_view what, std::string_view value, TextGrid* grid) {
  grid->addCell(what);
  grid->addCell(value);
}

std::string inBytes(std::int64_t count) { return std::to_string(count) + " bytes"; }

void printFacts(const std::string& name, const std::string& path, int columnCount,
                const ZvwtTableSizes& sizes, OutputBuffer* output) {
  TextGrid grid({Align::left, Align::left}, cellWidthLimit);
  addFact("table", name, &grid);
  addFact("file", path, &grid);
  addFact("rows", std::to_string(sizes.rowCount), &grid);
  addFact("columns", std::to_string(columnCount), &grid);
  addFact("elements", std::to_string(sizes.elementCount), &grid);
  addFact("element limit", sizes.maxElementSize > 0 ? inBytes(sizes.maxElementSize) : "none",
          &grid);
  addFact("catalogue", inBytes(sizes.catalogueBytes), &grid);
  addFact("data", inBytes(sizes.dataBytes), &grid);
  addFact("index", inBytes(sizes.indexBytes), &grid);
  grid.print(output);
}

bool addColumn(ZvWorkTableFile* table, int column, TextGrid* grid) {
  ZvbString name;
  zvbType type = zvbTypeString;
  int width = 0;
  int maxLength = 0;
  if (!table->getColumnDefinition(column, &name, &type, &width, &maxLength)) {
    return false;
  }
  const bool hasTexts = type == zvbTypeString && maxLength > 0;
  grid->addCell(std::to_string(column + 1));
  grid->addCell(name.asCstr());
  grid->addCell(typeWord(type));
  grid->addCell(width > 0 ? std::to_string(width) : "");
  grid->addCell(hasTexts ? std::to_string(maxLength - 1) : "");  // less the terminator
  return true;
}

bool printColumns(ZvWorkTableFile* table, OutputBuffer* output) {
  TextGrid grid({Align::right, Align::left, Align::left, Align::right, Align::right},
                cellWidthLimit);
  for (const std::string_view heading : {"#", "column", "type", "width", "longest"}) {
    grid.addCell(heading);
  }
  grid.addRule();
  for (int column = 0; column < table->getColumnCount(); ++column) {
    if (!addColumn(table, column, &grid)) {
      return false;
    }
  }
  grid.print(output);
  return true;
}

ExitCode printStatistics(ZvWorkTableFile* table) {
  const zvwt::Statistics statistics(table->getStatistics());
  if (statistics == nullptr) {
    return fail(table->getErrorMessage().asCstr());
  }
  TextGrid grid({Align::left, Align::left}, cellWidthLimit);
  addFact(statistics->columnName(0).asView(), statistics->columnName(1).asView(), &grid);
  grid.addRule();
  while (statistics->next() == zvbCursorRow) {
    addFact(statistics->value(0).asView(), statistics->value(1).asView(), &grid);
  }
  OutputBuffer output;
  grid.print(&output);
  return output.finish();
}

}  // namespace

ExitCode runInfo(ZvWorkTableManager& manager, const InfoOptions& options) {
  Source source;
  std::string error;
  if (!source.find(manager, options.source, &error)) {
    return fail(error);
  }
  ZvbString text;
  const TableHandle table(manager.openTable(source.table(), false, &text));
  if (table == nullptr) {
    return fail(text.asCstr());
  }
  if (options.statistics) {
    return printStatistics(table.get());
  }
  const ZvbString name = table->getName();
  ZvwtTableSizes sizes{};
  if (!zvwtGetTableSizes(&manager, name, &sizes, &text)) {
    return fail(text.asCstr());
  }
  OutputBuffer output;
  printFacts(name.asCstr(),
             pathOf(name.asCstr(), splitDirectories(manager.getDirectoryList().asCstr())),
             table->getColumnCount(), sizes, &output);
  output.append('\n');
  const bool complete = printColumns(table.get(), &output);
  const ExitCode written = output.finish();
  return complete ? written : fail(table->getErrorMessage().asCstr());
}

}  // namespace zvwttool
