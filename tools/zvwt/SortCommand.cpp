#include "Commands.h"
#include "InterruptGuard.h"
#include "NewTable.h"
#include "Source.h"

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
