#include "commands/Commands.h"
#include "process/InterruptGuard.h"
#include "tables/NewTable.h"
#include "tables/TableRows.h"

namespace zvwttool {

ExitCode runSort(ZvWorkTableManager& manager, const SortOptions& options) {
  TableRows rows(manager, options.read);
  const Source& source = rows.source();
  source.requireDifferentNames();
  const InterruptGuard guard;
  NewTable table(&manager);
  if (rows.hasConditions()) {
    table.copyWanted(&rows, options.maxElementSize, options.plan);
  } else {
    table.copySorted(source.uri(), options.maxElementSize, options.plan, rows.remaining());
  }
  table.finish();
  return ExitCode::success;
}

}  // namespace zvwttool
