#include <exception>

#include "commands/Commands.h"
#include "formats/CellText.h"
#include "formats/OutputLook.h"
#include "process/Diagnostics.h"
#include "process/OutputBuffer.h"
#include "tables/TableRows.h"
#include "text/Counted.h"

namespace zvwttool {
namespace {

constexpr std::size_t cellWidthLimit = 60;  // where no terminal sets one

std::size_t limitOfCells(const ShowOptions& options) {
  if (options.isWide) {
    return TextGrid::noLimit;
  }
  const std::size_t width = lookOfOutput().width;
  return width > 0 ? width : cellWidthLimit;
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
  sayWhatIsLeftOut(columnsLeftOut, "--wide or --select");
  if (rows.remaining() > 0) {
    say((rows.hasConditions() ? "up to " : "") + counted(rows.remaining(), "more row"));
  }
}

}  // namespace

ExitCode runShow(ZvWorkTableManager& manager, const ShowOptions& options) {
  TableRows rows(manager, options.read);
  TextGrid grid = makeGrid(rows, limitOfCells(options));
  std::exception_ptr failure;
  try {
    addRows(&rows, options.limit, &grid);
  } catch (const Failure&) {
    failure = std::current_exception();  // what comes before it is shown
  }
  OutputBuffer output;
  const std::size_t leftOut = printFitted(&grid, options.isWide, &output);
  output.finish();
  if (failure != nullptr) {
    std::rethrow_exception(failure);
  }
  sayWhatIsMissing(rows, leftOut);
  return ExitCode::success;
}

}  // namespace zvwttool
