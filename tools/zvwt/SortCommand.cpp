#include "Commands.h"
#include "Diagnostics.h"
#include "DisplayText.h"
#include "InterruptGuard.h"
#include "NewTable.h"
#include "Source.h"

namespace zvwttool {

ExitCode runSort(ZvWorkTableManager& manager, const SortOptions& options) {
  Source source;
  std::string error;
  if (!source.find(manager, options.source, &error)) {
    return fail(error);
  }
  const std::string repeated = source.repeatedName();
  if (!repeated.empty()) {
    return fail("two columns would have the name " + quotedName(repeated));
  }
  const InterruptGuard guard;
  NewTable table(&manager);
  const bool sorted =
      table.copySorted(source.uri(), options.maxElementSize, options.plan, source.rows().rowCount);
  return sorted ? table.finish() : fail(table.errorText());
}

}  // namespace zvwttool
