#include <algorithm>

#include "Commands.h"
#include "Diagnostics.h"
#include "FieldValue.h"
#include "OutputBuffer.h"
#include "TableRows.h"
#include "TextGrid.h"

namespace zvwttool {
namespace {

constexpr std::size_t cellWidthLimit = 60;
constexpr std::string_view nullMark = "\u2205";
constexpr std::string_view unwritableMark = "?";

TextGrid::Align alignmentOf(zvbType type) {
  const bool isNumber = type == zvbTypeInteger || type == zvbTypeReal;
  return isNumber ? TextGrid::Align::right : TextGrid::Align::left;
}

TextGrid makeGrid(const TableRows& rows) {
  std::vector<TextGrid::Align> alignments;
  for (const TableRows::Column& column : rows.columns()) {
    alignments.push_back(alignmentOf(column.type));
  }
  TextGrid grid(alignments, cellWidthLimit);
  for (const TableRows::Column& column : rows.columns()) {
    grid.addCell(column.name);
  }
  grid.addRule();
  return grid;
}

std::string_view cellText(const ZvbDatavar& value, ValueText* valueText) {
  if (value.isNull()) {
    return nullMark;
  }
  const std::string_view text = valueText->of(value);
  return text.empty() && value.type() != zvbTypeString ? unwritableMark : text;
}

ReadResult addRows(TableRows* rows, std::int64_t limit, TextGrid* grid, std::string* error) {
  ValueText valueText;
  ReadResult result = ReadResult::row;
  for (std::int64_t row = 0; row < limit && result == ReadResult::row; ++row) {
    result = rows->next(error);
    for (std::size_t column = 0; result == ReadResult::row && column < rows->columns().size();
         ++column) {
      grid->addCell(cellText(rows->value(column), &valueText));
    }
  }
  return result;
}

}  // namespace

ExitCode runShow(ZvWorkTableManager& manager, const ShowOptions& options) {
  TableRows rows;
  std::string error;
  if (!rows.open(manager, options.read, &error)) {
    return fail(error);
  }
  TextGrid grid = makeGrid(rows);
  const ReadResult result = addRows(&rows, options.limit, &grid, &error);
  OutputBuffer output;
  grid.print(&output);
  const ExitCode written = output.finish();
  if (result == ReadResult::failure) {
    return fail(error);
  }
  if (written == ExitCode::success && rows.remaining() > 0) {
    say(std::to_string(rows.remaining()) + (rows.remaining() == 1 ? " more row" : " more rows"));
  }
  return written;
}

}  // namespace zvwttool
