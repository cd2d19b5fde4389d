#include <exception>

#include "CellText.h"
#include "Commands.h"
#include "Counted.h"
#include "Diagnostics.h"
#include "OutputBuffer.h"
#include "OutputLook.h"
#include "TableRows.h"

namespace zvwttool {
namespace {

constexpr std::size_t cellWidthLimit = 60;  // where no terminal sets one

std::size_t limitOfCells(const ShowOptions& options, const OutputLook& look) {
  if (options.isWide) {
    return TextGrid::noLimit;
  }
  return look.width > 0 ? look.width : cellWidthLimit;
}

TextGrid makeGrid(const TableRows& rows, std::size_t widthLimit) {
  std::vector<TextGrid::Kind> kinds;
  for (const TableRows::Column& column : rows.columns()) {
    kinds.push_back(kindOf(column.type));
  }
  TextGrid grid(kinds, widthLimit);
  for (const TableRows::Column& column : rows.columns()) {
    grid.addCell(column.name);
  }
  grid.addRule();
  return grid;
}

void addRows(TableRows* rows, std::int64_t limit, TextGrid* grid) {
  ValueText valueText;
  for (std::int64_t row = 0; row < limit && rows->nextWanted(); ++row) {
    for (std::size_t column = 0; column < rows->columns().size(); ++column) {
      addValueCell(rows->value(column), &valueText, grid);
    }
  }
}

void sayWhatIsMissing(const TableRows& rows, std::size_t columnsLeftOut) {
  if (rows.columns().empty()) {
    say("there are no columns");
  }
  if (columnsLeftOut > 0) {
    say(counted(static_cast<std::int64_t>(columnsLeftOut),
                "column does not fit; --wide or --select shows it",
                "columns do not fit; --wide or --select shows them"));
  }
  if (rows.remaining() > 0) {
    say((rows.hasConditions() ? "up to " : "") + counted(rows.remaining(), "more row"));
  }
}

}  // namespace

ExitCode runShow(ZvWorkTableManager& manager, const ShowOptions& options) {
  TableRows rows(manager, options.read);
  const OutputLook look = lookOfOutput();
  TextGrid grid = makeGrid(rows, limitOfCells(options, look));
  std::exception_ptr failure;
  try {
    addRows(&rows, options.limit, &grid);
  } catch (const Failure&) {
    failure = std::current_exception();  // what comes before it is shown
  }
  const bool fits = look.width == 0 || options.isWide;
  const std::size_t leftOut = fits ? 0 : grid.fit(look.width);
  OutputBuffer output;
  grid.print(&output, look.withStyles);
  output.finish();
  if (failure != nullptr) {
    std::rethrow_exception(failure);
  }
  sayWhatIsMissing(rows, leftOut);
  return ExitCode::success;
}

}  // namespace zvwttool
