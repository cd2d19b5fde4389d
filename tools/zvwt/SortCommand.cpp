#include "Commands.h"
#include "Diagnostics.h"
#include "InterruptGuard.h"
#include "NewTable.h"
#include "Source.h"

namespace zvwttool {

ExitCode runSort(ZvWorkTableManager& manager, const SortOptions& options) {
  Source source;
  std::string error;
  if (!source.findForNewTable(manager, options.source, &error)) {
    return fail(error);
  }
  const InterruptGuard guard;
  NewTable table(&manager);
  const bool sorted =
      table.copySorted(source.uri(), options.maxElementSize, options.plan, source.rows().rowCount);
  return sorted ? table.finish() : fail(table.errorText());
}

}  // namespace zvwttool
