#include "commands/Commands.h"
#include "formats/CsvWriter.h"
#include "formats/JsonLinesWriter.h"
#include "formats/XmlText.h"
#include "process/Diagnostics.h"
#include "process/OutputBuffer.h"
#include "process/Progress.h"
#include "process/System.h"
#include "tables/TableRows.h"
#include "text/Counted.h"
#include "text/DisplayText.h"

namespace zvwttool {
namespace {

void writeHeader(const TableRows& rows, CsvWriter* writer) {
  for (const TableRows::Column& column : rows.columns()) {
    writer->addName(column.name);
  }
  writer->endRow();
}

template <typename Writer>
void writeRow(const TableRows& rows, Writer* writer) {
  for (std::size_t column = 0; column < rows.columns().size(); ++column) {
    if (!writer->addValue(rows.value(column))) {
      throw Failure(ExitCode::damaged, "column " + quotedName(rows.columns()[column].name) +
                                           ": the value cannot be written as text");
    }
  }
  writer->endRow();
}

template <typename Writer>
void writeRows(TableRows* rows, OutputBuffer* output, Writer* writer) {
  const std::int64_t all = rows->remaining();
  Progress progress("exporting", ProgressUnit::rows, all);
  if (terminalWidth(OutputStream::output) > 0) {
    progress.hide();  // the rows themselves are seen
  }
  while (!output->failed() && rows->next()) {
    if (rows->isWanted()) {
      writeRow(*rows, writer);
    }
    progress.update(all - rows->remaining());
  }
}

void writeCsv(TableRows* rows, const CsvForm& form, OutputBuffer* output) {
  CsvWriter writer(output, form);
  if (form.hasHeader) {
    writeHeader(*rows, &writer);
  }
  writeRows(rows, output, &writer);
}

void writeJsonLines(TableRows* rows, OutputBuffer* output) {
  JsonLinesWriter writer(output, rows->columns());
  writeRows(rows, output, &writer);
  if (const std::int64_t count = writer.changedTexts(); count > 0) {
    remark(counted(count, "text is", "texts are") +
           " not UTF-8: each byte that is none became U+FFFD");
  }
}

/// The document has the table's columns whatever was selected, their names as they are, and all
/// rows.
void writeXml(TableRows* rows, OutputBuffer* output) {
  if (!rows->source().isOfAllColumns()) {
    throw Failure(ExitCode::usage,
                  "XML has all columns of a table: make a copy with the columns that you want");
  }
  if (rows->hasConditions()) {
    throw Failure(ExitCode::usage,
                  "XML has all rows that are read: make a copy with those that you want");
  }
  for (const TableRows::Column& column : rows->columns()) {
    if (column.name.find_first_of("&<") != std::string::npos) {
      throw Failure(ExitCode::usage,
                    "column " + quotedName(column.name) + ": XML cannot have the name as it is");
    }
  }
  const ZvbString document = rows->readAsXml();
  if (const std::string_view text = textThatIsNoXml(document.asView()); !text.empty()) {
    throw Failure(ExitCode::usage, "XML cannot have the text " + quotedName(text));
  }
  output->append(document.asView());
  output->append('\n');
}

}  // namespace

ExitCode runExport(ZvWorkTableManager& manager, const ExportOptions& options) {
  requireUsable(options.form);
  if (options.format != ExportFormat::csv && options.form != CsvForm()) {
    throw Failure(ExitCode::usage,
                  "--delimiter, --null, --no-header and --crlf are for CSV and nothing else");
  }
  TableRows rows(manager, options.read);
  rows.source().requireColumns();
  OutputBuffer output;
  if (terminalWidth(OutputStream::output) > 0) {
    output.beForTerminal();
  }
  switch (options.format) {
    case ExportFormat::csv:
      writeCsv(&rows, options.form, &output);
      break;
    case ExportFormat::jsonLines:
      writeJsonLines(&rows, &output);
      break;
    case ExportFormat::xml:
      writeXml(&rows, &output);
      break;
  }
  output.finish();
  if (output.hasEscapes()) {
    remark(
        "control characters and bytes that are no UTF-8 are escaped on a terminal; a file or a "
        "pipe gets the data as they are");
  }
  return ExitCode::success;
}

}  // namespace zvwttool
