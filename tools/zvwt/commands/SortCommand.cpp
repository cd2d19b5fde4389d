#include "commands/Commands.h"
#include "process/InterruptGuard.h"
#include "tables/NewTable.h"
#include "tables/Source.h"

namespace zvwttool {

ExitCode runSort(ZvWorkTableManager& manager, const SortOptions& options) {
  const Source source(manager, options.source);
  source.requireDifferentNames();
  source.remarkMissingColumns();
  const InterruptGuard guard;
  NewTable table(&manager);
  table.copySorted(source.uri(), options.maxElementSize, options.plan, source.rows().rowCount);
  table.finish();
  return ExitCode::success;
}

}  // namespace zvwttool
