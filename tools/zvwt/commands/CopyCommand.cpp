#include <algorithm>

#include "commands/Commands.h"
#include "process/InterruptGuard.h"
#include "process/Progress.h"
#include "tables/NewTable.h"
#include "tables/TableRows.h"

namespace zvwttool {
namespace {

// The library copies without a pause; between pieces of so many rows a signal can be looked at, and
// it can be shown how far it is.
constexpr std::int64_t rowsOfPiece = 100'000;

void copyRows(const Source& source, std::int64_t maxElementSize, NewTable* table) {
  RowRange piece = source.rows();
  const std::int64_t all = piece.rowCount;
  std::int64_t left = all;
  Progress progress("copying", ProgressUnit::rows, all);
  piece.rowCount = std::min(left, rowsOfPiece);
  table->copy(source.uri(piece), maxElementSize);
  while ((left -= piece.rowCount) > 0) {
    InterruptGuard::check();
    progress.show(all - left);
    piece.firstRow += piece.rowCount;
    piece.rowCount = std::min(left, rowsOfPiece);
    table->append(source.uri(piece));
  }
}

}  // namespace

ExitCode runCopy(ZvWorkTableManager& manager, const CopyOptions& options) {
  TableRows rows(manager, options.read);
  rows.source().requireDifferentNames();
  const InterruptGuard guard;
  NewTable table(&manager);
  if (rows.hasConditions()) {
    table.copyWanted(&rows, options.maxElementSize, {});
  } else {
    copyRows(rows.source(), options.maxElementSize, &table);
  }
  table.finish();
  return ExitCode::success;
}

}  // namespace zvwttool
