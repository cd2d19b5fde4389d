#include "Commands.h"
#include "CsvWriter.h"
#include "Diagnostics.h"
#include "DisplayText.h"
#include "OutputBuffer.h"
#include "TableRows.h"

namespace zvwttool {
namespace {

void writeHeader(const TableRows& rows, CsvWriter* writer) {
  for (const TableRows::Column& column : rows.columns()) {
    writer->addName(column.name);
  }
  writer->endRow();
}

bool writeRow(const TableRows& rows, CsvWriter* writer, std::string* error) {
  for (std::size_t column = 0; column < rows.columns().size(); ++column) {
    if (!writer->addValue(rows.value(column))) {
      *error = "column " + quotedName(rows.columns()[column].name) +
               ": the value cannot be written as text";
      return false;
    }
  }
  writer->endRow();
  return true;
}

bool writeRows(TableRows* rows, OutputBuffer* output, std::string* error) {
  CsvWriter writer(output);
  writeHeader(*rows, &writer);
  ReadResult result = rows->next(error);
  while (result == ReadResult::row && !output->failed()) {
    if (!writeRow(*rows, &writer, error)) {
      return false;
    }
    result = rows->next(error);
  }
  return result != ReadResult::failure;
}

/// The document has the table's columns whatever was selected, and their names as they are.
bool writeXml(TableRows* rows, OutputBuffer* output, std::string* error) {
  if (!rows->source().isOfAllColumns()) {
    *error = "XML has all columns of a table: make a copy with the columns that you want";
    return false;
  }
  for (const TableRows::Column& column : rows->columns()) {
    if (column.name.find_first_of("&<") != std::string::npos) {
      *error = "column " + quotedName(column.name) + ": XML cannot have the name as it is";
      return false;
    }
  }
  ZvbString document;
  if (!rows->readAsXml(&document, error)) {
    return false;
  }
  output->append(document.asView());
  output->append('\n');
  return true;
}

}  // namespace

ExitCode runExport(ZvWorkTableManager& manager, const ExportOptions& options) {
  TableRows rows;
  std::string error;
  if (!rows.open(manager, options.read, &error)) {
    return fail(error);
  }
  OutputBuffer output;
  const bool complete =
      options.asXml ? writeXml(&rows, &output, &error) : writeRows(&rows, &output, &error);
  const ExitCode written = output.finish();
  return complete ? written : fail(error);
}

}  // namespace zvwttool
