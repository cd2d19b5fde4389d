#include <algorithm>

#include "Commands.h"
#include "Diagnostics.h"
#include "InterruptGuard.h"
#include "NewTable.h"
#include "Source.h"

namespace zvwttool {
namespace {

// The library copies without a pause; between pieces of so many rows a signal can be looked at.
constexpr std::int64_t rowsOfPiece = 1'000'000;

ExitCode copyRows(const Source& source, std::int64_t maxElementSize, NewTable* table) {
  RowRange piece = source.rows();
  std::int64_t left = piece.rowCount;
  piece.rowCount = std::min(left, rowsOfPiece);
  if (!table->copy(source.uri(piece), maxElementSize)) {
    return fail(table->errorText());
  }
  while ((left -= piece.rowCount) > 0) {
    if (InterruptGuard::interrupted()) {
      return fail(interruption);
    }
    piece.firstRow += piece.rowCount;
    piece.rowCount = std::min(left, rowsOfPiece);
    if (!table->append(source.uri(piece))) {
      return fail(table->errorText());
    }
  }
  return ExitCode::success;
}

}  // namespace

ExitCode runCopy(ZvWorkTableManager& manager, const CopyOptions& options) {
  Source source;
  std::string error;
  if (!source.findForNewTable(manager, options.source, &error)) {
    return fail(error);
  }
  const InterruptGuard guard;
  NewTable table(&manager);
  const ExitCode copied = copyRows(source, options.maxElementSize, &table);
  return copied == ExitCode::success ? table.finish() : copied;
}

}  // namespace zvwttool
